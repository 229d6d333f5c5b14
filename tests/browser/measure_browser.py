#!/usr/bin/env python3
"""Measures a television's browser: from its start to the first programme in a page; from a key to the event of the tune
that it causes, in the page; memory of the web process with the library and while it tunes.
  measure_browser.py BUILD_FOLDER [TUNES]        1000 tunes if not given
All services of the broadcast signal the same application, so it goes on from channel to channel. Nothing is pinned to a
processor.
"""
import os
import re
import statistics
import sys
import tempfile
import time

import measured_programs
from measured_programs import Lines, row

HERE = os.path.dirname(os.path.abspath(__file__))
def broadcast(build, folder, url):
    """The sample; every service has the page as its application."""
    description = measured_programs.sample(build)
    application = {"organisation": 400, "id": 1, "control": "autostart", "name": "Measure", "urlBase": url,
                   "path": "measure.html"}
    for service in description["services"]:
        service["ait"] = {"versions": [{"version": 1, "applications": [application]}]}
    return measured_programs.write(build, folder, description)


def web_process(browser):
    """The engine's web process among the children of tvbrowser."""
    for entry in os.listdir("/proc"):
        if entry.isdigit():
            try:
                with open(f"/proc/{entry}/stat", encoding="utf-8") as file:
                    name, rest = file.read().rsplit(")", 1)
            except OSError:
                continue
            if name.endswith("(WPEWebProcess") and int(rest.split()[1]) == browser.process.pid:
                return int(entry)
    sys.exit("there is no web process")


def resident(process):
    """Resident memory, in KiB."""
    with open(f"/proc/{process}/smaps_rollup", encoding="utf-8") as file:
        return int(re.search(r"^Rss:\s+(\d+)", file.read(), re.M).group(1))


def tune(browser):
    """Milliseconds from the key to the event."""
    start = time.time() * 1000
    browser.say("key GREEN")
    return float(browser.until("page: tuned ")) - start


def measure(build, folder, tunes):
    pages = Lines([f"{HERE}/serve_pages.py", f"{HERE}/pages"])
    url = f"http://127.0.0.1:{pages.until('port ')}/"
    service = Lines([f"{build}/bin/dtvserviced", "--input", broadcast(build, folder, url)])
    service.until("ready")
    start = time.time() * 1000
    browser = Lines([f"{build}/bin/tvbrowser"])
    memory = browser.until("extension: ")
    known = float(browser.until("page: programme ").split()[0]) - start
    row("from the start to the first programme in the page, ms", f"{known:.0f}")
    row("the library in the web process", memory)
    process = web_process(browser)
    times = [tune(browser) for _ in range(100)]
    quarters = statistics.quantiles(times, n=4)
    row("from the key to ChannelChangeSucceeded in the page, ms",
        f"{statistics.median(times):.1f} [{quarters[0]:.1f}, {quarters[2]:.1f}], highest {max(times):.1f}, of 100")
    before = resident(process)
    row("memory of the web process after 100 tunes, KiB", before)
    for _ in range(tunes - 100):
        tune(browser)
    row(f"memory of the web process after {tunes} tunes, KiB", f"{resident(process)} ({resident(process) - before:+})")
    for program in (browser, service, pages):
        program.end()


def main():
    build = os.path.abspath(sys.argv[1])
    tunes = int(sys.argv[2]) if len(sys.argv) > 2 else 1000
    with tempfile.TemporaryDirectory() as folder:
        os.environ["DTV_RUN_DIR"] = folder
        measure(build, folder, tunes)


main()
