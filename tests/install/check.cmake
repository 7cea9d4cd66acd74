# Installs the build into a fresh prefix, then configures, builds and runs a
# C++ and a C client that find the package there, with the build's
# toolchain; a cross build runs them through its emulator.
# -DBUILD_DIR=<project build> -DSOURCE_DIR=<this folder> -DWORK_DIR=<scratch>
# -DCAPI_DIR=<the C client's folder> [-DTOOLCHAIN=<file> -DDEPS_PREFIX=<dir>
# -DEMULATOR=<runner> -DOBJDUMP=<objdump>]
set(prefix "${WORK_DIR}/prefix")
# Runs a command; fails unless it succeeds and its output matches `expected`.
macro(step what expected)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(rc OR NOT out MATCHES "${expected}")
    message(FATAL_ERROR "${what} failed: ${rc}\n${out}\n${err}")
  endif()
endmacro()

file(REMOVE_RECURSE "${WORK_DIR}")
step(install "" "${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${prefix}")
if(TOOLCHAIN)
  set(exe .exe)
  # Windows: the PDBs beside the DLLs; the plain entry points exported under
  # their C names.
  foreach(pdb VEXZORSimContainers VEXZORBas simexc)
    if(NOT EXISTS "${prefix}/bin/${pdb}.pdb")
      message(FATAL_ERROR "${pdb}.pdb is not installed")
    endif()
  endforeach()
  step(objdump "" "${OBJDUMP}" -p "${prefix}/bin/VEXZORSimContainers.dll")
  file(STRINGS "${prefix}/include/ZORSimContainersC.h" declarations REGEX "^ZORSIM_API")
  foreach(declaration IN LISTS declarations)
    string(REGEX MATCH "([A-Za-z0-9_]+)\\(" name "${declaration}")
    if(NOT out MATCHES " ${CMAKE_MATCH_1}\n")
      message(FATAL_ERROR "${CMAKE_MATCH_1} is not exported under its C name")
    endif()
  endforeach()
  set(cross "-DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN}" "-DZORSIM_WINDOWS_DEPS_PREFIX=${DEPS_PREFIX}")
  # The clients find the DLLs, and the symbol handler their PDBs, through
  # PATH (Wine's drive Z: is the root).
  string(REPLACE "/" "\\" bin "Z:${prefix}/bin")
  set(ENV{WINEPATH} "${bin}")
endif()
# The installed tool finds the installed libraries by itself.
step("the installed simexc" "ZORSimExcNoSuchFile" ${EMULATOR} "${prefix}/bin/simexc${exe}" 1013)
step("configuring the clients" "" "${CMAKE_COMMAND}" -S "${SOURCE_DIR}/consumer" -B "${WORK_DIR}/build" -G Ninja
  -DCMAKE_BUILD_TYPE=RelWithDebInfo "-DCMAKE_PREFIX_PATH=${prefix}" "-DCAPI_CLIENT=${CAPI_DIR}/capi_client.c"
  ${cross})
step("building the clients" "" "${CMAKE_COMMAND}" --build "${WORK_DIR}/build")
# The client's report shows the library's frame and its own with files and lines.
unset(ENV{SIM_DISABLE_EXCEPTION_REPORT})
step("the client" "consumer ok" ${EMULATOR} "${WORK_DIR}/build/consumer${exe}")
if(NOT err MATCHES "Propagate[^\n]* in [^\n]+:[0-9]+\r?\n.*main in [^\n]*main\\.cpp:[0-9]+\r?\n")
  message(FATAL_ERROR "no files and lines in the client's trace:\n${err}")
endif()
step("the C client" "capi ok" ${EMULATOR} "${WORK_DIR}/build/capi_client${exe}" "${CAPI_DIR}")
