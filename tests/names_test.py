"""Proves that what the program's tables name is named in the manual, and that the manual names nothing else."""

import glob
import importlib.machinery
import importlib.util
import os
import re
import shutil
import subprocess
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


def load(script):
    loader = importlib.machinery.SourceFileLoader(script, os.path.join(ROOT, "scripts", script))
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader(script, loader))
    loader.exec_module(module)
    return module


sys.dont_write_bytecode = True
reference = load("reference")
completions = load("completions")
read = reference.read
PAGE_LINES, PAGE_COLUMNS = 66, 80

# Words of the manual in capitals that are no entry of a table: buffers, parts of commands, names of things.
PLAIN_WORDS = set("""GOLD MAIN OTHER THRU SIGHUP SIGTERM NAME FIXED VARIABLE NO FORMFEED EOB DELIM INI ON OFF AS CTRL
    A1 A3 B2 C1 C3 ASCII UTF OVR""".split())
# Read by the libraries.
LIBRARY_VARIABLES = {"LC_ALL", "LC_CTYPE", "LANG", "TZ"}


def strings(path, table):
    """All string literals of a table."""
    body = re.search(table + r" = .*?\(\{(.*?)\n\s*\}\)", read(path), re.S).group(1)
    return re.findall(r'"([^"]+)"', re.sub(r"//.*", "", body))


def first_strings(path, table):
    return [row[0] for row in reference.rows(path, table)]


SETTINGS = "command/members/settings.cpp"
SPELLINGS = "command/spellings.cpp"


def fields(table):
    """The names of a table of settings whose rows have a field."""
    body = re.search(table + r" = .*?\(\{(.*?)\n\s*\}\)", read(SETTINGS), re.S).group(1)
    return re.findall(r'\{"(\w+)",\s*&Editor::', body)


def keys_of_commands():
    return first_strings("command/members/dispatch.cpp", "auto rows")


def forms():
    return [form.strip() for table in ("kAliases", "kPrefixes") for form in first_strings(SPELLINGS, table)]


def show_words():
    """The words that stand behind SHOW."""
    keys = first_strings(SETTINGS, "kOtherSettings") + keys_of_commands() + [form.replace(" ", "-", 1) for form in forms()]
    shown = [name for table in ("kOnOffSettings", "kNumberSettings", "kChoiceSettings") for name in fields(table)]
    return {key.removeprefix("SHOW-") for key in keys if key.startswith("SHOW-")}.union(shown)


def commands():
    return [key.replace("-", " ") for key in keys_of_commands() if key != "GOTO-LINE"] + forms()


def is_setting(name):
    return name.startswith(("SET ", "SHOW "))


def settings():
    """The words that stand behind SET."""
    on_off = fields("kOnOffSettings")
    words = on_off + ["NO" + name for name in on_off] + fields("kNumberSettings") + fields("kSearchWords")
    words += [word for word in strings(SETTINGS, "kChoiceSettings") if re.fullmatch("[A-Z]+", word)]
    keys = first_strings(SETTINGS, "kOtherSettings") + keys_of_commands()
    spelt = [key.split("-")[1:] for key in keys if key.startswith("SET-")]
    spelt += [form.split()[1:] for form in first_strings(SPELLINGS, "kPrefixes") if form.startswith("SET ")]
    return set(sum(spelt, words)) - {"DELIM"}


def followers():
    """What stands behind a word that is no command by itself."""
    words = [form.split() for form in commands()]
    of = {first: {form[1] for form in words if form[0] == first and len(form) > 1} for first in ("DEL", "UND", "DEFINE")}
    spelt = {form[1] for form in words if form[0] == "SET" and len(form) > 1}
    topics = {*first_strings("command/help_text.cpp", "kTopics"), "VERSION"}
    return {**of, "SET": settings() | spelt, "SHOW": show_words(), "HELP": topics}


def keys():
    """The keys of the keyboard's table, by what stands on them."""
    return set(re.findall(r"^\| (.+?) \|", reference.key_table(), re.M)) - {"Key"}


def control_keys():
    return set(re.findall(r"Ctrl/[A-Z]", " ".join(keys())))


def keypad_keys():
    """Those that a keypad has, by what the card calls them."""
    return {name.split(",")[0] if name.startswith("PF") else name.removeprefix("Keypad ")
            for name in keys() if name.startswith(("PF", "Keypad "))}


def variables():
    found = set()
    for folder in ("app", "command", "files", "host", "screen", "search", "text"):
        for path in glob.glob(f"{folder}/**/*.*", root_dir=ROOT, recursive=True):
            text = read(path)
            found |= set(re.findall(r'(?:getenv|environment_turns_on)\("(\w+)"\)', text))
            found |= set(re.findall(r'size_or_environment\([^"]*"(\w+)"\)', text))
    return found


def qualifiers():
    return set(re.findall(r'\{"(\w+)", &Qualifiers::', read("command/qualifiers.cpp")))


def range_words():
    return set(re.findall(r'word == "(\w+)"', read("command/line_range.cpp")))


def other_words():
    return set(first_strings("command/help_text.cpp", "kTopics") + strings("screen/members/nokeypad.cpp", "kWords")
               + strings("screen/members/key_definitions.cpp", "kKeyNames"))


def names(text):
    """The words of a text in capitals."""
    return set(re.findall(r"(?<![\w;])[A-Z][A-Z0-9]+(?![a-z_])\b", text))


def macro_arguments(page, macro):
    """The words that a manual page marks so."""
    found = set()
    for line in re.findall(r"^\.(.*)", page, re.M):
        taken = False
        for word in line.split():
            if re.fullmatch("[A-Z][a-z]", word):
                taken = word == macro
            elif taken and re.search(r"\w|\?", word):
                found.add(word)
    return found


problems = []


def complain(where, what, found):
    if found:
        problems.append(f"{where} {what}: {', '.join(sorted(found))}")


def check_names(where, text, known):
    """What every document's names are held against."""
    complain(where, "names the unknown", names(text) - known)
    complain(where, "names unknown keys", set(re.findall(r"Ctrl/[A-Z]", text)) - control_keys())
    complain(where, "names unknown qualifiers", set(re.findall(r"(?<!Ctrl)/([A-Z]+)\b(?!\.INI)", text)) - qualifiers())
    complain(where, "names unknown variables", set(re.findall(r"\b[A-Z]+(?:_[A-Z]+)+\b", text)) - variables())
    for word, allowed in followers().items():
        found = set(re.findall(rf"\b{word} (?:Cm )?([A-Z]+)\b", text))
        complain(where, f"names the unknown behind {word}", found - allowed)


def check_options(where, text):
    """Of a Markdown text, in which they are quoted or stand in an indented line."""
    options = {spelling for spelling, _ in completions.options()}
    words = " ".join(re.findall(r"`[^`\n]*`|^ {4}.*", text, re.M)).replace("`", " ").split()
    found = {word.split("=")[0] + "=" * ("=" in word) for word in words if re.fullmatch(r"--?[a-z]\w*(=.*)?", word)}
    complain(where, "names unknown options", found - options)


def check_reference(manual, known):
    prose = re.sub(r"^```.*?^```", "", manual, flags=re.M | re.S)
    said = re.sub(r"\s+", " ", manual)
    phrases = {name for name in commands() if not is_setting(name)} | {f"/{name}" for name in qualifiers()}
    phrases |= range_words() | other_words()
    part = re.search(r"^## Settings$(.*?)^## ", prose, re.M | re.S).group(1)
    shown = show_words() - {"BUFFERS", "FILE", "KEYS", "MACROS"}
    complain("docs/reference.md", "leaves out",
             {name for name in phrases if not re.search(r"(?<![A-Za-z])" + re.escape(name) + r"(?![A-Z])", said)}
             | {name for name in settings() if not re.search(rf"\b(NO)?{name.removeprefix('NO')}\b", part)}
             | {f"SHOW {name}" for name in shown if name not in names(prose)})
    check_names("docs/reference.md", prose, known | variables())
    check_options("docs/reference.md", prose)
    table = re.search(r"^## Keys of the screen$(.*?)^## ", prose, re.M | re.S).group(1)
    listed = set(re.findall(r"^\| ([^-|].*?) \|", table, re.M)) - {"Key"}
    complain("docs/reference.md", "leaves out keys", keys() - listed)
    complain("docs/reference.md", "names unknown keys", listed - keys())


def check_card(card, known):
    check_names("docs/reference-card.md", card, known | variables())
    check_options("docs/reference-card.md", card)
    pad = re.search(r"^\| The keypad.*?\n\n", card, re.M | re.S).group(0)
    listed = set(re.findall(r"\| (PF\d|Enter|[-\d,.]) ", pad))
    complain("docs/reference-card.md", "has another keypad", listed ^ keypad_keys())
    complain("docs/reference-card.md", "leaves out keys",
             control_keys() - set(re.findall(r"Ctrl/[A-Z]", card)) - {"Ctrl/I", "Ctrl/M"})
    if card.count("\n") > PAGE_LINES or max(map(len, card.splitlines())) > PAGE_COLUMNS:
        problems.append("docs/reference-card.md does not fit on a page")


def check_program_page(page, known):
    options = {spelling for spelling, _ in completions.options()}

    def named_in(text):
        return {"-" + name for name in macro_arguments(text, "Fl")} | {
            name for name in macro_arguments(text, "Cm") if name.startswith("/")}

    explained = "\n".join(re.findall(r"^\.It .*", page, re.M)).replace(".It ", ".")
    complain("zan.1", "leaves out options", options - named_in(explained))
    complain("zan.1", "names unknown options", named_in(page) - options)
    complain("zan.1", "leaves out variables", variables() - macro_arguments(explained, "Ev"))
    complain("zan.1", "names unknown variables", macro_arguments(page, "Ev") - variables() - LIBRARY_VARIABLES)
    complain("zan.1", "has other exit statuses", set(re.findall(r"^\.It (\d)$", page, re.M)) ^ {"0", "1", "2"})
    complain("zan.1", "names the unknown", macro_arguments(page, "Ic") - known)
    complain("zan.1", "names unknown keys", set(re.findall(r"Ctrl/[A-Z]", page)) - control_keys())


def check_startup_page(page, known):
    text = re.sub(r"^\.(Dt|Os|Sh|Nm|Xr|Ev|Pa|Dd).*", "", page, flags=re.M)
    complain("zan.ini.5", "leaves out settings", settings() - names(text))
    spans = re.findall(r"^\.Cm PF(\d)\nto\n\.Cm PF(\d) ,", page, re.M)
    listed = {f"PF{number}" for first, last in spans for number in range(int(first), int(last) + 1)}
    complain("zan.ini.5", "has other keys", listed
             ^ {name for name in strings("screen/members/key_definitions.cpp", "kKeyNames") if name.startswith("PF")})
    check_names("zan.ini.5", text, known | variables())


def check_versions():
    numbers = re.findall(r"k(?:Major|Minor|Build) = (\d+);", read("app/version.cpp"))
    date = re.search(r'kReleaseDate = "(.*)"', read("app/version.cpp")).group(1)
    if f"## {'.'.join(numbers)} ({date})" not in read("CHANGELOG.md"):
        problems.append("CHANGELOG.md has no entry for the version and date of app/version.cpp")


def check_pages():
    if shutil.which("mandoc") is None:
        return
    pages = [os.path.join(ROOT, "docs", "man", name) for name in ("zan.1", "zan.ini.5")]
    lint = subprocess.run(["mandoc", "-T", "lint", *pages], capture_output=True, text=True, check=False)
    # They refer to each other, and need not be installed.
    remarks = {line for line in (lint.stdout + lint.stderr).splitlines() if "Xr zan" not in line}
    complain("mandoc", "says", remarks)


def main():
    words = [*show_words(), *commands(), *settings(), *qualifiers(), *range_words(), *other_words()]
    known = set(re.findall(r"\w+", " ".join(words))) | PLAIN_WORDS
    manual, card = read("docs/reference.md"), read("docs/reference-card.md")
    check_reference(manual, known)
    check_card(card, known)
    check_program_page(read("docs/man/zan.1"), known)
    check_startup_page(read("docs/man/zan.ini.5"), known)
    check_pages()
    check_versions()
    sys.exit("\n".join(problems) if problems else 0)


main()
