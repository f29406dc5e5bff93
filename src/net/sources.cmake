# Sources of the net subsystem, with the platform files only it uses.
set(VETRA_NET_SOURCES
  net/ip_info.cpp
  net/ip_snapshot.cpp
  net/first_address.cpp
  platform/${VETRA_OS}/net_tables.cpp
)
# The parsers of the kernel's rtnetlink messages.
if(VETRA_OS STREQUAL "posix")
  list(APPEND VETRA_NET_SOURCES platform/posix/rtnetlink_rows.cpp)
endif()
