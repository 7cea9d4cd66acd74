# Warnings for the project's own targets; errors when ZORSIM_WERROR is on (CI).
function(zorsim_warnings target)
  if(MSVC)
    target_compile_options(${target} PRIVATE /W4 $<$<BOOL:${ZORSIM_WERROR}>:/WX>)
  else()
    target_compile_options(${target} PRIVATE -Wall -Wextra $<$<BOOL:${ZORSIM_WERROR}>:-Werror>)
  endif()
endfunction()
