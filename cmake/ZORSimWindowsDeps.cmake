# Read at the top-level project() of the Windows cross build (the windows
# preset names it in CMAKE_PROJECT_TOP_LEVEL_INCLUDES), right after the
# toolchain file and before anything looks for a library: cross-builds
# expat and GoogleTest into ZORSIM_WINDOWS_DEPS_PREFIX
# (tools/windows/deps.sh, once per build tree and toolchain) and creates the
# build tree's Wine prefix, so that no test discovery pays for it.
if(NOT CMAKE_CROSSCOMPILING OR NOT CMAKE_SYSTEM_NAME STREQUAL "Windows")
  return()
endif()
if(NOT ZORSIM_WINDOWS_DEPS_PREFIX)
  set(ZORSIM_WINDOWS_DEPS_PREFIX "${CMAKE_BINARY_DIR}/deps/prefix" CACHE PATH
    "Where the cross-built libraries of the Windows build are installed")
  list(APPEND CMAKE_FIND_ROOT_PATH "${ZORSIM_WINDOWS_DEPS_PREFIX}")
  list(APPEND CMAKE_PREFIX_PATH "${ZORSIM_WINDOWS_DEPS_PREFIX}")
endif()

get_filename_component(_zorsim_root "${CMAKE_CURRENT_LIST_DIR}/.." ABSOLUTE)
execute_process(
  COMMAND bash "${_zorsim_root}/tools/windows/deps.sh" "${ZORSIM_WINDOWS_DEPS_PREFIX}"
  RESULT_VARIABLE _zorsim_rc)
if(_zorsim_rc)
  message(FATAL_ERROR "Cross-building the Windows dependencies failed (${_zorsim_rc})")
endif()
execute_process(
  COMMAND bash "${_zorsim_root}/tools/windows/wine-run.sh" --init "${CMAKE_BINARY_DIR}"
  RESULT_VARIABLE _zorsim_rc)
if(_zorsim_rc)
  message(FATAL_ERROR "Creating the Wine prefix in ${CMAKE_BINARY_DIR} failed (${_zorsim_rc})")
endif()
