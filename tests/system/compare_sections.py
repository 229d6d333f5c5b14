#!/usr/bin/env python3
"""Compares the sections that a browser gets with the sections that tshark finds in a file, byte by byte and in order.

    compare_sections.py BUILD_FOLDER FILE.ts

Plays FILE with the reference service, opens a filter on every PID with sections, one dvbshell for each, and reads twice
as many sections as the file has. The service plays the file in a loop, so the received sections must repeat the file's
sequence from any starting point. Sections with a wrong length or CRC_32 are ignored: tshark shows them, but the service
drops them. Needs tshark.
"""
import json
import os
import re
import signal
import subprocess
import sys
import tempfile

DISSECTED = re.compile(r"^(mpeg|dvb)_[a-z]+_raw$")


def crc32(data):
    crc = 0xFFFFFFFF
    for byte in data:
        crc ^= byte << 24
        for _ in range(8):
            crc = (crc << 1) ^ 0x04C11DB7 if crc & 0x80000000 else crc << 1
        crc &= 0xFFFFFFFF
    return crc


def is_good(section):
    if len(section) < 3 or len(section) != 3 + ((section[1] & 0x0F) << 8 | section[2]):
        return False
    has_crc = section[1] & 0x80 or section[0] == 0x73
    return not has_crc or crc32(section) == 0


def sections_by_pid(path):
    """What tshark takes for sections, by PID, in order."""
    # tshark exits with 2 when the file ends in an invalid packet, but its output has everything before that packet.
    output = subprocess.run(["tshark", "-r", path, "-T", "jsonraw"], stdout=subprocess.PIPE,
                            stderr=subprocess.DEVNULL, check=False).stdout
    found = {}
    # A packet may have several sections under one name, so read objects as lists of pairs.
    for packet in json.loads(output, object_pairs_hook=list):
        layers = dict(dict(packet)["_source"])["layers"]
        frame = bytes.fromhex(dict(layers)["frame_raw"][0])
        pid = (frame[1] & 0x1F) << 8 | frame[2]
        for name, value in layers:
            if DISSECTED.match(name):
                section = bytes.fromhex(value[0])
                if is_good(section):
                    found.setdefault(pid, []).append(section.hex().upper())
    return found


def is_row_of(received, expected):
    """Whether `received` is the endless repetition of `expected` from somewhere on."""
    count = len(expected)
    return any(all(received[at] == expected[(start + at) % count] for at in range(len(received)))
               for start in range(count))


def receive(build, expected, environment):
    shells = {}
    for pid, sections in expected.items():
        shells[pid] = subprocess.Popen(
            [build + "/bin/dvbshell", "sections", str(pid), "--count", str(2 * len(sections)), "--hex", "--seconds",
             "600"], stdout=subprocess.PIPE, env=environment, text=True)
    return {pid: shell.communicate()[0].split() for pid, shell in shells.items()}


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    build, path = sys.argv[1:]
    expected = sections_by_pid(path)
    if not expected:
        sys.exit("compare_sections: tshark finds no section in " + path)
    with tempfile.TemporaryDirectory() as folder:
        environment = dict(os.environ, DTV_RUN_DIR=folder, DTV_LOG_FILE=folder + "/log")
        service = subprocess.Popen([build + "/bin/dtvserviced", "--input", path], stdout=subprocess.PIPE,
                                   env=environment, text=True)
        try:
            if "ready" not in service.stdout.readline():
                sys.exit("compare_sections: the service did not start")
            received = receive(build, expected, environment)
        finally:
            service.send_signal(signal.SIGTERM)
            service.wait()
    different = 0
    for pid in sorted(expected):
        good = len(received[pid]) == 2 * len(expected[pid]) and is_row_of(received[pid], expected[pid])
        different += not good
        print(f"PID {pid:5}  {len(expected[pid]):5} sections in the file, {len(set(expected[pid])):4} different, "
              f"{len(received[pid]):5} received  {'same bytes, same order' if good else 'DIFFERENT'}")
    sys.exit(1 if different else 0)


main()
