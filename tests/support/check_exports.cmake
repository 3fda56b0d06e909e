# Compares the symbols that a shared library defines for others with a list, one name a line, sorted.
# cmake -DNM=<nm> -DLIBRARY=<file> -DLIST=<file> -P check_exports.cmake
cmake_minimum_required(VERSION 3.25)
execute_process(COMMAND ${NM} -D --defined-only --format=posix ${LIBRARY}
  OUTPUT_VARIABLE lines
  COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n]+" lines "${lines}")
list(TRANSFORM lines REPLACE " .*" "")
list(SORT lines)
file(STRINGS ${LIST} expected)
foreach(name IN LISTS lines)
  if(NOT name IN_LIST expected)
    message(SEND_ERROR "exported, but not listed: ${name}")
  endif()
endforeach()
foreach(name IN LISTS expected)
  if(NOT name IN_LIST lines)
    message(SEND_ERROR "listed, but not exported: ${name}")
  endif()
endforeach()
