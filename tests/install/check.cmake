# Installs the build into a fresh prefix, then configures, builds and runs a
# client that finds the package there.
# -DBUILD_DIR=<project build> -DSOURCE_DIR=<this folder> -DWORK_DIR=<scratch>
file(REMOVE_RECURSE "${WORK_DIR}")
execute_process(COMMAND "${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${WORK_DIR}/prefix"
  RESULT_VARIABLE rc OUTPUT_QUIET)
if(rc)
  message(FATAL_ERROR "install failed: ${rc}")
endif()
# The installed tool finds the installed libraries by itself.
execute_process(COMMAND "${WORK_DIR}/prefix/bin/simexc" 1013 RESULT_VARIABLE rc OUTPUT_VARIABLE out
  ERROR_VARIABLE err)
if(rc OR NOT out MATCHES "ZORSimExcNoSuchFile")
  message(FATAL_ERROR "the installed simexc failed: ${rc} ${out} ${err}")
endif()
execute_process(COMMAND "${CMAKE_COMMAND}" -S "${SOURCE_DIR}/consumer" -B "${WORK_DIR}/build" -G Ninja
  "-DCMAKE_PREFIX_PATH=${WORK_DIR}/prefix" RESULT_VARIABLE rc)
if(rc)
  message(FATAL_ERROR "configuring the client failed: ${rc}")
endif()
execute_process(COMMAND "${CMAKE_COMMAND}" --build "${WORK_DIR}/build" RESULT_VARIABLE rc)
if(rc)
  message(FATAL_ERROR "building the client failed: ${rc}")
endif()
execute_process(COMMAND "${WORK_DIR}/build/consumer" RESULT_VARIABLE rc OUTPUT_VARIABLE out)
if(rc OR NOT out MATCHES "consumer ok")
  message(FATAL_ERROR "the client failed: ${rc} ${out}")
endif()
