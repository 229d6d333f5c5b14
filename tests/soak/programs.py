"""Starts and ends the programs of a measurement, and reads what /proc and their output tell of them."""
import atexit
import os
import signal
import statistics
import subprocess
import threading
import time


class Program:
    """A process of its own session, so that a Ctrl-C does not reach it. Its log lines go to a file. It is killed when
    this script ends, however that comes."""

    def __init__(self, arguments, run_directory, name, output=subprocess.DEVNULL):
        self.name = name
        self.log = f"{run_directory}/{name}.log"
        environment = dict(os.environ, DTV_RUN_DIR=run_directory, DTV_LOG_FILE=self.log, DTV_LOG_LEVEL="warning")
        self.began = time.monotonic()
        self.process = subprocess.Popen(arguments, env=environment, stdin=subprocess.DEVNULL, stdout=output,
                                        stderr=subprocess.STDOUT, text=True, start_new_session=True)
        atexit.register(self.kill)

    def kill(self):
        if self.process.poll() is None:
            self.process.kill()

    def end(self, how=signal.SIGTERM, seconds=20):
        """Its exit code; that of a killed process if it does not end in time."""
        if self.process.poll() is None:
            self.process.send_signal(how)
        try:
            self.process.wait(seconds)
        except subprocess.TimeoutExpired:
            self.process.kill()
        return self.wait()

    def wait(self):
        """Its exit code, once it ends by itself."""
        code = self.process.wait()
        atexit.unregister(self.kill)
        return code


class Service(Program):
    """A reference service; ready, or ended, when the constructor returns."""

    def __init__(self, build, inputs, run_directory, name):
        os.makedirs(run_directory, mode=0o700, exist_ok=True)
        arguments = [build + "/bin/dtvserviced"]
        for path in inputs:
            arguments += ["--input", path]
        super().__init__(arguments, run_directory, name, subprocess.PIPE)
        for line in self.process.stdout:
            if line.startswith("ready"):
                break
        self.reader = threading.Thread(target=self.read_on, daemon=True)
        self.reader.start()

    def read_on(self):
        for _ in self.process.stdout:
            pass


class Answers:
    """The times of answers, in microseconds."""

    def __init__(self):
        self.lock = threading.Lock()
        self.times = []
        self.lost = 0

    def take(self):
        """Those since the last call."""
        with self.lock:
            taken = self.times, self.lost
            self.times, self.lost = [], 0
        return taken


class Browser(Program):
    """A browser that prints the times of its answers."""

    def __init__(self, arguments, run_directory, name):
        super().__init__(arguments, run_directory, name, subprocess.PIPE)
        self.answers = Answers()
        threading.Thread(target=self.read, daemon=True).start()

    def read(self):
        for line in self.process.stdout:
            words = line.split()
            with self.answers.lock:
                if len(words) == 3 and words[0] == "answer":
                    self.answers.times.append(int(words[2]))
                elif words and words[0] == "lost":
                    self.answers.lost += 1


def percentile(values, share):
    """The value that this share of the values does not exceed."""
    ordered = sorted(values)
    return ordered[min(len(ordered) - 1, int(share * len(ordered)))]


def shown(times):
    """Times in microseconds as milliseconds: median, 99th percentile, highest."""
    if not times:
        return "no answers"
    return (f"median {statistics.median(times) / 1000:.3f} ms, 99th {percentile(times, 0.99) / 1000:.3f} ms, "
            f"highest {max(times) / 1000:.1f} ms")


def used(pid):
    """Resident bytes, descriptors and threads of a process; None if it has gone."""
    try:
        with open(f"/proc/{pid}/status", encoding="ascii", errors="replace") as file:
            status = dict(line.split(":", 1) for line in file if ":" in line)
        return int(status["VmRSS"].split()[0]) * 1024, len(os.listdir(f"/proc/{pid}/fd")), int(status["Threads"])
    except (OSError, KeyError):
        return None
