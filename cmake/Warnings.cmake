# Warnings for the project's own targets; third-party headers come in as SYSTEM includes.
add_library(kelo_warnings INTERFACE)
target_compile_options(kelo_warnings INTERFACE -Wall -Wextra -Wpedantic
  $<$<CXX_COMPILER_ID:GNU>:-Wshadow=local>
  -Wnon-virtual-dtor -Wno-unused-parameter)
