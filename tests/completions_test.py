"""Types words and a tab in each shell and looks at what `zan` would be called with.

    tests/completions_test.py bash|zsh|fish         status 77: the shell is not installed
"""

import os
import pty
import select
import shutil
import subprocess
import sys
import tempfile
import time

COMPLETIONS = os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "share", "completions")
DEADLINE = 30  # seconds

CASES = [  # typed, with a tab at the end; the arguments then
    ("-rec", ["-recover"]),
    ("--h", ["--help"]),
    ("-out", ["-output="]),
    ("-output=unu", ["-output=unusual.txt"]),
    ("-command scr", ["-command", "script.com"]),
    ("/READ_", ["/READ_ONLY"]),
    ("/rec", ["/RECOVER"]),
    ("/jour", ["/JOURNAL="]),
    ("unu", ["unusual.txt"]),
    ("-readonly unu", ["-readonly", "unusual.txt"]),
]

PRINT = "zan() { printf '<%s>' \"$@\"; echo; }; "
START = {
    "bash": (["bash", "--norc", "--noprofile", "-i"], PRINT + f"PS1=READY; . '{COMPLETIONS}/zan.bash'"),
    "zsh": (["zsh", "-f", "-i"],
            PRINT + f"fpath=('{COMPLETIONS}' $fpath); autoload -Uz compinit; compinit -u -D; PS1=READY"),
}


class Shell:
    """An interactive shell on a terminal of its own."""

    def __init__(self, command, folder):
        self.pid, self.terminal = pty.fork()
        if self.pid == 0:
            os.chdir(folder)
            os.environ.update(TERM="dumb", HOME=folder, INPUTRC="/dev/null")
            os.execvp(command[0], command)

    def type(self, text):
        os.write(self.terminal, text.encode())

    def read_until(self, mark):
        seen, end = "", time.monotonic() + DEADLINE
        while mark not in seen:
            if not select.select([self.terminal], [], [], max(0, end - time.monotonic()))[0]:
                sys.exit(f"the shell shows {seen!r}, not {mark!r}")
            seen += os.read(self.terminal, 4096).decode(errors="replace")
        return seen

    def close(self):
        os.close(self.terminal)
        os.waitpid(self.pid, 0)


def typed_in_shell(name, folder):
    command, start = START[name]
    shell = Shell(command, folder)
    # The prompt is made of two pieces, so that the echo of the line is not taken for it.
    shell.type(start.replace("READY", "REA''DY") + "\n")
    shell.read_until("READY")
    for words, expected in CASES:
        shell.type(f"zan {words}\t\n")
        wanted = "".join(f"<{word}>" for word in expected)
        shown = shell.read_until("READY")
        yield words, wanted, wanted in shown.replace("\r", ""), shown
    shell.close()


def asked_of_fish(folder):
    for words, expected in CASES:
        script = f"source '{COMPLETIONS}/zan.fish'; complete -C 'zan {words}'"
        answer = subprocess.run(["fish", "--no-config", "-c", script], cwd=folder, capture_output=True, text=True,
                                check=True, env={**os.environ, "HOME": folder}).stdout
        candidates = [line.split("\t")[0] for line in answer.splitlines()]
        nothing = expected[-1] == words.split()[-1]
        yield words, expected[-1], candidates == ([] if nothing else [expected[-1]]), answer


def main():
    name = sys.argv[1]
    if shutil.which(name) is None:
        sys.exit(77)
    failed = 0
    with tempfile.TemporaryDirectory() as folder:
        for file in ("unusual.txt", "script.com", "other.txt"):
            open(os.path.join(folder, file), "w", encoding="utf-8").close()
        for words, wanted, good, shown in asked_of_fish(folder) if name == "fish" else typed_in_shell(name, folder):
            if not good:
                failed += 1
                print(f"{name}: zan {words}<TAB> does not give {wanted} but {shown!r}")
    sys.exit(1 if failed else 0)


main()
