#!/usr/bin/env python3
"""Uses the page for people as somebody at a desktop does, in headless Chromium: waits for the channel, presses the red
button, and looks until the application's colour is on the screen and the application is marked as running.
  page_for_people.py URL CHANNEL COLOUR        COLOUR: of the application's background, as r,g,b
It prints what it has seen; the exit code is 1 if something does not come.
"""
import json
import os
import re
import signal
import subprocess
import sys
import tempfile
import time
import urllib.request

LONGEST = 30  # seconds; only a broken page takes them
LONGEST_START = 120  # seconds, of Chromium on a busy machine

LOOK = """
const screen = document.getElementById("screen");
const canvas = document.createElement("canvas");
canvas.width = canvas.height = 1;
const context = canvas.getContext("2d");
if (screen.naturalWidth > 0) {
    context.drawImage(screen, 640, 600, 1, 1, 0, 0, 1, 1);
}
return {
    channel: document.getElementById("channel").textContent,
    colour: Array.from(context.getImageData(0, 0, 1, 1).data.slice(0, 3)).join(","),
    running: document.querySelectorAll("#applications .running").length,
    log: document.getElementById("log").textContent,
};
"""


class Chromium:
    """A page in headless Chromium, by the WebDriver protocol."""

    def __init__(self, folder):
        # A session of its own has all processes of Chromium too.
        self.process = subprocess.Popen(["chromedriver", "--port=0"], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                                        text=True, start_new_session=True)
        self.session = None
        try:
            self.driver = f"http://127.0.0.1:{self.port()}"
            options = {"args": ["--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
                                f"--user-data-dir={folder}", "--window-size=1400,1000"]}
            answer = self.ask("/session", {"capabilities": {"alwaysMatch": {"goog:chromeOptions": options}}},
                              LONGEST_START)
            self.session = "/session/" + answer["sessionId"]
        except BaseException:
            self.close()
            raise

    def port(self):
        """The driver chooses a free one and says which."""
        for line in self.process.stdout:
            found = re.search(r"started successfully on port ([0-9]+)", line)
            if found:
                return int(found.group(1))
        sys.exit("chromedriver does not start")

    def ask(self, path, value=None, longest=LONGEST):
        data = None if value is None else json.dumps(value).encode()
        request = urllib.request.Request(self.driver + path, data, {"Content-Type": "application/json"})
        with urllib.request.urlopen(request, timeout=longest) as response:
            return json.load(response)["value"]

    def open(self, url):
        self.ask(self.session + "/url", {"url": url})

    def look(self):
        return self.ask(self.session + "/execute/sync", {"script": LOOK, "args": []})

    def click(self, selector):
        element = self.ask(self.session + "/element", {"using": "css selector", "value": selector})
        self.ask(f"{self.session}/element/{next(iter(element.values()))}/click", {})

    def close(self):
        """Chromium removes its files if it can; then nothing of it stays."""
        try:
            if self.session:
                request = urllib.request.Request(self.driver + self.session, method="DELETE")
                urllib.request.urlopen(request, timeout=LONGEST).close()
        finally:
            os.killpg(self.process.pid, signal.SIGKILL)
            self.process.wait()


def wait(condition, what):
    end = time.monotonic() + LONGEST
    while not condition():
        if time.monotonic() > end:
            sys.exit(f"{what} does not come")
        time.sleep(0.1)
    print(what, flush=True)


def main():
    url, channel, colour = sys.argv[1:]
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as folder:
        chromium = Chromium(folder)
        try:
            chromium.open(url)
            wait(lambda: chromium.look()["channel"] == channel, "the channel's name")
            before = chromium.look()
            if before["running"] or before["colour"] == colour:
                sys.exit(f"an application runs before the red button: {before}")
            chromium.click("button.RED")
            wait(lambda: chromium.look()["running"] == 1, "the application in the list")
            wait(lambda: chromium.look()["colour"] == colour, "the application on the screen")
            wait(lambda: "application: started" in chromium.look()["log"], "its start in the log")
        finally:
            chromium.close()


main()
