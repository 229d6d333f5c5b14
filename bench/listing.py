"""What `dtvserviced --list` takes of the processor, beside `cat` and libavformat on the same broadcast."""
import os
import random
import subprocess

import broadcasts

CPU = 1


def command_of(folder, who, path):
    program = os.path.join(folder, "bin", "dtvserviced")
    return {"ours": [program, "--list", path], "cat": ["cat", path],
            "avformat": [os.path.join(folder, "bin", "demux_by_avformat"), path]}[who]


def processor_time(command):
    """Of the command, user and system together, in nanoseconds."""
    child = subprocess.Popen(command, stdout=subprocess.DEVNULL, preexec_fn=lambda: os.sched_setaffinity(0, {CPU}))
    _, status, used = os.wait4(child.pid, 0)
    child.returncode = os.waitstatus_to_exitcode(status)
    if child.returncode != 0:
        raise SystemExit(f"bench: {' '.join(command)} has failed")
    return round((used.ru_utime + used.ru_stime) * 1e9)


def measure(folder, wanted, effort):
    """Takes turns in random order. The files are read once before, so that they are in memory."""
    names = [(what, who, f"listing/{who}/{what}") for what in ("pictures", "tables") for who in ("ours", "cat", "avformat")]
    names = [each for each in names if wanted.search(each[2])]
    paths = {what: os.path.join(folder, f"{what}.ts") for what in {what for what, _, _ in names}}
    results = []
    try:
        for what, path in paths.items():
            broadcasts.write_full(os.path.join(folder, "bin", "tsmake"), path, effort.bytes, tables=what == "tables")
            processor_time(["cat", path])
        turns = names * effort.repetitions
        random.shuffle(turns)
        for what, who, name in turns:
            results.append({"name": name, "run_type": "iteration",
                            "real_time": processor_time(command_of(folder, who, paths[what]))})
    finally:
        for path in paths.values():
            if os.path.exists(path):
                os.remove(path)
    return results
