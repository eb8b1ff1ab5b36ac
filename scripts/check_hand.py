#!/usr/bin/env python3
"""Fails when a source is not in the one hand that CONTRIBUTING.md describes and clang-tidy cannot hold: the form in which
docstrings tell what is thrown, the names of tests, and the names of what headers and sources have outside of classes.
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
THROWN = r"(?:Vo|std::|UsageError\b|CommandError\b|Failure\b)"
RULES = [
    (r"///.*@throw\b", "write @throws"),
    (rf"///.*@throws (?!{THROWN})", "@throws is followed by the type; what another function throws is told in prose"),
    (r"///.*@[pc] ", "names stand in backticks"),
    (r"^(?:TEST|TEST_F|TEST_P|TYPED_TEST|TYPED_TEST_P)\(\w+, (?![A-Z])", "names of tests are UpperCamel"),
    (r"^(?:static |inline )*(?:constexpr [\w:<>*&, ]+?[ *&]|const [\w:<>, ]+ |const [\w:<>, ]+\* ?const )(?!npos\b)[a-z]\w*"
     r"(?:\[[^\]]*\])? *(?:=|\{)",
     "constants outside of functions are UpperCamel"),
    (r"^(?=[A-Za-z])(?!template|return|else|using|goto|typedef|case)(?:static |inline |constexpr )*[\w:<>*&, ]+[ *&]"
     r"(?!main\b|swap\b|sp_|qHash\b|operator|on[A-Z]\w*\(int\))[a-z]\w*\([^;]*\)(?: noexcept)?$",
     "functions outside of classes are UpperCamel"),
]
# Definitions of these replace the system's own.
EXCEPTIONS = {"tests/Updater/SystemCalls_linux.cpp"}


def sources():
    for folder in ("src", "tools", "tests"):
        for path in sorted((ROOT / folder).rglob("*.*")):
            if path.suffix in (".h", ".cpp") and path.relative_to(ROOT).as_posix() not in EXCEPTIONS:
                yield path


def without_raw_texts(text):
    return re.sub(r'R"(\w*)\(.*?\)\1"', lambda found: "\n" * found.group(0).count("\n"), text, flags=re.DOTALL)


def main():
    rules = [(re.compile(pattern), why) for pattern, why in RULES]
    problems = []
    for path in sources():
        for number, line in enumerate(without_raw_texts(path.read_text()).split("\n"), 1):
            problems += [f"{path.relative_to(ROOT)}:{number}: {why}: {line.strip()}"
                         for pattern, why in rules if pattern.search(line)]
    print("\n".join(problems) if problems else "sources: one hand")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
