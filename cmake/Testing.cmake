find_package(GTest REQUIRED)
include(GoogleTest)

# kelo_add_test(<target> SOURCES ... LIBS ... [CONCURRENCY] [TIMEOUT s])
# CONCURRENCY marks tests that CI also runs under ThreadSanitizer (ctest -L concurrency).
function(kelo_add_test target)
  cmake_parse_arguments(T "CONCURRENCY" "TIMEOUT" "SOURCES;LIBS" ${ARGN})
  add_executable(${target} ${T_SOURCES})
  target_link_libraries(${target} PRIVATE ${T_LIBS} GTest::gtest GTest::gmock GTest::gtest_main
    kelo_warnings Threads::Threads)
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  if(NOT T_TIMEOUT)
    set(T_TIMEOUT 300)
  endif()
  # One label only: gtest_discover_tests flattens its PROPERTIES, so a list of two labels would
  # come out as "LABELS unit" followed by a stray property, and -L concurrency would find none.
  set(label unit)
  if(T_CONCURRENCY)
    set(label concurrency)
    set_property(GLOBAL APPEND PROPERTY KELO_CONCURRENCY_TARGETS ${target})
  endif()
  gtest_discover_tests(${target} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
    PROPERTIES LABELS ${label} TIMEOUT ${T_TIMEOUT})
endfunction()
