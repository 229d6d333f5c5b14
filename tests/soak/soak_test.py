#!/usr/bin/env python3
"""A soak of some seconds: it ends with the table of all processes, after its time and at a Ctrl-C.

    soak_test.py BUILD_FOLDER
"""
import os
import re
import signal
import subprocess
import sys
import unittest

HERE = os.path.dirname(os.path.abspath(__file__))
PROCESSES = ["service 1", "service 2", "browser 1", "browser 2", "browser 3"]
build = ""


class TheSoak(unittest.TestCase):
    def start(self, minutes):
        return subprocess.Popen([sys.executable, HERE + "/soak.py", build, str(minutes)], stdout=subprocess.PIPE,
                                stderr=subprocess.STDOUT, text=True)

    def has_table(self, text):
        rows = re.findall(r"^(\w+ \d) +(memory|descriptors|threads) +\S.* (?:too short|steady)$", text, re.MULTILINE)
        self.assertEqual(rows, [(process, figure) for process in PROCESSES
                                for figure in ("memory", "descriptors", "threads")], text)
        for browser in PROCESSES[2:]:
            self.assertRegex(text, rf"min  {browser}: [1-9]\d* answers, median [\d.]+ ms, 99th [\d.]+ ms, highest")

    def test_restarts_the_service_and_ends_with_the_table(self):
        soak = self.start(0.15)
        text = soak.communicate()[0]
        self.assertEqual(soak.returncode, 0, text)
        self.has_table(text)
        self.assertRegex(text, r"service 1 was started [1-9]\d* times again")

    def test_ends_with_the_table_when_it_is_interrupted(self):
        soak = self.start(0.3)
        text = "".join(soak.stdout.readline() for _ in PROCESSES[2:])
        soak.send_signal(signal.SIGINT)
        text += soak.communicate()[0]
        self.assertEqual(soak.returncode, 0, text)
        self.assertIn("interrupted", text)
        self.has_table(text)


if __name__ == "__main__":
    build = os.path.abspath(sys.argv.pop(1))
    unittest.main()
