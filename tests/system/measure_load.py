#!/usr/bin/env python3
"""Measures the processor time that the reference service needs for a multiplex of 40 Mbit/s, as a share of one core.

    measure_load.py BUILD_FOLDER [SECONDS]

Packets of unused PIDs fill the sample up to 40.6 Mbit/s. Eight filters are open on PAT, NIT, SDT, EIT, TDT and three
PMTs, each in its own dvbshell. The output also has the load of the same service without a browser, measured just before.
"""
import os
import signal
import subprocess
import sys
import tempfile
import time

PACKET = 188
FILL = 26  # packets to one of the sample: 27 times 1.504 Mbit/s


def fill_up(sample, path):
    with open(sample, "rb") as file:
        packets = file.read()
    counters = [0] * 16
    with open(path, "wb") as out:
        for at in range(0, len(packets), PACKET):
            out.write(packets[at:at + PACKET])
            for index in range(FILL):
                pid = index % 16
                header = bytes([0x47, 0x12, pid, 0x10 | counters[pid]])
                counters[pid] = (counters[pid] + 1) % 16
                out.write(header + bytes(PACKET - 4))
    return os.path.getsize(path)


def processor_seconds(process):
    with open(f"/proc/{process}/stat", encoding="ascii") as file:
        fields = file.read().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def share_of(process, seconds):
    """Processor time by time, of the seconds that follow."""
    before, began = processor_seconds(process), time.monotonic()
    time.sleep(seconds)
    return (processor_seconds(process) - before) / (time.monotonic() - began)


def main():
    build = sys.argv[1]
    seconds = float(sys.argv[2]) if len(sys.argv) > 2 else 30
    with tempfile.TemporaryDirectory() as folder:
        os.chmod(folder, 0o700)
        environment = dict(os.environ, DTV_RUN_DIR=folder, DTV_LOG_FILE=folder + "/log")
        stream = folder + "/full.ts"
        size = fill_up(build + "/share/dtv/sample.ts", stream)
        service = subprocess.Popen([build + "/bin/dtvserviced", "--input", stream], env=environment,
                                   stdout=subprocess.PIPE, text=True)
        service.stdout.readline()
        alone = share_of(service.pid, seconds)
        pids = ["0", "16", "17", "18", "20", "256", "512", "768"]
        filters = [subprocess.Popen([build + "/bin/dvbshell", "sections", pid, "--count", "1000000", "--seconds",
                                     str(int(seconds) + 60), "--out", f"{folder}/{pid}"], env=environment)
                   for pid in pids]
        time.sleep(2)
        filtering = share_of(service.pid, seconds)
        for process in filters:
            process.send_signal(signal.SIGTERM)
            process.wait()
        service.terminate()
        service.wait()
    print(f"{size * 8 / 4 / 1e6:.1f} Mbit/s: {100 * alone:.2f} % of one core without a browser, "
          f"{100 * filtering:.2f} % with {len(pids)} filters: {filtering / alone:.2f} times as much")


if __name__ == "__main__":
    main()
