#!/usr/bin/env python3
"""Counts how many small faults put into one folder's sources its tests notice.

usage: scripts/mutate.py FOLDER [--tests NAME ...] [--keep DIR | --against DIR] [--build DIR] [--sample 150] [--seed 1]
                         [--jobs 2] [--list]

A mutant is one change of one place: an arithmetic operator, a comparison, a condition negated, a statement deleted, a
literal changed, two arguments swapped. It is killed when a test program of the folder fails, crashes, or runs far longer
than it does without the fault. What does not compile is not counted; another place is drawn for it. The same seed draws
the same places of the same sources. Headers are drawn from when few files include them.

A change of tests is judged by keeping the programs as they are before it, and showing each mutant to both afterwards;
what only those before notice is listed:

    scripts/mutate.py XML --keep build/before
    scripts/mutate.py XML --against build/before

The programs kept have headers compiled into them, so that only mutants of the library's own files are drawn then.

The work is done in build/mutate, in a copy of the tree, so that the tree itself may be edited meanwhile; or with --build
next to a build of the tree that is up to date and stays so, which saves the first compilation; a unity build serves
too, best with VOCORE_COMPILED_ALONE=src/FOLDER. Survivors are printed with file, line and change: each is a test that is
missing, or a change that makes no difference.

FOLDER is one of src, or "tools": the tests then run a program `vo` with the fault, which they are told by VO_PROGRAM.
"""
import argparse
import collections
import concurrent.futures
import hashlib
import itertools
import json
import os
import pathlib
import random
import re
import resource
import shutil
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
WORK = ROOT / "build" / "mutate"
COPY = WORK / "tree"
MUTANTS = WORK / "mutants"

# A header that more objects include than this is left alone: its mutants would cost a build each.
REACH = 16

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


def sites(tree, folder):
    """(file, line number, changed line) of every mutant of a folder, in a fixed order."""
    for path in sorted((tree / ("" if folder == "tools" else "src") / folder).rglob("*")):
        if path.suffix not in (".cpp", ".h") or path.stem.endswith("_win"):
            continue
        for number, line in enumerate(path.read_text().splitlines(keepends=True)):
            for changed in mutations(line):
                yield path, number, changed


def prepare(targets, jobs):
    """Copies the tree and builds the library and the test programs without any fault."""
    names = subprocess.check_output(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"], cwd=ROOT)
    wanted = {name for name in names.decode().split("\0") if name and (ROOT / name).is_file()}
    for name in wanted:
        target = COPY / name
        # Only what differs is written, so that a second run compiles nothing again.
        if not target.is_file() or target.read_bytes() != (ROOT / name).read_bytes():
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(ROOT / name, target)
    for path in COPY.rglob("*"):
        if path.is_file() and str(path.relative_to(COPY)) not in wanted:
            path.unlink()
    build = WORK / "build"
    subprocess.run(["cmake", "-S", COPY, "-B", build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O0",
                    "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON"], check=True, stdout=subprocess.DEVNULL)
    subprocess.run(["ninja", "-C", build, "-j", str(jobs), *targets], check=True, stdout=subprocess.DEVNULL)
    return COPY, build


class Builder:
    """Compiles what a mutant changes and links it with everything else as it was built."""

    def __init__(self, tree, build, targets):
        self.tree, self.directory = tree, build
        self.compile, self.link, self.includers = {}, {}, collections.defaultdict(list)
        for entry in json.loads((build / "compile_commands.json").read_text()):
            # A fault may leave something unused; it is still one.
            command = re.sub(r" -Werror(?= )", "", entry["command"])
            self.compile[re.search(r" -o (\S+) ", command).group(1)] = command
        linker = " -fuse-ld=lld -o " if shutil.which("ld.lld") else " -o "
        for target in targets:
            commands = subprocess.check_output(["ninja", "-C", build, "-t", "commands", target], text=True).splitlines()
            # Later lines may make symbolic links of what was linked.
            command = next(line for line in reversed(commands) if " -o " in line and " -c " not in line)
            self.link[target] = command.replace(" -o ", linker).split(" ")
        self.parts = {word: self.members(word) for words in self.link.values() for word in words}
        self.linked = set(itertools.chain(*self.parts.values()))
        for line in subprocess.check_output(["ninja", "-C", build, "-t", "deps"], text=True).splitlines():
            if line and not line.startswith(" "):
                made = line.split(":")[0]
            elif line.strip() and made in self.compile:
                self.includers[os.path.normpath(build / line.strip())].append(made)

    def members(self, word):
        """The objects of an archive that is built too, so that one of them can be another; any other word by itself."""
        folder, name = os.path.split(word)
        target = "VoCore" if name == "libVoCoreInternal.a" else name[3:-2]  # made of the same objects
        prefix = os.path.join(folder, "CMakeFiles", f"{target}.dir", "")
        # Precompiled headers are made there too.
        objects = [made for made in self.compile if made.startswith(prefix) and made.endswith(".o")]
        return name.endswith(".a") and objects or [word]

    def needed(self, word, changed):
        """What stands for a word of a link. An archive without a change stays one: some programs leave its main() out."""
        parts = self.parts[word]
        return [str(changed.get(part, part)) for part in parts] if any(part in changed for part in parts) else [word]

    def reach(self, path):
        """The objects that change with a file."""
        return [made for made in self.includers[str(path)] if made in self.linked]

    def compiled(self, made, path, place, result):
        """Whether an object could be made with another file in the place of one."""
        command = self.compile[made].replace(f" -o {made} ", f" -o {result} ", 1)
        source = pathlib.Path(command.split(" -c ")[1])
        if source == path:
            source = place
        elif path.suffix == ".cpp":
            united = source.read_text().replace(f'"{path}"', f'"{place}"')
            source = result.with_suffix(".cxx")
            source.write_text(united)
        command = command.split(" -c ")[0] + f" -iquote {path.parent} -c {source}"
        return run(["sh", "-c", command.replace(" -I", f" -I{result.parent}/include -I", 1)], self.directory) == 0

    def build(self, path, text, folder):
        """The target and file of everything that a mutant changes; None when it does not compile."""
        place = folder / "include" / pathlib.Path(*path.relative_to(self.tree).parts[1:])
        place.parent.mkdir(parents=True)
        place.write_text(text)
        changed = {made: folder / f"{number}.o" for number, made in enumerate(self.reach(path))}
        if not all(self.compiled(made, path, place, result) for made, result in changed.items()):
            return None
        results = {}
        for target, words in self.link.items():
            if any(part in changed for word in words for part in self.parts[word]):
                # The loader asks for the library by the name that programs were linked with.
                results[target] = folder / ("libVoCore.so.1" if target == "VoCore" else target)
                words = [part for word in words for part in self.needed(word, changed)]
                words[words.index("-o") + 1] = str(results[target])
                if run(["sh", "-c", " ".join(words)], self.directory) != 0:
                    return None
        return results


def run(command, directory, seconds=None, **settings):
    """The exit code, or None when the time was over; the whole process group is ended then."""
    process = subprocess.Popen(command, cwd=directory, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                               stdin=subprocess.DEVNULL, start_new_session=True, **settings)
    try:
        return process.wait(seconds)
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, 9)
        process.wait()
        return None


def limited():
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    resource.setrlimit(resource.RLIMIT_FSIZE, (1 << 33, 1 << 33))


def run_tests(program, library, seconds, tool):
    """Runs a test program in a temporary folder of its own, as nobody where that can be: a mutant may delete anything.

    TMPDIR=/dev/shm makes that faster, for programs that do not test what disks do."""
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as folder:
        nobody = {"user": 65534, "group": 65534} if os.geteuid() == 0 else {}
        if nobody:
            os.chown(folder, 65534, 65534)
        environment = dict(os.environ, TMPDIR=folder, HOME=folder, LD_LIBRARY_PATH=str(library), VO_PROGRAM=str(tool))
        arguments = [program, "--gtest_fail_fast", "--gtest_brief=1"]
        return run(arguments, folder, seconds, env=environment, preexec_fn=limited, **nobody)


class Suite:
    """Test programs, and how long each takes without a fault."""

    def __init__(self, programs, library):
        self.programs, self.library, self.limits = programs, library, {}
        self.tool = library / "tools" / "vo" / "vo"
        for target, program in programs.items():
            start = time.monotonic()
            if run_tests(program, library, None, self.tool) != 0:
                sys.exit(f"{program} fails without any fault")
            self.limits[target] = 10 + 5 * (time.monotonic() - start)

    def notices(self, results):
        """Whether one of the programs fails with what a mutant changed."""
        library = results["VoCore"].parent if "VoCore" in results else self.library
        tool = results.get("vo", self.tool)
        return any(run_tests(results.get(target, program), library, self.limits[target], tool) != 0
                   for target, program in self.programs.items())


def examine(builder, suites, site):
    """Which of the suites of programs notice the mutant; None when there is none."""
    path, number, changed = site
    lines = path.read_text().splitlines(keepends=True)
    lines[number] = changed
    folder = MUTANTS / hashlib.sha256(f"{path}:{number}:{changed}".encode()).hexdigest()[:16]
    shutil.rmtree(folder, ignore_errors=True)
    try:
        results = builder.build(path, "".join(lines), folder)
        return [suite.notices(results) for suite in suites] if results else None
    finally:
        shutil.rmtree(folder, ignore_errors=True)


def examined(builder, suites, drawn, sample, jobs):
    """Verdicts about the first mutants that compile, some at a time, in the order of the draw."""
    waiting, count = collections.deque(), 0
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        remaining = iter(drawn)
        while count < sample:
            for site in itertools.islice(remaining, max(0, min(jobs, sample - count) - len(waiting))):
                waiting.append((site, pool.submit(examine, builder, suites, site)))
            if not waiting:
                return
            site, verdict = waiting.popleft()
            if verdict.result() is not None:
                count += 1
                yield site, verdict.result()


def told(title, site, tree):
    path, number, changed = site
    before = path.read_text().splitlines()[number]
    print(f"{title} {path.relative_to(tree)}:{number + 1}\n    {before.strip()}\n    {changed.strip()}", flush=True)


def arguments():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder")
    parser.add_argument("--tests", nargs="+", help="test programs, without VoCore and Tests; that of the folder otherwise")
    parser.add_argument("--keep", metavar="DIR", type=pathlib.Path, help="keep the test programs there, and no more")
    parser.add_argument("--against", metavar="DIR", type=pathlib.Path, help="show the mutants to programs kept there too")
    parser.add_argument("--build", metavar="DIR", type=pathlib.Path, help="a build of this tree that is up to date")
    parser.add_argument("--sample", type=int, default=150)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--list", action="store_true", help="count the places, build nothing")
    return parser.parse_args()


def draw(builder, options):
    """The places of mutants in the order in which they are tried."""
    places = [site for site in sites(builder.tree, options.folder)
              if 0 < len(builder.reach(site[0])) <= REACH and (site[0].suffix == ".cpp" or not options.against)]
    print(f"{options.folder}: {len(places)} places")
    random.Random(options.seed).shuffle(places)
    return places


def report(builder, suites, options):
    """Tells what was noticed; gives the number of mutants that only programs kept noticed."""
    killed, count, lost = [0] * len(suites), 0, 0
    for site, verdicts in examined(builder, suites, draw(builder, options), options.sample, options.jobs):
        count += 1
        killed = [sum(pair) for pair in zip(killed, verdicts)]
        if not any(verdicts):
            told("survived", site, builder.tree)
        elif not verdicts[-1]:
            lost += 1
            told("killed before only:", site, builder.tree)
        elif not all(verdicts):
            told("killed now only:", site, builder.tree)
    names = (" before", " now") if options.against else ("",)
    print(f"{options.folder}: " + ", ".join(f"{number} of {count} killed{name}" for number, name in zip(killed, names)))
    return lost


def tests_of(folder):
    return "Tools" if folder == "tools" else folder.split("/")[0]


def main():
    options = arguments()
    if options.list:
        print(f"{options.folder}: {len(list(sites(ROOT, options.folder)))} places")
        return 0
    targets = [f"VoCore{name}Tests" for name in options.tests or [tests_of(options.folder)]]
    tree, build = (ROOT, options.build.resolve()) if options.build else prepare(["VoCore", "vo", *targets], options.jobs)
    programs = {target: next(path for path in build.rglob(target) if path.is_file()) for target in targets}
    if options.keep:
        options.keep.mkdir(parents=True, exist_ok=True)
        for program in programs.values():
            shutil.copy(program, options.keep)
        return 0
    suites = [Suite(programs, build)]
    if options.against:
        suites.insert(0, Suite({target: options.against.resolve() / target for target in targets}, build))
    return 1 if report(Builder(tree, build, ["VoCore", "vo", *targets]), suites, options) else 0


if __name__ == "__main__":
    sys.exit(main())
