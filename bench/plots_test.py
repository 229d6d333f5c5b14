#!/usr/bin/env python3
"""The plots, with made-up figures."""
import unittest
import xml.etree.ElementTree

import plots

SERVICES = plots.PLOTS[-1]


class APlot(unittest.TestCase):
    def circles(self, figures):
        root = xml.etree.ElementTree.fromstring(plots.drawn(SERVICES, figures))
        return [(float(each.get("cx")), float(each.get("cy"))) for each in root.iter() if each.tag.endswith("circle")]

    def test_has_a_straight_line_for_what_grows_in_proportion(self):
        figures = {(f"memory/services:{count}", "kib"): [1000 + 10 * count] for count in SERVICES.numbers}
        (x1, y1), (x2, y2), (x3, y3) = self.circles(figures)
        self.assertAlmostEqual((y2 - y1) / (x2 - x1), (y3 - y2) / (x3 - x2), places=1)

    def test_is_left_out_if_a_number_was_not_measured(self):
        self.assertIsNone(plots.drawn(SERVICES, {("memory/services:1", "kib"): [1000]}))

    def test_ends_its_axis_at_a_number_with_short_quarters(self):
        self.assertEqual([plots.round_up(value) for value in (4.9, 5, 9, 2824)], [6, 6, 10, 4000])


if __name__ == "__main__":
    unittest.main()
