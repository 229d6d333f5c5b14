// Lines of a standard input that is no terminal.
// Threads: one.
// Blocks:  until a line has come, the input ends, or Ctrl-C is typed.
// Fails:   an input that cannot be read has ended.
#pragma once

#include <string>

namespace dvbshell {

class ScriptLines {
public:
    /// Returns false after the last line, and on Ctrl-C. The last line needs no line feed.
    bool next(std::string& line);

private:
    bool readMore();

    std::string buffered;
    bool hasEnded = false;
};

}  // namespace dvbshell
