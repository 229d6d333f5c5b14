#!/usr/bin/env python3
"""Runs the measurements and prints what this project takes beside what somebody would use instead.

measure.py BUILD [FILTER] [--quick]   programs in BUILD/bin; FILTER is a regular expression for the measurements' names

All figures of a row come from one run, in which the measurements of a program take turns in random order. A ratio is the
other's time by ours, so more is better: its median over the repetitions, with the quarters around it in brackets. The
figures of each repetition go to BUILD/measurements.json. With --quick, nothing is measured long enough to tell anything.
"""
import json
import os
import re
import statistics
import subprocess
import sys
from dataclasses import dataclass

import listing
import service_memory

PROGRAMS = ["measure_messages", "measure_monitoring", "measure_zapping", "measure_starting", "measure_sections",
            "measure_parsing", "measure_carousels", "measure_log_lines"]
PROCESSES = {"listing": listing.measure, "the service's memory": service_memory.measure}


@dataclass
class Effort:
    """How often and how long each measurement runs."""

    repetitions: int
    seconds: float
    bytes: int  # of a broadcast at most


@dataclass
class Row:
    """One line of the table: the median of `figure`, in nanoseconds or of a counter, of two measurements.

    A row without a goal helps to understand another.
    """

    title: str
    ours: str
    peer: str
    goal: float | None
    figure: str = "real_time"


def round_trips():
    for size, what in ((0, "no text"), (256, "256 B of text"), (4096, "4096 B of text")):
        place = f"cpus:1/bytes:{size}/real_time"
        peers = [("raw", 0.85)] if size == 4096 else [("raw", 0.85), ("asio", 1.3), ("sd_bus", 1.8)]
        for peer, goal in peers:
            yield Row(f"round trip, {what}, one CPU, by {peer}", f"round_trip/ours/{place}",
                      f"round_trip/{peer}/{place}", goal, "p50_us")
    yield Row("commands one way, two CPUs, by raw", "one_way/ours/cpus:2/real_time", "one_way/raw/cpus:2/real_time", 0.85)


def sections():
    for cpus, on in ((2, "two CPUs"), (1, "one CPU")):
        for size in (1024, 4096):
            for filters in (1, 10, 100, 1000):
                ours = f"sections/ours/cpus:{cpus}/filters:{filters}/bytes:{size}/real_time"
                peer = f"sections/raw_queue/cpus:{cpus}/filters:1/bytes:{size}/real_time"
                yield Row(f"sections of {size} B, {filters} filters, {on}, by a raw queue", ours, peer,
                          1.1 if filters == 1000 else 1.2)


def lists():
    for what, title in (("pictures", "--list of 300 MB"), ("tables", "--list of 300 MB with EIT schedule and carousel")):
        for peer, goal in (("cat", 0.5), ("avformat", 1)):
            yield Row(f"{title}, by {peer}", f"listing/ours/{what}", f"listing/{peer}/{what}", goal)


def zapping():
    for answers, what, goal in ((1, "one raw trip", 0.33), (10, "a raw question with 10 answers", None)):
        yield Row(f"tune to channel, PMT, EIT and AIT, one CPU, by {what}", "zapping/ours/real_time",
                  f"zapping/raw/answers:{answers}/real_time", goal, "p50_us")


ROWS = [
    *round_trips(),
    *sections(),
    Row("assembly of sections, by libbitstream", "assembly/ours", "assembly/libbitstream", 4),
    Row("assembly of sections, by libdvbpsi", "assembly/ours", "assembly/libdvbpsi", 1),
    *lists(),
    *zapping(),
    Row("command and event with a monitor, one CPU, by none", "monitor/monitors:1/real_time",
        "monitor/monitors:0/real_time", 0.91),
    Row("the same, the median of the trips", "monitor/monitors:1/real_time", "monitor/monitors:0/real_time", 0.91,
        "p50_us"),
    Row("carousel with compressed modules, by zlib alone", "carousel/read/compressed", "carousel/zlib/compressed", 0.8),
    Row("log line to a file, by snprintf and write", "log/wanted", "log/by_hand", 0.91),
]


def figures_of(results):
    """By measurement and figure: the values of all repetitions, in their order."""
    figures = {}
    for each in results:
        if each.get("run_type") != "iteration":
            continue
        if each.get("error_occurred"):
            raise SystemExit(f"bench: {each['name']}: {each['error_message']}")
        for name in ("real_time", "p50_us", "kib", "bytes_per_second", "memory", "memory_of_update"):
            if name in each:
                figures.setdefault((each["name"], name), []).append(each[name])
    return figures


def spread(values):
    low, _, high = statistics.quantiles(values, n=4) if len(values) > 1 else values * 3
    return f"{statistics.median(values):.2f} [{low:.2f}, {high:.2f}]"


def shown(value, figure):
    if figure.endswith("_us"):
        return f"{value:.2f} us"
    return f"{value:.1f} ns" if value < 1e5 else f"{value / 1e6:.2f} ms"


def judged(text, goal, reached):
    """The last two cells: nothing without a goal."""
    return ["", ""] if goal is None else [text, "yes" if reached else "no"]


def ratio_line(row, figures):
    """Nothing if one of the two was not measured."""
    ours, peer = figures.get((row.ours, row.figure)), figures.get((row.peer, row.figure))
    if not ours or not peer:
        return None
    ratios = [theirs / mine for mine, theirs in zip(ours, peer)]
    reached = row.goal is not None and statistics.median(ratios) >= row.goal
    return [row.title, shown(statistics.median(ours), row.figure), shown(statistics.median(peer), row.figure),
            spread(ratios), *judged(f">= {row.goal}", row.goal, reached)]


def limit_line(title, values, limit, unit):
    reached = limit is not None and statistics.median(values) <= limit
    return [title, f"{statistics.median(values):.2f} {unit}", "", spread(values),
            *judged(f"<= {limit} {unit}", limit, reached)]


def least_line(title, values, least, unit):
    reached = "yes" if statistics.median(values) >= least else "no"
    return [title, f"{statistics.median(values):.0f} {unit}", "", spread(values), f">= {least} {unit}", reached]


def carousel_lines(figures):
    for modules in ("plain", "compressed"):
        speed = figures.get((f"carousel/read/{modules}", "bytes_per_second"))
        if speed:
            yield least_line(f"reading a carousel, {modules} modules", [each / 1e6 for each in speed], 30, "MB/s")
        for name, what, limit in (("memory", "memory of a carousel", 1.2),
                                  ("memory_of_update", "memory while it changes", 2.4)):
            memory = figures.get((f"carousel/keep/{modules}", name))
            if memory:
                yield limit_line(f"{what}, {modules} modules, by its files", memory, limit, "times")


def other_lines(figures):
    """Rows that are no ratio to a peer."""
    few, many = (figures.get((f"listeners/listeners:{count}/real_time", "real_time")) for count in (1, 100))
    if few and many:
        yield limit_line("each listener more of an event", [(b - a) / 99 for a, b in zip(few, many)], 15, "ns")
    yield from carousel_lines(figures)
    unwanted, none = (figures.get((f"log/{line}", "real_time")) for line in ("unwanted", "no_line"))
    if unwanted and none:
        yield limit_line("log line that nobody wants, beyond none", [a - b for a, b in zip(unwanted, none)], 1, "ns")
    unwatched, none = (figures.get((f"tap/{tap}/real_time", "real_time")) for tap in ("unwatched", "none"))
    if unwatched and none:
        yield limit_line("message at a tap that nobody watches, beyond none", [a - b for a, b in zip(unwatched, none)],
                         1, "ns")
    start, raw = (figures.get((f"start/{who}/iterations:5/manual_time", "real_time")) for who in ("ours", "raw"))
    if start and raw:
        yield limit_line("start: dlopen to the first command sent, beyond a raw connection",
                         [(mine - theirs) / 1e6 for mine, theirs in zip(start, raw)], 2, "ms")
    memory = figures.get(("start/memory/iterations:1", "kib"))
    if memory:
        yield limit_line("memory of the library beyond what it needs", memory, 1024, "KiB")
    alone, crowded = (figures.get((f"browsers/browsers:{count}/real_time", "p50_us")) for count in (1, 64))
    if alone and crowded:
        yield limit_line("round trip with 63 more browsers connected by one alone",
                         [b / a for a, b in zip(alone, crowded)], 1.2, "times")
    one, ten, hundred = (figures.get((f"memory/services:{count}", "kib")) for count in (1, 10, 100))
    if one and ten and hundred:
        grown = list(zip(one, ten, hundred))
        yield limit_line("memory of dtvserviced for each service more", [(c - a) / 99 for a, _, c in grown], None,
                         "KiB")
        yield limit_line("the same between 10 and 100 services by between 1 and 10",
                         [(c - b) / 90 / ((b - a) / 9) for a, b, c in grown], 1.5, "times")
    for cpus in (1, 2):
        one, thousand = (figures.get((f"sections/ours/cpus:{cpus}/filters:{count}/bytes:1024/real_time", "real_time"))
                         for count in (1, 1000))
        if one and thousand:
            yield limit_line(f"section at 1000 filters by one at 1, {cpus} CPU",
                             [b / a for a, b in zip(one, thousand)], 1.2, "times")


def table(figures):
    head = ["what", "ours", "the other", "ratio", "goal", "reached"]
    lines = [line for row in ROWS if (line := ratio_line(row, figures))] + list(other_lines(figures))
    widths = [max(len(line[column]) for line in [head, *lines]) for column in range(len(head))]
    rule = ["-" * width for width in widths]
    return "\n".join("| " + " | ".join(cell.ljust(width) for cell, width in zip(line, widths)) + " |"
                     for line in [head, rule, *lines])


def run(program, name_filter, folder, effort):
    out = os.path.join(folder, "one_program.json")
    command = [os.path.join(folder, "bin", program), f"--benchmark_filter={name_filter}",
               "--benchmark_enable_random_interleaving=true", f"--benchmark_repetitions={effort.repetitions}",
               f"--benchmark_min_time={effort.seconds}", f"--benchmark_out={out}", "--benchmark_out_format=json"]
    if os.path.exists(out):
        os.remove(out)
    done = subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True, check=False)
    if done.returncode != 0:
        raise SystemExit(f"bench: {program} has failed:\n{done.stderr}")
    if not os.path.exists(out):
        return []
    with open(out, encoding="utf-8") as file:
        text = file.read()
    os.remove(out)
    return json.loads(text)["benchmarks"] if text.strip() else []


def main(arguments):
    effort = Effort(2, 0.001, 3_000_000) if "--quick" in arguments else Effort(21, 0.05, 300_000_000)
    folder, *rest = [word for word in arguments if word != "--quick"]
    name_filter = rest[0] if rest else "."
    try:
        wanted = re.compile(name_filter)
    except re.error as error:
        raise SystemExit(f"bench: not a regular expression: {name_filter}: {error}") from error
    if len(os.sched_getaffinity(0)) < 2:
        raise SystemExit("bench: two CPUs are needed")
    results = []
    for number, program in enumerate(PROGRAMS, 1):
        print(f"bench: {program}, {number} of {len(PROGRAMS)}", file=sys.stderr, flush=True)
        results += run(program, name_filter, folder, effort)
    for number, (subject, measure) in enumerate(PROCESSES.items(), 1):
        print(f"bench: {subject}, {number} of {len(PROCESSES)}", file=sys.stderr, flush=True)
        results += measure(folder, wanted, effort)
    if not results:
        raise SystemExit(f"bench: no measurement has a name like {name_filter}")
    kept = os.path.join(folder, "measurements.json")
    with open(kept, "w", encoding="utf-8") as file:
        json.dump(results, file, indent=1)
    print(table(figures_of(results)))
    print(f"each repetition: {kept}")


if __name__ == "__main__":
    main(sys.argv[1:])
