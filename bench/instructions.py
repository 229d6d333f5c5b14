#!/usr/bin/env python3
"""Counts the instructions of this project's programs, one by one: they depend neither on the machine's load nor on an
emulator.

Valgrind counts those of this machine, the emulator's trace those of 32-bit ARM; neither counts the kernel's. A figure is
the difference between many and few of a thing, by their number, so it has neither start nor end.
"""
import argparse
import os
import re
import shutil
import signal
import subprocess
import tempfile
from dataclasses import dataclass

ELF_MACHINE_AT = 18
ARM = 40


@dataclass
class Row:
    """A thing that is done `few` times and `many` times. `service` is what the browser talks to, if it needs one. Its
    standard input is a broadcast of two seconds, behind which it does nothing but what the browser wants.
    """

    title: str
    program: str
    arguments: tuple
    few: int
    many: int
    service: tuple = ()
    more: tuple = ()  # arguments behind the count


def answering(size):
    return "answering_service", "0", str(size)


def rows():
    for size, what in ((0, "no text"), (256, "256 B of text"), (4096, "4096 B of text")):
        yield Row(f"command and event, {what}", "counted_browser", ("questions",), 100, 600, answering(size))
    yield Row("the same with 100 listeners, no text", "counted_browser", ("questions",), 100, 600, answering(0), ("100",))
    yield Row("command one way", "counted_browser", ("commands",), 100, 600, answering(0))
    yield Row("tune to channel, PMT, EIT and AIT", "counted_browser", ("tunes",), 150, 450, ("dtvserviced", "--input", "-"))
    for size in (1024, 4096):
        for filters in (1, 100):  # an emulator takes minutes to open a thousand
            yield Row(f"section of {size} B, {filters} filters", "counted_browser", ("sections",), 100, 2100, answering(size),
                      (str(filters),))
        yield Row(f"the same through a raw queue, both ends, {size} B", "counted_work", ("raw_queue",), 100, 2100,
                  more=(str(size),))
    yield Row("assembly of a section", "counted_work", ("assembly",), 1000, 3000)
    yield Row("log line that nobody wants", "counted_work", ("unwanted_lines",), 1000, 101000)
    yield Row("log line to a file", "counted_work", ("lines",), 100, 2100)
    yield Row("the same by snprintf and write", "counted_work", ("lines_by_hand",), 100, 2100)


class Counted:
    """A running program whose instructions are counted."""

    def __init__(self, build, program, arguments, environment, broadcast):
        self.broadcast = broadcast
        command = [os.path.join(build, "bin", program), *arguments]
        with open(command[0], "rb") as file:
            file.seek(ELF_MACHINE_AT)
            self.is_arm = int.from_bytes(file.read(2), "little") == ARM
        (self.start_emulated if self.is_arm else self.start_native)(build, command, environment)

    def start_native(self, _, command, environment):
        self.process = subprocess.Popen(
            ["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", *command],
            env=environment, stdin=self.broadcast, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)

    def start_emulated(self, build, command, environment):
        """The emulator's trace has a line for each instruction."""
        root = os.path.join(build, "..", "tv-arm-sysroot")
        libraries = [os.path.join(root, folder, "arm-linux-gnueabihf") for folder in ("usr/lib", "lib")]
        trace, out = os.pipe()
        self.counter = subprocess.Popen(["grep", "-c", "^Trace"], stdin=trace, stdout=subprocess.PIPE, text=True)
        self.process = subprocess.Popen(
            ["qemu-arm", "-L", "/usr/arm-linux-gnueabihf",
             "-E", "LD_LIBRARY_PATH=" + ":".join([*libraries, "/usr/arm-linux-gnueabihf/lib"]),
             "-singlestep", "-d", "exec,nochain", "-D", f"/dev/fd/{out}", *command],
            env=environment, pass_fds=[out], stdin=self.broadcast, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(trace)
        os.close(out)

    def end(self):
        self.process.send_signal(signal.SIGTERM)

    def instructions(self):
        """When the program has ended."""
        if self.is_arm:
            self.process.wait()
            return int(self.counter.communicate()[0])
        _, messages = self.process.communicate()
        for line in messages.splitlines():
            if "Collected :" in line:
                return int(line.split()[-1])
        raise SystemExit(f"bench: {' '.join(self.process.args)} was not counted:\n{messages}")


def counts(build, row, number, sample):
    """The instructions of the program and of its service, if it has one."""
    with tempfile.TemporaryDirectory(prefix="dtv-bench-") as folder, open(sample, "rb") as broadcast:
        environment = {**os.environ, "DTV_RUN_DIR": folder, "DTV_LOG_FILE": os.path.join(folder, "log")}
        service = None
        if row.service:
            environment["DTV_LOG_LEVEL"] = "off"
            name, *arguments = row.service
            service = Counted(build, name, arguments, environment, broadcast)
        program = Counted(build, row.program, [*row.arguments, str(number), *row.more], environment, subprocess.DEVNULL)
        result = [program.instructions()]
        if service:
            service.end()
            result.append(service.instructions())
    return result


def difference(build, row, sample):
    few, many = (counts(build, row, number, sample) for number in (row.few, row.many))
    return [round((more - less) / (row.many - row.few)) for less, more in zip(few, many)]


def main(builds, wanted):
    titles = ["this machine" if build == builds[0] else os.path.basename(build) for build in builds]
    print("| what |" + "".join(f" {title}: browser | service |" for title in titles))
    print("|---|" + "---|---|" * len(builds))
    with tempfile.TemporaryDirectory(prefix="dtv-bench-") as folder:
        sample = os.path.join(folder, "sample.ts")
        subprocess.run([os.path.join(builds[0], "bin", "tsmake"), sample, "--seconds", "2"], check=True)
        for row in (row for row in rows() if wanted.search(row.title)):
            cells = []
            for build in builds:
                figures = difference(build, row, sample)
                cells += [str(each) for each in figures] + [""] * (2 - len(figures))
            print("| " + " | ".join([row.title, *cells]) + " |", flush=True)


def pattern(text):
    try:
        return re.compile(text)
    except re.error as error:
        raise argparse.ArgumentTypeError(f"{text} is no regular expression: {error}") from error


if __name__ == "__main__":
    arguments = argparse.ArgumentParser(description="Counts instructions; ./run bench --instructions builds what it needs.")
    arguments.add_argument("--only", metavar="TITLES", type=pattern, default="",
                           help="a regular expression for the things to count")
    arguments.add_argument("builds", metavar="BUILD", type=os.path.abspath, nargs="+",
                           help="a build with the target `counted` for each processor, first of all this machine's")
    given = arguments.parse_args()
    if not shutil.which("valgrind"):
        raise SystemExit("bench: valgrind is missing")
    main(given.builds, given.only)
