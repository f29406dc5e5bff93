# Sources of the memory subsystem, with the platform files only it uses.
set(VETRA_MEMORY_SOURCES
  memory/block_buffer.cpp
  memory/vtmem.cpp
)
