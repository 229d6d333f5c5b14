#!/usr/bin/env python3
"""Serves the pages of the tests on a port of its own, which it prints first. Then it prints a line for each request.
A page is also there as held/PAGE: it comes after a request for /release, and then a line "released" is printed.
  serve_pages.py FOLDER
"""
import functools
import http.server
import sys
import threading

released = threading.Event()


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
        if self.path == "/release":
            released.set()
            self.send_response(http.HTTPStatus.NO_CONTENT)
            self.end_headers()
            return
        is_held = self.path.startswith("/held/")
        if is_held:
            self.path = self.path[len("/held"):]
        super().do_GET()
        if is_held:
            print("released", flush=True)

    def copyfile(self, source, outputfile):
        """Called between the header of a page and its bytes."""
        if self.requestline.split()[1].startswith("/held/"):
            outputfile.flush()
            released.wait()
        super().copyfile(source, outputfile)

    def log_message(self, _format, *values):
        print(" ".join(str(value) for value in values), flush=True)


server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), functools.partial(Pages, directory=sys.argv[1]))
server.daemon_threads = True
print(f"port {server.server_address[1]}", flush=True)
server.serve_forever()
