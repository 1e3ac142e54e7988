# Every dependency is a Debian 12 package installed by scripts/setup.sh.
find_package(Threads REQUIRED)
find_package(Boost 1.74 REQUIRED COMPONENTS thread filesystem system)
find_package(Protobuf 3.21 REQUIRED)
find_package(OpenSSL 3 REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(JSONCPP REQUIRED IMPORTED_TARGET jsoncpp)
# GET /metrics: the core registry and the text serializer only (no pull server).
find_package(prometheus-cpp REQUIRED)

# easylogging++ ships as a header and one source file; the plug-in compiles the source itself.
find_path(EASYLOGGINGPP_INCLUDE_DIR easylogging++.h REQUIRED)
find_file(EASYLOGGINGPP_SOURCE easylogging++.cc PATHS /usr/include /usr/share/easyloggingpp
  /usr/src/easyloggingpp PATH_SUFFIXES src REQUIRED)
