# Sources of the host subsystem, with the platform files only it uses.
set(VETRA_HOST_SOURCES
  host/debug_trace.cpp
  host/wide_format.cpp
  host/local_path.cpp
  host/pe_version.cpp
  platform/${VETRA_OS}/debug_output.cpp
  platform/${VETRA_OS}/thread_name.cpp
  platform/${VETRA_OS}/file_system.cpp
  platform/${VETRA_OS}/version_info.cpp
)
