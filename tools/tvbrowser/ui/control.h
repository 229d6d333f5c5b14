// Control: the commands that come on the standard input, one a line, and their answers.
// Threads: the main one.
// Blocks:  never.
// Fails:   a wrong command is answered by a line that says what is wrong.
#pragma once

#include <functional>
#include <string>

#include "television.h"

namespace tvbrowser {

class Control {
public:
    /// `quit` ends the program.
    Control(Television& newTelevision, Television::Say newSay, std::function<void()> newQuit);
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;
    ~Control();

    /// Does one command.
    void run(const std::string& line);

private:
    static gboolean onInput(gint descriptor, GIOCondition condition, gpointer control);
    void take(const char* bytes, std::size_t count);
    void screenshot(const std::string& file);
    void start(const std::string& id);

    Television& television;
    const Television::Say say;
    const std::function<void()> quit;
    std::string partial;  ///< the beginning of a line whose end has not come
    guint source = 0;
};

/// Writes a screenshot. False if the file cannot be written.
bool writeScreenshot(const Television& television, const std::string& file);

}  // namespace tvbrowser
