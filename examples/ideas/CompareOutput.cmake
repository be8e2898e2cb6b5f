# Runs PROGRAM, where needed by EMULATOR, with the file INPUT if there is one, and compares what it prints with the file
# EXPECTED.
if(INPUT)
  set(input INPUT_FILE ${INPUT})
endif()
execute_process(COMMAND ${EMULATOR} ${PROGRAM} ${input} OUTPUT_VARIABLE printed COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE "\r" "" printed "${printed}")
file(READ ${EXPECTED} expected)
if(NOT printed STREQUAL expected)
  message(FATAL_ERROR "expected:\n${expected}\nprinted:\n${printed}")
endif()
