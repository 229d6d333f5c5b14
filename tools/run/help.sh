# shellcheck shell=bash disable=SC2034,SC2154 # `run` gives and uses variables
# What `./run` says about itself. `run` includes this file.

usage() {
    cat <<TEXT
usage: ./run demo [FILE.ts] [--service ONID:TSID:SID]...
                                                     watch a browser process follow a broadcast (the sample, or FILE)
       ./run tv [FILE.ts] [--application URL] [--screenshot OUT.png]
                                                     a television in a web engine, with a page to watch and use it
       ./run test [--preset NAME] [--all] [--browser] [ctest arguments]
                                                     build and run the test suite; --all: also what other presets test
       ./run build [--preset NAME]                   build everything
       ./run coverage [ctest arguments]              which lines and branches the test suite executes, by file
       ./run soak [MINUTES]                          services and browsers in use for 30 minutes; fails if one grows
       ./run fuzz [NAME] [SECONDS]                   feed hostile bytes to the parsers, with clang's libFuzzer
       ./run bench [FILTER]                          speed beside what one would use instead, as ratios of one run;
                                                     --developers: what a change of a source costs
       ./run package                                 make the desktop kit's Debian package
       ./run format                                  check the layout of all sources (clang-format)
       ./run lint [--all]                            check what changed with clang-tidy, cppcheck and shellcheck
       ./run accept-abi                              take the binary interface as it is now for the accepted one
       ./run bare-check [--quick] [--dir FOLDER]     try the README's commands in bare Debian systems (needs root)
       ./run clean                                   remove all build folders
       ./run VERB --help                             what a verb does in detail
presets: $presets
TEXT
}

# help_of VERB: fails if there is no such verb.
help_of() {
    case $1 in
    demo) cat <<TEXT
usage: ./run demo [FILE.ts] [--service ONID:TSID:SID]...
Builds the programs into build/host and plays the sample broadcast, or FILE.ts, to a browser host. It prints what
arrives and a summary. The exit code is 1 if something is missing.
  --service ONID:TSID:SID   a service to show, as often as needed; without it up to four are chosen
TEXT
        ;;
    tv) cat <<TEXT
usage: ./run tv [FILE.ts] [--application URL] [--screenshot OUT.png]
Plays a broadcast and starts the HbbTV applications that it signals in a web engine, WPE WebKit, on the library. It
installs the engine first, and says how large it is. It prints the address of a page that shows the television's screen,
with a remote control, the applications and a log; open it in any browser, also through an ssh tunnel. Pages show the
broadcast's picture in the box of their broadcast object. Ctrl-C ends it.
  FILE.ts             the broadcast; without it the sample, whose first service has an application of this project
  --application URL   this application on every service, instead of the broadcast's own
  --screenshot FILE   write what the screen shows when the application has drawn itself, and end
TEXT
        ;;
    test) cat <<TEXT
usage: ./run test [--preset NAME] [--all] [--browser] [ctest arguments]
Builds everything with the preset and runs the tests. A test that fails runs once more, alone.
  --preset NAME      one of: $presets; host if not given
  --all              also the long tests of other presets
  --browser          install the web engine first, so that the tests with it run in preset host; without it they are
                     skipped. In preset clang it makes the build include what needs the engine
  ctest arguments    all others go to ctest: -R PATTERN selects tests by name, -N lists them, -V prints their output
TEXT
        ;;
    build) cat <<TEXT
usage: ./run build [--preset NAME]
Builds everything, with the tests, into build/NAME.
  --preset NAME      one of: $presets; host if not given
TEXT
        ;;
    coverage) cat <<TEXT
usage: ./run coverage [ctest arguments]
Runs the test suite in the preset coverage, and prints which lines and branches it has executed: by file, by room, in
all. The library's own sources come last. build/coverage/html has the count of each line.
Lines and branches are clang's: a branch is a condition of the source that was true or false. What only an exception
would take is no branch, so no figure is left out. Processes count into shared memory, so that one that is killed counts
too. A macro's branches, such as a log line's "is this level on", count where the macro is used.
  ctest arguments    go to ctest: -R PATTERN counts what the tests of that name execute
TEXT
        ;;
    soak) cat <<TEXT
usage: ./run soak [MINUTES]
Runs two reference services and three browsers that use all that there is, and restarts one of the services again and
again. It prints how long answers take, and at the end memory, descriptors and threads of each process: start, end,
highest, growth per hour. The exit code is 1 if one of them grows, or a process ends by itself. Growth is a median in the
last third of the time that is above the one in the second third by more than the tolerances in tests/soak/growth.py.
Ctrl-C ends it early, with the table.
  MINUTES            30 if not given; less than 1.5 are too short to judge
TEXT
        ;;
    fuzz) cat <<TEXT
usage: ./run fuzz [NAME] [SECONDS]
Builds the fuzzers with clang into build/fuzz and runs them one after the other, or only NAME. What a fuzzer has learnt
stays in build/fuzz/corpus, and the next run continues from there. An input that breaks something goes to
build/fuzz/findings/NAME; the exit code is then 1.
  NAME       one of: $(fuzzers | paste -s -d ' ' | sed 's/ /, /g' | fold -s -w 106 | sed '2,$s/^/             /; s/ $//')
  SECONDS    for each fuzzer; 60 if not given
TEXT
        ;;
    bench) cat <<TEXT
usage: ./run bench [FILTER]
       ./run bench --developers
       ./run bench --instructions
Builds the measurements into build/bench and runs them: messages beside a raw socket, Asio and sd-bus, a tune, sections
beside a raw message queue, their assembly beside libbitstream and libdvbpsi, the reading of a broadcast beside cat and
libavformat, log lines beside snprintf and write, the start, and what grows with browsers, listeners and services. It
prints a table of ratios with the goals, and writes the figures of each repetition to build/bench/measurements.json. It
takes eight minutes. The machine must have two CPUs, and nothing else to do; docs/performance.md tells more.
  FILTER   a regular expression for the names: round_trip, one_way, listeners, browsers, zapping, start, sections,
           assembly, log, listing, memory
  --developers   instead: the processor time from a touched source to its tests having run, and from a touched message
                 catalogue to a finished build, in build/host; takes ten minutes
  --instructions   instead: how many instructions browser and service take for a message, a section and the like, on this
                   machine and on 32-bit ARM; takes ten minutes, and the machine may be busy
TEXT
        ;;
    package) cat <<TEXT
usage: ./run package
Builds the programs and packs them as a Debian package in build/host, with the library, the host platform, the headers
and the documentation.
TEXT
        ;;
    format) cat <<TEXT
usage: ./run format
Checks the layout of all C++ sources with clang-format and changes nothing.
TEXT
        ;;
    lint) cat <<TEXT
usage: ./run lint [--all]
Checks the C++ sources that changed with clang-tidy, the whole program with cppcheck, and all scripts with shellcheck.
"Changed" are the files that are not committed and those of the commits since the branch left main (origin/main, else
main); on main itself, instead of the latter, the $most_on_main sources that changed last. For a header it checks its
own source and up to $most_includers others that include it.
  --all   clang-tidy checks all sources, which takes an hour
TEXT
        ;;
    accept-abi) cat <<TEXT
usage: ./run accept-abi
Describes the binary interfaces of both widths anew in tests/abi/accepted and lists the files that changed.
TEXT
        ;;
    bare-check) exec "$root/tests/bare/check.sh" --help ;;
    clean) cat <<TEXT
usage: ./run clean
Removes the folder build.
TEXT
        ;;
    help | --help | -h) usage ;;
    *) return 1 ;;
    esac
}
