# Precompiled headers. Most of the compile time of a short file here goes into parsing the same
# standard, GoogleTest, protobuf and jsoncpp headers again (15 of the 22 s of a handler test), so
# each library precompiles the ones its files use, and all test executables share one set.
# Only third-party and standard headers go in: a change to one of ours never rebuilds them all.
# -DKELO_PCH=OFF builds without them, e.g. to find a file that forgot an include.
option(KELO_PCH "Precompile the common standard and third-party headers" ON)

set(KELO_PCH_STD <algorithm> <atomic> <chrono> <cstdint> <functional> <map> <memory> <mutex>
  <optional> <set> <sstream> <stdexcept> <string> <string_view> <thread> <unordered_map>
  <utility> <vector>)
set(KELO_PCH_JSON <json/json.h>)
set(KELO_PCH_PROTOBUF <google/protobuf/message.h> <google/protobuf/generated_message_reflection.h>
  <google/protobuf/extension_set.h> <google/protobuf/repeated_field.h> <google/protobuf/map.h>
  <google/protobuf/map_field_inl.h> <google/protobuf/wrappers.pb.h>)
set(KELO_PCH_BEAST <boost/asio/ip/tcp.hpp> <boost/asio/ssl.hpp> <boost/asio/steady_timer.hpp>
  <boost/asio/strand.hpp> <boost/beast/core.hpp> <boost/beast/http.hpp> <boost/beast/ssl.hpp>
  <boost/beast/websocket.hpp>)
set(KELO_PCH_TEST <gtest/gtest.h> <gmock/gmock.h>)

# kelo_precompile(<target> <header>...): the target's files start with these headers compiled.
function(kelo_precompile target)
  if(KELO_PCH)
    target_precompile_headers(${target} PRIVATE ${ARGN})
  endif()
endfunction()

# kelo_precompile_like(<target> <from>): reuses the headers precompiled for <from>, which must be
# compiled with the same options and definitions.
function(kelo_precompile_like target from)
  if(KELO_PCH)
    target_precompile_headers(${target} REUSE_FROM ${from})
  endif()
endfunction()
