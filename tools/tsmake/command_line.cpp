// Options, help and manual page of tsmake.
#include "command_line.h"

namespace tsmake {

namespace {

using namespace command_line;

Program described() {
    Program program;
    program.name = "tsmake";
    program.summary = "write a small DVB broadcast, for demonstrations and tests";
    program.usage = {{"OUT.ts [OPTION]...", "write a multiplex"}, {"--print-sample", "print the sample's description"}};
    program.description =
        "Writes the multiplex that FILE describes as a transport stream, or the sample: three television services and "
        "a radio. The same call writes the same bytes. Folders of carousels are relative to FILE.";
    program.arguments = {{"OUT.ts", anyFile()}};
    program.options = {
        {"description", "FILE", "JSON with // comments; docs/tsmake.md lists the keys, and the sample is an example",
         anyFile()},
        {"seconds", "N", "length of the broadcast, 1 to 3600; default: 4"},
        {"insert", "FILE.ts:PID",
         "send an elementary stream of another transport stream, such as its pictures or its sound, in place of the "
         "first component of its kind that has no stream yet. It keeps its pace, with the broadcast's clock, and "
         "begins "
         "again at its end. The option may come more than once",
         anyFile()},
        {"print-sample", "", "print the description of the sample, and write no broadcast"},
    };
    program.exitStatuses = {
        {"0", "the broadcast is written"},
        {"1", "the description is wrong, or the file cannot be written; no incomplete file remains"},
        {"2", "wrong command line"}};
    program.examples = {
        {"tsmake sample.ts", "write the sample"},
        {"tsmake --print-sample > mine.json", "start a description of your own"},
        {"tsmake mine.ts --description mine.json --seconds 20", "write 20 seconds of it"},
        {"tsmake mine.ts --description mine.json --insert real.ts:120 --insert real.ts:130",
         "write it with the pictures and the sound of PIDs 120 and 130 of real.ts"},
    };
    program.seeAlso = {"dtvserviced", "dvbshell"};
    return program;
}

}  // namespace

const Program& commandLine() {
    static const Program kProgram = described();
    return kProgram;
}

}  // namespace tsmake
