# The headers of utfcpp, where the libraries for Windows are.
find_path(UTF8CPP_INCLUDE_DIR utf8.h PATH_SUFFIXES utf8cpp)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(utf8cpp REQUIRED_VARS UTF8CPP_INCLUDE_DIR)
if(utf8cpp_FOUND AND NOT TARGET utf8cpp)
  add_library(utf8cpp INTERFACE IMPORTED GLOBAL)
  target_include_directories(utf8cpp SYSTEM INTERFACE ${UTF8CPP_INCLUDE_DIR})
endif()
