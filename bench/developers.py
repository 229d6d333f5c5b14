#!/usr/bin/env python3
"""What a change costs a developer: processor time from a touched file to a finished build and tests that have run.

developers.py SOURCES BUILD   BUILD is a build of everything with tests, whose objects are up to date

The compiler cache is off. Processor time is user and system together, of all that ninja and ctest start. Of the
library's sources it is the one that takes longest to compile; its tests are all that have the library's code in them,
without the long ones. Other work on the machine makes the times longer.
"""
import glob
import os
import re
import resource
import subprocess
import sys

LIBRARY = "src/platform_support/browserdvbapi/src"
CATALOGUE = "frame-genrpc/app-browserdvbservice-proxy/src/browserdvbservice_messages.inc"


def processor_seconds(command, cwd):
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    subprocess.run(command, cwd=cwd, check=True, stdout=subprocess.DEVNULL, env={**os.environ, "CCACHE_DISABLE": "1"})
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def suites_of_library(sources):
    """The folders whose test programs have the library's code in them."""
    for path in sorted(glob.glob(os.path.join(sources, "tests/unit/*/CMakeLists.txt"))):
        with open(path, encoding="utf-8") as file:
            text = file.read()
        if "browserdvbapi_code" in text:
            yield os.path.basename(os.path.dirname(path)), re.search(r"dtv_add_test\((\w+)", text).group(1)


def object_of(source):
    return f"src/CMakeFiles/browserdvbapi_objects.dir/platform_support/browserdvbapi/src/{os.path.basename(source)}.o"


def main(arguments):
    sources, build = map(os.path.abspath, arguments)
    suites = list(suites_of_library(sources))
    subprocess.run(["ninja", "all"], cwd=build, check=True)

    def touched(path, command):
        os.utime(path)
        return processor_seconds(command, build)

    compiled = {path: touched(path, ["ninja", object_of(path)])
                for path in glob.glob(os.path.join(sources, LIBRARY, "*.cpp"))}
    slowest = max(compiled, key=compiled.get)
    built = touched(slowest, ["ninja", "browserdvbapi", *(program for _, program in suites)])
    ran = sum(processor_seconds(["ctest", "--label-exclude", "-only-"], os.path.join(build, "tests/unit", folder))
              for folder, _ in suites)
    everything = touched(os.path.join(sources, CATALOGUE), ["ninja", "all"])
    print("| what | processor time | goal | reached |")
    print("|---|---|---|---|")
    for what, seconds, goal in ((f"{os.path.basename(slowest)} touched, to its tests having run", built + ran, 10),
                                ("the message catalogue touched, to a finished build", everything, 60)):
        print(f"| {what} | {seconds:.1f} s | <= {goal} s | {'yes' if seconds <= goal else 'no'} |")
    print(f"of the first, {compiled[slowest]:.1f} s compile the source, {built - compiled[slowest]:.1f} s link the library "
          f"and {len(suites)} test programs, {ran:.1f} s run their tests")


if __name__ == "__main__":
    main(sys.argv[1:])
