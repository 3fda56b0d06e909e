# libtiff with what it needs itself, since it is a static library here.
include(${CMAKE_ROOT}/Modules/FindTIFF.cmake)
if(TIFF_FOUND)
  find_package(PkgConfig REQUIRED)
  pkg_check_modules(TIFF_WHOLE REQUIRED IMPORTED_TARGET libtiff-4)
  target_link_libraries(TIFF::TIFF INTERFACE PkgConfig::TIFF_WHOLE)
endif()
