# Lets gdb show what PROGRAM has made, with PRINTERS unless they are loaded with the library, and compares it with
# EXPECTED. Addresses are shown as "0x?".
execute_process(COMMAND gdb --nx --batch -ex "set debuginfod enabled off" -ex run /bin/true
  OUTPUT_VARIABLE probe ERROR_QUIET)
if(NOT probe MATCHES "exited normally")
  message("gdb cannot run programs on this machine")
  return()
endif()
if(PRINTERS)
  set(load -ex "source ${PRINTERS}")
endif()
foreach(what IN ITEMS third nobody flock birds wind shared drift id created name event)
  list(APPEND show -ex "print ${what}")
endforeach()
execute_process(
  COMMAND gdb --nx --batch ${OPTIONS} -ex "set confirm off" -ex "set debuginfod enabled off" -ex "set width 0" -ex "set host-charset ASCII" -ex "set print pretty on"
    ${load} -ex "break main" -ex "break Look" -ex run -ex "info locals" -ex continue -ex up -ex "info locals"
    -ex "bt full" ${show} -ex kill ${PROGRAM}
  OUTPUT_VARIABLE printed ERROR_VARIABLE errors RESULT_VARIABLE result)
string(REGEX REPLACE "^.*\n(\\$1 = )" "\\1" printed "${printed}")
string(REGEX REPLACE "\\[Inferior [^\n]*\n" "" printed "${printed}")
string(REGEX REPLACE "0x[0-9a-f]+" "0x?" printed "${printed}")
file(READ ${EXPECTED} expected)
if(NOT printed STREQUAL expected OR errors MATCHES "Python Exception|internal-error")
  message(FATAL_ERROR "expected:\n${expected}\nprinted:\n${printed}\nerrors: ${errors}")
endif()
