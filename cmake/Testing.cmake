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
  set(labels unit)
  if(T_CONCURRENCY)
    list(APPEND labels concurrency)
  endif()
  gtest_discover_tests(${target} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
    PROPERTIES LABELS "${labels}" TIMEOUT ${T_TIMEOUT})
endfunction()
