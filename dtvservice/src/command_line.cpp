// Options, help and manual page of dtvserviced.
#include "command_line.h"

namespace dtvservice {

namespace {

using namespace command_line;

std::vector<Row> inputs() {
    return {
        {"FILE or file:FILE", "played in a loop at the pace of its PCR; may be compressed with gzip"},
        {"-", "standard input, at the pace of its PCR"},
        {"udp://[@]HOST:PORT",
         "datagrams, unicast or multicast; HOST is a numeric address or empty; ?interface=ADDRESS selects a multicast "
         "group's interface"},
        {"rtp://[@]HOST:PORT", "the same with RTP"},
        {"dvb://ADAPTER[/FRONTEND]?NAME=VALUE&...",
         "a DVB adapter; names and values are libdvbv5's; lnb=NAME selects an LNB"},
    };
}

std::vector<Option> replayOptions() {
    return {
        {"replay", "FILE",
         "play a recording of \"dtvmon --write\" in place of inputs: each browser that connects gets the events and "
         "sections of the next recorded browser of its program, at the recorded pace; its commands move the recording "
         "on",
         anyFile()},
        {"replay-browser", "N", "give every browser what the recorded browser of this number got"},
        {"replay-fast", "", "replay without the recorded pauses"},
        {"replay-wait", "SECONDS",
         "how late a command of the recording may come until the replay goes on without it; default: 5, or 1 with "
         "--replay-fast"},
    };
}

Program described() {
    Program program;
    program.name = "dtvserviced";
    program.summary = "reference DTV service: play transport streams and answer browsers";
    program.usage = {{"--input INPUT... [OPTION]...", "play and answer browsers"},
                     {"--replay FILE [OPTION]...", "play a recording of the bus"},
                     {"--list FILE", "print the services of FILE and end"}};
    program.description =
        "Plays transport streams from files and live inputs. Browsers connect to it as to a television's DVB "
        "middleware: they tune, and get sections, tables and events. It prints \"ready:\" when they can connect, and "
        "runs until SIGINT or SIGTERM.";
    program.options = {
        {"input",
         "INPUT",
         "a transport stream. With several inputs each is a multiplex, and tuning switches between them:",
         anyFile(),
         {},
         inputs(),
         "Packets have 188, 192 or 204 bytes."},
        {"bitrate", "N", "bit/s of packets that follow no PCR; 500k and 4.5M are numbers, too; default: 5M"},
        {"once", "", "play each file once; end after the last one unless there are other inputs"},
        {"application", "URL[,ORG.APP]",
         "every service gets an AIT that starts this application, in place of its own AIT; hexadecimal ids; default: "
         "ffffff.1"},
        {"http", "[ADDRESS:]PORT",
         "serve the presented service as a transport stream, channels and programmes by HTTP, at a numeric address, by "
         "default 127.0.0.1; port 0 is any port, which the line \"stream:\" shows"},
        {"serial-number", "TEXT", "the serial number for video on demand that browsers get; default: empty"},
        {"scenario", "FILE",
         "do what an operator or a fault would, as FILE says, from the first presented service on; see dtvctl run",
         anyFile()},
        {"list", "FILE",
         "print one line per service, separated by tabs: onid:tsid:sid, pmt or nopmt, hbbtv or no-hbbtv, name; onid is "
         "65535 if the file does not give it",
         anyFile()},
    };
    for (Option& option : replayOptions()) {
        program.options.push_back(std::move(option));
    }
    program.exitStatuses = {{"0", "stopped, or all files are played, or the list is printed"},
                            {"1",
                             "no input can be opened, the file has no service or no recording, the scenario is wrong, "
                             "or another service runs in the run directory"},
                            {"2", "wrong command line"}};
    program.environment = {
        {"DTV_RUN_DIR",
         "folder of the sockets, an absolute path; the same for service, browsers and operator; default: "
         "$XDG_RUNTIME_DIR/dtv, else /tmp/dtv-<uid>"},
        {"DTV_LOG_LEVEL", "off, failure, warning, ordinary or trace; default: warning"},
        {"DTV_LOG_FILE", "file that log lines are appended to; default: standard error"}};
    program.files = {{"dtvctl.sock", "in the run directory; the operator's socket"}};
    program.examples = {
        {"dtvserviced --input one.ts --input two.ts.gz", "play two multiplexes"},
        {"dtvserviced --input udp://@239.1.1.1:5500", "receive a multicast group"},
        {"dtvserviced --input 'dvb://0?delivery_system=DVBC/ANNEX_A&frequency=346000000&symbol_rate=6900000"
         "&modulation=QAM/256'",
         "receive a cable channel"},
        {"dtvserviced --input one.ts --application http://localhost:8000/index.html",
         "start an application of your own on every service"},
        {"dtvserviced --replay bus.pcapng", "debug at a desk what dtvmon --write has recorded at a set"},
        {"dtvserviced --list one.ts", "see what a file contains"}};
    program.seeAlso = {"dtvctl", "dtvmon", "dvbshell", "tsmake"};
    return program;
}

}  // namespace

const Program& commandLine() {
    static const Program kProgram = described();
    return kProgram;
}

}  // namespace dtvservice
