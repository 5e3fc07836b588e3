# Run by CPack on each package's files before it packs them: modes, man pages, and what Debian wants to be otherwise
# in its own.

# Directories are made as the umask of the one who packs says.
file(CHMOD_RECURSE ${CPACK_TEMPORARY_DIRECTORY} DIRECTORY_PERMISSIONS
     OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
if(NOT CPACK_GENERATOR MATCHES "^(DEB|RPM)$")
  return()
endif()
set(usr ${CPACK_TEMPORARY_DIRECTORY}/usr)
file(GLOB pages ${usr}/share/man/*/*)
execute_process(COMMAND gzip -9n ${pages} COMMAND_ERROR_IS_FATAL ANY)
if(NOT CPACK_GENERATOR STREQUAL "DEB")
  return()
endif()
set(docs ${usr}/share/doc/zan)

# Debian's zsh looks there.
file(RENAME ${usr}/share/zsh/site-functions ${usr}/share/zsh/vendor-completions)

file(STRINGS ${CMAKE_CURRENT_LIST_DIR}/../CHANGELOG.md changes)
set(entries "")
foreach(line IN LISTS changes)
  if(line MATCHES "^## ([0-9.]+) \\((.+)\\)")
    set(version ${CMAKE_MATCH_1})
    execute_process(COMMAND date -u -R -d ${CMAKE_MATCH_2} OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE)
    string(APPEND entries "${trailer}zan (${version}) unstable; urgency=medium\n\n")
    set(trailer "\n -- ${CPACK_PACKAGE_CONTACT}  ${date}\n\n")
  elseif(line MATCHES "^- (.*)")
    string(APPEND entries "  * ${CMAKE_MATCH_1}\n")
  elseif(line MATCHES "^  (.*)")
    string(APPEND entries "    ${CMAKE_MATCH_1}\n")
  endif()
endforeach()
file(WRITE ${docs}/changelog "${entries}${trailer}")
file(WRITE ${docs}/copyright "ZAN, a line and screen editor for a character terminal.\n\nCopyright 2026 the ZAN developers\n")
file(CHMOD ${docs}/changelog ${docs}/copyright PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
execute_process(COMMAND gzip -9n ${docs}/changelog COMMAND_ERROR_IS_FATAL ANY)
