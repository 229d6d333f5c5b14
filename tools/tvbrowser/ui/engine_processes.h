// Ends the engine's processes, which are this one's children. The engine keeps them until this process has gone, and
// only then they write down what they know, in a folder that is no longer there.
// Threads: one, when no page is shown any more.
// Blocks:  until they have ended, a moment.
// Fails:   never; without /proc they end by themselves, later.
#pragma once

namespace tvbrowser {

void endEngineProcesses();

}  // namespace tvbrowser
