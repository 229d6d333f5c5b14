// The prompt: runs the command on each line, with history and completion, and prints events as they arrive.
// Threads: one; it waits for the terminal and for the event queue.
// Blocks:  until the input ends.
#pragma once

#include "session.h"

namespace dvbshell {

/// Runs commands from standard input until its end or "quit". From a terminal it returns kDone; from a script, the exit
/// code of the last command that failed.
int runPrompt(Session& session);

/// Runs one line. Wrong words give one or two lines. False when the user quits.
bool runLine(Session& session, const std::string& line, int& result);

}  // namespace dvbshell
