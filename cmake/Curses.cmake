# Makes the target zan_curses: ncurses with wide characters. Homebrew keeps its own out of the default paths; a Mac's
# own one is wide under the plain name.
set(kegs /opt/homebrew/opt/ncurses /usr/local/opt/ncurses)
find_path(ZAN_CURSES_INCLUDES ncurses.h HINTS ${kegs} PATH_SUFFIXES include ncursesw)
find_library(ZAN_CURSES_LIBRARY NAMES ncursesw ncurses HINTS ${kegs} PATH_SUFFIXES lib)
# The descriptions of terminals, where they are a library of their own.
find_library(ZAN_TINFO_LIBRARY NAMES tinfow tinfo)
mark_as_advanced(ZAN_CURSES_INCLUDES ZAN_CURSES_LIBRARY ZAN_TINFO_LIBRARY)
if(NOT ZAN_CURSES_INCLUDES OR NOT ZAN_CURSES_LIBRARY)
  message(FATAL_ERROR "ncurses is missing: install what programs are built with, such as libncurses-dev, "
                      "ncurses-devel, or Homebrew's ncurses")
endif()

add_library(zan_curses INTERFACE)
target_include_directories(zan_curses SYSTEM INTERFACE ${ZAN_CURSES_INCLUDES})
target_link_libraries(zan_curses INTERFACE ${ZAN_CURSES_LIBRARY})
if(ZAN_TINFO_LIBRARY)
  target_link_libraries(zan_curses INTERFACE ${ZAN_TINFO_LIBRARY})
endif()
