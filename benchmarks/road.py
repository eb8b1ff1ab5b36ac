#!/usr/bin/env python3
"""Whole programs by turns: publishing, installing and updating a tree of the machine's own headers and libraries.

Prints rows for harness.py. Processor time on one core (taskset), wall time where two cores are at work.
"""

import glob
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time

SMOKE = "VOCORE_SMOKE" in os.environ
FREE_CORES = int(os.environ.get("VOCORE_FREE_CORES", "1"))
MEGABYTES = 2 if SMOKE else min(500, int(os.environ.get("VOCORE_BENCHMARK_MB", "128")))
REPETITIONS = 1 if SMOKE else 5
VO = os.path.join(os.environ["VOCORE_BUILD"], "tools/vo/vo")
FLOOR = os.path.join(os.environ["VOCORE_BUILD"], "benchmarks/VoCoreRoadFloorBenchmark")
CHUNK = 4 << 20


def row(job, ours, floor="-", peer="-", ratio=None, goal=None):
    """goal: (">=" or "<=", number)"""
    met = "-"
    if goal:
        met = "not measured" if ratio is None else \
            "yes" if (ratio >= goal[1] if goal[0] == ">=" else ratio <= goal[1]) else "no"
    goal_text = f"{goal[0]} {goal[1]}" if goal else "-"
    ratio_text = "-" if ratio is None else f"{ratio:.2f}"
    print("|".join(["row", job, ours, floor, peer, ratio_text, goal_text, met]), flush=True)


def run(command, cores=None, environment=None):
    """Runs a command; its processor and wall seconds and its peak memory in KiB."""
    if cores is not None:
        command = ["taskset", "-c", cores] + command
    start = time.perf_counter()
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                               env=dict(os.environ, **(environment or {})))
    error = process.stderr.read()
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f"{' '.join(command)} ended with {process.returncode}: {error.decode()[-2000:]}")
    return usage.ru_utime + usage.ru_stime, time.perf_counter() - start, usage.ru_maxrss


def median(values):
    return sorted(values)[len(values) // 2]


def files_below(directory):
    """In a fixed order, links left aside."""
    for at, directories, names in os.walk(directory):
        directories.sort()
        for name in sorted(names):
            path = os.path.join(at, name)
            if not os.path.islink(path) and os.path.isfile(path):
                yield path


def collect(target, bytes_wanted):
    """Copies headers, then libraries, no two of whose names differ in letter case only."""
    names = set()
    total = 0
    for directory, share in (("/usr/include", 0.4), ("/usr/lib", 1.0)):
        for path in files_below(directory):
            if total >= share * bytes_wanted:
                break
            size = os.path.getsize(path)
            if path.lower() in names or size > bytes_wanted // 8:
                continue
            names.add(path.lower())
            os.makedirs(os.path.dirname(target + path), exist_ok=True)
            shutil.copyfile(path, target + path)
            total += size
    return total


def change(tree, every, offset=0):
    """Appends a line to every so-manieth file."""
    changed = 0
    files = sorted(os.path.join(at, name) for at, _, names in os.walk(tree) for name in names)
    for i, path in enumerate(files):
        if i % every == offset:
            with open(path, "ab") as file:
                file.write(b"\nchanged\n")
            changed += 1
    return changed


def fresh(path):
    shutil.rmtree(path, ignore_errors=True)
    return path


def publish(tree, site, version="1.0.0", cores=None, chunk=CHUNK):
    return run([VO, "publish", tree, "--to", f"{site}/d.xml", "--name", "road", "--release", version,
                "--chunk-size", str(chunk)], cores)


def install(site, app, data, cores=None, options=()):
    return run([VO, "install", f"{site}/d.xml", "--to", app, *options], cores, {"VOAPPDATAPATH": data})


def text(seconds):
    return f"{seconds:.3g} s" if seconds >= 0.1 else f"{seconds * 1000:.3g} ms"


def has(program):
    return not SMOKE and shutil.which(program) is not None


def casync_make(scratch, tree, compression="gzip", cores=None):
    """Into a new store, whose name is that of the compression."""
    store = fresh(f"{scratch}/{compression}.castr")
    return run(["casync", "make", f"--compression={compression}", f"--store={store}",
                f"{scratch}/{compression}.caidx", tree], cores)


def casync_extract(scratch, compression):
    return run(["casync", "extract", f"--store={scratch}/{compression}.castr", f"{scratch}/{compression}.caidx",
                fresh(f"{scratch}/extracted")])


def compare(job, ours, peer, name, goal):
    """A row of medians, with the peer's over ours; without figures where a side was not measured."""
    row(job, text(median(ours)) if ours else "-", "-", f"{text(median(peer))} {name}" if peer else "-",
        median(peer) / median(ours) if ours and peer else None, (">=", goal))


def measure_publish(scratch, tree, size):
    ours, floor, walls, two, memory = [], [], [], [], []
    casync_one, casync, tar = [], [], []
    for _ in range(REPETITIONS):
        cpu, wall, _ = publish(tree, fresh(f"{scratch}/site"), cores="0")
        ours.append(cpu)
        walls.append(wall)
        floor.append(run([FLOOR, "publish", tree, fresh(f"{scratch}/chunks")], "0")[0])
        if has("casync"):
            casync_one.append(casync_make(scratch, tree, cores="0")[0])
        if FREE_CORES >= 2 and not SMOKE:
            _, wall, peak = publish(tree, fresh(f"{scratch}/site"))
            two.append(wall)
            memory.append(peak)
            if has("casync"):
                casync.append(casync_make(scratch, tree)[1])
            tar.append(run(["tar", "-czf", f"{scratch}/tree.tgz", "-C", tree, "."])[1])
    if not memory:
        memory.append(publish(tree, fresh(f"{scratch}/site"))[2])
    row(f"publish {size >> 20} MB, one thread", text(median(ours)), f"{text(median(floor))} qCompress + SHA3", "-",
        median(floor) / median(ours), (">=", 0.95))
    compare("the same, beside casync", ours, casync_one, "casync, gzip", 1.8)
    speed = median(walls) / median(two) if two else None
    row("the same, two cores, beside one", text(median(two)) if two else "-", text(median(walls)), "-", speed,
        (">=", 1.75))
    compare("the same, two cores, beside casync", two, casync, "casync, gzip", 3.3)
    compare("the same, two cores, beside tar -z", two, tar, "tar -z", 3.5)
    return median(memory)


def measure_install(scratch, tree, size):
    """Peak memory, and the wall time on two cores where they are free."""
    site, app, data = f"{scratch}/site", f"{scratch}/app", f"{scratch}/data"
    publish(tree, fresh(site))
    run([FLOOR, "publish", tree, fresh(f"{scratch}/chunks")])
    ours, floor, two, memory = [], [], [], []
    casync = {"gzip": [], "zstd": []}
    if has("casync"):
        for compression in casync:
            casync_make(scratch, tree, compression)
    for _ in range(REPETITIONS):
        fresh(app), fresh(data)
        cpu, _, peak = install(site, app, data, "0")
        ours.append(cpu)
        memory.append(peak)
        floor.append(run([FLOOR, "install", tree, f"{scratch}/chunks", fresh(f"{scratch}/app")], "0")[0])
        if FREE_CORES >= 2 and not SMOKE:
            fresh(app), fresh(data)
            _, wall, peak = install(site, app, data)
            two.append(wall)
            memory.append(peak)
            if has("casync"):
                for compression, walls in casync.items():
                    walls.append(casync_extract(scratch, compression)[1])
    row(f"install and verify {size >> 20} MB, one thread", text(median(ours)),
        f"{text(median(floor))} inflate + 2 SHA3 + write", "-", median(floor) / median(ours), (">=", 0.9))
    compare("the same, two cores, beside casync extract", two, casync["gzip"], "casync, gzip", 1.2)
    compare("the same, two cores, beside casync extract", two, casync["zstd"], "casync, zstd", 0.9)
    return max(memory), median(two) if two else None


def measure_verify(scratch, tree):
    """Of the tree, installed: every file is read, beside a program that only takes digests."""
    site, app, data = f"{scratch}/site", fresh(f"{scratch}/app"), fresh(f"{scratch}/data")
    publish(tree, fresh(site))
    install(site, app, data)
    ours, peer = [], []
    for _ in range(REPETITIONS):
        wall = run([VO, "verify"], environment={"VOAPPDATAPATH": data})[1]
        if FREE_CORES >= 2 and has("openssl"):
            ours.append(wall)
            digests = f"find '{app}' -type f -print0 | xargs -0 -P2 -n 200 openssl dgst -sha3-256"
            peer.append(run(["sh", "-c", digests])[1])
    compare("verify it, two cores, beside openssl", ours, peer, "openssl dgst -sha3-256 by xargs -P2", 2)


def measure_start():
    """What every call of the program costs."""
    # What a child is said to have taken includes its parent: a small one therefore.
    script = ("import os, sys, time; start = time.perf_counter(); child = os.posix_spawn(sys.argv[1], sys.argv[1:], "
              "os.environ, file_actions=[(os.POSIX_SPAWN_OPEN, 1, os.devnull, os.O_WRONLY, 0)]); "
              "_, status, usage = os.wait4(child, 0); print(status, time.perf_counter() - start, usage.ru_maxrss)")
    walls, peaks = [], []
    for _ in range(1 if SMOKE else 31):
        done = subprocess.run([sys.executable, "-I", "-S", "-c", script, VO, "--version"], check=True,
                              stdout=subprocess.PIPE).stdout.split()
        if int(done[0]) != 0:
            sys.exit("vo --version fails")
        walls.append(float(done[1]))
        peaks.append(int(done[2]))
    row("vo --version, in ms", text(median(walls)), "-", "-", median(walls) * 1000, ("<=", 8))
    row("memory of it, in MB", f"{median(peaks) / 1024:.1f} MB", "-", "-", median(peaks) / 1024, ("<=", 12))


def fetched(site, data):
    """Bytes of each update, by (from, to)."""
    done = subprocess.run([VO, "plan", f"{site}/d.xml", "--matrix", "--json"], check=True, stdout=subprocess.PIPE,
                          env=dict(os.environ, VOAPPDATAPATH=data))
    return {(u["from"], u["to"]): u["bytesToFetch"] for u in json.loads(done.stdout)["updates"]}


def publish_sorted(tree, site, version, before, chunk=CHUNK):
    command = [FLOOR, "sorted", f"{site}/d.xml", str(chunk), version, tree]
    if before:
        command.append(glob.glob(f"{site}/packages/*/{before}.0/package.xml")[0])
    os.makedirs(site, exist_ok=True)
    run(command)


def store_bytes(store):
    return sum(os.path.getsize(os.path.join(at, name)) for at, _, names in os.walk(store) for name in names)


def measure_installed_update(scratch, site, tree, new, share, full):
    """Installs the first release, then the second over it; rsync reads both trees as well."""
    app, data, ours, rsync = f"{scratch}/app", f"{scratch}/data", [], []
    for _ in range(REPETITIONS):
        fresh(app), fresh(data)
        install(site, app, data, options=["--release", "1.0.0"])
        time.sleep(0 if SMOKE else 2.5)  # what was written within the last two seconds is read, as it may have changed
        wall = run([VO, "install", f"{site}/d.xml"], environment={"VOAPPDATAPATH": data})[1]
        if FREE_CORES >= 2 and full:
            ours.append(wall)
            if has("rsync"):
                shutil.rmtree(f"{scratch}/extracted", ignore_errors=True)
                shutil.copytree(tree, f"{scratch}/extracted")
                rsync.append(run(["rsync", "-a", "-c", f"{new}/", f"{scratch}/extracted/"])[1])
    limit = 0.2 + 3 * share * full if full else None
    row("update of 2 % installed, over 0.2 s + 3 times its bytes' share", text(median(ours)) if ours else "-",
        text(limit) if limit else "-", "-", median(ours) / limit if ours else None, ("<=", 1.0))
    compare("the same, beside rsync -c", ours, rsync, "rsync -a -c", 1.0)


def measure_update(scratch, tree, full):
    """An update that changes 2 % of the files; full is the time that installing all takes."""
    new = fresh(f"{scratch}/new")
    shutil.copytree(tree, new)
    change(new, 50)
    aged, in_order, data = fresh(f"{scratch}/site"), fresh(f"{scratch}/sorted"), f"{scratch}/data"
    took = []
    for site_tree, version, before in ((tree, "1.0.0", None), (new, "1.1.0", "1.0.0")):
        took.append(publish(site_tree, aged, version)[0])
        publish_sorted(site_tree, in_order, version, before)
    pair = ("1.0.0.0", "1.1.0.0")
    ours = fetched(aged, data)[pair]
    by_path = fetched(in_order, data)[pair]
    alone = int(subprocess.run([FLOOR, "changed", tree, new], check=True, stdout=subprocess.PIPE).stdout)
    casync = "-"
    if has("casync"):
        store = fresh(f"{scratch}/casync.castr")
        sizes = []
        for release in (tree, new):
            run(["casync", "make", "--compression=gzip", f"--store={store}", f"{scratch}/tree.caidx", release])
            sizes.append(store_bytes(store))
        casync = f"{(sizes[1] - sizes[0]) / 1e6:.2f} MB casync"
    row("publish an update of 2 % of the files, processor", text(took[1]), f"{text(took[0])} the first", "-",
        took[1] / took[0], ("<=", 0.25))
    measure_installed_update(scratch, aged, tree, new, ours / fetched(aged, data)[("", "1.1.0.0")], full)
    row("bytes of an update of 2 % of the files", f"{ours / 1e6:.2f} MB",
        f"{alone / 1e6:.2f} MB compressed alone", casync, ours / alone if alone else None, ("<=", 1.2))
    row("the same packed in the order of paths", f"{by_path / 1e6:.2f} MB", f"{ours / 1e6:.2f} MB by age", "-",
        by_path / ours if ours else None)


def measure_patches(scratch, old, new):
    """What is fetched for two builds of a program, whose folders are given."""
    site, data = fresh(f"{scratch}/patched"), f"{scratch}/data"
    publish(old, site, "1.0.0")
    plain = publish(new, fresh(f"{scratch}/plain"), "1.1.0")[0]
    with_patches = run([VO, "publish", new, "--to", f"{site}/d.xml", "--name", "road", "--release", "1.1.0",
                        "--chunk-size", str(CHUNK), "--patches", "1"])[0]
    ours = fetched(site, data)[("1.0.0.0", "1.1.0.0")]
    alone = int(subprocess.run([FLOOR, "changed", old, new], check=True, stdout=subprocess.PIPE).stdout)
    peers = {}
    for path in files_below(new):
        before = old + path[len(new):]
        for name, command in (("bsdiff", ["bsdiff", before, path]), ("xdelta3", ["xdelta3", "-f", "-e", "-9", "-s", before, path])):
            if os.path.exists(before) and shutil.which(name):
                run(command + [f"{scratch}/peer"])
                peers[name] = peers.get(name, 0) + os.path.getsize(f"{scratch}/peer")
    for peer in (Casync, Zsync):
        if shutil.which(peer.name):
            other = peer([old, new], scratch)
            peers[peer.name] = other.bytes(1, 2)
            other.close()
    best = min(peers, key=peers.get) if peers else None
    row("bytes of an update by patches", f"{ours / 1e3:.0f} KB", f"{alone / 1e3:.0f} KB compressed alone", "-",
        ours / alone, ("<=", 0.2))
    row("the same beside the best peer", f"{ours / 1e3:.0f} KB", "-",
        f"{peers[best] / 1e3:.0f} KB {best}" if best else "-", ours / peers[best] if best else None, ("<=", 1.1))
    row("making patches, beside publishing without", text(with_patches - plain), text(plain), "-",
        (with_patches - plain) / plain, ("<=", 1.0))


class Casync:
    """What its users fetch: the chunks of the new index that the old one does not name."""

    name = "casync"

    def __init__(self, trees, scratch):
        self.chunks = [{}]
        for i, tree in enumerate(trees):
            store = fresh(f"{scratch}/casync{i}.castr")
            run(["casync", "make", "--compression=gzip", f"--store={store}", f"{scratch}/tree.caidx", tree])
            self.chunks.append({name: os.path.getsize(os.path.join(at, name))
                                for at, _, names in os.walk(store) for name in names})
            fresh(store)

    def close(self):
        pass

    def bytes(self, old, new):
        return sum(size for name, size in self.chunks[new].items() if name not in self.chunks[old])


class Zsync:
    """Of tar archives of the trees: the control file and the ranges of the compressed archive that it fetches."""

    name = "zsync"

    def __init__(self, trees, scratch):
        self.folder = fresh(f"{scratch}/zsync")
        os.makedirs(f"{self.folder}/www")
        open(f"{self.folder}/www/0.tar", "wb").close()
        for i, tree in enumerate(trees, 1):
            run(["tar", "--sort=name", "--mtime=@0", "--owner=0", "--group=0", "-cf", f"{self.folder}/www/{i}.tar",
                 "-C", tree, "."])
            subprocess.run(["zsyncmake", "-z", "-u", f"{i}.tar.gz", f"{i}.tar"], check=True, cwd=f"{self.folder}/www",
                           stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.url = self.server("start_server \"$1/www\" \"$1/server\" && printf %s \"$http_url\"")

    def server(self, command):
        here = os.path.dirname(os.path.abspath(__file__))
        script = f'. "$2/../scripts/setup.sh"; . "$2/../scripts/server.sh"; {command}'
        return subprocess.run(["bash", "-c", script, "-", self.folder, here], check=True, text=True,
                              stdout=subprocess.PIPE).stdout

    def close(self):
        self.server("stop_server \"$1/server\"")

    def bytes(self, old, new):
        if old == 0:
            return os.path.getsize(f"{self.folder}/www/{new}.tar.gz")
        done = subprocess.run(["zsync", "-i", f"{self.folder}/www/{old}.tar", "-o", f"{self.folder}/out",
                               f"{self.url}/{new}.tar.zsync"], check=True, cwd=self.folder, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT)
        found = re.search(rb"fetched (\d+)", done.stdout)
        return int(found.group(1)) + os.path.getsize(f"{self.folder}/www/{new}.tar.zsync")


def print_matrix(title, trees, scratch, chunk):
    """Publishes the trees by age and by path; kilobytes of every update both ways, and by other programs."""
    aged, in_order, data = fresh(f"{scratch}/site"), fresh(f"{scratch}/sorted"), f"{scratch}/data"
    before = None
    for i, tree in enumerate(trees):
        version = f"1.{i}.0"
        publish(tree, aged, version, chunk=chunk)
        publish_sorted(tree, in_order, version, before, chunk)
        before = version
    by_age, by_path = fetched(aged, data), fetched(in_order, data)
    others = [other(trees, scratch) for other in (Casync, Zsync)
              if has(other.name)]
    versions = [""] + sorted({to for _, to in by_age}, key=lambda v: [int(n) for n in v.split(".")])
    ways = ["by age", "by path"] + [other.name for other in others]
    print(f"\n{title}: kB of the update from the release of the row to that of the column, {' / '.join(ways)}")
    print("    " + " " * 10 + "".join(f"{v[:-2]:>33}" for v in versions[1:]))
    for old, start in enumerate(versions[:-1]):
        cells = []
        for new, to in enumerate(versions[1:], 1):
            sizes = [by_age[start, to], by_path[start, to]] if (start, to) in by_age else []
            sizes += [other.bytes(old, new) for other in others] if sizes else []
            cells.append(" / ".join(str(size // 1000) for size in sizes))
        print("    " + f"{start[:-2] or 'nothing':10}" + "".join(f"{cell:>33}" for cell in cells))
    for other in others:
        other.close()


def generated_history(scratch):
    trees = [f"{scratch}/release0"]
    collect(trees[0], min(MEGABYTES, 64) << 20)
    for i in range(1, 2 if SMOKE else 5):
        trees.append(fresh(f"{scratch}/release{i}"))
        shutil.copytree(trees[i - 1], trees[i])
        change(trees[i], 40, offset=7 * i)
    print_matrix("generated releases, 2.5 % of the files changed by each, chunks of 1 MB", trees, scratch, 1 << 20)


def real_history(scratch):
    """This project's own sources, as they were."""
    root = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
    log = subprocess.run(["git", "-C", root, "log", "--first-parent", "--format=%H"], stdout=subprocess.PIPE,
                         stderr=subprocess.DEVNULL, check=False).stdout.decode().split()
    if len(log) < 10:
        return
    trees = []
    for i, commit in enumerate(reversed(log[0:10 if SMOKE else 50:5 if SMOKE else 10])):
        trees.append(fresh(f"{scratch}/commit{i}"))
        os.makedirs(trees[-1])
        # casync keeps times: those of the commit would make every file a new one.
        subprocess.run(f'git -C "{root}" archive {commit} | tar -x -C "{trees[-1]}" && '
                       f'find "{trees[-1]}" -exec touch -d @0 {{}} +', shell=True, check=True)
    print_matrix("this project's sources, every tenth change, chunks of 64 KB", trees, scratch, 64 << 10)


def scratch_place():
    """A volume in memory where there is room: the disk's own work is no part of the comparison."""
    if os.path.isdir("/dev/shm") and shutil.disk_usage("/dev/shm").free > 16 * (MEGABYTES << 20):
        return "/dev/shm"
    return os.environ.get("TMPDIR", "/tmp")


def main():
    scratch = tempfile.mkdtemp(prefix="vocore-road.", dir=scratch_place())
    try:
        tree = f"{scratch}/tree"
        size = collect(tree, MEGABYTES << 20)
        published = measure_publish(scratch, tree, size)
        installed, full = measure_install(scratch, tree, size)
        for job, peak in (("publish", published), ("install", installed)):
            row(f"memory of {job}, in MB", f"{peak >> 10} MB", "-", "-", peak / 1024, ("<=", 64))
        measure_verify(scratch, tree)
        measure_update(scratch, tree, full)
        measure_start()
        # Two folders with builds of one program: there are none that are the same everywhere.
        if "VOCORE_TWO_BUILDS" in os.environ:
            measure_patches(scratch, *os.environ["VOCORE_TWO_BUILDS"].split(":"))
        generated_history(scratch)
        real_history(scratch)
    finally:
        shutil.rmtree(scratch, ignore_errors=True)


main()
