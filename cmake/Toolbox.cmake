# Compiler settings that every target of the project shares, as one interface target.

find_program(VEXASQLITE_CCACHE ccache)
if(VEXASQLITE_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_C_COMPILER_LAUNCHER ${VEXASQLITE_CCACHE})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${VEXASQLITE_CCACHE})
endif()

add_library(vexa_settings INTERFACE)
add_library(vexasqlite::settings ALIAS vexa_settings)
target_compile_options(vexa_settings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow
  $<$<COMPILE_LANGUAGE:CXX>:-Wconversion -Wnon-virtual-dtor -Woverloaded-virtual>
  $<$<BOOL:${VEXASQLITE_DEVELOPER}>:-Werror>)
# SQLite is called several times for every value; each call goes straight to it, and not through the
# linker's table of jumps.
target_compile_options(vexa_settings INTERFACE -fno-plt)
# g++ 12 sees overlapping copies in joined std::string values where there are none (its bug 105651).
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(vexa_settings INTERFACE -Wno-restrict)
endif()

# Sanitizers and coverage go to every target through the directory, not through the interface
# target: an object built without them in the same program would hide what it does.
if(VEXASQLITE_SANITIZE)
  add_compile_options(-fsanitize=${VEXASQLITE_SANITIZE} -fno-sanitize-recover=all
    -fno-omit-frame-pointer -O1)
  add_link_options(-fsanitize=${VEXASQLITE_SANITIZE})
  # Instrumented code misleads this one warning of g++, in the standard library's own headers too.
  add_compile_options($<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
endif()
if(VEXASQLITE_COVERAGE)
  add_compile_options(--coverage -O0 -fprofile-abs-path -fprofile-update=atomic)
  add_link_options(--coverage)
endif()
