// Ctrl-C: ends what runs, and clears the line at the prompt.
// Threads: the handler runs on any thread; one other thread asks.
// Blocks:  never.
// Fails:   never.
#pragma once

namespace dvbshell {

/// From now on, SIGINT only sets the flag. A second SIGINT before clearInterrupt() ends the process, because an
/// operation may wait for an answer that never comes.
void catchInterrupts();
bool isInterrupted();
void clearInterrupt();

}  // namespace dvbshell
