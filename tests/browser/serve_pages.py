#!/usr/bin/env python3
"""Serves the pages of the tests on a port of its own, which it prints first. Then it prints a line for each request.
  serve_pages.py FOLDER [HELD]        held/NAME is answered, with nothing, as soon as the file of the name HELDNAME exists
"""
import functools
import http.server
import os
import sys
import time


class Pages(http.server.SimpleHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
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
        else:
            super().do_GET()

    def hold(self, file):
        while not os.path.exists(file):
            time.sleep(0.005)  # between two looks
        self.send_response(200)
        self.send_header("Content-Length", "0")
        self.end_headers()

    def log_message(self, _format, *values):
        print(" ".join(str(value) for value in values), flush=True)


server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), functools.partial(Pages, directory=sys.argv[1]))
server.daemon_threads = True
print(f"port {server.server_address[1]}", flush=True)
server.serve_forever()
