# Writes BASE.def, the exports with C linkage of the definition file ALL, and BASE.lib of them.
# cmake -D ALL=<file> -D LIBRARY=<name> -D BASE=<path> -D DLLTOOL=<file> -D MACHINE=<name> -P ...
file(STRINGS ${ALL} lines REGEX "^ +[A-Za-z]")
list(TRANSFORM lines REPLACE "^ +([A-Za-z0-9_]+) *@[0-9]+" "  \\1")
list(JOIN lines "\n" lines)
file(WRITE ${BASE}.def "LIBRARY ${LIBRARY}\nEXPORTS\n${lines}\n")
execute_process(COMMAND ${DLLTOOL} -m ${MACHINE} -d ${BASE}.def -l ${BASE}.lib
  COMMAND_ERROR_IS_FATAL ANY)
