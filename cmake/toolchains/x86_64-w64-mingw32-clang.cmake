# Cross build to 64-bit Windows DLLs and programs with clang and lld on top
# of Debian's MinGW-w64 headers and its GCC posix-threads runtime
# (g++-mingw-w64-x86-64-posix, clang, lld). Debug information is CodeView
# with one PDB per binary, which DbgHelp reads, on Windows and under Wine.
# Programs run under Wine (tools/windows/wine-run.sh) when CMake or CTest
# needs to run them.
#
#   cmake -DCMAKE_TOOLCHAIN_FILE=<this file> ...
#
# ZORSIM_WINDOWS_DEPS_PREFIX (cache or environment): where the cross-built
# libraries this project needs (expat, GoogleTest, ...) are installed.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(ZORSIM_MINGW_TRIPLE x86_64-w64-mingw32)
set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_C_COMPILER_TARGET ${ZORSIM_MINGW_TRIPLE})
set(CMAKE_CXX_COMPILER_TARGET ${ZORSIM_MINGW_TRIPLE})
set(CMAKE_RC_COMPILER ${ZORSIM_MINGW_TRIPLE}-windres)
set(CMAKE_AR llvm-ar CACHE FILEPATH "Archiver")
set(CMAKE_RANLIB llvm-ranlib CACHE FILEPATH "Archive indexer")
# Without a sysroot clang 14 falls back to the host's /usr/include, C++
# headers included, and compiles against them without a word.
set(CMAKE_SYSROOT /usr/${ZORSIM_MINGW_TRIPLE})

# The C++ library is GCC's libstdc++ of the posix-threads flavour: the
# win32-threads one has no std::mutex or std::thread. Clang does not find
# it under the sysroot, so it is named here, newest GCC first.
file(GLOB _zorsim_mingw_gcc LIST_DIRECTORIES true /usr/lib/gcc/${ZORSIM_MINGW_TRIPLE}/*-posix)
list(SORT _zorsim_mingw_gcc COMPARE NATURAL ORDER DESCENDING)
list(GET _zorsim_mingw_gcc 0 ZORSIM_MINGW_GCC_DIR)
if(NOT ZORSIM_MINGW_GCC_DIR OR NOT EXISTS "${ZORSIM_MINGW_GCC_DIR}/include/c++")
  message(FATAL_ERROR "No MinGW-w64 GCC posix runtime under /usr/lib/gcc/${ZORSIM_MINGW_TRIPLE}: "
                      "install g++-mingw-w64-x86-64-posix")
endif()
set(CMAKE_CXX_STANDARD_INCLUDE_DIRECTORIES
  ${ZORSIM_MINGW_GCC_DIR}/include/c++
  ${ZORSIM_MINGW_GCC_DIR}/include/c++/${ZORSIM_MINGW_TRIPLE}
  ${ZORSIM_MINGW_GCC_DIR}/include/c++/backward)

# CodeView debug information; the linker writes it to <binary>.pdb (an
# empty --pdb= names the PDB after the output). -static links libstdc++,
# libgcc and winpthreads into every binary, so that no runtime DLL has to
# sit beside it (a missing one ends a program with status 53, silently).
# GCC's specs add the pthread library, clang's MinGW driver does not; lld
# resolves archives wherever they stand on the command line.
#
# libstdc++ 12 defines type_info::operator== inline for GCC, which folds
# the copy it emits into the out-of-line one of libstdc++.a; lld does not,
# and fails on a duplicate symbol wherever clang emits the inline copy
# (at -O0 always). The out-of-line one, which the library has anyway, does
# the same name comparison.
set(CMAKE_C_FLAGS_INIT "-g -gcodeview")
set(CMAKE_CXX_FLAGS_INIT "-g -gcodeview -nostdinc++ -D__GXX_TYPEINFO_EQUALITY_INLINE=0")
set(_zorsim_link "-fuse-ld=lld -static -L${ZORSIM_MINGW_GCC_DIR} -Wl,--pdb= -lpthread")
# The compile flags come to the link line too, where clang calls them unused.
string(APPEND _zorsim_link " -Wno-unused-command-line-argument")
set(CMAKE_EXE_LINKER_FLAGS_INIT "${_zorsim_link}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${_zorsim_link}")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "${_zorsim_link}")

# CMake and CTest run the programs under Wine, in a prefix of the build tree.
if(NOT CMAKE_CROSSCOMPILING_EMULATOR)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../../tools/windows/wine-run.sh)
endif()

# Libraries and headers come from the MinGW sysroot and the cross-built
# dependencies only, never from the host; programs from the host.
if(NOT ZORSIM_WINDOWS_DEPS_PREFIX AND DEFINED ENV{ZORSIM_WINDOWS_DEPS_PREFIX})
  set(ZORSIM_WINDOWS_DEPS_PREFIX $ENV{ZORSIM_WINDOWS_DEPS_PREFIX})
endif()
if(ZORSIM_WINDOWS_DEPS_PREFIX)
  list(APPEND CMAKE_FIND_ROOT_PATH ${ZORSIM_WINDOWS_DEPS_PREFIX})
  list(APPEND CMAKE_PREFIX_PATH ${ZORSIM_WINDOWS_DEPS_PREFIX})
endif()
# Packages named in CMAKE_PREFIX_PATH (this project's installed Windows
# package, for a client) are cross-built ones too: found where they are.
list(APPEND CMAKE_FIND_ROOT_PATH ${CMAKE_PREFIX_PATH})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# Checks compiled by try_compile see the same dependencies.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ZORSIM_WINDOWS_DEPS_PREFIX)
