"""Finds growth in the figures of processes that run for a long time.

A figure grows if its median in the last third of the time is above the median in the second third by more than a
tolerance. The first third is for warming up. A process that is started again and again is looked at twice: over the
whole time, and by the age of its lives, all put on top of each other.
"""
import statistics
from collections import namedtuple

MIB = 1024 * 1024

# What a median may rise by: a number, or a share of the earlier median, whichever is more.
Tolerance = namedtuple("Tolerance", "number share")
TOLERANCES = {
    "memory": Tolerance(1 * MIB, 0.05),  # the allocator keeps pages, and by chance more later
    "descriptors": Tolerance(2, 0),      # one short connection and one file that is just being opened
    "threads": Tolerance(2, 0),          # one short thread on each side of a median
}
# A process of a shorter time, or with fewer samples, says nothing.
SHORTEST = 90
FEWEST_SAMPLES = 30

# What a process used at a moment: `time` and `age` in seconds, `memory` in bytes.
Sample = namedtuple("Sample", "time age memory descriptors threads")
Row = namedtuple("Row", "start end highest per_hour verdict")


def rises(points, tolerance):
    """Whether (when, value) grows, and by how much in an hour. None if there are too few points, or no time."""
    points = sorted(points)
    if len(points) < FEWEST_SAMPLES or points[-1][0] - points[0][0] < SHORTEST:
        return None, None
    begin, third = points[0][0], (points[-1][0] - points[0][0]) / 3
    second = [value for when, value in points if begin + third <= when < begin + 2 * third]
    last = [value for when, value in points if when >= begin + 2 * third]
    if not second or not last:
        return None, None
    before, now = statistics.median(second), statistics.median(last)
    allowed = max(tolerance.number, tolerance.share * before)
    return now - before > allowed, (now - before) / third * 3600


def judge(samples, figure, was_restarted=False):
    """One row of the table: a figure of a process, from all of its samples."""
    tolerance = TOLERANCES[figure]
    values = [getattr(sample, figure) for sample in samples]
    if not values:
        return Row(None, None, None, None, "no samples")
    grows, per_hour = rises([(sample.time, getattr(sample, figure)) for sample in samples], tolerance)
    verdict = "too short" if grows is None else "grows" if grows else "steady"
    if was_restarted and not grows:
        ages, per_hour_of_age = rises([(sample.age, getattr(sample, figure)) for sample in samples], tolerance)
        if ages:
            verdict, per_hour = "grows with age", per_hour_of_age
    return Row(values[0], values[-1], max(values), per_hour, verdict)


def grows(row):
    return row.verdict.startswith("grows")
