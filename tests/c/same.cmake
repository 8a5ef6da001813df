# same.cmake: CALLER and REFERENCE, with EMULATOR before the first, print the same lines. The caller names its file in
# UTF-8.
execute_process(COMMAND ${REFERENCE} OUTPUT_VARIABLE expected COMMAND_ERROR_IS_FATAL ANY)
file(REMOVE "curve-µ€.bin")
execute_process(COMMAND ${EMULATOR} ${CALLER} OUTPUT_VARIABLE lines COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE "\r" "" lines "${lines}")
string(LENGTH "${expected}" length)
if(length LESS 3000 OR NOT lines STREQUAL expected)
  message(FATAL_ERROR "expected:\n${expected}\nprinted:\n${lines}")
endif()
if(NOT EXISTS "${CMAKE_CURRENT_BINARY_DIR}/curve-µ€.bin")
  message(FATAL_ERROR "the name of the file is not UTF-8")
endif()
