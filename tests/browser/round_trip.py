#!/usr/bin/env python3
"""Takes a large carousel all the way: folders, tsmake, the service, the library, and a page of tvbrowser, which reads each
file again and again while the carousel changes.
  round_trip.py BUILD_FOLDER [MEGABYTES]
The folder has 1000 files with MEGABYTES (20) of bytes that do not compress, in three versions, of which every tenth file
differs, at 40 Mbit/s. Each line has what the page has read in one go: one version, or one version up to a file and the
next version from there on. Fails if a byte differs, or if files of two versions are mixed.
"""
import os
import random
import sys
import tempfile
import time
import zlib

import measured_programs
from measured_programs import Lines

HERE = os.path.dirname(os.path.abspath(__file__))
FILES = 1000
VERSIONS = 3
BIT_RATE = 40_000_000
CYCLES = 3  # of each version
LONGEST = 300  # seconds


def write_folders(base, size):
    """Returns the sums of the files of each version."""
    sums = []
    for version in range(VERSIONS):
        folder = f"{base}/version{version}"
        sums.append([])
        for index in range(FILES):
            seed = index + (version * FILES if index % 10 == 0 else 0)
            content = random.Random(seed).randbytes(size // FILES)
            os.makedirs(f"{folder}/folder{index % 10}", exist_ok=True)
            with open(f"{folder}/folder{index % 10}/file{index}", "wb") as file:
                file.write(content)
            sums[-1].append(format(zlib.crc32(content), "x"))
        with open(f"{HERE}/pages/round_trip.html", encoding="utf-8") as page:
            with open(f"{folder}/index.html", "w", encoding="utf-8") as file:
                file.write(page.read())
    return sums


def write_broadcast(build, base, seconds):
    application = {"organisation": 400, "id": 1, "control": "autostart", "name": "Round trip", "carousel": 32,
                   "path": f"index.html?{FILES}"}
    description = {
        "bitRate": BIT_RATE + 1_000_000, "originalNetworkId": 1, "transportStreamId": 1,
        "services": [{
            "id": 1, "components": [{"kind": "video"}],
            "ait": {"versions": [{"version": 1, "applications": [application]}]},
            "carousels": [{"tag": 32, "bitRate": BIT_RATE, "versions": [
                {"second": seconds * version, "folder": f"version{version}"} for version in range(VERSIONS)]}]}]}
    return measured_programs.write(build, base, description, seconds * VERSIONS)


def versions_of(sums, known):
    """The version that the page has read, or the two of a reading in which the carousel has changed."""
    for first in range(VERSIONS):
        until = next((file for file in range(FILES) if sums[file] != known[first][file]), FILES)
        if until == FILES:
            return str(first), {first}
        following = (first + 1) % VERSIONS
        if until > 0 and sums[until:] == known[following][until:]:
            return f"{first}, from file {until} on {following}", set()
    return None, set()


def main():
    build = os.path.abspath(sys.argv[1])
    size = int(float(sys.argv[2]) * 1_000_000) if len(sys.argv) > 2 else 20_000_000
    with tempfile.TemporaryDirectory(prefix="dtv-carousel-") as base:
        os.environ["DTV_RUN_DIR"] = base + "/run"
        known = write_folders(base, size)
        path = write_broadcast(build, base, max(1, round(size * 8 / BIT_RATE * CYCLES)))
        service = Lines([f"{build}/bin/dtvserviced", "--input", path])
        service.until("ready")
        browser = Lines([f"{build}/bin/tvbrowser"])
        seen = set()
        end = time.monotonic() + LONGEST
        while len(seen) < VERSIONS and time.monotonic() < end:
            text, whole = versions_of(browser.until("page: sums ").split(","), known)
            print(f"version {text}" if text else "a mixture", flush=True)
            if not text:
                break
            seen |= whole
        browser.end()
        service.end()
        if len(seen) < VERSIONS:
            sys.exit(f"{len(seen)} of {VERSIONS} versions have come as a whole")


main()
