"""Proves that what the program's tables name is named in the manual, and that the manual names nothing else."""

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
PAGE_LINES = 66

# Words of the manual in capitals that are no entry of a table: buffers, parts of commands, names of things.
PLAIN_WORDS = set("""GOLD MAIN OTHER THRU SIGHUP SIGTERM NAME FIXED VARIABLE NO FORMFEED EOB DELIM INI ON OFF AS CTRL A1 A3 B2 C1
    C3""".split())
# Read by the libraries.
LIBRARY_VARIABLES = {"LC_ALL", "LC_CTYPE", "LANG", "TZ"}


def strings(path, table):
    """All string literals of a table."""
    body = re.search(table + r" = .*?\(\{(.*?)\n\s*\}\)", read(path), re.S).group(1)
    return re.findall(r'"([^"]+)"', re.sub(r"//.*", "", body))


def first_strings(path, table):
    return [row[0] for row in reference.rows(path, table)]


def commands():
    keys = [key.replace("-", " ") for key in first_strings("command/dispatch.cpp", "auto rows") if key != "GOTO-LINE"]
    return keys + ["UNDO", "REDO"] + [
        form.strip() for table in ("kRegular", "kAliases", "kPrefixes")
        for form in first_strings("command/spellings.cpp", table)]


def is_setting(name):
    return name.startswith(("SET ", "SHOW "))


def settings():
    """The words that stand behind SET."""
    path = "command/settings.cpp"
    words = first_strings(path, "kOnOffSettings") + first_strings(path, "kNumberSettings")
    words += [word for word in strings(path, "kChoiceSettings") if re.fullmatch("[A-Z]+", word)]
    words += first_strings(path, "kSearchWords")
    keys = [key.split("-")[1:] for key in first_strings(path, "kOtherSettings") if key.startswith("SET-")]
    spelt = [form.split()[1:] for table in ("kRegular", "kPrefixes")
             for form in first_strings("command/spellings.cpp", table) if form.startswith("SET ")]
    return set(sum(keys + spelt, words)) - {"DELIM"}


def variables():
    found = set()
    for folder in ("app", "command", "files", "screen", "search", "text"):
        for name in os.listdir(os.path.join(ROOT, folder)):
            text = read(f"{folder}/{name}")
            found |= set(re.findall(r'(?:getenv|environment_turns_on)\("(\w+)"\)', text))
            found |= set(re.findall(r'size_or_environment\([^"]*"(\w+)"\)', text))
    return found


def qualifiers():
    return set(re.findall(r'\{"(\w+)", &Qualifiers::', read("command/qualifiers.cpp")))


def range_words():
    return set(re.findall(r'word == "(\w+)"', read("command/line_range.cpp")))


def other_words():
    return set(first_strings("command/help_text.cpp", "kTopics") + strings("screen/nokeypad.cpp", "kWords")
               + strings("screen/key_definitions.cpp", "kKeyNames"))


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


def check_reference(manual, known):
    prose = re.sub(r"^```.*?^```", "", manual, flags=re.M | re.S)
    said = re.sub(r"\s+", " ", manual)
    phrases = {name for name in commands() if not is_setting(name)} | {f"/{name}" for name in qualifiers()}
    phrases |= range_words() | other_words()
    part = re.search(r"^## Settings$(.*?)^## ", prose, re.M | re.S).group(1)
    shown = {name.split()[1] for name in commands() if name.startswith("SHOW ")} - {"BUFFERS", "FILE", "KEYS", "MACROS"}
    complain("docs/reference.md", "leaves out",
             {name for name in phrases if not re.search(r"(?<![A-Za-z])" + re.escape(name) + r"(?![A-Z])", said)}
             | {name for name in settings() if not re.search(rf"\b(NO)?{name.removeprefix('NO')}\b", part)}
             | {f"SHOW {name}" for name in shown if name not in names(prose)})
    complain("docs/reference.md", "names the unknown", names(prose) - known)
    complain("docs/reference.md", "names unknown qualifiers", set(re.findall(r"`/([A-Z]+)", prose)) - qualifiers())


def check_program_page(page, known):
    options = {spelling for spelling, _ in completions.options()}
    named = {"-" + name for name in macro_arguments(page, "Fl")}
    named |= {name for name in macro_arguments(page, "Cm") if name.startswith("/")}
    complain("zan.1", "leaves out options", options - named)
    complain("zan.1", "names unknown options", named - options)
    complain("zan.1", "leaves out variables", variables() - macro_arguments(page, "Ev"))
    complain("zan.1", "names unknown variables", macro_arguments(page, "Ev") - variables() - LIBRARY_VARIABLES)
    complain("zan.1", "has other exit statuses", set(re.findall(r"^\.It (\d)$", page, re.M)) ^ {"0", "1", "2"})
    complain("zan.1", "names the unknown", macro_arguments(page, "Ic") - known)


def check_startup_page(page, known):
    text = re.sub(r"^\.(Dt|Os|Sh|Nm|Xr|Ev|Pa|Dd).*", "", page, flags=re.M)
    complain("zan.ini.5", "leaves out settings", settings() - names(text))
    complain("zan.ini.5", "names the unknown", names(text) - known - variables())


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
    words = [*commands(), *settings(), *qualifiers(), *range_words(), *other_words()]
    known = set(re.findall(r"\w+", " ".join(words))) | PLAIN_WORDS
    manual, card = read("docs/reference.md"), read("docs/reference-card.md")
    check_reference(manual, known)
    complain("docs/reference-card.md", "names the unknown", names(card) - known - variables())
    if card.count("\n") > PAGE_LINES:
        problems.append("docs/reference-card.md is longer than a page")
    check_program_page(read("docs/man/zan.1"), known)
    check_startup_page(read("docs/man/zan.ini.5"), known)
    check_pages()
    check_versions()
    sys.exit("\n".join(problems) if problems else 0)


main()
