# The tests of what exists on Windows only, and of code whose types differ there. A cross build runs
# them under Wine if that is at hand, with GoogleTest from its sources.
set(SORRELIN_GOOGLETEST_SOURCE "" CACHE PATH "Sources of GoogleTest, for builds without its package")
if(SORRELIN_GOOGLETEST_SOURCE)
  add_subdirectory(${SORRELIN_GOOGLETEST_SOURCE} googletest EXCLUDE_FROM_ALL)
  foreach(library IN ITEMS gtest gtest_main gmock gmock_main)
    target_compile_options(${library} PRIVATE -w)
  endforeach()
  set(gtest_libraries gmock_main)
else()
  find_package(GTest REQUIRED)
  set(gtest_libraries GTest::gmock_main)
endif()

add_executable(windows_test
  frame/system_windows_test.cpp
  image/bitmap_objects_windows_test.cpp
  image/toolbox_blank_test.cpp
  image/toolbox_bounds_test.cpp
  image/toolbox_turns_test.cpp
  ${PROJECT_SOURCE_DIR}/sorrelin/frame/password_prompt.rc)
target_link_libraries(windows_test PRIVATE sorrelin_objects ${gtest_libraries})
if(MINGW)
  target_link_options(windows_test PRIVATE -static)
endif()
if(NOT CMAKE_CROSSCOMPILING OR CMAKE_CROSSCOMPILING_EMULATOR)
  add_test(NAME windows_test COMMAND windows_test)
  set_tests_properties(windows_test PROPERTIES TIMEOUT 300)
endif()
