#!/usr/bin/env python3
"""The startup files that are installed: no command of them is refused, and laptop.ini's letters are the keypad.

    tests/startup/startup_test.py ZAN
"""

import glob
import os
import pty
import re
import select
import subprocess
import sys
import tempfile
import time

SAMPLES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "share", "startup")
PATIENCE = 60  # seconds
TEXT = "".join(f"alpha beta, Gamma {number}\n" for number in range(1, 41))


def read_text(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


KEYS = {"GOLD": "\033OP", "PF3": "\033OR", "RIGHT": "\033OC", "KPENTER": "\033OM",
        **{f"KP{name}": f"\033O{code}" for name, code in zip("0123456789-,.", "pqrstuvwxymln")}}


def typed(keys):
    """The bytes of keys by their names."""
    return re.sub(r"\{(.+?)\}", lambda key: KEYS[key.group(1)], keys).replace("\\r", "\r").encode()


def read_letters():
    """Letter after GOLD, the pad's keys, keys before both."""
    rows = read_text(os.path.join(os.path.dirname(os.path.abspath(__file__)), "letters.table")).splitlines()
    fields = [[field.strip() for field in row.split("|")] for row in rows if not row.startswith("#")]
    return [(letter, typed(pad), typed(before)) for letter, pad, before in fields]


LETTERS = read_letters()
GOLD = typed("{GOLD}")
# What the keys have done is read off the text: marks at the cursor and a step on, and what is selected or was cut.
AFTER = typed("@{KP1}<{KP6}>{GOLD}{KP6}")


def run(zan, folder, *arguments, commands=""):
    environment = {"TERM": "xterm", "HOME": folder, "ZAN_INI": "", "PATH": "/usr/bin:/bin"}
    return subprocess.run([zan, *arguments], cwd=folder, input=commands, capture_output=True, text=True,
                          timeout=PATIENCE, env=environment, check=True)


def edited(zan, keys):
    """The text after the keys on the screen, with laptop.ini."""
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "text.txt")
        with open(path, "w", encoding="utf-8") as file:
            file.write(TEXT)
        child, master = pty.fork()
        if child == 0:
            os.execve(zan, [zan, path], {"TERM": "xterm", "HOME": folder,
                                         "ZAN_INI": os.path.join(SAMPLES, "laptop.ini")})
        # What is waited for, and what is typed then.
        steps = [(b"\n*", b"CHANGE\r"), (b"EDIT[", keys + b"\032"), (b"\033>*", b"EXIT\r"), (b" lines", b"")]
        for sight, then in steps:
            seen, until = b"", time.monotonic() + PATIENCE
            while sight not in seen:
                if not select.select([master], [], [], max(0, until - time.monotonic()))[0]:
                    sys.exit(f"{keys!r}: no {sight!r} after {seen!r}")
                seen += os.read(master, 65536)
            os.write(master, then)
        os.waitpid(child, 0)
        os.close(master)
        return read_text(path)


def check_no_refusal(zan, sample):
    with tempfile.TemporaryDirectory() as folder:
        with open(os.path.join(folder, "text.txt"), "w", encoding="utf-8") as file:
            file.write("\tteh end\n")
        done = run(zan, folder, "text.txt", "-command", sample, commands="QUIT\n")
        if done.stderr or re.search(r"^\**\?", done.stdout, re.M):
            sys.exit(f"{sample} is refused: {done.stderr}{done.stdout}")
        if sample.endswith("tidy.zan") and read_text(os.path.join(folder, "text.txt")) != "    the end\n":
            sys.exit("tidy.zan did not tidy")


def check_all_have_letters():
    """Every function of the keyboard's table that a command can do has a letter."""
    others = [typed(keys) for keys in ("{KPENTER}", "{GOLD}{KP0}", "{GOLD}{KP3}", "{GOLD}{KP7}")]
    names = {"Minus": "-", "Comma": ",", "Period": ".", "Enter": "ENTER"}
    rows = re.findall(r"\{zan::kKp(\w+), ", read_text(os.path.join(SAMPLES, "..", "..", "screen", "members", "keyboard.cpp")))
    pad = [typed(f"{{KP{names.get(name, name)}}}") for name in rows]
    covered = [keys for _, keys, _ in LETTERS] + others
    if sorted(covered) != sorted(pad + [GOLD + key for key in pad]):
        sys.exit("the letters are not the keypad's functions")


def check_letters(zan):
    defined = re.findall(r"^DEFINE KEY GOLD (\w) AS", read_text(os.path.join(SAMPLES, "laptop.ini")), re.M)
    if sorted(defined) != sorted(letter for letter, _, _ in LETTERS):
        sys.exit(f"laptop.ini defines {defined}, which are not the letters that this test knows")
    untouched = {}
    for letter, pad, before in LETTERS:
        by_pad = edited(zan, before + pad + AFTER)
        by_letter = edited(zan, before + GOLD + letter.lower().encode() + AFTER)
        if by_pad != by_letter:
            sys.exit(f"GOLD {letter} is not the keypad's function:\n{by_letter}instead of\n{by_pad}")
        if before not in untouched:
            untouched[before] = edited(zan, before + AFTER)
        if by_pad == untouched[before]:
            sys.exit(f"the row of GOLD {letter} would not see that the key does nothing")


def main():
    zan = os.path.abspath(sys.argv[1])
    samples = sorted(glob.glob(os.path.join(SAMPLES, "*.*")))
    if len(samples) < 6:
        sys.exit("samples are missing in " + SAMPLES)
    for sample in samples:
        check_no_refusal(zan, sample)
    check_all_have_letters()
    check_letters(zan)


main()
