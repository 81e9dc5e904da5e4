# The libraries the project stands on, each under one target name.

find_package(Threads REQUIRED)
find_package(SQLite3 REQUIRED)
find_package(PkgConfig REQUIRED)
find_package(spdlog REQUIRED)
pkg_check_modules(JSONCPP REQUIRED IMPORTED_TARGET jsoncpp)

# utfcpp is headers only; distributions put them in a folder of their own.
find_path(UTFCPP_INCLUDE_DIR utf8.h PATH_SUFFIXES utf8cpp REQUIRED)
add_library(vexa_utfcpp INTERFACE)
target_include_directories(vexa_utfcpp SYSTEM INTERFACE ${UTFCPP_INCLUDE_DIR})
