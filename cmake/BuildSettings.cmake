# What every target of the project is built with.

set(CMAKE_C_STANDARD 11)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

include(GNUInstallDirs)

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "" FORCE)
endif()

find_program(CCACHE ccache)
if(CCACHE)
  # Presets and clones that compile a file alike share its object, though their folders differ.
  set(CMAKE_C_COMPILER_LAUNCHER env CCACHE_BASEDIR=${PROJECT_SOURCE_DIR} CCACHE_NOHASHDIR=1
                                    CCACHE_SLOPPINESS=pch_defines,time_macros ${CCACHE})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_C_COMPILER_LAUNCHER})
endif()

add_compile_options(-Wall -Wextra -Wconversion -Wshadow -Wformat=2 $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>)
if(ZYMDB_WERROR)
  add_compile_options(-Werror)
endif()
add_compile_options(-fno-omit-frame-pointer)
# Times and sizes of files have 64 bits on every machine.
add_compile_definitions(_FILE_OFFSET_BITS=64 _TIME_BITS=64)
# Lines for backtraces. The libraries, whose types debuggers and the comparison of interfaces ask for, say more.
add_compile_options(-g1)

if(ZYMDB_SANITIZE)
  add_compile_options(-fsanitize=${ZYMDB_SANITIZE} -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${ZYMDB_SANITIZE})
else()
  # A packager's own choice stands.
  if(NOT "${CMAKE_C_FLAGS} ${CMAKE_CXX_FLAGS}" MATCHES "_FORTIFY_SOURCE")
    add_compile_options($<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
  endif()
  add_compile_options(-fstack-protector-strong)
  add_link_options(-Wl,-z,relro,-z,now)
endif()

# What is measured is compiled as written; the tests around it stay as in every other build.
set(ZYMDB_MEASURED_OPTIONS "")
if(ZYMDB_COVERAGE)
  set(ZYMDB_MEASURED_OPTIONS --coverage -fprofile-update=atomic -O0 -U_FORTIFY_SOURCE)
  add_link_options(--coverage)
endif()

# Headers that most files of a target read are read once. What a file includes it states all the same: builds without
# this option, the fuzz targets' for one, do not compile where it forgets.
function(zymdb_precompile target)
  if(ZYMDB_PRECOMPILED_HEADERS)
    target_precompile_headers(${target} PRIVATE ${ARGN})
  endif()
endfunction()

# What is in the tool alone.
function(zymdb_may_be_small target)
  if(ZYMDB_SMALL_TOOL)
    target_compile_options(${target} PRIVATE -Os -flto)
    target_link_options(${target} PRIVATE -Os -flto=auto)
  endif()
endfunction()
