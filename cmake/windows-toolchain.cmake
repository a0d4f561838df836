# Builds for Windows 10 and later with mingw-w64 (posix threads) on Debian; programs link everything statically.
# The third-party libraries come from scripts/windows-libraries.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_VERSION 10.0)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(tarnwing_host x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${tarnwing_host}-gcc-posix)
set(CMAKE_CXX_COMPILER ${tarnwing_host}-g++-posix)
set(CMAKE_RC_COMPILER ${tarnwing_host}-windres)
set(CMAKE_AR ${tarnwing_host}-gcc-ar-posix)
set(CMAKE_RANLIB ${tarnwing_host}-gcc-ranlib-posix)

# The same folder as in scripts/windows-libraries.
if(NOT TARNWING_WINDOWS_LIBS)
  if(DEFINED ENV{TARNWING_CACHE})
    set(tarnwing_cache $ENV{TARNWING_CACHE})
  elseif(DEFINED ENV{XDG_CACHE_HOME})
    set(tarnwing_cache $ENV{XDG_CACHE_HOME}/tarnwing)
  else()
    set(tarnwing_cache $ENV{HOME}/.cache/tarnwing)
  endif()
  # The link and not the folder behind it, so that a build folder follows when the libraries are built anew.
  set(TARNWING_WINDOWS_LIBS ${tarnwing_cache}/windows-libs/current)
endif()
if(NOT EXISTS ${TARNWING_WINDOWS_LIBS}/lib)
  message(FATAL_ERROR "No libraries in ${TARNWING_WINDOWS_LIBS}: run scripts/windows-libraries")
endif()
# Trial compilations read this file again and must see the same folder.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TARNWING_WINDOWS_LIBS)

set(CMAKE_PREFIX_PATH ${TARNWING_WINDOWS_LIBS})
set(CMAKE_FIND_ROOT_PATH ${TARNWING_WINDOWS_LIBS} /usr/${tarnwing_host})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# pkg-config sees only our libraries, and tells what a static link needs of theirs.
set(ENV{PKG_CONFIG_LIBDIR} ${TARNWING_WINDOWS_LIBS}/lib/pkgconfig)
set(ENV{PKG_CONFIG_PATH} "")
set(PKG_CONFIG_ARGN --static)

string(CONCAT tarnwing_defines "-D_WIN32_WINNT=0x0A00 -DWINVER=0x0A00 -DUNICODE -D_UNICODE -DWIN32_LEAN_AND_MEAN "
       "-DNOMINMAX")
set(CMAKE_C_FLAGS_INIT "${tarnwing_defines}")
set(CMAKE_CXX_FLAGS_INIT "${tarnwing_defines}")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")

set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../scripts/wine-run)
