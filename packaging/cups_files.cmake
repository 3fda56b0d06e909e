# The printer, where CUPS looks for its parts. Its folder for programs is the same on every machine.
if(NOT TARGET rastertosorrelin)
  return()
endif()
install(TARGETS rastertosorrelin RUNTIME DESTINATION lib/cups/filter COMPONENT cups)
# CUPS runs a backend as root, so that documents can be their user's, if nobody else may run it.
install(PROGRAMS $<TARGET_FILE:sorrelin-backend>
  DESTINATION lib/cups/backend
  RENAME sorrelin
  PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE
  COMPONENT cups)
install(FILES ${CMAKE_CURRENT_LIST_DIR}/cups/sorrelin.ppd
  DESTINATION ${CMAKE_INSTALL_DATADIR}/ppd/sorrelin
  COMPONENT cups)
install(FILES ${CMAKE_CURRENT_LIST_DIR}/cups/rastertosorrelin.8
  DESTINATION ${CMAKE_INSTALL_MANDIR}/man8
  COMPONENT cups)
