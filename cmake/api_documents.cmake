# Jars for those who write applications: the API's documentation, and its sources.
set(documentation ${CMAKE_CURRENT_BINARY_DIR}/api-documentation)
set(api ${PROJECT_SOURCE_DIR}/java/api)
file(GLOB_RECURSE api_files CONFIGURE_DEPENDS ${api}/*.java)
add_custom_command(
  OUTPUT ${TAVO_JAR_DIR}/tavoiscsi-javadoc.jar ${TAVO_JAR_DIR}/tavoiscsi-sources.jar
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${documentation}
  COMMAND ${Java_JAVADOC_EXECUTABLE} -quiet --release 17 -encoding UTF-8 -notimestamp -Werror
    -Xdoclint:all,-missing -windowtitle "Tavo iSCSI bridge ${PROJECT_VERSION}" -d ${documentation} ${api_files}
  COMMAND ${Java_JAR_EXECUTABLE} --create --file ${TAVO_JAR_DIR}/tavoiscsi-javadoc.jar -C ${documentation} .
  COMMAND ${Java_JAR_EXECUTABLE} --create --file ${TAVO_JAR_DIR}/tavoiscsi-sources.jar -C ${api} .
  DEPENDS ${api_files}
  VERBATIM)
add_custom_target(api_documents ALL DEPENDS ${TAVO_JAR_DIR}/tavoiscsi-javadoc.jar
  ${TAVO_JAR_DIR}/tavoiscsi-sources.jar)
install(FILES ${TAVO_JAR_DIR}/tavoiscsi-javadoc.jar ${TAVO_JAR_DIR}/tavoiscsi-sources.jar
        DESTINATION ${CMAKE_INSTALL_DATADIR}/java COMPONENT development)
