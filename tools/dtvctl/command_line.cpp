// Commands, options, help and manual page of dtvctl.
#include "command_line.h"

namespace dtvctl {

namespace {

using namespace command_line;

/// The triplets of the running service's channels.
Completion channels() {
    return outputOf("dtvctl channels | cut -c3-22 | tr -d ' '");
}

std::vector<VerbGroup> verbs() {
    return {
        {"Commands",
         {{"channels",
           {},
           "the channel list, by network, transport stream and service",
           "An asterisk marks the presented service. Then come the triplet ONID:TSID:SID, the input that carries "
           "the service, whether its PMT has come, whether it signals HbbTV applications, and its name.",
           "dtvctl channels"},
          {"status", {}, "what is presented, who is connected, what the operator has set", "", "dtvctl --json status"},
          {"statistics",
           {},
           "packets and errors of each input, filters, sections that were not read in time",
           "",
           "dtvctl statistics"},
          {"watch",
           {},
           "prints a line for each change, until Ctrl-C: presented service, inputs, browsers, errors",
           "",
           "dtvctl watch"},
          {"epg",
           {},
           "the programmes of all services: present, following and schedule",
           "The service reads the schedule from the first request on, or from its start with --http. A broadcast "
           "repeats it every 10 to 30 seconds, so the answer waits until the service has read it for some time.",
           "dtvctl epg --xmltv --seconds 30"},
          {"tune", {{"ONID:TSID:SID", channels()}}, "presents a service", "", "dtvctl tune 1:1025:28106"},
          {"osd",
           {{"LAYER"}, {"on|off", oneOf({"on", "off"})}},
           "shows or hides an on-screen display layer",
           "Browsers that follow the on-screen display learn of it.",
           "dtvctl osd 2 off"},
          {"ca insert", {{"SLOT"}}, "a CA module comes", "", "dtvctl ca insert 0"},
          {"ca remove", {{"SLOT"}}, "a CA module goes", "", "dtvctl ca remove 0"},
          {"ca reply",
           {{"CA_SESSION"}, {"CODE"}, {"[MESSAGE]"}},
           "answers a browser's message to the CA system",
           "\"dtvctl status\" lists the messages that wait, with their sessions. The oldest one of the session gets "
           "the reply.",
           "dtvctl ca reply 1 0 \"<answer/>\""},
          {"engine", {{"ENGINE_STATUS"}}, "tells browsers the HbbTV engine's status", "", "dtvctl engine 1"},
          {"stop-terminals", {}, "tells browsers that all terminals have stopped", "", "dtvctl stop-terminals"},
          {"stream-event",
           {{"EVENT_ID"}, {"[DATA]"}},
           "signals a stream event as if the broadcast had it",
           "Listeners and section filters get it from the presented service's first stream of stream events. DATA is "
           "its "
           "private data.",
           "dtvctl stream-event 7 1:0"},
          {"run",
           {{"FILE", anyFile()}},
           "does what an operator or a fault would, as the scenario in FILE says",
           "Prints each step when it has been carried out, until the scenario has ended. Ctrl-C ends it. The exit code "
           "is 1 if a step failed.",
           "dtvctl run scenario.json"},
          {"stop-scenario",
           {},
           "ends the scenario that runs, and undoes its faults and those that one has left",
           "",
           "dtvctl stop-scenario"}}}};
}

Program described() {
    Program program;
    program.name = "dtvctl";
    program.summary = "operate a running DTV service";
    program.usage = {{"[--json] COMMAND", "ask the service, and print its answer"}};
    program.description =
        "Connects to the dtvserviced that runs in the same run directory, sends one command and prints the answer.";
    program.verbs = verbs();
    program.options = {
        {"json", "",
         "print the answer, or the refusal, as a JSON object on one line; watch, run: an object for each change or "
         "step"},
        {"xmltv", "", "print the programmes as an XMLTV document", {}, {"epg"}},
        {"seconds", "N", "let the service read the schedule for so long, 0 to 600; default: 10", {}, {"epg"}}};
    program.exitStatuses = {
        {"0", "the service has done it"},
        {"1", "the service refused, a step of a scenario failed, or the output cannot be written; the error says why"},
        {"2", "wrong command line"},
        {"3", "there is no service, it has gone, or it does not answer"}};
    program.environment = {{"DTV_RUN_DIR", "folder of the sockets; the same for service, browsers and operator"}};
    program.seeAlso = {"dtvserviced", "dvbshell"};
    return program;
}

}  // namespace

const Program& commandLine() {
    static const Program kProgram = described();
    return kProgram;
}

}  // namespace dtvctl
