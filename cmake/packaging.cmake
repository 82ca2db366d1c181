# Debian packages: cmake --workflow --preset package-i386, and package-x86_64. tavoiscsi is what runs; tavoiscsi-dev is
# for applications of one's own.
set(TAVO_MAINTAINERS "Tavo iSCSI bridge maintainers <maintainers@tavo.varden.com>" CACHE STRING
  "name and address that the packages carry")
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tavoiscsi)
set(CPACK_PACKAGE_VENDOR "Tavo iSCSI bridge maintainers")
set(CPACK_PACKAGE_CONTACT ${TAVO_MAINTAINERS})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/compress_documents.cmake)

set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# What the libraries need is named by hand: for a 32-bit build on a 64-bit machine the package tools find the wrong
# packages or none.
set(needed_packages "libc6 (>= 2.36)" "libsqlite3-0 (>= 3.34)" "libpicocli-java" "libgoogle-gson-java")
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE i386)
  # The second half is for the Java runtime, which comes later and without dependencies of its own.
  list(APPEND needed_packages "libgcc-s1" "libstdc++6" "zlib1g")
  set(java_hint "
.
The 32-bit Java runtime that hba needs is fetched by hba-fetch-runtime, once,
after the package is installed.")
else()
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE amd64)
  list(APPEND needed_packages "default-jre-headless (>= 2:1.17)")
endif()
if(TARGET vdsdm_host)
  list(APPEND needed_packages "libiscsi7 (>= 1.19)")
endif()
list(JOIN needed_packages ", " CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME tavoiscsi)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION admin)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "manage iSCSI host bus adapters
The command hba shows and changes the settings of iSCSI host bus adapters.
The bridge libtavoiscsi.so brings the same operations to Java applications.
Two management libraries come along: one with adapters made of software, and
one that manages the network interfaces of this machine.${java_hint}")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME tavoiscsi-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "tavoiscsi (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "manage iSCSI host bus adapters - development files
The contract of the management library as C++ headers, for CMake and
pkg-config; documentation and sources of the Java half.")

set(scripts ${PROJECT_BINARY_DIR}/packaging)
foreach(script postinst prerm postrm)
  configure_file(${PROJECT_SOURCE_DIR}/packaging/${script}.in ${scripts}/${script} @ONLY)
endforeach()
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${scripts}/postinst ${scripts}/prerm ${scripts}/postrm)

foreach(document changelog copyright)
  configure_file(${PROJECT_SOURCE_DIR}/packaging/${document}.in ${scripts}/${document} @ONLY)
endforeach()
foreach(component runtime development)
  string(TOUPPER ${component} upper)
  install(FILES ${scripts}/changelog ${scripts}/copyright
          DESTINATION share/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME} COMPONENT ${component})
endforeach()
install(FILES ${PROJECT_SOURCE_DIR}/packaging/lintian-overrides DESTINATION share/lintian/overrides RENAME tavoiscsi)
install(FILES ${PROJECT_SOURCE_DIR}/packaging/hba-serve.service DESTINATION lib/systemd/system)
install(PROGRAMS ${PROJECT_SOURCE_DIR}/java/make_class_archive DESTINATION ${TAVO_LIBRARIES_DIR})
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  install(PROGRAMS ${PROJECT_SOURCE_DIR}/packaging/hba-fetch-runtime DESTINATION sbin)
  install(FILES ${PROJECT_SOURCE_DIR}/packaging/hba-fetch-runtime.8 DESTINATION ${CMAKE_INSTALL_MANDIR}/man8)
endif()

include(CPack)
