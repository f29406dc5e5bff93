# Sources of the monitor subsystem, with the platform files only it uses.
set(VETRA_MONITOR_SOURCES
  monitor/perf_counter.cpp
  monitor/cpu_sampling.cpp
  monitor/cpu_usage.cpp
  platform/${VETRA_OS}/clock.cpp
  platform/${VETRA_OS}/event.cpp
  platform/${VETRA_OS}/thread.cpp
  platform/${VETRA_OS}/cpu_times.cpp
)
# The parsers of /proc's texts.
if(VETRA_OS STREQUAL "posix")
  list(APPEND VETRA_MONITOR_SOURCES platform/posix/proc_stat.cpp)
endif()
