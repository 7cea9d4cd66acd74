# Runs one fuzzer for a bounded time on a working copy of its seed corpus.
file(MAKE_DIRECTORY ${CORPUS})
file(GLOB seeds ${SEEDS}/*)
file(COPY ${seeds} DESTINATION ${CORPUS})
execute_process(
  COMMAND ${FUZZER} -max_total_time=${SECONDS} -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 ${CORPUS}
  RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "${FUZZER} failed (${status})")
endif()
