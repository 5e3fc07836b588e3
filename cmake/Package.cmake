# What `cmake --install` lays out, and what `cpack --preset release` packs: an archive, and a Debian and an RPM
# package where their tools are. The README's links hold among the installed documents too.
include(GNUInstallDirs)
install(FILES README.md ARCHITECTURE.md CHANGELOG.md CONTRIBUTING.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR}
        PATTERN man EXCLUDE PATTERN "*.in" EXCLUDE PATTERN tutor.txt EXCLUDE)
install(FILES docs/man/zan.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES docs/man/zan.ini.5 DESTINATION ${CMAKE_INSTALL_MANDIR}/man5)
install(FILES share/completions/zan.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME zan)
install(FILES share/completions/_zan DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
install(FILES share/completions/zan.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
# For use, not for reading: systems that leave documents out keep them.
install(DIRECTORY share/startup share/terminals DESTINATION ${CMAKE_INSTALL_DATADIR}/zan)
install(FILES docs/tutor.txt DESTINATION ${CMAKE_INSTALL_DATADIR}/zan)

if(TARGET zan AND NOT APPLE)
  target_link_options(zan PRIVATE LINKER:-z,relro,-z,now)
endif()

set(CPACK_PACKAGE_NAME zan)
set(CPACK_PACKAGE_VENDOR "ZAN")
set(CPACK_PACKAGE_CONTACT "ZAN developers <zan@example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "line and screen editor for a character terminal")
set(CPACK_PACKAGE_DESCRIPTION
"ZAN edits text in line mode with commands typed at a prompt, in screen mode
with the numeric keypad and a GOLD key, and in nokeypad mode with a compact
command language. It has named buffers, cut and paste, searches with
wildcards, undo and redo, macros, keys that the user defines, and a journal
from which an interrupted session is recovered.")
set(CPACK_PACKAGE_FILE_NAME zan-${PROJECT_VERSION}-${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR})
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/PackageLayout.cmake)
set(CPACK_GENERATOR TGZ)

find_program(DPKG_SHLIBDEPS dpkg-shlibdeps)
find_program(FILE_TYPE file)
mark_as_advanced(DPKG_SHLIBDEPS FILE_TYPE)
if(DPKG_SHLIBDEPS AND FILE_TYPE)
  list(APPEND CPACK_GENERATOR DEB)
  set(CPACK_DEBIAN_PACKAGE_SECTION editors)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
elseif(EXISTS /etc/debian_version)
  message(STATUS "For a Debian package from cpack install dpkg-dev and file")
endif()

find_program(RPMBUILD rpmbuild)
mark_as_advanced(RPMBUILD)
if(RPMBUILD)
  list(APPEND CPACK_GENERATOR RPM)
  set(CPACK_RPM_FILE_NAME RPM-DEFAULT)
  set(CPACK_RPM_PACKAGE_SUMMARY ${PROJECT_DESCRIPTION})
  set(CPACK_RPM_PACKAGE_DESCRIPTION ${CPACK_PACKAGE_DESCRIPTION})
  set(CPACK_RPM_PACKAGE_GROUP Applications/Editors)
  set(CPACK_RPM_PACKAGE_LICENSE "Copyright 2026 the ZAN developers")
  set(CPACK_RPM_SPEC_MORE_DEFINE "%define packager ${CPACK_PACKAGE_CONTACT}")
  # Directories of the system, and of other packages, are not the package's.
  set(CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION
      /usr/share/bash-completion /usr/share/bash-completion/completions /usr/share/zsh /usr/share/zsh/site-functions
      /usr/share/fish /usr/share/fish/vendor_completions.d /usr/share/man /usr/share/man/man1
      /usr/share/man/man5)
endif()
include(CPack)
