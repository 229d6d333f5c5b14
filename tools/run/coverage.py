#!/usr/bin/env python3
"""Prints what the tests have executed: lines and branches of each file, of each room, and in all.

    coverage.py PROJECT BUILD_FOLDER

BUILD_FOLDER/counters has the counters of all processes. The table goes to standard output and to
BUILD_FOLDER/coverage.txt, the lines of each file with their counts to BUILD_FOLDER/html. The library's own sources come
last, those behind the list of messages, which are expanded for every message, just before.
"""
import glob
import json
import os
import re
import subprocess
import sys

LIBRARY = "src/"
EXPANDED = re.compile(r'^#include "browserdvbservice_messages\.inc"', re.MULTILINE)
LEFT_OUT = ("tests/", "build/")
INSTRUMENTED = b"__llvm_covmap"


def programs(build):
    """The programs and libraries with coverage maps."""
    found = []
    for path in sorted(glob.glob(build + "/bin/*") + glob.glob(build + "/lib/*.so")):
        with open(path, "rb") as file:
            if INSTRUMENTED in file.read():
                found += ["-object", path]
    return found


def merged(build):
    profile = build + "/coverage.profdata"
    counters = sorted(glob.glob(build + "/counters/*.profraw"))
    if not counters:
        sys.exit("coverage: no counters; run the tests first")
    subprocess.run(["llvm-profdata", "merge", "-sparse", *counters, "-o", profile], check=True)
    return profile


def counts(project, build, profile):
    """(lines, covered lines, branches, covered branches) by the file's path in the project."""
    # llvm-cov warns of inline functions that a program declares and never uses.
    export = subprocess.run(["llvm-cov", "export", "-summary-only", "-instr-profile", profile, *programs(build)],
                            check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout
    table = {}
    for file in json.loads(export)["data"][0]["files"]:
        path = os.path.relpath(os.path.realpath(file["filename"]), project)
        if path.startswith("../") or path.startswith(LEFT_OUT):
            continue
        lines, branches = file["summary"]["lines"], file["summary"]["branches"]
        table[path] = (lines["count"], lines["covered"], branches["count"], branches["covered"])
    return table


def room_of(project, path):
    if path.startswith(LIBRARY):
        return "the library's own sources"
    if path.startswith("frame-genrpc/"):
        with open(f"{project}/{path}", encoding="utf-8") as file:
            if EXPANDED.search(file.read()) or path.endswith(".inc"):
                return "expanded for every message"
    return os.path.dirname(path)


def total(figures):
    return tuple(map(sum, zip(*figures)))


def share(covered, count):
    return f"{100 * covered / count:6.1f} %" if count else "       -"


def row(name, figures):
    lines, covered, branches, taken = figures
    return (f"{name:78} {covered:>6} of {lines:<6} {share(covered, lines)}  {taken:>6} of {branches:<6} "
            f"{share(taken, branches)}")


def report(project, table):
    rooms = {}
    for path, figures in table.items():
        rooms.setdefault(room_of(project, path), {})[path] = figures
    last = ["expanded for every message", "the library's own sources"]
    order = sorted(set(rooms) - set(last)) + [room for room in last if room in rooms]
    text = [f"{'':78} {'lines':^26} {'branches':^26}"]
    for room in order:
        text += [""] + [row("  " + path, rooms[room][path]) for path in sorted(rooms[room])]
        text.append(row(room, total(rooms[room].values())))
    text += ["", row("everything", total(table.values()))]
    text += [row(room, total(rooms[room].values())) for room in last if room in rooms]
    return "\n".join(text) + "\n"


def main():
    project, build = map(os.path.realpath, sys.argv[1:3])
    profile = merged(build)
    text = report(project, counts(project, build, profile))
    with open(build + "/coverage.txt", "w", encoding="utf-8") as file:
        file.write(text)
    print(text, end="")
    subprocess.run(["llvm-cov", "show", "-format=html", "-output-dir=" + build + "/html", "-show-branches=count",
                    "-ignore-filename-regex=/(tests|build)/|^/usr/", "-instr-profile", profile, *programs(build)],
                   check=True, stderr=subprocess.DEVNULL)
    print(f"each line's count: {os.path.relpath(build, project)}/html/index.html")


if __name__ == "__main__":
    main()
