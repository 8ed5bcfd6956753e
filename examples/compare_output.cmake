# Runs PROGRAM with RECORDING and fails unless it prints the contents of EXPECTED.
execute_process(COMMAND ${PROGRAM} ${RECORDING}
                OUTPUT_VARIABLE output ERROR_VARIABLE errors RESULT_VARIABLE status)
file(READ ${EXPECTED} expected)
if(NOT status EQUAL 0 OR NOT errors STREQUAL "" OR NOT output STREQUAL expected)
  message(FATAL_ERROR "status ${status}\n${errors}${output}expected:\n${expected}")
endif()
