# Tests of a cross build for Windows, which run under Wine. GoogleTest is built from its sources, and
# what is about another system is left out, as windows_left_out.txt says.
set(SORRELIN_GOOGLETEST_SOURCE "" CACHE PATH "Sources of GoogleTest, for builds without its package")
if(SORRELIN_GOOGLETEST_SOURCE)
  add_subdirectory(${SORRELIN_GOOGLETEST_SOURCE} googletest EXCLUDE_FROM_ALL)
  foreach(library IN ITEMS gtest gtest_main gmock gmock_main)
    target_compile_options(${library} PRIVATE -w)
  endforeach()
else()
  find_package(GTest REQUIRED)
endif()

# Lines are "<file or folder under tests/, or Suite.Test>: <reason>", and concern one processor where
# the name has " (<processor>)" after it.
set(left_out_list ${CMAKE_CURRENT_SOURCE_DIR}/windows_left_out.txt)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${left_out_list})
file(STRINGS ${left_out_list} SORRELIN_LEFT_OUT REGEX "^[^#].*: ")
list(TRANSFORM SORRELIN_LEFT_OUT REPLACE ": .*" "")
list(TRANSFORM SORRELIN_LEFT_OUT REPLACE " \\(${CMAKE_SYSTEM_PROCESSOR}\\)$" "")
list(FILTER SORRELIN_LEFT_OUT EXCLUDE REGEX "\\)$")
set(left_out_tests ${SORRELIN_LEFT_OUT})
list(FILTER left_out_tests INCLUDE REGEX "^[^.]*\\.[A-Z]")
list(JOIN left_out_tests ":" SORRELIN_LEFT_OUT_TESTS)
set(SORRELIN_TESTS_FOLDER ${CMAKE_CURRENT_SOURCE_DIR})

# sorrelin_leave_out(<variable>): removes the files of another system from the list of sources.
function(sorrelin_leave_out variable)
  set(kept "")
  foreach(source IN LISTS ${variable})
    cmake_path(ABSOLUTE_PATH source BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR} NORMALIZE
      OUTPUT_VARIABLE path)
    cmake_path(RELATIVE_PATH path BASE_DIRECTORY ${SORRELIN_TESTS_FOLDER})
    cmake_path(GET path PARENT_PATH folder)
    if(NOT path IN_LIST SORRELIN_LEFT_OUT AND NOT "${folder}/" IN_LIST SORRELIN_LEFT_OUT)
      list(APPEND kept ${source})
    endif()
  endforeach()
  set(${variable} ${kept} PARENT_SCOPE)
endfunction()

# Tesseract's data are those of this system's packages, which Wine may see in the build folder alone.
find_path(SORRELIN_TESSDATA eng.traineddata
  PATHS /usr/share/tesseract-ocr/5/tessdata NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
if(SORRELIN_TESSDATA)
  file(COPY ${SORRELIN_TESSDATA} DESTINATION ${PROJECT_BINARY_DIR})
endif()

# sorrelin_run_under_wine(<target>): one test, since a start takes longer than most tests. Libraries
# that are named without a folder are found as on other systems, in the folder of libraries.
function(sorrelin_run_under_wine target)
  if(CMAKE_CROSSCOMPILING AND NOT CMAKE_CROSSCOMPILING_EMULATOR)
    return()
  endif()
  add_test(NAME ${target}
    COMMAND ${target} --gtest_filter=-${SORRELIN_LEFT_OUT_TESTS})
  set_tests_properties(${target} PROPERTIES
    TIMEOUT 600
    ENVIRONMENT
      "WINEPATH=${CMAKE_LIBRARY_OUTPUT_DIRECTORY};TESSDATA_PREFIX=Z:${PROJECT_BINARY_DIR}/tessdata")
endfunction()
