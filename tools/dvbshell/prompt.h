// The prompt: operations typed one a line, with history and completion, while events are shown as they come.
// Threads: one; it waits for the terminal and the event queue together.
// Blocks:  until the input ends.
#pragma once

#include "events.h"
#include "operations.h"
#include "printer.h"

namespace dvbshell {

/// The word for a replay of AIT sections, at the prompt and on the command line.
constexpr const char* kReplayAit = "ait";

/// Asks for the stored AIT sections of a channel by its triplet, or of the current one; false, with a line that says
/// why, when there is none.
bool replayAit(Host& host, Printer& printer, const std::vector<std::string>& words);

/// Runs one operation by its words; false when they are none, with a line that says why, or when its result is
/// negative.
bool runOperation(Host& host, Printer& printer, const std::vector<std::string>& words);

/// Connects, and waits a moment for the current channel: its report is no event of the listener's.
void awaitChannel(Host& host);

/// Reads operations from standard input until it ends or "quit"; 0, or 1 when a line of an input that is no terminal
/// was none or failed.
int runPrompt(Host& host, EventQueue& queue, Printer& printer);

}  // namespace dvbshell
