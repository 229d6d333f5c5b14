"""The memory of the reference service by the number of services in its broadcast."""
import os
import subprocess
import tempfile
import time

import broadcasts

COUNTS = (1, 10, 100)
REPETITIONS = 3
UNCHANGED = 10  # looks, a tenth of a second apart


class Service:
    """Plays a broadcast of so many services."""

    def __init__(self, folder, count):
        self.count = count
        self.directory = tempfile.TemporaryDirectory(prefix="dtv-bench-")
        self.programs = os.path.join(folder, "bin")
        path = os.path.join(self.directory.name, "broadcast.ts")
        broadcasts.write_services(os.path.join(self.programs, "tsmake"), path, count)
        self.process = self.start("dtvserviced", "--input", path)

    def start(self, program, *arguments):
        return subprocess.Popen([os.path.join(self.programs, program), *arguments], stdout=subprocess.PIPE, text=True,
                                env={**os.environ, "DTV_RUN_DIR": self.directory.name}, stderr=subprocess.DEVNULL)

    def has_all(self):
        """Whether it knows PMT and AIT of every service."""
        lines, _ = self.start("dtvctl", "channels").communicate()
        return lines.count(" pmt ") == lines.count(" hbbtv ") == self.count

    def anonymous_kib(self):
        """Without pages of the program's file."""
        with open(f"/proc/{self.process.pid}/status", encoding="utf-8") as file:
            return next(int(line.split()[1]) for line in file if line.startswith("RssAnon:"))

    def settled_kib(self):
        while not self.has_all():
            if self.process.poll() is not None:
                raise SystemExit("bench: dtvserviced has ended")
            time.sleep(0.1)
        kib = [self.anonymous_kib()]
        while len(kib) < UNCHANGED or len(set(kib[-UNCHANGED:])) != 1:
            time.sleep(0.1)
            kib.append(self.anonymous_kib())
        return kib[-1]

    def stop(self):
        self.process.terminate()
        self.process.communicate()
        self.directory.cleanup()


def measure(folder, wanted, effort):
    results = []
    for _ in range(min(REPETITIONS, effort.repetitions)):
        services = [Service(folder, count) for count in COUNTS if wanted.search(f"memory/services:{count}")]
        try:
            results += [{"name": f"memory/services:{service.count}", "run_type": "iteration",
                         "kib": service.settled_kib()} for service in services]
        finally:
            for service in services:
                service.stop()
    return results
