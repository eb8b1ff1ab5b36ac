#!/usr/bin/env python3
"""Fails when includes run upwards between the folders of src/ or the rooms of its updater, or in a circle between files.

A folder may include itself and those that stand before it in ROWS. The few arrows that run the other way are in UPWARDS,
each with its reason; one that is not used any more fails too, so that the list stays true.
"""
import fnmatch
import pathlib
import re
import sys

SRC = pathlib.Path(__file__).resolve().parent.parent / "src"
ROWS = ["Core", "Time", "FileSystem", "IO", "Subsystem", "Threading", "Actions", "XML", "Documents", "Maths", "Download",
        "Signing", "Misc/XMLReport", "Updater", "Application", "Shell", "Gui"]
UPWARDS = {
    # The public values of Core whose text or content is a path's, a file's or an element's; their places are fixed.
    ("Core/VoFileException", "FileSystem"), ("Core/VoXMLException", "FileSystem"), ("Core/VoXMLException", "XML"),
    ("Core/VoVariant", "FileSystem"),
    ("Core/VoFileException", "IO"), ("Core/VoByteBuffer", "IO"),
    # A digest reads its file itself, past the devices and their buffers.
    ("Core/VoChecksum", "FileSystem"),
    # The atomic writer is written to as a device.
    ("FileSystem/VoAtomicFileWriter", "IO"),
    # What a destructor cannot throw, it logs.
    ("FileSystem/VoTemporaryDir", "Subsystem"), ("FileSystem/VoTemporaryFile", "Subsystem"),
    # Log sinks are kept as broadcasters keep their callbacks.
    ("Subsystem/VoLogging", "Threading"), ("Subsystem/LogConfiguration", "Threading"),
}
# The rooms of Updater/detail, and the public files that stand in the row of each.
ROOMS = {
    "documents": ["XMLObject", "Abstract*Listing", "AbstractPackage", "Advertised*", "Chunk*Listing", "Installed*Listing",
                  "PackageDifferences", "ReleaseAttributes", "ReleaseKeys", "ReleaseManifest", "ReleasePatches",
                  "ReleaseSigning", "TrustPolicy", "VoStagedReleaseException",
                  "VoUntrustedReleaseException", "VoUpdater", "VoDataProgress"],
    "files": [],
    "publish": ["AbstractPackageBuilder", "PackageBuilder", "UpdatePackageBuilder", "PackingOrder", "ReleaseSigner"],
    "registry": ["PackageSources"],
    "install": ["UpdateMessages", "AbstractPackageInstaller", "PackageInstaller", "PackageVerifier", "InstallationOptions",
                "InstallationPlan", "UpdateCost", "VerificationReport", "VoInstallationFailedException"],
    "operations": ["InstalledPackages*", "PackageUpdate", "StagedInstallation", "TrustedReleases"],
}
INCLUDE = re.compile(r'^\s*#\s*include\s*[<"]([^>"]+)[>"]', re.MULTILINE)


def folder(name):
    return next((row for row in ROWS if name.startswith(row + "/")), None)


def room(name):
    """The number of a file's room in the updater; None elsewhere."""
    stem, _, private = name.rsplit(".", 1)[0].removeprefix("Updater/").partition("detail/")
    if not name.startswith("Updater/"):
        return None
    for number, (title, public) in enumerate(ROOMS.items()):
        if private.startswith(title + "/") or any(fnmatch.fnmatchcase(stem, pattern) for pattern in public):
            return number
    return -1


def circle(edges):
    """A circle of files, or None; edges: file -> files that it includes."""
    done, path = set(), []

    def visit(name):
        if name in path:
            return path[path.index(name):] + [name]
        if name in done:
            return None
        path.append(name)
        found = next(filter(None, map(visit, edges.get(name, ()))), None)
        path.pop()
        done.add(name)
        return found

    return next(filter(None, map(visit, edges)), None)


def main():
    files = {path.relative_to(SRC).as_posix(): path for path in SRC.rglob("*") if path.suffix in (".h", ".cpp")}
    edges = {name: [other for other in INCLUDE.findall(path.read_text()) if other in files] for name, path in files.items()}
    problems, used = [], set()
    for name, others in edges.items():
        if folder(name) is None:
            problems.append(f"{name}: its folder has no row")
            continue
        if room(name) == -1:
            problems.append(f"{name}: the updater has no room for it")
        for other in others:
            if room(name) is not None and room(other) is not None and room(other) > room(name):
                problems.append(f"{name} includes {other}: that room stands above its own")
            if ROWS.index(folder(other)) <= ROWS.index(folder(name)):
                continue
            arrow = (name.rsplit(".", 1)[0], folder(other))
            used.add(arrow)
            if arrow not in UPWARDS:
                problems.append(f"{name} includes {other}: {folder(other)} stands above {folder(name)}")
    problems += [f"{stem} does not include {row} any more" for stem, row in sorted(UPWARDS - used)]
    if found := circle(edges):
        problems.append("circle: " + " -> ".join(found))
    print("\n".join(problems) or f"includes of {len(files)} files: downwards, no circle")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
