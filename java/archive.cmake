# Makes the class archive of the tool in PREFIX: cmake -DPREFIX=... -P archive.cmake. The tool runs once, and the VM
# keeps the classes that it loaded in a form that is mapped rather than parsed. The archive is bound to the VM and to
# the jars by path, size and time; where they differ, or where it cannot be made, the tool starts without it.
set(archive ${PREFIX}/share/java/hba.jsa)
set(scratch ${PREFIX}/share/java/hba.jsa.flash)
file(REMOVE ${archive} ${archive}.new)
file(MAKE_DIRECTORY ${scratch})
# HBA_JAVA_OPTIONS is split at blanks, and PREFIX may hold some: the archive is named from the VM's current directory.
execute_process(
  COMMAND ${CMAKE_COMMAND} -E env --unset=HBA_JAVA --unset=HBA_LIBRARY_DIR --unset=HBA_BRIDGE
    TAVO_ADAPTER_FLASH=${scratch} HBA_JAVA_OPTIONS=-XX:ArchiveClassesAtExit=../../share/java/hba.jsa.new
    ${PREFIX}/bin/hba show 0
  RESULT_VARIABLE failed OUTPUT_QUIET ERROR_QUIET)
file(REMOVE_RECURSE ${scratch})
# Half an archive would be worse than none: it gets its name when it is whole.
if(failed OR NOT EXISTS ${archive}.new)
  file(REMOVE ${archive}.new)
  message(STATUS "hba starts without a class archive: it could not be made")
else()
  file(RENAME ${archive}.new ${archive})
endif()
