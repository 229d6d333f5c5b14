#!/usr/bin/env python3
"""The table of covered lines and branches, with made-up figures.

    coverage_test.py PROJECT
"""
import sys
import unittest

project = sys.argv.pop(1)
sys.path.insert(0, project + "/tools/run")
import coverage  # noqa: E402  (after the path)

RPC = "frame-genrpc/app-browserdvbservice-proxy/src/"
FIGURES = {
    "src/one.cpp": (100, 99, 10, 9),
    "si/src/text.cpp": (10, 5, 4, 4),
    "src/two.h": (100, 99, 0, 0),
    RPC + "message_transfer.h": (20, 20, 2, 1),
    RPC + "occupancy.cpp": (30, 30, 2, 1),
}


def words(line):
    return " ".join(line.split())


class TheCoverageTable(unittest.TestCase):
    def setUp(self):
        self.lines = [words(line) for line in coverage.report(project, FIGURES).splitlines()]

    def test_has_each_file_in_its_room(self):
        self.assertIn("si/src/text.cpp 5 of 10 50.0 % 4 of 4 100.0 %", self.lines)
        self.assertIn("si/src 5 of 10 50.0 % 4 of 4 100.0 %", self.lines)
        self.assertIn("src/two.h 99 of 100 99.0 % 0 of 0 -", self.lines)

    def test_lists_what_is_expanded_for_every_message_apart(self):
        self.assertIn("expanded for every message 20 of 20 100.0 % 1 of 2 50.0 %", self.lines)
        self.assertIn(words(RPC[:-1]) + " 30 of 30 100.0 % 1 of 2 50.0 %", self.lines)

    def test_ends_with_everything_and_the_library(self):
        self.assertEqual(self.lines[-3], "everything 253 of 260 97.3 % 15 of 18 83.3 %")
        self.assertEqual(self.lines[-1], "the library's own sources 198 of 200 99.0 % 9 of 10 90.0 %")


if __name__ == "__main__":
    unittest.main()
