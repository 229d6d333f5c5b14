// Options, help and manual page of tvbrowser.
#include "command_line.h"

namespace tvbrowser {

namespace {

using namespace command_line;

Program described() {
    Program program;
    program.name = "tvbrowser";
    program.summary = "a television's browser: HbbTV applications of a broadcast in WPE WebKit";
    program.usage = {{"[OPTION]...", "run the applications of the presented service"}};
    program.description =
        "Connects to the dtvserviced that runs in the same run directory, starts the applications that the presented "
        "service signals, and shows them in the engine, without a display. It prints a line for each step of an "
        "application's life, \"page: TEXT\" for each text that a page writes to its console, and reads commands on "
        "the standard input, one on each line:\n\n"
        "key NAME presses a key of the remote control: RED, GREEN, YELLOW, BLUE, UP, DOWN, LEFT, RIGHT, ENTER, BACK, "
        "EXIT, 0 to 9, CHANNEL_UP, CHANNEL_DOWN and others. screenshot FILE.png writes what the screen shows. start "
        "ORG.APP starts a signalled application, open URL one from outside of the broadcast. picture URL gives another "
        "stream than --picture did. applications lists what is signalled and what runs. quit "
        "ends.";
    program.options = {
        {"library", "FILE", "the library; by default that beside the program", anyFile()},
        {"extension", "FOLDER", "the folder of the engine's extension; by default that beside the program", anyFile()},
        {"application", "URL[,ORG.APP]",
         "start an application from outside of the broadcast. ORG.APP, two hexadecimal numbers, is what an AIT that "
         "signals it calls it"},
        {"picture", "URL",
         "the presented service as a stream, such as dtvserviced --http gives it; pages show it in the box of their "
         "broadcast object. Without it they show no picture"},
        {"size", "WIDTHxHEIGHT", "of the screen, 1280x720 if not given"},
        {"ca-systems", "NUMBER[,NUMBER]...",
         "CA system identifiers of the set's module, which pages see as DRM systems. Without it no system is named, "
         "and "
         "messages to any are sent"},
        {"http", "PORT",
         "serve a page for people on this port of 127.0.0.1, 0 for any: the screen, a remote control, the applications "
         "and the log. It works through a tunnel too. Pages of other hosts cannot use it"},
        {"screenshot", "FILE.png",
         "write what the screen shows when the first application has drawn itself, and end; with exit code 1 if none "
         "has after 20 seconds",
         anyFile()}};
    program.exitStatuses = {{"0", "ended by quit, a signal, or after the screenshot"},
                            {"1", "the library or the engine cannot be used, or there was nothing to show"},
                            {"2", "wrong command line"}};
    program.environment = {
        {"DTV_RUN_DIR", "folder of the sockets; the same for service, browsers and operator"},
        {"DTV_BUS_FILE", "file for what the browser says to the service and hears from it, which dtvmon reads"}};
    program.seeAlso = {"dtvserviced", "dvbshell", "tsmake"};
    return program;
}

}  // namespace

const Program& commandLine() {
    static const Program kProgram = described();
    return kProgram;
}

}  // namespace tvbrowser
