# Sources of the host subsystem, with the platform files only it uses.
set(VETRA_HOST_SOURCES
)
