"""How each editor is told, on a terminal, to do the same things."""

import dataclasses

import files
import terminal

NEEDLE, WORD, OTHER_WORD = (text.decode() for text in (files.NEEDLE, files.WORD, files.OTHER_WORD))
SAVED = "saved.txt"
SETTINGS = "dte.rc"
NEW_LINE = "a line that is new"
PAUSE = terminal.PAUSE.decode("latin-1")
PATTERN = "t.*[0-9].[!@]"  # matches nowhere


@dataclasses.dataclass(frozen=True)
class Editor:
    """Keys for each thing; None: it cannot. {line} is a number of a line, {half} half their number.

    `top` shows the first line, `end` the last one. `pages` and `typing` lead to where text is typed, `typed` back.
    """
    name: str
    command: list
    quit: str
    empty: str = "~"  # what is shown when an empty file has been opened, if anything is
    start: str = ""  # typed before anything is shown
    screen: bool = True
    synced: bool = False  # a save waits until the file is on the disk
    top: str = None
    end: str = None
    find: str = None  # each leaves the line with the needle on the screen
    find_any_case: str = None
    find_pattern: str = None
    replace: str = None
    undo: str = None
    delete_half: str = None
    insert: str = None
    save: str = None
    edit: str = None
    page: str = None
    typing: str = ""
    typed: str = ""
    list_all: str = None

    def keys(self, *names, **places):
        """The keys for these things, one after the other; None when it cannot do one of them."""
        texts = [getattr(self, name) for name in names]
        return None if None in texts else "".join(texts).format(**places).encode("latin-1")


def write_settings():
    """For dte, which opens nothing above a quarter of a gigabyte unless it is told to."""
    with open(SETTINGS, "w") as file:
        file.write("set filesize-limit 4000\n")


def vi(name, command, synced):
    return Editor(
        name, command, ":q!\r", synced=synced, top="gg", end="G", find=f"/{NEEDLE}\r",
        find_any_case=f"/\\c{NEEDLE.upper()}\r", find_pattern=f"/{PATTERN}\r",
        replace=f":%s/{WORD}/{OTHER_WORD}/g\r", undo="u", delete_half=":1,{half}d\r",
        insert=f":0put='{NEW_LINE}'\r", save=f":w! {SAVED}\r", edit=":{line}s/^/+/\r",
        page="\x06", typing="i", typed="\x1b")


def ne(command):
    return f"\x0b{command}\r"


def micro(command):
    return f"\x05{command}\r"


def table(zan):
    """All the editors, the one to be measured first: in line mode, and with its screen."""
    return [
        Editor("zan", [zan], "QUIT\r", empty="*", screen=False, synced=True, top="1\r", end="TYPE END\r",
               find=f"SET SEARCH EXACT\rFIND {NEEDLE}\r",
               find_any_case=f"SET SEARCH GENERAL\rFIND {NEEDLE.upper()}\r",
               find_pattern="SET SEARCH EXACT\rFIND t*[0-9]%[!@]\r",
               replace=f"SUBSTITUTE/{WORD}/{OTHER_WORD}/ /GLOBAL\r", undo="UNDO\r",
               delete_half="DELETE 1 THRU {half}\r", insert=f"TOP\rINSERT\r{NEW_LINE}\r\r.\r", save=f"WRITE {SAVED}\r",
               edit="{line}\rINSERT +\r", list_all="TYPE WHOLE\rQUIT\r"),
        Editor("zan, screen", [zan], "\x1bOPq", empty="[EOB]", start="CHANGE\r", synced=True,
               top="\x1bOP\x1bOu", end="\x1bOP\x1bOt", page="\x1b[6~"),
        # Asked nothing, the terminal owes vim no answer, for which it would wait at the end.
        vi("vim", ["vim", "-u", "NONE", "-i", "NONE", "-n", "-N", "--cmd", "set t_RV= t_u7= t_RF= t_RB="],
           synced=True),
        vi("nvim", ["nvim", "-u", "NONE", "-i", "NONE", "-n"], synced=False),
        Editor("nano", ["nano", "-I"], "\x18n", empty="Exit", top="\x1b\\", end="\x1b/", synced=True,
               find=f"\x17\x1bc{NEEDLE}\r", find_any_case=f"\x17\x1bc{NEEDLE.upper()}\r",
               find_pattern=f"\x17\x1bc\x1br{PATTERN}\r",
               replace=f"\x1c\x1br{WORD}\r{OTHER_WORD}\rA", undo="\x1bu", delete_half="\x1ba\x1f{half1}\r\x0b",
               insert=f"{NEW_LINE}\r", save=f"\x0f\x0b{SAVED}\ry", edit="\x1f{line}\r+", page="\x16"),
        Editor("ed", ["ed", "-s"], "Q\r", start="1p\r", screen=False, top="1p\r", end="$p\r", empty="",
               find=f"/{NEEDLE}/p\r", find_any_case=f"/{NEEDLE.upper()}/Ip\r", find_pattern=f"/{PATTERN}/\r",
               replace=f",s/{WORD}/{OTHER_WORD}/g\r", undo="u\r", delete_half="1,{half}d\r",
               insert=f"0a\r{NEW_LINE}\r.\r", save=f"w {SAVED}\r", edit="{line}s/^/+/\r", list_all=",n\rQ\r"),
        Editor("kak", ["kak", "-n"], ":quit!\r", top="gg", end="ge", find=f"/{NEEDLE}\r",
               find_any_case=f"/(?i){NEEDLE.upper()}\r", find_pattern="/t[^\\n]*[0-9].[!@]\r",
               replace=f":exec '%s{WORD}<ret>c{OTHER_WORD}<esc>'\r", undo="u",
               delete_half=":select 1.1,{half}.1\rxd", insert=f":exec 'ggO{NEW_LINE}<esc>'\r",
               save=f":write! {SAVED}\r", edit=":exec '{line}gi+<esc>'\r", page="\x06", typing="i", typed="\x1b"),
        Editor("mg", ["mg", "-n"], "\x18\x03y", empty="(fundamental)", top="\x1b<", end="\x1b>",
               find=f"\x1bxsearch-forward\r{NEEDLE}\r", find_any_case=f"\x1bxsearch-forward\r{NEEDLE}\r",
               find_pattern=f"\x1bxre-search-forward\r{PATTERN}\r",
               replace=f"\x1bxquery-replace\r{WORD}\r{OTHER_WORD}\r!", undo="\x1f",
               delete_half="\0\x1bxgoto-line\r{half1}\r\x17", insert=f"{NEW_LINE}\r", save=f"\x18\x17{SAVED}\r",
               edit="\x1bxgoto-line\r{line}\r+", page="\x16"),
        Editor("ne", ["ne", "--no-config", "--no-syntax"], ne("Quit") + "y", empty="L:", top=ne("MoveSOF"),
               end=ne("MoveEOF"), find=ne("CaseSearch 1") + ne(f"Find {NEEDLE}"),
               find_any_case=ne("CaseSearch 0") + ne(f"Find {NEEDLE.upper()}"),
               find_pattern=ne("CaseSearch 1") + ne(f"FindRegExp {PATTERN}"),
               replace=ne("CaseSearch 1") + ne(f"Find {WORD}") + ne("MoveSOF") + ne(f"ReplaceAll {OTHER_WORD}"),
               undo=ne("Undo"), delete_half=ne("Mark") + ne("GotoLine {half1}") + ne("Erase"),
               insert=ne(f"InsertString {NEW_LINE}") + ne("InsertLine"), save=ne(f"SaveAs {SAVED}"),
               edit=ne("GotoLine {line}") + "+", page="\x1b[6~"),
        # It takes text that comes together for a paste, even where commands are typed; so the commands are put on
        # keys that it has for other things.
        Editor("dte", ["dte", "-r", SETTINGS, "-H", "-c", ";".join([
                    "bind M-1 'quit -f'", f"bind M-2 \"search '{NEEDLE}'\"",
                    f"bind M-3 \"set case-sensitive-search false; search '{NEEDLE.upper()}'\"",
                    f"bind M-4 \"set case-sensitive-search true; search '{PATTERN}'\"",
                    f"bind M-5 'replace -g {WORD} {OTHER_WORD}'", "bind M-6 undo",
                    "bind M-7 'select -l; line {half}; delete'", f"bind M-8 \"insert '{NEW_LINE}\\n'\"",
                    f"bind M-9 'save {SAVED}'"])],
               "\x1b1", top="\x1bb", end="\x1be", find="\x1b2", find_any_case="\x1b3", find_pattern="\x1b4",
               replace="\x1b5", undo="\x1b6", delete_half="\x1b7", insert="\x1b8", save="\x1b9",
               edit=f"\x1bx{PAUSE}line {{line}}; insert +{PAUSE}\r{PAUSE}", page="\x1b[6~"),
        Editor("vis", ["vis"], ":q!\r", synced=True, top="gg", end="G", find=f"/{NEEDLE}\r",
               find_any_case=f":set ignorecase\r/{NEEDLE.upper()}\r", find_pattern=f":set ignorecase off\r/{PATTERN}\r",
               replace=f":,x/{WORD}/ c/{OTHER_WORD}/\r", undo="u", delete_half=":1,{half}d\r",
               insert=f":#0 i/{NEW_LINE}\\n/\r", save=f":w! {SAVED}\r", edit=":{line} i/+/\r",
               page="\x06", typing="i", typed="\x1b"),
        Editor("micro", ["micro"], "\x11n", empty="(1,1)",
               top="\x1b[1;5H", end="\x1b[1;5F", find=micro("set ignorecase false") + f"\x06{NEEDLE}\r",
               find_any_case=micro("set ignorecase true") + f"\x06{NEEDLE.upper()}\r",
               find_pattern=micro("set ignorecase false") + f"\x06{PATTERN}\r",
               replace=micro(f"replaceall {WORD} {OTHER_WORD}"), undo="\x1a",
               delete_half="\x0c{half1}\r\x1b[1;6A\x7f", insert=f"{NEW_LINE}\r", save=micro(f"save {SAVED}"),
               edit=micro("goto {line}") + "+", page="\x1b[6~"),
    ]
