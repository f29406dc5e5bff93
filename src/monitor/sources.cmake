# Sources of the monitor subsystem, with the platform files only it uses.
set(VETRA_MONITOR_SOURCES
)
