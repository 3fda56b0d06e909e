# What libraries and programs carry on Windows only.

# sorrelin_add_version(<target> <file name> <description>)
# A version resource. Nothing elsewhere.
function(sorrelin_add_version target file what)
  if(NOT WIN32)
    return()
  endif()
  set(SORRELIN_VERSIONED_FILE ${file})
  set(SORRELIN_VERSIONED_WHAT ${what})
  set(SORRELIN_VERSIONED_TYPE VFT_DLL)
  if(file MATCHES "\\.exe$")
    set(SORRELIN_VERSIONED_TYPE VFT_APP)
  endif()
  set(resource ${CMAKE_CURRENT_BINARY_DIR}/${target}_version.rc)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/version.rc.in ${resource} @ONLY)
  target_sources(${target} PRIVATE ${resource})
endfunction()

# sorrelin_add_import_library(<target>)
# For linkers of other compilers: <name>.def and <name>.lib beside the archives, with the exports
# that have C linkage.
function(sorrelin_add_import_library target)
  find_program(SORRELIN_LLVM_DLLTOOL NAMES llvm-dlltool llvm-dlltool-14)
  if(NOT MINGW OR NOT SORRELIN_LLVM_DLLTOOL)
    return()
  endif()
  set(machine i386:x86-64)
  if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    set(machine i386)
  endif()
  get_target_property(name ${target} OUTPUT_NAME)
  set(all ${CMAKE_CURRENT_BINARY_DIR}/${name}_all.def)
  target_link_options(${target} PRIVATE LINKER:--output-def,${all})
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${CMAKE_COMMAND} -D ALL=${all} -D DLLTOOL=${SORRELIN_LLVM_DLLTOOL} -D MACHINE=${machine}
      -D LIBRARY=${name}.dll -D BASE=${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/${name}
      -P ${PROJECT_SOURCE_DIR}/cmake/import_library.cmake
    BYPRODUCTS
      ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/${name}.def ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/${name}.lib
    VERBATIM)
endfunction()
