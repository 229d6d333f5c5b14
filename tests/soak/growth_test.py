#!/usr/bin/env python3
"""What counts as growth, with made-up figures."""
import random
import unittest

import growth
from growth import MIB, Sample, judge


def samples(memory, seconds=1800, life=None, descriptors=10, threads=4):
    """A sample each second; `memory`, and the others if they are functions, give the figure at (time, age)."""
    def value(figure, time, age):
        return figure(time, age) if callable(figure) else figure
    ages = [time % life if life else time for time in range(seconds)]
    return [Sample(time, age, value(memory, time, age), value(descriptors, time, age), value(threads, time, age))
            for time, age in enumerate(ages)]


class TheGrowthOfAProcess(unittest.TestCase):
    def verdict(self, figure="memory", was_restarted=False, **given):
        return judge(samples(**given), figure, was_restarted).verdict

    def test_is_none_for_a_steady_process(self):
        row = judge(samples(8 * MIB), "memory")
        self.assertEqual(row, growth.Row(8 * MIB, 8 * MIB, 8 * MIB, 0, "steady"))

    def test_is_found_where_memory_leaks(self):
        row = judge(samples(lambda time, _: 8 * MIB + time * 4096), "memory")
        self.assertEqual(row.verdict, "grows")
        self.assertTrue(growth.grows(row))
        self.assertAlmostEqual(row.per_hour / MIB, 3600 * 4096 / MIB, delta=0.1)
        self.assertEqual((row.start, row.end, row.highest), (8 * MIB,) + (8 * MIB + 1799 * 4096,) * 2)

    def test_is_none_while_a_process_warms_up(self):
        self.assertEqual(self.verdict(memory=lambda time, _: MIB * min(20, 5 + time / 30)), "steady")

    def test_is_none_for_single_peaks(self):
        self.assertEqual(self.verdict(memory=lambda time, _: (40 if time % 7 == 0 else 8) * MIB), "steady")

    def test_is_none_within_the_tolerance(self):
        dice = random.Random(1)
        self.assertEqual(self.verdict(memory=lambda time, _: 8 * MIB + time * 500 + dice.randrange(MIB)), "steady")
        self.assertEqual(self.verdict("descriptors", memory=0, descriptors=lambda time, _: 10 + time // 900), "steady")

    def test_is_measured_as_a_share_where_much_memory_is_used(self):
        self.assertEqual(self.verdict(memory=lambda time, _: (100 if time < 1200 else 104) * MIB), "steady")
        self.assertEqual(self.verdict(memory=lambda time, _: (100 if time < 1200 else 106) * MIB), "grows")

    def test_is_found_in_descriptors_and_threads(self):
        self.assertEqual(self.verdict("descriptors", memory=0, descriptors=lambda time, _: 10 + time // 100), "grows")
        self.assertEqual(self.verdict("threads", memory=0, threads=lambda time, _: 4 + time // 100), "grows")

    def test_is_found_within_the_lives_of_a_restarted_process(self):
        leaks_in_each_life = dict(memory=lambda _, age: 8 * MIB + age * 65536, life=120)
        self.assertEqual(self.verdict(**leaks_in_each_life), "steady")
        self.assertEqual(self.verdict(was_restarted=True, **leaks_in_each_life), "grows with age")
        self.assertEqual(self.verdict(was_restarted=True, memory=lambda _, age: MIB * min(8, age / 3), life=120),
                         "steady")

    def test_is_found_from_life_to_life(self):
        self.assertEqual(self.verdict(was_restarted=True, memory=lambda time, _: 8 * MIB + time // 120 * MIB, life=120),
                         "grows")

    def test_is_not_judged_in_a_short_time(self):
        self.assertEqual(self.verdict(memory=lambda time, _: time * MIB, seconds=60), "too short")
        self.assertEqual(judge([], "memory").verdict, "no samples")


if __name__ == "__main__":
    unittest.main()
