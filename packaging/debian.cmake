# Debian packages by `cpack`: the library, what its callers build with, the siblings, the program.
# Whoever hands packages out says who they are: -D SORRELIN_MAINTAINER="Name <address>".
set(SORRELIN_MAINTAINER "Unreleased build <root@localhost>" CACHE STRING
  "Maintainer that the packages name")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT ${SORRELIN_MAINTAINER})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime development codecs tool)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# sorrelin_debian_package(<component> <package> <section> <depends> <description>)
function(sorrelin_debian_package component package section depends description)
  string(TOUPPER ${component} key)
  set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${package} PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_PACKAGE_DEPENDS ${depends} PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_DESCRIPTION ${description} PARENT_SCOPE)
endfunction()

set(same_version "(= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
sorrelin_debian_package(runtime libsorrelin libs ""
  "bitmaps to PDF documents and back: the library")
sorrelin_debian_package(development libsorrelin-dev libdevel
  "libsorrelin ${same_version}, zlib1g-dev"
  "bitmaps to PDF documents and back: headers and build files")
sorrelin_debian_package(codecs sorrelin-codecs libs "libsorrelin ${same_version}"
  "bitmaps to PDF documents and back: Group 4, JPEG and OCR")
set(CPACK_DEBIAN_CODECS_PACKAGE_RECOMMENDS tesseract-ocr-eng)
sorrelin_debian_package(tool sorrelin graphics
  "libsorrelin ${same_version}, sorrelin-codecs ${same_version}"
  "bitmaps to PDF documents and back: the program")

include(CPack)
