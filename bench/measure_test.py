#!/usr/bin/env python3
"""The table of measurements, with made-up figures."""
import unittest

import measure


def repetitions(name, **figures):
    """What the programs write: one entry a repetition."""
    return [{"name": name, "run_type": "iteration", **dict(zip(figures, values))} for values in zip(*figures.values())]


class TheTable(unittest.TestCase):
    def lines(self, results):
        return [[cell.strip() for cell in line.strip("|").split("|")]
                for line in measure.table(measure.figures_of(results)).splitlines()]

    def test_has_the_medians_and_the_ratio_of_each_repetition(self):
        _, _, line = self.lines(repetitions("assembly/ours", real_time=[10, 20, 30]) +
                                repetitions("assembly/libbitstream", real_time=[50, 80, 180]))
        self.assertEqual(line, ["assembly of sections, by libbitstream", "20.0 ns", "80.0 ns", "5.00 [4.00, 6.00]",
                                ">= 4", "yes"])

    def test_says_which_goal_is_not_reached(self):
        place = "cpus:1/bytes:0/real_time"
        *_, line = self.lines(repetitions(f"round_trip/ours/{place}", real_time=[1, 1], p50_us=[4, 4]) +
                              repetitions(f"round_trip/raw/{place}", real_time=[9, 9], p50_us=[3, 3]))
        self.assertEqual(line[1:], ["4.00 us", "3.00 us", "0.75 [0.75, 0.75]", ">= 0.85", "no"])

    def test_leaves_out_what_was_not_measured(self):
        self.assertEqual(len(self.lines(repetitions("assembly/ours", real_time=[10, 20]))), 2)

    def test_has_the_cost_of_one_listener(self):
        *_, line = self.lines(repetitions("listeners/listeners:1/real_time", real_time=[1000, 1000]) +
                              repetitions("listeners/listeners:100/real_time", real_time=[1990, 1990]))
        self.assertEqual(line, ["each listener more of an event", "10.00 ns", "", "10.00 [10.00, 10.00]", "<= 15 ns",
                                "yes"])

    def test_judges_no_row_without_a_goal(self):
        _, _, *line = self.lines(repetitions("zapping/ours/real_time", p50_us=[30, 30]) +
                                 repetitions("zapping/raw/answers:10/real_time", p50_us=[15, 15]))
        self.assertEqual(line[0][1:], ["30.00 us", "15.00 us", "0.50 [0.50, 0.50]", "", ""])

    def test_has_the_growth_of_the_services_memory(self):
        _, _, *line = self.lines([entry for count, kib in ((1, 100), (10, 190), (100, 2890))
                                  for entry in repetitions(f"memory/services:{count}", kib=[kib, kib])])
        self.assertEqual([cells[1] for cells in line], ["28.18 KiB", "3.00 times"])
        self.assertEqual(line[1][5], "no")

    def test_has_the_speed_and_the_memory_of_a_carousel(self):
        *_, speed, memory = self.lines(
            repetitions("carousel/read/plain", real_time=[1, 1], bytes_per_second=[60e6, 80e6]) +
            repetitions("carousel/keep/plain", real_time=[1, 1], memory=[1.5, 1.5]))
        self.assertEqual(speed, ["reading a carousel, plain modules", "70 MB/s", "", "70.00 [55.00, 85.00]",
                                 ">= 30 MB/s", "yes"])
        self.assertEqual(memory, ["memory of a carousel, plain modules, by its files", "1.50 times", "",
                                  "1.50 [1.50, 1.50]", "<= 1.2 times", "no"])

    def test_ends_with_the_error_of_a_measurement(self):
        broken = {"name": "assembly/ours", "run_type": "iteration", "error_occurred": True, "error_message": "none"}
        with self.assertRaisesRegex(SystemExit, "bench: assembly/ours: none"):
            measure.figures_of([broken])


if __name__ == "__main__":
    unittest.main()
