#!/usr/bin/env python3
"""Measures an application out of a carousel: from the moment that the browser begins to read to its first page, and to
all files, against the length of the carousel's cycle. Each run begins at another place of the cycle.
  measure_carousel.py BUILD_FOLDER [RUNS]        10 runs if not given; each takes about two cycles of 8.5 seconds
Nothing is pinned to a processor.
"""
import os
import random
import statistics
import sys
import tempfile
import time

import measured_programs
from measured_programs import Lines, row

HERE = os.path.dirname(os.path.abspath(__file__))
FILES = 40
FILE_BYTES = 25000
BIT_RATE = 8000000  # of the broadcast
CAROUSEL_BIT_RATE = 1000000
SECONDS = 60
PACKET = 188
DATA_BLOCK = 0x3C


def broadcast(build, folder):
    """A carousel of files that cannot be compressed, and a page that asks for all of them."""
    content = os.path.join(folder, "content")
    os.mkdir(content)
    for number in range(FILES):
        with open(f"{content}/file{number}", "wb") as file:
            file.write(random.Random(number).randbytes(FILE_BYTES))
    with open(f"{HERE}/pages/measure_carousel.html", encoding="utf-8") as page:
        with open(f"{content}/index.html", "w", encoding="utf-8") as file:
            file.write(page.read())
    description = measured_programs.sample(build)
    description["bitRate"] = BIT_RATE
    for service in description["services"]:
        service.pop("ait", None)
    application = {"organisation": 400, "id": 1, "control": "autostart", "name": "Measure", "carousel": 32,
                   "path": f"index.html?{FILES}"}
    description["services"][0]["ait"] = {"versions": [{"version": 1, "applications": [application]}]}
    description["services"][0]["carousels"] = [
        {"folder": content, "tag": 32, "pid": 900, "bitRate": CAROUSEL_BIT_RATE, "compress": False}]
    return measured_programs.write(build, folder, description, SECONDS)


def cycle_of(path):
    """Seconds between two first blocks of the first module."""
    with open(path, "rb") as file:
        stream = file.read()
    first = None
    times = []
    for at in range(0, len(stream), PACKET):
        if (stream[at + 1] & 0x5F) << 8 | stream[at + 2] != 0x4000 | 900:  # a section begins in a packet of the PID
            continue
        section = at + 5 + stream[at + 4]
        if stream[section] == DATA_BLOCK:
            # After the header of the section and that of the message: module, version, reserved, block.
            block = stream[section + 20:section + 22] + stream[section + 24:section + 26]
            first = first or block
            if block == first:
                times.append(at * 8 / BIT_RATE)
    if len(times) < 2:
        sys.exit("the broadcast is too short for a cycle")
    return (times[-1] - times[0]) / (len(times) - 1)


def run(build, path, wait):
    """Seconds to the first page and to all files, in cycles."""
    service = Lines([f"{build}/bin/dtvserviced", "--input", path])
    service.until("ready")
    time.sleep(wait)  # another place of the cycle
    browser = Lines([f"{build}/bin/tvbrowser"])
    browser.until("application: load")
    start = time.time()
    browser.until("application 190.1 is loaded")
    page = time.time() - start
    total = int(browser.until("page: all "))
    every = time.time() - start
    if total != FILES * FILE_BYTES:
        sys.exit(f"{total} bytes have come, not {FILES * FILE_BYTES}")
    browser.end()
    service.end()
    return page, every


def spread(times, cycle):
    ordered = sorted(time / cycle for time in times)
    return f"{statistics.median(ordered):.2f} [{ordered[0]:.2f}, {ordered[-1]:.2f}] cycles"


def main():
    build = os.path.abspath(sys.argv[1])
    runs = int(sys.argv[2]) if len(sys.argv) > 2 else 10
    with tempfile.TemporaryDirectory() as folder:
        os.environ["DTV_RUN_DIR"] = folder
        path = broadcast(build, folder)
        cycle = cycle_of(path)
        row("length of a cycle, s", f"{cycle:.2f}")
        results = [run(build, path, cycle * number / runs) for number in range(runs)]
    row(f"to the first page, median and extremes of {runs}", spread([page for page, _ in results], cycle))
    row(f"to all {FILES} files, median and extremes of {runs}", spread([every for _, every in results], cycle))


main()
