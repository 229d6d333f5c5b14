// Options, help and manual page of dtvmon.
#include "command_line.h"

namespace dtvmon {

namespace {

using namespace command_line;

std::vector<Option> options() {
    return {
        {"only", "NAME",
         "show only records of this name: an operation of the message catalogue, connected, disconnected, refused, "
         "section_queued or section_dropped; * and ? stand for any characters; may be given again"},
        {"not", "NAME", "leave out records of this name; may be given again"},
        {"browser", "N", "show only this browser, by its number in the service's log; may be given again"},
        {"bytes", "", "show the bytes of messages and sections too"},
        {"json", "", "print a JSON object on each line"},
        {"statistics", "", "count the records by name, and print the counts each second and at the end"},
        {"seconds", "N", "end after so long, 1 to 86400"},
        {"write", "FILE", "write the records to a pcapng file in place of printing them", anyFile()},
        {"read", "FILE",
         "read a file that --write or a browser with DTV_BUS_FILE has written, in place of a running service; may be "
         "given again: the records of all files in the order of their times",
         anyFile()}};
}

Program described() {
    Program program;
    program.name = "dtvmon";
    program.summary = "show what the DTV service and its browsers say to each other";
    program.usage = {{"[OPTION]...", "follow the running service until Ctrl-C"},
                     {"--read FILE [OPTION]...", "show what has been recorded"}};
    program.description =
        "Prints a line for each message between browsers and the dtvserviced that runs in the same run directory: "
        "time, "
        "number, program and process of the browser, direction (-> to the service, <- to the browser), operation and "
        "values. It also prints the browsers that come and go, messages that were refused, and sections that were "
        "written to a browser's queue or found no room there.\n\n"
        "The service never waits for dtvmon. If dtvmon does not read in time, it misses records, and a line says how "
        "many.";
    program.options = options();
    program.exitStatuses = {{"0", "done, or ended by Ctrl-C"},
                            {"1", "a file is damaged or cannot be read or written; the error says where"},
                            {"2", "wrong command line"},
                            {"3", "there is no service, or it has gone"}};
    program.environment = {{"DTV_RUN_DIR", "folder of the sockets; the same for service, browsers and operator"}};
    program.examples = {{"dtvmon --not onPtsNotify", "everything but the time stamps"},
                        {"dtvmon --only '*Filter*' --only 'section_*' --browser 1", "how sections come to a browser"},
                        {"dtvmon --write bus.pcapng", "record, for later or for Wireshark"},
                        {"dtvmon --read bus.pcapng --statistics", "what was said how often"},
                        {"dtvmon --read bus.pcapng --read browser.4711.pcapng", "both sides, to see what was lost"}};
    program.seeAlso = {"dtvserviced", "dtvctl", "dvbshell"};
    return program;
}

}  // namespace

const Program& commandLine() {
    static const Program kProgram = described();
    return kProgram;
}

}  // namespace dtvmon
