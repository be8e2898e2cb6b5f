# The first host program in the README is the one that the tests build and run.
file(READ ${SOURCE_DIR}/README.md readme)
file(READ ${SOURCE_DIR}/examples/first_host/main.cpp program)
string(FIND "${readme}" "${program}" position)
if(position EQUAL -1)
  message(FATAL_ERROR "README.md and examples/first_host/main.cpp differ")
endif()
