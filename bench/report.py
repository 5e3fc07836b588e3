"""The figures of a race, what they must be, and the page that shows them."""

import dataclasses
import statistics
from typing import Callable

MB = 10**6
EMPTY = "an empty file"
SCREEN = "zan, screen"


class Results:
    """The figures by file, program and row; in the place of some, why there is none."""

    def __init__(self):
        self.figures, self.marks, self.closed = {}, {}, set()

    def add(self, file, program, row, figure):
        self.figures.setdefault((file, program, row), []).append(figure)

    def mark(self, file, program, row, why):
        self.marks.setdefault((file, program, row), why)

    def close(self, file, program, row):
        """No further figures are wanted."""
        self.closed.add((file, program, row))

    def marked(self, file, program, row):
        return (file, program, row) in self.marks

    def settled(self, file, program, row):
        return self.marked(file, program, row) or (file, program, row) in self.closed

    def first(self, file, program, row):
        return len(self.figures.get((file, program, row), [])) == 1

    def get(self, file, program, row):
        """The median; None when there is none."""
        figures = self.figures.get((file, program, row))
        return None if figures is None or (file, program, row) in self.marks else statistics.median(figures)

    def why(self, file, program, row):
        return self.marks.get((file, program, row), "—")


@dataclasses.dataclass(frozen=True)
class View:
    """What is known of one file."""
    results: Results
    file: object
    peers: list

    def of(self, program, row):
        return self.results.get(self.file.name, program, row)

    def limit(self, row):
        return self.of("limit", row)

    def key_in_empty(self):
        return self.results.get(EMPTY, SCREEN, "key")

    def best(self, row, peers=None):
        """The least figure of the peers; None when none has one."""
        known = [self.of(peer, row) for peer in peers or [peer.name for peer in self.peers]]
        return min((figure for figure in known if figure is not None), default=None)


@dataclasses.dataclass(frozen=True)
class Row:
    name: str
    title: str
    target: str
    bound: Callable  # of the view: at most so much, or None where that cannot be known
    zan: str = "zan"  # how it is run
    bytes: bool = False
    linear: bool = False  # grows with the file
    saves: bool = False
    rivals: Callable = lambda peer: True  # before whom it must be


def times_limit(factor, row):
    return lambda view: view.limit(row) and factor * view.limit(row)


def ahead(*peers):
    return lambda view: view.best(*peers)


def ahead_of_screens(row):
    return lambda view: view.best(row, [peer.name for peer in view.peers if peer.screen])


def not_vis(peer):
    return peer.name != "vis"  # it maps the file and reads nothing


EMPTY_ROWS = [
    Row("start", "start and quit, line mode", "ahead of every peer with a screen", ahead_of_screens("start"),
        rivals=lambda peer: peer.screen),
    Row("start", "start and quit, with the screen", "ahead of every peer with a screen", ahead_of_screens("start"),
        zan=SCREEN, rivals=lambda peer: peer.screen),
    Row("key", "a typed character, median of 200", "1.1 × limit", times_limit(1.1, "key"), zan=SCREEN),
    Row("worst key", "a typed character, worst of 200", "1 × limit", times_limit(1, "worst key"), zan=SCREEN),
]
ROWS = [
    Row("load", "load and quit", "1.3 × limit", times_limit(1.3, "load"), linear=True, rivals=not_vis),
    Row("first screen", "first screen", "1.3 × limit", times_limit(1.3, "load"), zan=SCREEN, linear=True,
        rivals=not_vis),
    Row("memory", "memory, peak", "1.15 n + 10 MB", lambda view: 1.15 * view.file.size + 10 * MB, bytes=True,
        linear=True),
    Row("save", "load and save", "1.3 × limit", times_limit(1.3, "save"), linear=True, saves=True),
    Row("insert", "a line inserted at the top, saved", "1.05 × load and save",
        lambda view: view.of("zan", "save") and 1.05 * view.of("zan", "save"), linear=True, saves=True),
    Row("find", "find a string at the end, net", "1.5 × limit", times_limit(1.5, "find"), linear=True),
    Row("any case", "the same ignoring case, net", "1 × limit", times_limit(1, "any case"), linear=True),
    Row("pattern", "a pattern that matches nowhere, net", "1.2 × limit", times_limit(1.2, "pattern"), linear=True),
    Row("replace", "replace a common word, saved", "1.3 × limit", times_limit(1.3, "replace"), linear=True,
        saves=True),
    Row("undo", "undo of that, net", "10 ms", lambda view: 0.010, linear=True),
    Row("delete", "delete half of the lines, net", "ahead of dte", ahead("delete", ["dte"]), linear=True),
    Row("list", "all lines to a pipe", "1.5 × limit", times_limit(1.5, "list"), linear=True),
    Row("key", "a typed character, median of 200", "1.1 × limit", times_limit(1.1, "key"), zan=SCREEN),
    Row("key", "the same, against an empty file", "1.2 × there",
        lambda view: view.key_in_empty() and 1.2 * view.key_in_empty(), zan=SCREEN),
    Row("worst key", "a typed character, worst of 200", "1 × limit", times_limit(1, "worst key"), zan=SCREEN),
    Row("end", "go to the last line", "1 × limit", times_limit(1, "end"), zan=SCREEN),
    Row("pages", "200 pages down, keys waiting", "1 × mg", ahead("pages", ["mg"]), zan=SCREEN),
    Row("burst", "10,000 characters at once", "ahead of nvim", ahead("burst", ["nvim"]), zan=SCREEN,
        rivals=lambda peer: peer.name != "dte"),  # it takes them for one paste and one step of undo
    Row("edits", "memory for 100 edits far apart", "8 MB", lambda view: 8 * MB, bytes=True),
]
LONG_ROWS = [Row("key", "a typed character, median", "2 × in an empty file",
                 lambda view: view.key_in_empty() and 2 * view.key_in_empty(), zan=SCREEN)]
SHORT_ROWS = [
    Row("load", "load and quit", "1.3 × limit", times_limit(1.3, "load"), rivals=not_vis),
    Row("memory", "memory, peak", "n + 8 bytes a line",
        lambda view: view.file.size + 8 * view.file.lines, bytes=True),
]
LINEAR = {row.name for row in ROWS if row.linear}

UNITS = {False: [(1, " s"), (1e-3, " ms"), (1e-6, " µs")], True: [(1e9, " GB"), (1e6, " MB"), (1e3, " KB")]}


def shown(figure, is_bytes):
    if figure is None:
        return "—"
    scale, unit = next((one for one in UNITS[is_bytes] if figure >= one[0]), UNITS[is_bytes][-1])
    return (f"{figure / scale:,.0f}" if figure >= 100 * scale else f"{figure / scale:.3g}") + unit


def verdict(row, view):
    """Whether the figure is within its bound and, of time, the first; and who or what was better."""
    figure, bound = view.of(row.zan, row.name), row.bound(view)
    if figure is None:
        return "—"
    failures = []
    if bound is None:
        failures.append("?")
    elif figure > bound:
        failures.append(f"**no**, {figure / bound:.2f} × what it may")
    if not row.bytes:
        faster = [peer.name for peer in view.peers if row.rivals(peer)
                  and (view.of(peer.name, row.name) or figure) < figure]
        if faster:
            failures.append("behind " + ", ".join(faster))
    return "; ".join(failures) or "yes"


def table(rows, view):
    names = [peer.name for peer in view.peers]
    yield "| | limit | target | at most | zan | zan : limit | reached | " + " | ".join(names) + " |"
    yield "|---|" + "--:|---|--:|--:|--:|---|" + "--:|" * len(names)
    for row in rows:
        figure, limit, bound = view.of(row.zan, row.name), view.limit(row.name), row.bound(view)
        if row.name == "first screen":
            limit = view.limit("load")
        if row.name == "insert":
            limit = view.limit("save")
        cells = [row.title, shown(limit, row.bytes), row.target, shown(bound, row.bytes), shown(figure, row.bytes),
                 f"{figure / limit:.2f}" if figure and limit else "—", verdict(row, view)]
        for peer in view.peers:
            known = view.of(peer.name, row.name)
            cells.append(view.results.why(view.file.name, peer.name, row.name) if known is None
                         else shown(known, row.bytes) + ("°" if row.saves and not peer.synced else ""))
        yield "| " + " | ".join(cells) + " |"


def side_by_side(views):
    yield "| zan | " + " | ".join(view.file.name for view in views) + " |"
    yield "|---|" + "--:|" * len(views)
    for row in ROWS:
        yield "| " + " | ".join([row.title] + [shown(view.of(row.zan, row.name), row.bytes) for view in views]) + " |"


INTRODUCTION = """# How fast it is

`bench/compare` has written this page: {machine}. Run it again, on an otherwise idle machine, with

    cmake --preset release && cmake --build --preset release && bench/compare

and `bench/keys` for the time of a key and of a paste alone.

Every editor ran in the same call on the same files, without a configuration of its own (except that dte may open large
files), on a pseudo-terminal of 24 by 80, driven by the keys that a user would type. The text looks like lines of a
program, of about 50 bytes each.
Figures are medians of {rounds} runs for the files of one size after the other. An editor that took more than 2 s for an
operation did it once. On files of 500 MB and more only the two editors ran that were the fastest in that row before.
*Net* is the time of that one operation, in a process that has loaded the file, until the screen shows the result. Any
other time is that of the whole process, start and load included. The first file that an editor saved in each row was
compared, byte for byte, with the right result.

The *limit* is what the machine needs for the same bytes: a process that does nothing; reading the file into fresh
memory and finding the line feeds; that and one write that waits for the disk; `grep` and `cat -n`; a program that only
echoes what it reads from the terminal. The column *reached* says whether zan is within its target and faster than all
others. Two are not compared: in loading vis, which maps the file and reads nothing; in typing dte, which takes
characters that come together for one paste and undoes them in one step.

° does not wait until the file is on the disk, as zan and the limit do. — cannot do it, or does something else.
*wrong*: saved a wrong result (after one undo: did not take back everything). *> 20 s*: took longer, or would have by
its time on the smaller file.

{versions}
"""


def page(sections, machine, versions):
    """Lines of the page from pairs of rows and what is known of a file."""
    texts = [view for rows, view in sections if rows is ROWS]
    yield INTRODUCTION.format(machine=machine, versions=", ".join(versions),
                              rounds=", ".join(str(view.file.rounds) for view in texts))
    yield "## One size beside the other\n"
    yield from side_by_side(texts)
    for rows, view in sections:
        yield f"\n## {view.file.name}\n"
        yield from table(rows, view)
