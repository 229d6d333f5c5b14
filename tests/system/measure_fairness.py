#!/usr/bin/env python3
"""Measures how much two browsers that flood the service delay a third one.

    measure_fairness.py BUILD_FOLDER [SECONDS] [ROUNDS]

The third browser asks usual questions through the library: one that an event answers, an audio source, a section
filter. It does so SECONDS (52) without the flood and SECONDS with it, ROUNDS (1) times. Each flooding browser sends
commands as fast as the service takes them, in 52 seconds a hundred times as many as may wait: good and bad ones,
filters, PMT requests, stream events, and packets that are none. The last line has median and 99th percentile of the
answer times without and with the flood, and their ratios; the goal is at most 2.
"""
import os
import statistics
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "soak"))
from programs import Browser, Program, Service, percentile, shown  # noqa: E402  (after the path)

MOST_THAT_WAIT = 1000  # commands of one browser, docs/reference-service.md
WARM_UP = 0.5
LONGEST_FOR_AN_ANSWER = 60


def wait_for_an_answer(asking):
    """Whatever else the machine does, a browser that starts needs its time."""
    end = time.monotonic() + LONGEST_FOR_AN_ANSWER
    while not asking.answers.times and time.monotonic() < end:
        time.sleep(0.01)


def measure(asking, seconds):
    time.sleep(WARM_UP)
    asking.answers.take()
    wait_for_an_answer(asking)
    time.sleep(seconds)
    return asking.answers.take()


def flooded(build, folder, asking, seconds):
    """The times during a flood, the answers that did not come, and how many commands the slower flood has sent."""
    floods = [Program([build + "/bin/flooding_browser"], folder, f"flood{index}", subprocess.PIPE) for index in (1, 2)]
    times, lost = measure(asking, seconds)
    for flood in floods:
        if flood.process.poll() is not None:
            sys.exit(f"a flooding browser ended with {flood.process.poll()}")
        flood.process.terminate()
    sent = [flood.process.communicate()[0].split() for flood in floods]
    return times, lost, min(int(words[-1]) if words else 0 for words in sent)


def main():
    build = sys.argv[1]
    seconds = float(sys.argv[2]) if len(sys.argv) > 2 else 52
    rounds = int(sys.argv[3]) if len(sys.argv) > 3 else 1
    calm, under, lost, fewest = [], [], 0, None
    with tempfile.TemporaryDirectory(prefix="dtv-fairness-") as folder:
        service = Service(build, [build + "/share/dtv/sample.ts"], folder, "service")
        asking = Browser([build + "/bin/soak_browser", "ask"], folder, "asking")
        for _ in range(rounds):
            times, missing = measure(asking, seconds)
            calm += times
            lost += missing
            times, missing, sent = flooded(build, folder, asking, seconds)
            under += times
            lost += missing
            fewest = sent if fewest is None else min(fewest, sent)
        asking.end()
        service.end()
    if not calm or not under:
        sys.exit("no answers")
    print(f"without the flood: {len(calm)} answers, {shown(calm)}")
    print(f"with the flood:    {len(under)} answers, {shown(under)}; {lost} did not come; each flooding browser sent "
          f"{fewest} commands or more at a time, {fewest / MOST_THAT_WAIT:.0f} times the limit")
    medians = [statistics.median(times) for times in (calm, under)]
    highs = [percentile(times, 0.99) for times in (calm, under)]
    print(f"median {medians[0]:.0f} and {medians[1]:.0f} us: {medians[1] / medians[0]:.2f} times as much; "
          f"99th percentile {highs[0]:.0f} and {highs[1]:.0f} us: {highs[1] / highs[0]:.2f} times as much")


if __name__ == "__main__":
    main()
