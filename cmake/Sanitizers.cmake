if(KELO_ASAN AND KELO_TSAN)
  message(FATAL_ERROR "KELO_ASAN and KELO_TSAN exclude each other")
endif()
# -g1 (line tables, no variables) is enough for the sanitizers' symbolized reports and costs a
# third of the compile time of full debug information on Beast and GoogleTest code; the later
# option overrides the -g of a Debug build.
if(KELO_ASAN)
  add_compile_options(-O1 -g1 -fsanitize=address,undefined -fno-omit-frame-pointer
    -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
endif()
if(KELO_TSAN)
  add_compile_options(-O1 -g1 -fsanitize=thread -fno-omit-frame-pointer)
  add_link_options(-fsanitize=thread)
endif()
