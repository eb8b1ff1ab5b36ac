#!/usr/bin/env python3
"""How publishing, planning, installing, verifying, updating and uninstalling grow with the bytes and with the files.

usage: benchmarks/growth.py VO [--largest] [--in FOLDER]

Prints a table: processor seconds and peak memory of each job for each tree, then the growth of each job from one size
to the next over the growth of the tree: 1.0 is a straight line. Trees of 10, 100 and 1,000 MB in files of 1 MB, and of
1,000, 10,000 and 100,000 files of 1 to 4 KB; --largest takes 200,000 such files and one file of 6 GB instead. Every
job runs once; 2 % of the files (a few bytes of the largest) change for the update. The folder, by default the one for
temporary files, takes about four times the bytes of a tree.
"""

import argparse
import os
import random
import re
import shutil
import subprocess
import sys
import tempfile

WORDS = [f"{word} {i}\n".encode() for word in ("node", "source", "model", "value", "pin", "sweep") for i in range(50)]
JOBS = ["publish", "publish 2", "install", "plan", "update", "verify", "uninstall"]


def text(source, size):
    """Words in random order with a number here and there: compresses to about a third."""
    parts = []
    while size > 0:
        part = source.choice(WORDS) if source.random() < 0.8 else b"%d " % source.getrandbits(60)
        parts.append(part[:size])
        size -= len(part)
    return b"".join(parts)


def make_tree(folder, files, sizes):
    source = random.Random(files)
    block = text(source, 8 << 20)
    for number in range(files):
        directory = os.path.join(folder, f"m{number // 5000:03}", f"part{number // 50 % 100:02}")
        os.makedirs(directory, exist_ok=True)
        left = source.randint(*sizes)
        with open(os.path.join(directory, f"element_{number:06}.mdl"), "wb") as file:
            file.write(b"%d\n" % number)
            while left > 0:
                at = source.randrange(len(block) - 4096) if left < len(block) - 4096 else 0
                piece = block[at:at + min(left, len(block))]
                file.write(piece)
                left -= len(piece)


def apart(work, *arguments):
    """Calls in a process of its own: what a child is said to have taken includes what its parent had."""
    child = os.fork()
    if child == 0:
        work(*arguments)
        os._exit(0)
    if os.waitpid(child, 0)[1] != 0:
        sys.exit("the tree cannot be made")


def change(folder, share):
    source = random.Random(9)
    paths = sorted(os.path.join(at, name) for at, _, names in os.walk(folder) for name in names)
    for path in source.sample(paths, max(1, int(len(paths) * share))):
        with open(path, "r+b") as file:
            file.seek(source.randrange(max(1, os.path.getsize(path) - 16)))
            file.write(b"changed %08d" % source.randrange(10 ** 8))


def measure(command):
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
    error = process.stderr.read()
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f"{' '.join(command)} ended with {process.returncode}: {error.decode()[-2000:]}")
    return usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024


def jobs_of(vo, work):
    """The figures of each job on the tree in the folder "source"."""
    source, declarations, place = (os.path.join(work, name) for name in ("source", "server/releases.xml", "place"))
    options = ["-q", "--updates-dir", os.path.join(work, "updates")]

    def publish(version):
        return measure([vo, "publish", source, "--to", declarations, "--name", "Growth", "--release", version] + options)

    figures = [publish("1.0.0")]
    apart(change, source, 0.02)
    figures.append(publish("1.0.1"))
    figures.append(measure([vo, "install", declarations, "--to", place, "--release", "1.0.0"] + options))
    figures.append(measure([vo, "plan", declarations] + options))
    figures.append(measure([vo, "install", declarations] + options))
    figures.append(measure([vo, "verify"] + options))
    with open(declarations, encoding="utf-8") as file:
        package = re.search('packageID="([^"]+)"', file.read()).group(1)
    figures.append(measure([vo, "uninstall", package] + options))
    if os.path.exists(place):
        sys.exit(f"{place} is left behind")
    return figures


def print_rows(rows):
    print(f"{'':24}" + "".join(f"{job:>18}" for job in JOBS))
    for name, figures in rows:
        print(f"{name:24}" + "".join(f"{f'{seconds:.2f} s {memory:.0f} MB':>18}" for seconds, memory in figures))


def print_growth(rows, sizes):
    for (name, before), (next_name, after), factor in zip(rows, rows[1:], (b / a for a, b in zip(sizes, sizes[1:]))):
        growth = [seconds_after / max(seconds, 0.01) / factor for (seconds, _), (seconds_after, _) in zip(before, after)]
        print(f"{'to ' + next_name:24}" + "".join(f"{value:>18.2f}" for value in growth))
    print(flush=True)


def main():
    arguments = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    arguments.add_argument("vo")
    arguments.add_argument("--largest", action="store_true")
    arguments.add_argument("--in", dest="folder")
    chosen = arguments.parse_args()
    small, megabyte = (1000, 4000), (1 << 20, 1 << 20)
    if chosen.largest:
        series = [[("200,000 files", 200000, small)], [("one file of 6 GB", 1, (6 << 30, 6 << 30))]]
    else:
        series = [[(f"{count:,} MB", count, megabyte) for count in (10, 100, 1000)],
                  [(f"{count:,} files", count, small) for count in (1000, 10000, 100000)]]
    for trees in series:
        rows = []
        for name, files, sizes in trees:
            work = tempfile.mkdtemp(dir=chosen.folder)
            try:
                apart(make_tree, os.path.join(work, "source"), files, sizes)
                rows.append((name, jobs_of(os.path.abspath(chosen.vo), work)))
            finally:
                shutil.rmtree(work)
        print_rows(rows)
        print_growth(rows, [files for _, files, _ in trees])


main()
