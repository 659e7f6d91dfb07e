# SPDX-License-Identifier: MIT
# cmake -DOBJDUMP=… -DOBJECTS=a.o;b.o -P vdec_fused_check.cmake
# Fails when an object holds a fused multiply-add, or nothing that could be looked at.
set(instructions 0)
foreach(object IN LISTS OBJECTS)
  execute_process(COMMAND ${OBJDUMP} -d --no-show-raw-insn ${object}
                  OUTPUT_VARIABLE listing RESULT_VARIABLE failed)
  if(failed)
    message(FATAL_ERROR "cannot disassemble ${object}")
  endif()
  string(REGEX MATCHALL "[\t ](v?f(n?m(add|sub)|maddsub|msubadd)[0-9]*[sp][sd]|fn?m(add|sub)|fml[as])[\t ]" fused "${listing}")
  if(fused)
    list(REMOVE_DUPLICATES fused)
    message(FATAL_ERROR "${object} fuses: ${fused}")
  endif()
  string(REGEX MATCHALL "mulp[sd]|muls[sd]|fmul" products "${listing}")
  list(LENGTH products count)
  math(EXPR instructions "${instructions} + ${count}")
endforeach()
if(instructions EQUAL 0)
  message(FATAL_ERROR "no floating-point product in any object: wrong objects, or none")
endif()
message(STATUS "${instructions} products, none fused")
