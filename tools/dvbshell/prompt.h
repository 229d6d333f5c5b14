// The prompt: reads one operation from each line, with history and completion, and prints events as they arrive.
// Threads: one; it waits for the terminal and for the event queue.
// Blocks:  until the input ends.
#pragma once

#include "events.h"
#include "operations.h"
#include "printer.h"

namespace dvbshell {

/// The command that replays AIT sections, at the prompt and on the command line.
constexpr const char* kReplayAit = "ait";

/// Asks for the stored AIT sections of the channel with this triplet, or of the current channel. Prints the reason and
/// returns false when there is none.
bool replayAit(Host& host, Printer& printer, const std::vector<std::string>& words);

/// Runs the operation that the words name. Prints the reason and returns false when the words are not an operation;
/// returns false also when the result is negative.
bool runOperation(Host& host, Printer& printer, const std::vector<std::string>& words);

/// Connects, and waits briefly for the current channel. The library learns it without an event for listeners.
void awaitChannel(Host& host);

/// Reads operations from standard input until its end or "quit". Returns 0, or 1 when the input is no terminal and a
/// line was invalid or its operation failed.
int runPrompt(Host& host, EventQueue& queue, Printer& printer);

}  // namespace dvbshell
