#!/usr/bin/env python3
"""Measures a large carousel all the way: a folder, tsmake, the service, the library, and a browser that writes it.

    measure_carousel.py BUILD_FOLDER [MEGABYTES] [VERSIONS]

The folder has 1000 files with MEGABYTES (20) of bytes that do not compress, in VERSIONS (3), of which every tenth file
differs. The broadcast has 40 Mbit/s and sends each version for three cycles. A browser gets the files again and again,
until it has got every version. Each line has the version, the files that differ from their folder, the time of the
browser's start until it has written all files, and that time in cycles. Fails if a byte differs, or if files of two
versions are mixed.
"""
import filecmp
import json
import os
import random
import shutil
import subprocess
import sys
import tempfile
import time

FILES = 1000
BIT_RATE = 40_000_000
CYCLES = 3
LONGEST = 300  # seconds


def write_folders(base, size, versions):
    for version in range(versions):
        for index in range(FILES):
            seed = index + (version * FILES if index % 10 == 0 else 0)
            path = f"{base}/version{version}/folder{index % 10}/file{index}"
            os.makedirs(os.path.dirname(path), exist_ok=True)
            with open(path, "wb") as file:
                file.write(random.Random(seed).randbytes(size // FILES))


def write_broadcast(build, base, seconds, versions):
    description = {
        "bitRate": BIT_RATE + 1_000_000, "originalNetworkId": 1, "transportStreamId": 1,
        "services": [{
            "id": 1, "components": [{"kind": "video"}],
            "carousels": [{"bitRate": BIT_RATE, "versions": [
                {"second": seconds * version, "folder": f"version{version}"} for version in range(versions)]}]}]}
    with open(base + "/carousel.json", "w", encoding="utf-8") as file:
        json.dump(description, file)
    subprocess.run([build + "/bin/tsmake", base + "/carousel.ts", "--description", base + "/carousel.json", "--seconds",
                    str(seconds * versions)], check=True)


def differences(some, others):
    names = [os.path.join(f"folder{index % 10}", f"file{index}") for index in range(FILES)]
    _, different, missing = filecmp.cmpfiles(some, others, names, shallow=False)
    return len(different) + len(missing)


def read(build, base, cycle):
    """Gets the files once; returns the version that they are."""
    shutil.rmtree(base + "/received", ignore_errors=True)
    begin = time.monotonic()
    subprocess.run([build + "/bin/dvbshell", "carousel", "1", "--seconds", str(LONGEST), "--out", base + "/received"],
                   check=True, stdout=subprocess.DEVNULL)
    taken = time.monotonic() - begin
    folders = sorted(folder for folder in os.listdir(base) if folder.startswith("version"))
    different, folder = min((differences(base + "/" + folder, base + "/received"), folder) for folder in folders)
    print(f"{folder}: {different} files differ, {taken:.1f} s, {taken / cycle:.2f} cycles", flush=True)
    if different:
        sys.exit(1)
    return folder


def main():
    build = os.path.abspath(sys.argv[1])
    size = int(float(sys.argv[2]) * 1_000_000) if len(sys.argv) > 2 else 20_000_000
    versions = int(sys.argv[3]) if len(sys.argv) > 3 else 3
    with tempfile.TemporaryDirectory(prefix="dtv-carousel-") as base:
        os.environ["DTV_RUN_DIR"] = base + "/run"
        cycle = size * 8 / BIT_RATE
        write_folders(base, size, versions)
        write_broadcast(build, base, max(1, round(cycle * CYCLES)), versions)
        with subprocess.Popen([build + "/bin/dtvserviced", "--input", base + "/carousel.ts"],
                              stdout=subprocess.PIPE, text=True) as service:
            try:
                while "ready" not in service.stdout.readline():
                    pass
                seen = set()
                end = time.monotonic() + LONGEST
                while len(seen) < versions and time.monotonic() < end:
                    seen.add(read(build, base, cycle))
            finally:
                service.terminate()
        if len(seen) < versions:
            sys.exit(f"only {len(seen)} of {versions} versions in {LONGEST} s")


if __name__ == "__main__":
    main()
