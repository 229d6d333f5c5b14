// A description that has everything a description can have.
#pragma once

#include "command_line/program.h"

inline command_line::Program describedProgram() {
    using namespace command_line;
    Program program;
    program.name = "radioctl";
    program.summary = "operates a radio";
    program.usage = {{"COMMAND", "asks the radio"}, {"--offline", "asks nobody"}};
    program.description = "Sends one command to the radio that runs on this machine.\n\nA second paragraph.";
    program.verbs = {{"Commands",
                      {{"play",
                        {{"STATION", outputOf("{ echo trouble >&2; printf '%s\\n' 1:2:3 1:2:4 5:6:7; } | cat")}},
                        "plays a station"},
                       {"volume",
                        {{"LEVEL"}, {"[left|right]", oneOf({"left", "right"})}},
                        "changes the volume",
                        "The level is relative to the present one.",
                        "radioctl volume -5 left"},
                       {"tape insert", {{"FILE...", anyFile()}}, "puts tapes in"},
                       {"tape eject", {}, "takes the tape out"},
                       {"status", {}, "prints what plays"}}}};
    program.options = {{"json", "", "print JSON"},
                       {"device",
                        "DEVICE",
                        "the radio; one of these",
                        oneOf({"usb", "network"}),
                        {},
                        {{"usb", "the one that is plugged in"}, {"network", "the one that answers first"}},
                        "Others are not known."},
                       {"offline", "", "ask nobody"},
                       {"fade", "N", "seconds until it is loud", {}, {"play", "volume"}},
                       {"side", "A|B", "the tape's side", oneOf({"A", "B"}), {"tape insert"}}};
    program.exitStatuses = {{"0", "done"}, {"2", "wrong command line"}};
    program.environment = {{"RADIO", "the device, if --device is not given"}};
    program.files = {{"/dev/radio", "the device"}};
    program.examples = {{"radioctl play 1:2:3", "play the first station"}};
    program.seeAlso = {"radiod"};
    return program;
}
