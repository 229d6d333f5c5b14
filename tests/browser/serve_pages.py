#!/usr/bin/env python3
"""Serves the pages of the tests on a port of its own, which it prints first. Then it prints a line for each request.
  serve_pages.py FOLDER [HELD]
Some things are no files of the folder: held/NAME is answered, with nothing, as soon as the file of the name HELDNAME
exists; late/PAGE is a page whose bytes come after its header as soon as HELDlate exists, and then a line "late page" is
printed; missing/PAGE is a page with the status 404; silence.mp3 is twelve seconds of audio, also in parts; beep.mp3 is a
fifth of a second; noise.TYPE are bytes that are no medium; closed is the number of a port on which nobody answers. A page
can be posted to, and the line says what.
"""
import functools
import http.server
import os
import re
import socket
import sys
import time

# A frame of MPEG-1 layer III: 64 kbit/s, 48 kHz, one channel, 24 ms, nothing but its header.
FRAME = b"\xff\xfb\x54\xc0".ljust(192, b"\0")
SILENCE = FRAME * 500
BEEP = FRAME * 8
NOISE = bytes(range(1, 200)) * 100
TYPES_OF_NOISE = {".mp4": "video/mp4", ".mp3": "audio/mpeg", ".unknown": "video/unknown"}


def wait_for(file):
    while not os.path.exists(file):
        time.sleep(0.005)  # between two looks


class Pages(http.server.SimpleHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    status = 200  # of files that are there
    extensions_map = {
        ".html": "text/html; charset=utf-8",
        ".xhtml": "application/vnd.hbbtv.xhtml+xml; charset=utf-8",
        ".js": "text/javascript",
        ".css": "text/css",
        ".xml": "application/xml",
        ".mp4": "video/mp4",
        ".webm": "video/webm",
        "": "application/octet-stream",
    }

    def do_GET(self):
        start, _, name = self.path.rpartition("/")
        if start == "/held":
            self.hold(sys.argv[2] + name)
        elif start == "/late":
            self.path = "/" + name
            super().do_GET()
            print("late page", flush=True)
        elif start == "/missing":
            self.path = "/" + name
            self.status = 404
            super().do_GET()
        elif name.endswith(".aitx"):
            self.send_medium(self.signalling(name), "application/vnd.dvb.ait+xml")
        elif name == "silence.mp3":
            self.send_medium(SILENCE, "audio/mpeg")
        elif name == "closed":
            with socket.socket() as unused:
                unused.bind(("127.0.0.1", 0))
                self.send_medium(str(unused.getsockname()[1]).encode(), "text/plain")
        elif name == "beep.mp3":
            self.send_medium(BEEP, "audio/mpeg")
        elif name.startswith("noise."):
            self.send_medium(NOISE, TYPES_OF_NOISE[name[len("noise"):]])
        else:
            super().do_GET()

    def signalling(self, name):
        """An XML AIT of the folder, with this server's address in place of HERE."""
        with open(os.path.join(self.directory, name), "rb") as file:
            return file.read().replace(b"HERE", f"http://{self.headers['Host']}".encode())

    def do_POST(self):
        body = self.rfile.read(int(self.headers["Content-Length"]))
        print("posted", body.decode(), flush=True)
        super().do_GET()

    def send_response(self, code, message=None):
        super().send_response(self.status if code == 200 else code, message)

    def copyfile(self, source, outputfile):
        """Called between the header of a page and its bytes."""
        if self.requestline.split()[1].startswith("/late/"):
            outputfile.flush()
            wait_for(sys.argv[2] + "late")
        super().copyfile(source, outputfile)

    def hold(self, file):
        wait_for(file)
        self.send_response(200)
        self.send_header("Content-Length", "0")
        self.end_headers()

    def send_medium(self, content, mime_type):
        """The whole, or the part that is asked for."""
        asked = re.fullmatch(r"bytes=([0-9]+)-([0-9]*)", self.headers.get("Range", ""))
        first = int(asked.group(1)) if asked else 0
        last = min(int(asked.group(2) or len(content)) if asked else len(content), len(content) - 1)
        part = content[first:last + 1]
        self.send_response(206 if asked else 200)
        self.send_header("Content-Type", mime_type)
        self.send_header("Accept-Ranges", "bytes")
        self.send_header("Content-Length", str(len(part)))
        if asked:
            self.send_header("Content-Range", f"bytes {first}-{last}/{len(content)}")
        self.end_headers()
        self.wfile.write(part)

    def log_message(self, _format, *values):
        print(" ".join(str(value) for value in values), flush=True)


server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), functools.partial(Pages, directory=sys.argv[1]))
server.daemon_threads = True
print(f"port {server.server_address[1]}", flush=True)
server.serve_forever()
