#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Checks that the pages refer only to what exists.

  references.py ROOT

Every relative link of a page that git knows leads to a file, and its anchor to a heading of that page. Every path in
backticks that begins with a directory of the project exists; it may lack its extension, as in `src/queue/read`, or contain
a star. Every test that a page names exists. Every routine in the tables of docs/architecture.md is mentioned in the file next to it. Every keyword of the module has an item in docs/parameters.md, and every exit code of mqam a row in
docs/operating.md, which quotes only messages that mqam prints. Ends with 1 and prints what is wrong.
"""
import glob
import os
import re
import subprocess
import sys

TOP = ("apps", "bench", "cmake", "docs", "examples", "fuzz", "include", "model", "packaging", "scripts", "src", "tests")
# Named in the pages and not written yet. Empty this when they exist.
EXPECTED = ("scripts/nightly",)
ENDINGS = ("", ".h", ".cpp", ".inc", "_posix.cpp", ".c", ".cmake", ".md", ".py")


def prose(text):
    return re.sub(r"^```.*?^```$", "", text, flags=re.S | re.M)


def anchors_of(path):
    anchors = set()
    for heading in re.findall(r"^#+ (.*)$", prose(open(path, encoding="utf-8").read()), re.M):
        plain = re.sub(r"[`*]|\]\([^)]*\)|\[", "", heading).lower()
        anchors.add(re.sub(r"[^\w\- ]", "", plain).replace(" ", "-"))
    return anchors


def wrong_links(page, text):
    for target in re.findall(r"\]\(([^)\s]+)\)", text):
        if re.match(r"\w+:", target):
            continue
        file, _, anchor = target.partition("#")
        path = os.path.normpath(os.path.join(os.path.dirname(page), file)) if file else page
        if not os.path.exists(path) and path not in EXPECTED:
            yield f"the link {target} leads to no file"
        elif anchor and os.path.exists(path) and anchor not in anchors_of(path):
            yield f"the link {target} leads to no heading"


def wrong_paths(text):
    for name in re.findall(r"`([\w.*/{},-]+)`", text):
        if name.split("/")[0] not in TOP or "/" not in name or "..." in name or "/FILE" in name:
            continue
        names = [name]
        if braces := re.search(r"\{([^}]*)\}", name):
            names = [name.replace(braces[0], part) for part in braces[1].split(",")]
        for one in names:
            if one not in EXPECTED and not any(glob.glob(one.rstrip("/") + ending) for ending in ENDINGS):
                yield f"`{one}` does not exist"


def wrong_routines(text):
    """In the tables that say where a behaviour lives, the last column names routines of the files in the column before it."""
    start = text.index("\n## Where a behaviour lives\n")
    text = text[start:text.index("\n## ", start + 4)]
    rows = 0
    for row in re.findall(r"^\|[^|\n]*\|([^|\n]*)\|([^|\n]*)\|$", text, re.M):
        directory, contents = "", ""
        rows += 1
        for name in re.findall(r"`([\w.*/-]+)`", row[0]):
            # A name without a directory belongs to the directory of the name before it.
            path = name if "/" in name else f"{directory}/{name}"
            directory = os.path.dirname(path)
            for file in {f for ending in ENDINGS for f in glob.glob(path + ending) + glob.glob(path + "/**", recursive=True)}:
                if os.path.isfile(file):
                    contents += open(file, encoding="utf-8").read()
            if not contents and path not in EXPECTED:
                yield f"`{path}` does not exist"
        for routine in re.findall(r"`(k?[A-Z]\w+)`", row[1]):
            if contents and not re.search(rf"\b{routine}\b", contents):
                yield f"{row[0].strip()} does not mention `{routine}`"
    if rows < 80:
        yield "the tables of routines were not found"


def missing_tests(text):
    """Every test that a page names as `Suite.Name` exists."""
    sources = ""
    for file in glob.glob("tests/**/*.cpp", recursive=True):
        sources += open(file, encoding="utf-8").read()
    for suite, name in re.findall(r"`([A-Z]\w+)\.([A-Z]\w+)`", text):
        if not re.search(rf"\bTEST(_F|_P)?\(\s*{suite},\s*{name}\)", sources):
            yield f"there is no test {suite}.{name}"


# Texts of the operating system, of SQLite and of SQLite's integrity check, which no source of mqam contains.
SYSTEM_TEXTS = {"No space left on device", "Permission denied", "database is locked", "database or disk is full",
                "disk I/O error", "unable to open database file", "readonly database", "is malformed", "is not a database"}


def unknown_messages():
    """Every message that docs/operating.md quotes in bold is a text of mqam; "..." and FILE stand for anything."""
    sources = ""
    for file in glob.glob("apps/mqam/**/*.cpp", recursive=True) + glob.glob("apps/mqam/**/*.h", recursive=True):
        sources += open(file, encoding="utf-8").read()
    texts = " ".join(re.findall(r'"((?:\\.|[^"\\\n])*)"', re.sub(r'"\s*\n\s*"', "", sources)))
    page = open("docs/operating.md", encoding="utf-8").read()
    page = page[page.index("\n## When it fails\n"):]
    quoted = [text for item in re.findall(r"^- \*\*(.*?)\*\*", page, re.S | re.M) for text in re.findall(r"`([^`]*)`", item)]
    if len(quoted) < 40:
        yield "docs/operating.md: the quoted messages were not found"
    for quote in quoted:
        for piece in re.split(r"\.\.\.|\bFILE\b|MQAMtmp", " ".join(quote.split())):
            if len(piece.strip()) > 2 and piece.strip() not in SYSTEM_TEXTS and piece.strip(" :;.(,)") not in texts:
                yield f"docs/operating.md quotes {quote!r}, but mqam does not print {piece.strip()!r}"


def missing_keywords():
    keywords = set(re.findall(r'\.name = "([A-Z]+)"', open("src/params/check_parm.cpp", encoding="utf-8").read(), re.M))
    if len(keywords) < 15:
        yield "src/params/check_parm.cpp: the table of keywords was not found"
    page = open("docs/parameters.md", encoding="utf-8").read()
    page = page[page.index("\n## Keywords\n"):page.index("\n## Attributes\n")]
    items = set(re.findall(r"^- \*\*`([A-Z]+)[ `]", page, re.M))
    yield from (f"the keyword {name} has no item in docs/parameters.md" for name in sorted(keywords - items))
    yield from (f"docs/parameters.md has an item for {name}, which is no keyword" for name in sorted(items - keywords))


def missing_exit_codes():
    headers = glob.glob("apps/mqam/**/exit_codes.h", recursive=True)
    codes = set(re.findall(r"^    kExit\w+ = (\d+),", "".join(open(h, encoding="utf-8").read() for h in headers), re.M))
    if len(codes) < 10:
        yield "apps/mqam: the exit codes were not found"
    rows = set(re.findall(r"^\| (\d+) \|", open("docs/operating.md", encoding="utf-8").read(), re.M))
    yield from (f"exit code {code} has no row in docs/operating.md" for code in sorted(codes - rows))
    yield from (f"docs/operating.md has a row for exit code {code}, which does not exist" for code in sorted(rows - codes))


def main():
    os.chdir(sys.argv[1])
    pages = subprocess.run(["git", "ls-files", "*.md"], stdout=subprocess.PIPE, check=True, text=True).stdout.split()
    wrong = []
    for page in pages:
        if page == "CHANGELOG.md":
            continue  # It speaks of what is gone.
        text = prose(open(page, encoding="utf-8").read())
        errors = [*wrong_links(page, text), *wrong_paths(text), *missing_tests(text)]
        if page == "docs/architecture.md":
            errors += wrong_routines(text)
        wrong += [f"{page}: {error}" for error in errors]
    wrong += [*unknown_messages(), *missing_keywords(), *missing_exit_codes()]
    print("\n".join(wrong) if wrong else f"{len(pages)} pages refer to what exists")
    sys.exit(1 if wrong else 0)


main()
