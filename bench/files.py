"""The files that are edited, and what they must be after a change."""

import os
import random
import re

HEAD = b"EADLINE"  # what only the first and the last line show; no column of theirs is alike, so that a screen
TAIL = b"AILMARK"  # that writes only what changes writes all of it
SCREENFUL = b"SCREENFUL"  # in the fifteenth line: when it is shown, so is the screen
NEEDLE = b"needle at the end"
WORD, OTHER_WORD = b"value", b"number"
UNITS = {"": 1, "K": 10**3, "M": 10**6, "G": 10**9}


def size_in_bytes(text):
    match = re.fullmatch(r"([0-9]+(?:\.[0-9]+)?)([KMG]?)B?", text.upper())
    if not match:
        raise ValueError("not a size: " + text)
    return int(float(match[1]) * UNITS[match[2]])


def size_name(size):
    unit = next((unit for unit in "GMK" if size >= UNITS[unit]), "")
    return "%g %sB" % (size / UNITS[unit], unit)


def source_lines(count):
    """Lines as of a program, about 50 bytes each, without capitals, a z, an exclamation mark or an at sign."""
    words = "value count index buffer length first second result offset entry table field left right".split()
    shapes = ["    {0} = {1}({2}, {3}) + {n};", "        if ({0}[{1}] > {2}.{3}) return {n};", "    }}",
              "static int {0}_{1}(const int* {2}, int {3}) {{", "        {0} += {1} * {n};  // {2} of the {3} of {2}",
              "    for (int {0} = {n}; {0} < {1}; ++{0}) {2}->{3} = {1};", "        call_{0}({1}, {2}, {3}, {n}, {0});"]
    choice = random.Random(1)
    for number in range(count):
        yield choice.choice(shapes).format(*choice.choices(words, k=4), n=number)


def make_text(path, size):
    """A file of `size` bytes of such lines; gives the number of its lines. A size of 0 is an empty file."""
    with open(path, "wb") as file:
        if size == 0:
            return 0
        block = "".join(line + "\n" for line in source_lines(20000)).encode()
        head = b"H" + HEAD + b" of the " + WORD + b"\n" + b"    filler\n" * 13 + SCREENFUL + b"\n"
        tail = b"\nT" + TAIL + b" after the " + NEEDLE + b"\n"
        left, lines = size - len(head) - len(tail), 17
        file.write(head)
        while left > 0:
            part = block[:left]
            lines += part.count(b"\n")
            left -= file.write(part)
        file.write(tail)
        return lines


def make_long_line(path, size):
    """One line of `size` bytes."""
    with open(path, "wb") as file:
        file.write((b"one line that goes on and on, " * (size // 30 + 1))[:size - 1] + b"\n")


def make_short_lines(path, count):
    """Lines of one byte, but for the first; gives the size."""
    with open(path, "wb") as file:
        return file.write(HEAD + b"\n" + b"a\n" * (count - 1))


def holds(path, data):
    if not os.path.exists(path) or os.path.getsize(path) != len(data):
        return False
    with open(path, "rb") as file:
        return file.read() == data
