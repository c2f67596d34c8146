# Fails unless README contains SOURCE as a C++ block, followed by the output of PROGRAM as a text
# block.
file(READ ${README} readme)
file(READ ${SOURCE} source)
execute_process(COMMAND ${PROGRAM} OUTPUT_VARIABLE printed COMMAND_ERROR_IS_FATAL ANY)

string(FIND "${readme}" "```cpp\n${source}```\n" code)
if(code EQUAL -1)
  message(FATAL_ERROR "README.md does not show ${SOURCE} as it is.")
endif()
string(SUBSTRING "${readme}" ${code} -1 behind)
string(FIND "${behind}" "```text\n${printed}```\n" output)
if(output EQUAL -1)
  message(FATAL_ERROR "README.md does not show what the program prints:\n${printed}")
endif()
