"""What the measurements of a television's browser share: programs, and the broadcasts that they play."""
import json
import re
import subprocess
import sys

LONGEST = 30  # seconds; only a broken build takes them


class Lines:
    """What a program prints, read as it comes."""

    def __init__(self, command, **options):
        self.process = subprocess.Popen(
            command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, stdin=subprocess.PIPE, text=True, **options)
        self.seen = []

    def until(self, start):
        for line in self.process.stdout:
            self.seen.append(line.rstrip("\n"))
            if line.startswith(start):
                return line[len(start):].strip()
        sys.exit(f"no line \"{start}\" in\n" + "\n".join(self.seen))

    def say(self, text):
        self.process.stdin.write(text + "\n")
        self.process.stdin.flush()

    def end(self):
        self.process.terminate()
        self.process.wait(LONGEST)


def sample(build):
    """The description of the sample broadcast."""
    text = subprocess.run([f"{build}/bin/tsmake", "--print-sample"], check=True, capture_output=True, text=True).stdout
    return json.loads(re.sub(r"^\s*//.*$", "", text, flags=re.M))


def write(build, folder, description, seconds=None):
    """Makes the broadcast of a description."""
    with open(f"{folder}/broadcast.json", "w", encoding="utf-8") as file:
        json.dump(description, file)
    subprocess.run([f"{build}/bin/tsmake", f"{folder}/broadcast.ts", "--description", f"{folder}/broadcast.json"] +
                   (["--seconds", str(seconds)] if seconds else []), check=True)
    return f"{folder}/broadcast.ts"


def row(what, value):
    print(f"{what:<62} {value}", flush=True)
