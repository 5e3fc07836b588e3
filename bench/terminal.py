"""A program on a pseudo-terminal: raw bytes in and out, and waiting with a deadline."""

import fcntl
import os
import pty
import select
import signal
import struct
import sys
import termios
import time


PAUSE = b"\xff"  # among keys: the program must have written something, and all of it, before the next are typed


class Timeout(Exception):
    """What was waited for did not come."""


class Terminal:
    """The far side of the terminal of a program that it starts. Ends the program, if need be, at the block's end."""

    def __init__(self, argv, environment, rows=24, columns=80):
        self.master, slave = pty.openpty()
        os.set_blocking(self.master, False)
        fcntl.ioctl(slave, termios.TIOCSWINSZ, struct.pack("HHHH", rows, columns, 0, 0))
        # Opened by the leader of a new session, the terminal is the program's controlling one. Spawning, unlike
        # forking, costs the same however much memory the caller has.
        actions = [(os.POSIX_SPAWN_OPEN, 0, os.ttyname(slave), os.O_RDWR, 0),
                   (os.POSIX_SPAWN_DUP2, 0, 1), (os.POSIX_SPAWN_DUP2, 0, 2)]
        self.started = time.perf_counter()
        self.pid = os.posix_spawnp(argv[0], argv, environment, file_actions=actions, setsid=True)
        os.close(slave)
        self.alive = True
        self.poll = select.poll()
        self.poll.register(self.master, select.POLLIN)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.alive:
            os.kill(self.pid, signal.SIGKILL)
            os.waitpid(self.pid, 0)
        os.close(self.master)

    def read(self, seconds):
        """What the program wrote, after at most `seconds` without a byte; nothing then, None when it has ended."""
        if not self.poll.poll(max(0, seconds) * 1000):
            return b""
        try:
            return os.read(self.master, 1 << 16) or None
        except BlockingIOError:
            return b""
        except OSError:  # Linux: nobody holds the other side any more
            return None

    def exchange(self, keys, awaited, seconds=20):
        """Types the keys; gives the seconds from their first byte until the awaited bytes have come (None: the end)."""
        start = time.perf_counter()
        seen, *parts = b"", *keys.split(PAUSE)
        for number, part in enumerate(parts):
            unsent, answered = memoryview(part), False
            while len(unsent) > 0 or not answered:
                if len(unsent) > 0:
                    try:
                        unsent = unsent[os.write(self.master, unsent):]
                    except BlockingIOError:
                        pass
                    self.poll.modify(self.master, select.POLLIN | (select.POLLOUT if len(unsent) > 0 else 0))
                sent = number + 1 == len(parts) and len(unsent) == 0
                if sent and awaited is not None and seen != b"" and awaited in seen:
                    return time.perf_counter() - start
                came = self.read(start + seconds - time.perf_counter())
                if came is None and awaited is None:
                    return time.perf_counter() - start
                if came is None:
                    raise Timeout("the program ended, its last words: %r" % seen[-300:])
                seen = seen[-1000:] + came
                if number + 1 < len(parts) and len(unsent) == 0:
                    self.quiet(0.002, seconds)
                    answered = True
                if time.perf_counter() - start > seconds:
                    raise Timeout("no %r within %g s, but: %r" % (awaited, seconds, seen[-300:]))

    def send(self, keys):
        """Types few keys, and waits for nothing."""
        os.write(self.master, keys)

    def quiet(self, pause, seconds=20):
        """Waits until the program has written nothing for `pause` seconds."""
        end = time.perf_counter() + seconds
        while self.read(pause):
            if time.perf_counter() > end:
                raise Timeout("never quiet")

    def end(self, keys=b"", seconds=20):
        """Types the keys and waits for the program's end; gives the seconds since its start."""
        self.exchange(keys, None, seconds)
        os.waitpid(self.pid, 0)
        self.alive = False
        return time.perf_counter() - self.started


READY = b"ready"
ECHO = """
import os, sys, tty
tty.setraw(0)
os.write(1, b"ready")
answer = sys.argv[1].encode()
while data := os.read(0, 1 << 16):
    os.write(1, answer or data)
"""


def echo(answer=""):
    """A program on a terminal that does nothing but write what it reads, or the answer to whatever it reads."""
    terminal = Terminal([sys.executable, "-c", ECHO, answer], dict(os.environ))
    terminal.exchange(b"", READY)
    return terminal


TYPED = b"z"  # stands in no file, no status line, and ends no control sequence
LAST = b"!"  # nor does this, the end of a paste, before which the other may have been typed


def key_times(terminal, count=200, seconds=20):
    """Seconds from typing a character until it is shown, the program being idle before, on lines of 50.

    Fewer than `count` when they take more than `seconds` together."""
    times = []
    for number in range(count):
        if sum(times) > seconds:
            break
        if number % 50 == 49:
            terminal.exchange(b"\r", b"")
        terminal.quiet(0.003)
        times.append(terminal.exchange(TYPED, TYPED))
    terminal.quiet(0.003)
    return times


def pasted(size):
    """Lines of text as they are typed, `size` bytes with the last character, which is another."""
    line = b"a line of the text that is pasted, about fifty\r"
    return (line * (size // len(line) + 1))[:size - 1] + LAST
