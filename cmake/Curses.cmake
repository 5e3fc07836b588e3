# Makes the target zan_curses: ncurses with wide characters.
add_library(zan_curses INTERFACE)

if(APPLE)
  # Homebrew keeps its ncurses out of the default paths.
  set(ENV{PKG_CONFIG_PATH}
      "/opt/homebrew/opt/ncurses/lib/pkgconfig:/usr/local/opt/ncurses/lib/pkgconfig:$ENV{PKG_CONFIG_PATH}")
endif()
if(PkgConfig_FOUND)
  pkg_check_modules(NCURSESW QUIET ncursesw)
endif()

# Its compile options are not taken: some select an older standard of the system's headers.
if(NCURSESW_FOUND)
  target_include_directories(zan_curses SYSTEM INTERFACE ${NCURSESW_INCLUDE_DIRS})
  target_link_libraries(zan_curses INTERFACE ${NCURSESW_LINK_LIBRARIES})
elseif(APPLE)
  target_link_libraries(zan_curses INTERFACE -lncurses) # the system's own one is wide
else()
  target_link_libraries(zan_curses INTERFACE -lncursesw)
endif()
