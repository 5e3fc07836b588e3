#!/usr/bin/env python3
"""Every include points down: a room's core includes its own room and those below it; app/ and members/ all of them."""
import pathlib
import re

ROOT = pathlib.Path(__file__).parent.parent
ROOMS = ["host", "text", "search", "files", "recovery", "command", "screen"]  # lower ones first
wrong = []
for path in sorted(p for room in ROOMS for p in (ROOT / room).rglob("*.*")):
    room, *inner = path.relative_to(ROOT).parts
    for kind, header in re.findall(r'^#include ([<"])([^>"]+)', path.read_text(), re.M):
        down = "members" in inner or ("members" not in header and header.split("/")[0] in ROOMS[: ROOMS.index(room) + 1])
        if (kind == '"' and not down) or (kind == "<" and "curses" in header and path.name != "curses.h"):
            wrong.append(f"{path.relative_to(ROOT)} includes {header}")
print("\n".join(wrong))
raise SystemExit(bool(wrong))
