// The verbs of the shell: one table for the command line and the prompt. A row has the description for help, completion
// and parsing, and the function that makes a job of the arguments.
// Threads: one.
// Blocks:  a job as long as its verb says.
// Fails:   a wrong argument gives a text, and no job.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "arguments.h"
#include "command_line/program.h"
#include "session.h"

namespace dvbshell {

/// What is left to do when the arguments are right. Returns an exit code.
using Job = std::function<int(Session&)>;

struct Verb {
    /// `events`: the service and what it sends to a browser that starts.
    enum class Needs { service, events, nothing };

    command_line::Verb description;
    std::function<Job(ArgumentReader&)> prepare;
    Needs needs = Needs::service;
};

struct VerbGroup {
    const char* title;
    std::vector<Verb> verbs;
};

// Each in a file of its own.
VerbGroup channelVerbs();
VerbGroup tableVerbs();
VerbGroup streamEventVerbs();
VerbGroup carouselVerbs();
VerbGroup operationVerbs();
/// `demo` for the command line.
VerbGroup commandLineVerbs();
/// `help` and `quit`, which the prompt runs itself.
VerbGroup promptVerbs();

enum class Place { commandLine, prompt };

/// All verbs of a place.
const std::vector<VerbGroup>& verbsOf(Place place);
/// The description of the shell's command line, or of a line of the prompt.
const command_line::Program& describe(Place place);

/// Reads the words of a command. No job, with the reason, when they are wrong.
Job prepare(Place place, const command_line::Arguments& arguments, std::string& error);
/// Runs a job when the service is there, or says that it is not.
Job guarded(Job job, Verb::Needs needs);

/// The levels that --log takes beside the name of a file.
const std::vector<std::string>& logLevels();

/// The argument of most verbs, with its completion.
command_line::Argument channelArgument(const char* name);

}  // namespace dvbshell
