#!/usr/bin/env python3
"""Runs two reference services and three browsers for a long time, and fails if a process grows.

    soak.py BUILD_FOLDER [MINUTES] [--seed NUMBER]

Service 1 is ended or killed again and again and started anew, with one browser that stays. Service 2 runs through, with
two. Browsers tune, open and close filters, and ask for all that there is; an operator changes what no broadcast has; a
fourth browser comes, and is killed. Each period shows how long the answers to a simple request took, which decides
nothing. The table at the end has memory, descriptors and threads of each process, as growth.py judges them. Ctrl-C ends
the run early, with the table.
"""
import argparse
import os
import random
import signal
import subprocess
import sys
import tempfile
import threading
import time

import growth
from programs import Browser, Program, Service, shown, used

SERVICES = ["1:1025:28106", "1:1025:28107", "1:1025:28108", "1:1025:28120", "1:1026:28201", "1:1026:28202"]
SAMPLE_SECONDS = 1
FIGURES = ("memory", "descriptors", "threads")


class Watched:
    """A process, or one after the other, and what they used."""

    def __init__(self, name, start):
        self.name, self.start = name, start
        self.samples, self.restarts = [], 0
        self.program = start()

    def sample(self, began):
        now = time.monotonic()
        figures = used(self.program.process.pid)
        if figures:
            self.samples.append(growth.Sample(now - began, now - self.program.began, *figures))

    def restart(self, how):
        """Its exit code before."""
        code = self.program.end(how)
        self.restarts += 1
        self.program = self.start()
        return code


class Background:
    """Repeats an action on a thread of its own until it is stopped."""

    def __init__(self, action):
        self.stopped = threading.Event()
        self.thread = threading.Thread(target=self.run, args=(action,), daemon=True)
        self.thread.start()

    def run(self, action):
        while not self.stopped.is_set():
            self.stopped.wait(action())

    def stop(self):
        self.stopped.set()
        self.thread.join()


class Operator:
    """dtvctl with a random request."""

    def __init__(self, build, run_directories, dice):
        self.build, self.run_directories, self.dice = build, run_directories, dice

    def __call__(self):
        dice = self.dice
        slot, layer, on = str(dice.randrange(3)), str(dice.randrange(80)), dice.choice(["on", "off"])
        words = dice.choice([["osd", layer, on], ["ca", "insert", slot], ["ca", "remove", slot],
                             ["ca", "reply", layer, "0", "done"], ["ca", "reply", layer, "0"],
                             ["engine", slot], ["stop-terminals"], ["status"], ["statistics"], ["channels"],
                             ["tune", dice.choice(SERVICES)]])
        Program([self.build + "/bin/dtvctl"] + words, dice.choice(self.run_directories), "dtvctl").wait()
        return 0.2


class Visitor:
    """A browser that comes, opens a filter on a busy PID, and is killed."""

    def __init__(self, build, run_directories, dice):
        self.build, self.run_directories, self.dice = build, run_directories, dice

    def __call__(self):
        arguments = ["sections", "0x12", "--count", "1000000", "--seconds", "1000", "--hex"]
        program = Program([self.build + "/bin/dvbshell"] + arguments, self.dice.choice(self.run_directories), "visitor")
        time.sleep(self.dice.random())
        program.end(signal.SIGKILL)
        return 1


class Soak:
    """Two services and three browsers, the first service with the first browser, and what disturbs them."""

    def __init__(self, build, folder, seed):
        self.build, self.seed = build, seed
        self.inputs = [build + "/share/dtv/sample.ts", folder + "/second.ts"]
        self.run_directories = [folder + "/one", folder + "/two"]
        self.watched, self.background, self.faults = [], [], []
        self.began = time.monotonic()

    def start(self):
        description = os.path.dirname(os.path.abspath(__file__)) + "/soak_broadcast.json"
        subprocess.run([self.build + "/bin/tsmake", self.inputs[1], "--description", description, "--seconds", "10"],
                       check=True)
        one, two = self.run_directories
        for name, start in (("service 1", lambda: Service(self.build, self.inputs, one, "service")),
                            ("service 2", lambda: Service(self.build, self.inputs, two, "service")),
                            ("browser 1", lambda: self.browser("browser1", one, "soak_browser", "live")),
                            ("browser 2", lambda: self.browser("browser2", two, "soak_browser", "live")),
                            ("browser 3", lambda: self.browser("browser3", two, "message_browser"))):
            self.watched.append(Watched(name, start))
        for disturbance in (Operator, Visitor):
            dice = random.Random(f"{self.seed} {disturbance.__name__}")
            self.background.append(Background(disturbance(self.build, self.run_directories, dice)))

    def browser(self, name, run_directory, program, *mode):
        seed = str(random.Random(f"{self.seed} {name}").randrange(1000))
        return Browser([f"{self.build}/bin/{program}", *mode, seed, *SERVICES], run_directory, name)

    @property
    def service(self):
        """The one that is restarted."""
        return self.watched[0]

    @property
    def browsers(self):
        return self.watched[2:]

    def run(self, seconds):
        """Until the time is over, a process ends by itself, or the user has enough."""
        period = min(60, seconds / 3)
        life = min(120, seconds / 3)
        next_period, next_restart = self.began + period, self.began + life
        while time.monotonic() < self.began + seconds and not self.faults:
            time.sleep(SAMPLE_SECONDS)
            for each in self.watched:
                each.sample(self.began)
                code = each.program.process.poll()
                if code is not None:
                    self.faults.append(f"{each.name} ended by itself with {code}; its log ends with:\n{tail(each)}")
            if time.monotonic() >= next_period:
                self.tell_period()
                next_period += period
            if time.monotonic() >= next_restart and not self.faults:
                self.restart_service()
                next_restart = time.monotonic() + life

    def restart_service(self):
        how = signal.SIGKILL if self.service.restarts % 2 else signal.SIGTERM
        code = self.service.restart(how)
        if code != (0 if how == signal.SIGTERM else -signal.SIGKILL):
            self.faults.append(f"service 1 ended with {code} after signal {int(how)}")

    def tell_period(self):
        minutes = (time.monotonic() - self.began) / 60
        for browser in self.browsers:
            times, lost = browser.program.answers.take()
            without = f", {lost} without an answer" if lost else ""
            print(f"{minutes:5.1f} min  {browser.name}: {len(times)} answers, {shown(times)}{without}", flush=True)

    def end(self):
        for each in self.background:
            each.stop()
        for each in reversed(self.watched):
            code = each.program.end()
            if code != 0 and not self.faults:
                self.faults.append(f"{each.name} ended with {code}; its log ends with:\n{tail(each)}")

    def rows(self):
        return [(each, figure, growth.judge(each.samples, figure, each.restarts > 0))
                for each in self.watched for figure in FIGURES]


def tail(watched):
    try:
        with open(watched.program.log, encoding="utf-8", errors="replace") as file:
            return "".join(file.readlines()[-5:])
    except OSError:
        return ""


def number(value, figure):
    if value is None:
        return "-"
    return f"{value / growth.MIB:.2f} MiB" if figure == "memory" else f"{value:.0f}"


def print_table(soak):
    print(f"\n{'process':10} {'figure':12} {'start':>10} {'end':>10} {'highest':>10} {'growth/h':>11}  verdict")
    for each, figure, row in soak.rows():
        cells = [number(value, figure) for value in row[:4]]
        print(f"{each.name:10} {figure:12} {cells[0]:>10} {cells[1]:>10} {cells[2]:>10} {cells[3]:>11}  {row.verdict}")
    restarts = soak.service.restarts if soak.watched else 0
    print(f"service 1 was started {restarts} times again; {(time.monotonic() - soak.began) / 60:.1f} minutes")


def interrupt(*_):
    raise KeyboardInterrupt


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build")
    parser.add_argument("minutes", nargs="?", type=float, default=30)
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    signal.signal(signal.SIGTERM, interrupt)
    with tempfile.TemporaryDirectory(prefix="dtv-soak-") as folder:
        soak = Soak(options.build, folder, options.seed)
        try:
            soak.start()
            soak.run(options.minutes * 60)
        except KeyboardInterrupt:
            print("interrupted", flush=True)
        finally:
            soak.end()
        print_table(soak)
    grown = [f"{each.name}: {figure} {row.verdict}" for each, figure, row in soak.rows() if growth.grows(row)]
    for fault in soak.faults + grown:
        print("failed: " + fault)
    return 1 if soak.faults or grown else 0


if __name__ == "__main__":
    sys.exit(main())
