# Run by CPack before it packs: Debian keeps manual pages and changelogs compressed, without a name or time inside.
file(GLOB_RECURSE documents ${CPACK_TEMPORARY_DIRECTORY}/*)
list(FILTER documents INCLUDE REGEX "/share/man/.*[.][1-9]$|/share/doc/[^/]*/changelog$")
execute_process(COMMAND gzip -9 -n ${documents} COMMAND_ERROR_IS_FATAL ANY)
