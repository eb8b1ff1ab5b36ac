#!/usr/bin/env python3
"""Runs the benchmarks of some tables and prints all their rows as one. Called by run.sh.

usage: harness.py [--smoke] --build DIRECTORY TABLE...

A table NAME consists of

    NAME.table   rows measured by programs of Google Benchmark, and the programs that print rows themselves
    NAME.py      optional: a script that measures whole programs by turns and prints rows

Lines of NAME.table, with "#" for remarks:

    program | *                                    a program that prints rows
    program | job | goal | ours | floor | peer     names of cases; "-" for none, "?name" for one that may be missing

The goal of a row is "peer >= 4" or "floor >= 0.9": the time of that side over ours, the higher the better.

A program or script prints a row as one line on its standard output; what else it prints is shown as it is:

    row|job|ours|floor|peer|ratio|goal|met

`ours`, `floor` and `peer` are texts with units, the peer's with its name; `met` is yes, no, or a word on why it could
not be decided. VOCORE_FREE_CORES tells programs how many cores were found free: what is parallel is measured in wall
time, and only when there are two. VOCORE_SMOKE=1 asks for the shortest run that still goes through everything.
"""

import argparse
import json
import multiprocessing
import os
import re
import subprocess
import sys
import time

HEAD = ["job", "ours", "floor", "peer", "ratio", "goal", "met"]
HERE = os.path.dirname(os.path.abspath(__file__))


class Failure(Exception):
    pass


def spin(seconds_of_work):
    total = 0
    for i in range(seconds_of_work):
        total += i * i
    return total


def free_cores():
    """2 when two busy processes take hardly longer than one."""
    work = 3_000_000

    def wall(processes):
        running = [multiprocessing.Process(target=spin, args=(work,)) for _ in range(processes)]
        start = time.perf_counter()
        for process in running:
            process.start()
        for process in running:
            process.join()
        return time.perf_counter() - start

    if len(os.sched_getaffinity(0)) < 2:
        return 1
    ratios = sorted(wall(2) / wall(1) for _ in range(3))
    return 2 if ratios[1] < 1.2 else 1


def read_table(path):
    """(program, None) for programs that print rows; (program, [job, goal, ours, floor, peer]) for rows."""
    entries = []
    with open(path, encoding="utf-8") as file:
        for number, line in enumerate(file, 1):
            line = line.split("#")[0].strip()
            if not line:
                continue
            fields = [field.strip() for field in line.split("|")]
            if len(fields) == 2 and fields[1] == "*":
                entries.append((fields[0], None))
            elif len(fields) == 6:
                entries.append((fields[0], fields[1:]))
            else:
                raise Failure(f"{path}:{number}: 2 or 6 fields are needed")
    return entries


def run_cases(program, names, optional, smoke):
    """The median seconds of each case, in turns with all others of the program."""
    pattern = "^(" + "|".join(re.escape(name) for name in names) + ")$"
    command = [program, "--benchmark_filter=" + pattern, "--benchmark_format=json",
               "--benchmark_repetitions=" + ("1" if smoke else "7"),
               "--benchmark_min_time=" + ("0.001" if smoke else "0.02"),
               "--benchmark_enable_random_interleaving=true"]
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
    if done.returncode != 0:
        raise Failure(f"{program} failed: {done.stderr.decode()}")
    units = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}
    times = {}
    for case in json.loads(done.stdout)["benchmarks"]:
        if case.get("error_occurred"):
            raise Failure(f"{case['name']}: {case.get('error_message')}")
        if case["run_type"] == "iteration":
            times.setdefault(case["run_name"], []).append(case["cpu_time"] * units[case["time_unit"]])
    missing = [name for name in names if name not in times and name not in optional]
    if missing:
        raise Failure(f"{program} has no case {', '.join(missing)}")
    return {name: sorted(values)[len(values) // 2] for name, values in times.items()}


def time_text(seconds):
    for unit, factor in (("s", 1.0), ("ms", 1e-3), ("us", 1e-6)):
        if seconds >= factor:
            return f"{seconds / factor:.3g} {unit}"
    return f"{seconds * 1e9:.3g} ns"


def row_of(fields, times):
    job, goal, ours, floor, peer = fields
    against, comparison, wanted = goal.split()
    if comparison != ">=" or against not in ("floor", "peer"):
        raise Failure(f"{job}: goal \"{goal}\" is neither \"floor >= N\" nor \"peer >= N\"")
    other = (floor if against == "floor" else peer).lstrip("?")

    def side(case):
        case = case.lstrip("?")
        return f"{time_text(times[case])} {case.split('/')[0]}" if case in times else "-"

    sides = [job, time_text(times[ours]), side(floor), side(peer)]
    if other not in times:
        return sides + ["-", goal, "not measured"]
    ratio = times[other] / times[ours]
    return sides + [f"{ratio:.2f}", goal, "yes" if ratio >= float(wanted) else "no"]


def rows_of_output(command, environment):
    """Shows what a program prints and takes its rows out."""
    rows = []
    with subprocess.Popen(command, stdout=subprocess.PIPE, env=environment, text=True) as running:
        for line in running.stdout:
            if line.startswith("row|"):
                fields = line.rstrip("\n").split("|")[1:]
                if len(fields) != len(HEAD):
                    raise Failure(f"{command[0]}: a row has {len(HEAD)} fields: {line}")
                rows.append(fields)
            else:
                print(line, end="", flush=True)
    if running.returncode != 0:
        raise Failure(f"{command[0]} ended with {running.returncode}")
    if not rows:
        raise Failure(f"{command[0]} printed no rows")
    return rows


def measure(table, build, smoke):
    environment = dict(os.environ, VOCORE_FREE_CORES=str(free_cores()), VOCORE_BUILD=build)
    if smoke:
        environment["VOCORE_SMOKE"] = "1"
    path = os.path.join(HERE, table + ".table")
    entries = read_table(path) if os.path.exists(path) else []
    cases = {}
    for program, fields in entries:
        if fields:
            cases.setdefault(program, []).extend(name for name in fields[2:] if name != "-")
    times = {}
    for program, names in cases.items():
        optional = {name[1:] for name in names if name.startswith("?")}
        plain = sorted({name.lstrip("?") for name in names})
        times[program] = run_cases(os.path.join(build, "benchmarks", program), plain, optional, smoke)
    rows = []
    for program, fields in entries:
        if fields:
            rows.append(row_of(fields, times[program]))
        else:
            rows.extend(rows_of_output([os.path.join(build, "benchmarks", program)], environment))
    script = os.path.join(HERE, table + ".py")
    if os.path.exists(script):
        rows.extend(rows_of_output([sys.executable, script], environment))
    return rows


def show(sections):
    """One table with a line above the rows of each section."""
    everything = [HEAD] + [row for _, rows in sections for row in rows]
    widths = [max(len(row[i]) for row in everything) for i in range(len(HEAD))]

    def line(row):
        print("    " + "  ".join(text.ljust(width) for text, width in zip(row, widths)).rstrip())

    print()
    line(HEAD)
    for title, rows in sections:
        print(f"\n    {title}")
        for row in rows:
            line(row)
    missed = sum(row[-1] == "no" for row in everything)
    print(f"\n    {len(everything) - 1} rows, {missed} goals missed\n")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--smoke", action="store_true")
    parser.add_argument("--build", required=True)
    parser.add_argument("tables", nargs="+")
    arguments = parser.parse_args()
    try:
        show([(table, measure(table, os.path.abspath(arguments.build), arguments.smoke))
              for table in arguments.tables])
    except Failure as failure:
        sys.exit(f"FAILED: {failure}")


main()
