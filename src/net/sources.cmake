# Sources of the net subsystem, with the platform files only it uses.
set(VETRA_NET_SOURCES
)
