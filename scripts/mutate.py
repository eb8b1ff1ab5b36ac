#!/usr/bin/env python3
"""Counts how many small faults put into one folder's sources its tests notice.

usage: scripts/mutate.py FOLDER [--tests NAME ...] [--sample 150] [--seed 1] [--jobs 2] [--list]

A mutant is one change of one place: an arithmetic operator, a comparison, a condition negated, a statement deleted, a
literal changed, two arguments swapped. It is killed when a test program of the folder fails, crashes, or runs far longer
than it does without the fault. What does not compile is not counted; another place is drawn for it. The same seed draws
the same places of the same sources, so that a run before a change of tests can be compared with one after it.

The work is done in build/mutate, in a copy of the tree, so that the tree itself may be edited meanwhile. Survivors are
printed with file, line and change: each is a test that is missing, or a change that makes no difference.
"""
import argparse
import os
import pathlib
import random
import re
import shutil
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
WORK = ROOT / "build" / "mutate"
TREE = WORK / "tree"
BUILD = WORK / "build"

# What stands between quotation marks is no code, and neither are includes and remarks.
QUOTED = re.compile(r'"(?:[^"\\]|\\.)*"|\'(?:[^\'\\]|\\.)*\'')
NO_CODE = re.compile(r"^\s*(//|\*|/\*|#|template|using|namespace|static_assert|case |default:)")

# (what is looked for, what it becomes), with the blanks that the formatter puts around binary operators.
SWAPS = [(" + ", " - "), (" - ", " + "), (" * ", " / "), (" / ", " * "), (" % ", " * "), (" < ", " <= "), (" <= ", " < "),
         (" > ", " >= "), (" >= ", " > "), (" == ", " != "), (" != ", " == "), (" && ", " || "), (" || ", " && "),
         ("true", "false"), ("false", "true"), ("++", "--"), (" += ", " -= "), (" -= ", " += ")]
NUMBER = re.compile(r"(?<![\w.'])(\d+)(?![\w.'])")
STATEMENT = re.compile(r"^\s+(?!return\b|throw\b|const\b|auto\b|static\b|else\b)[\w.:>\-\[\]]+(\(.*\)| [-+*/|&]?= [^;]+);$")
ARGUMENTS = re.compile(r"\((\w+), (\w+)\)")


def masked(line):
    """The line with quoted text and its remark blanked, so that positions stay."""
    blank = QUOTED.sub(lambda match: '"' + " " * (len(match.group()) - 2) + '"', line)
    return re.sub(r"//.*$", lambda match: " " * len(match.group()), blank)


def condition_negated(line, code):
    match = re.search(r"\bif (?:constexpr )?\(", code)
    if not match or ";" in code:
        return
    depth = 0
    for end in range(match.end() - 1, len(code)):
        depth += {"(": 1, ")": -1}.get(code[end], 0)
        if depth == 0:
            yield line[:match.end()] + "!(" + line[match.end():end] + ")" + line[end:]
            return


def mutations(line):
    """All changed forms of one line."""
    if NO_CODE.match(line):
        return
    code = masked(line)
    for old, new in SWAPS:
        for match in re.finditer(re.escape(old) if not old.isalpha() else rf"\b{old}\b", code):
            yield line[:match.start()] + new + line[match.end():]
    for match in NUMBER.finditer(code):
        yield line[:match.start()] + str(int(match.group()) + 1) + line[match.end():]
    for match in ARGUMENTS.finditer(code):
        if match.group(1) != match.group(2):
            yield f"{line[:match.start()]}({match.group(2)}, {match.group(1)}){line[match.end():]}"
    if STATEMENT.match(code.rstrip("\n")):
        yield re.match(r"\s*", line).group() + ";\n"
    yield from condition_negated(line, code)


def sites(folder):
    """(file, line number, changed line) of every mutant of a folder, in a fixed order."""
    for path in sorted((TREE / "src" / folder).rglob("*")):
        if path.suffix not in (".cpp", ".h") or path.stem.endswith("_win"):
            continue
        for number, line in enumerate(path.read_text().splitlines(keepends=True)):
            for changed in mutations(line):
                yield path, number, changed


def run(command, seconds=None):
    """The exit code, or None when the time was over; the whole process group is ended then."""
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, stdin=subprocess.DEVNULL,
                               start_new_session=True)
    try:
        return process.wait(seconds)
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, 9)
        process.wait()
        return None


def prepare(targets, jobs):
    names = subprocess.check_output(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"], cwd=ROOT)
    wanted = {name for name in names.decode().split("\0") if name and (ROOT / name).is_file()}
    for name in wanted:
        target = TREE / name
        # Only what differs is written, so that a second run compiles nothing again.
        if not target.is_file() or target.read_bytes() != (ROOT / name).read_bytes():
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(ROOT / name, target)
    for path in TREE.rglob("*"):
        if path.is_file() and str(path.relative_to(TREE)) not in wanted:
            path.unlink()
    os.environ["CCACHE_DISABLE"] = "1"
    subprocess.run(["cmake", "-S", TREE, "-B", BUILD, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O0"],
                   check=True, stdout=subprocess.DEVNULL)
    subprocess.run(["ninja", "-C", BUILD, "-j", str(jobs), *targets], check=True, stdout=subprocess.DEVNULL)


def verdict(programs, limits):
    """Whether a program noticed."""
    for program, limit in zip(programs, limits):
        if run([program, "--gtest_fail_fast", "--gtest_brief=1"], limit) != 0:
            return True
    return False


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder")
    parser.add_argument("--tests", nargs="+", help="test programs, without VoCore and Tests; that of the folder otherwise")
    parser.add_argument("--sample", type=int, default=150)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--list", action="store_true", help="count the places, build nothing")
    options = parser.parse_args()

    targets = [f"VoCore{name}Tests" for name in options.tests or [options.folder.split("/")[0]]]
    TREE.mkdir(parents=True, exist_ok=True)
    if not options.list:
        prepare(targets, options.jobs)
    else:
        shutil.copytree(ROOT / "src", TREE / "src", dirs_exist_ok=True)
    drawn = list(sites(options.folder))
    print(f"{options.folder}: {len(drawn)} places")
    if options.list:
        return 0
    random.Random(options.seed).shuffle(drawn)

    programs = [next(BUILD.rglob(target)) for target in targets]
    limits = []
    for program in programs:
        start = time.monotonic()
        if run([program, "--gtest_brief=1"]) != 0:
            sys.exit(f"{program.name} fails without any fault")
        limits.append(10 + 5 * (time.monotonic() - start))

    killed, survivors = 0, []
    for path, number, changed in drawn:
        if killed + len(survivors) == options.sample:
            break
        original = path.read_text()
        lines = original.splitlines(keepends=True)
        before, lines[number] = lines[number], changed
        path.write_text("".join(lines))
        try:
            if run(["ninja", "-C", BUILD, "-j", str(options.jobs), *targets]) != 0:
                continue
            if verdict(programs, limits):
                killed += 1
            else:
                survivors.append((path.relative_to(TREE), number + 1, before.strip(), changed.strip()))
        finally:
            path.write_text(original)
    for place, number, before, changed in survivors:
        print(f"survived {place}:{number}\n    {before}\n    {changed}")
    print(f"{options.folder}: {killed} of {killed + len(survivors)} killed")
    return 0


if __name__ == "__main__":
    sys.exit(main())
