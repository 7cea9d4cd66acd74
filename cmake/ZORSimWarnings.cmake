# Compiler settings of the project's own targets: warnings (errors when
# ZORSIM_WERROR is on, as in CI), and the code generation of its libraries.
function(zorsim_warnings target)
  if(MSVC)
    target_compile_options(${target} PRIVATE /W4 $<$<BOOL:${ZORSIM_WERROR}>:/WX>)
  else()
    target_compile_options(${target} PRIVATE -Wall -Wextra $<$<BOOL:${ZORSIM_WERROR}>:-Werror>)
  endif()
endfunction()

# Code generation of the project's shared libraries. On ELF, a library's own
# functions, vtables and type information bind inside it (only the symbols of
# the interposable list stay open to interposition), and calls into other
# libraries load their address from the GOT instead of jumping through the
# PLT: the transfer path then touches no PLT page and one small GOT, which
# matters on kernels that flush the TLB on every system call.
function(zorsim_library_codegen target)
  if(NOT WIN32 AND CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    set(dir ${CMAKE_CURRENT_FUNCTION_LIST_DIR})
    target_compile_options(${target} PRIVATE -fno-plt -fno-semantic-interposition)
    target_link_options(${target} PRIVATE -Wl,--dynamic-list=${dir}/ZORSimInterposable.list
                        -Wl,-T,${dir}/ZORSimHotText.ld)
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${dir}/ZORSimInterposable.list
                                                               ${dir}/ZORSimHotText.ld)
  endif()
endfunction()
