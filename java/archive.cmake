# Makes the class archive of the tool in PREFIX: cmake -DPREFIX=... -P archive.cmake. The tool runs once, and the VM
# keeps the classes that it loaded in a form that is mapped rather than parsed. The archive is bound to the VM and to
# the jars by path, size and time; where they differ, or where it cannot be made, the tool starts without it. A damaged
# archive would crash the VM: it is tried before it gets its name, and the launcher compares size and checksum.
set(archive ${PREFIX}/share/java/hba.jsa)
set(scratch ${PREFIX}/share/java/hba.jsa.flash)
file(REMOVE ${archive} ${archive}.sum ${archive}.new)
file(MAKE_DIRECTORY ${scratch})

function(run_tool result option)
  # HBA_JAVA_OPTIONS is split at blanks, and PREFIX may hold some: the archive is named from the VM's current directory.
  execute_process(
    COMMAND ${CMAKE_COMMAND} -E env --unset=HBA_JAVA --unset=HBA_LIBRARY_DIR --unset=HBA_BRIDGE
      TAVO_ADAPTER_FLASH=${scratch} "HBA_JAVA_OPTIONS=${option}=../../share/java/hba.jsa.new"
      ${PREFIX}/bin/hba show 0
    RESULT_VARIABLE status OUTPUT_QUIET ERROR_QUIET)
  set(${result} ${status} PARENT_SCOPE)
endfunction()

run_tool(made -XX:ArchiveClassesAtExit)
run_tool(tried "-Xshare:on -XX:SharedArchiveFile")
file(REMOVE_RECURSE ${scratch})
if(made EQUAL 0 AND tried EQUAL 0 AND EXISTS ${archive}.new)
  execute_process(COMMAND cksum INPUT_FILE ${archive}.new OUTPUT_FILE ${archive}.sum COMMAND_ERROR_IS_FATAL ANY)
  file(RENAME ${archive}.new ${archive})
else()
  file(REMOVE ${archive}.new)
  message(STATUS "hba starts without a class archive: it could not be made")
endif()
