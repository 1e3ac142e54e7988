find_package(GTest REQUIRED)
include(GoogleTest)

# Test folders are found, not listed: see docs/TESTING.md.
#
# kelo_add_test_folders(<root>) makes every folder under <root> that holds *Test.cpp files into
# test executables named from the folder's path (tests/unit/handlers/ws -> unit_handlers_ws_tests):
#  - files named *Concurrency*Test.cpp go into <name>_concurrency_tests, labelled concurrency,
#    which the ThreadSanitizer build makes and runs (target concurrency_tests); the other
#    *Test.cpp files go into <name>_tests, labelled unit;
#  - the folder's other .cpp files are its support code, compiled once for both executables;
#  - every executable links kelotestsupport (tests/support/*.cpp, which brings the plug-in, the
#    simulated host and the web layer) and GoogleTest, and sees tests/ as an include root and the
#    private headers of the source folder it mirrors (tests/unit/web -> src/web);
#  - a folder that needs more (generated messages, plug-ins to load, definitions) keeps a small
#    CMakeLists.txt, added after its executables exist, where ${KELO_FOLDER_TESTS} and
#    ${KELO_FOLDER_CONCURRENCY_TESTS} name them (empty when the folder has no such tests).
# gtest_discover_tests makes each test case a ctest test of its own, run in its own process; the
# integration tests rely on that (the web application is one per process).

# kelo_add_test(<target> SOURCES ... LIBS ... [CONCURRENCY] [TIMEOUT s] [PCH target])
# CONCURRENCY marks tests that CI also runs under ThreadSanitizer (ctest -L concurrency); PCH
# names a target whose precompiled headers the test's files use.
function(kelo_add_test target)
  cmake_parse_arguments(T "CONCURRENCY" "TIMEOUT;PCH" "SOURCES;LIBS" ${ARGN})
  add_executable(${target} ${T_SOURCES})
  target_link_libraries(${target} PRIVATE ${T_LIBS} GTest::gtest GTest::gmock GTest::gtest_main
    kelo_warnings Threads::Threads)
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  if(T_PCH)
    # The precompiled headers of a library serve an executable only if both are compiled alike:
    # neither -fPIC nor -fPIE, the compiler's default, which clang checks.
    set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE OFF)
    kelo_precompile_like(${target} ${T_PCH})
  endif()
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

# What the tests share: servers and clients over real sockets, routes for the frame's tests.
function(kelo_add_test_support)
  file(GLOB sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/support/*.cpp)
  add_library(kelotestsupport STATIC ${sources})
  target_include_directories(kelotestsupport PUBLIC ${PROJECT_SOURCE_DIR}/tests
    ${PROJECT_SOURCE_DIR}/tests/support)
  # GoogleTest too, so that every test file is compiled with the options of this library and can
  # use the headers precompiled for it.
  target_link_libraries(kelotestsupport PUBLIC kelocore tavelsim keloweb Boost::boost OpenSSL::SSL
    OpenSSL::Crypto Threads::Threads GTest::gtest GTest::gmock PRIVATE kelo_warnings)
  set_target_properties(kelotestsupport PROPERTIES POSITION_INDEPENDENT_CODE OFF)
  kelo_precompile(kelotestsupport ${KELO_PCH_STD} ${KELO_PCH_JSON} ${KELO_PCH_PROTOBUF}
    ${KELO_PCH_TEST})
endfunction()

# kelo_add_test_folder(<dir> <path relative to tests/>): the executables of one folder.
function(kelo_add_test_folder dir rel)
  string(REPLACE "/" "_" name ${rel})
  file(GLOB all_sources CONFIGURE_DEPENDS ${dir}/*.cpp)
  file(GLOB test_sources CONFIGURE_DEPENDS ${dir}/*Test.cpp)
  file(GLOB concurrency_sources CONFIGURE_DEPENDS ${dir}/*Concurrency*Test.cpp)
  set(support_sources ${all_sources})
  list(REMOVE_ITEM support_sources ${test_sources})
  set(unit_sources ${test_sources})
  if(concurrency_sources)
    list(REMOVE_ITEM unit_sources ${concurrency_sources})
  endif()

  set(libs kelotestsupport)
  if(support_sources)
    # An object library, so that support code that registers itself is never dropped by the linker.
    add_library(${name}_test_support OBJECT ${support_sources})
    target_link_libraries(${name}_test_support PUBLIC kelotestsupport PRIVATE kelo_warnings)
    set_target_properties(${name}_test_support PROPERTIES POSITION_INDEPENDENT_CODE OFF)
    kelo_precompile_like(${name}_test_support kelotestsupport)
    list(APPEND libs ${name}_test_support)
  endif()

  # The private headers of the mirrored source folder: tests/unit/<path> mirrors src/<path>.
  set(private_includes)
  if(rel MATCHES "^unit/(.+)$" AND IS_DIRECTORY ${PROJECT_SOURCE_DIR}/src/${CMAKE_MATCH_1})
    set(private_includes ${PROJECT_SOURCE_DIR}/src/${CMAKE_MATCH_1})
  endif()

  set(KELO_FOLDER_TESTS)
  set(KELO_FOLDER_CONCURRENCY_TESTS)
  if(unit_sources)
    set(KELO_FOLDER_TESTS ${name}_tests)
    kelo_add_test(${KELO_FOLDER_TESTS} SOURCES ${unit_sources} LIBS ${libs}
      PCH kelotestsupport)
    target_include_directories(${KELO_FOLDER_TESTS} PRIVATE ${private_includes})
  endif()
  if(concurrency_sources)
    set(KELO_FOLDER_CONCURRENCY_TESTS ${name}_concurrency_tests)
    kelo_add_test(${KELO_FOLDER_CONCURRENCY_TESTS} SOURCES ${concurrency_sources} LIBS ${libs}
      PCH kelotestsupport CONCURRENCY)
    target_include_directories(${KELO_FOLDER_CONCURRENCY_TESTS} PRIVATE ${private_includes})
  endif()
  if(support_sources)
    target_include_directories(${name}_test_support PRIVATE ${private_includes})
  endif()
  if(EXISTS ${dir}/CMakeLists.txt)
    add_subdirectory(${dir} ${CMAKE_CURRENT_BINARY_DIR}/${rel})
  endif()
endfunction()

# kelo_add_test_folders(<root>): every folder under <root> with *Test.cpp files, in path order.
function(kelo_add_test_folders root)
  file(GLOB_RECURSE tests CONFIGURE_DEPENDS RELATIVE ${root} ${root}/*Test.cpp)
  set(folders)
  foreach(test ${tests})
    get_filename_component(folder ${test} DIRECTORY)
    list(APPEND folders ${folder})
  endforeach()
  list(REMOVE_DUPLICATES folders)
  list(SORT folders)
  foreach(folder ${folders})
    kelo_add_test_folder(${root}/${folder} ${folder})
  endforeach()
endfunction()

# kelo_add_wire_tests(<root>): every script under <root> (recursively) that starts with a #! line
# is a wire test, wire_<path>_<name>, run as `<script> TAVEL_SIM LIBKELO REPO` against tavel-sim
# with the plug-in as a separate process. Scripts without a #! line are helpers that the tests
# source. Python scripts run with Debian's /usr/bin/python3, which sees python3-websocket.
function(kelo_add_wire_tests root)
  file(GLOB_RECURSE scripts CONFIGURE_DEPENDS RELATIVE ${root} ${root}/*.sh ${root}/*.py)
  list(SORT scripts)
  foreach(script ${scripts})
    file(STRINGS ${root}/${script} first_line LIMIT_COUNT 1)
    if(NOT first_line MATCHES "^#!")
      continue()
    endif()
    string(REGEX REPLACE "\\.(sh|py)$" "" stem ${script})
    string(REPLACE "/" "_" stem ${stem})
    if(script MATCHES "\\.py$")
      set(interpreter /usr/bin/python3)
    else()
      set(interpreter bash)
    endif()
    add_test(NAME wire_${stem}
      COMMAND ${interpreter} ${root}/${script} $<TARGET_FILE:tavel-sim> $<TARGET_FILE:kelo>
              ${PROJECT_SOURCE_DIR})
    set_tests_properties(wire_${stem} PROPERTIES LABELS wire TIMEOUT 120)
  endforeach()
endfunction()
