// LineEditor: reads lines from the terminal, with history and completion.
// Threads: one.
// Blocks:  read() until a line is complete; meanwhile it calls whileWaiting() often.
// Fails:   a history that cannot be read or written is left out.
#pragma once

#include <histedit.h>

#include <functional>
#include <string>
#include <vector>

namespace dvbshell {

/// $XDG_STATE_HOME/dvbshell/history, else ~/.local/state/dvbshell/history; empty if there is neither.
std::string historyPath();

class LineEditor {
public:
    LineEditor(const char* newPrompt, std::string newHistoryPath);
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;
    ~LineEditor();

    /// The next line. Ctrl-C clears the line and begins a new one. False at the end of the input.
    bool read(std::string& line);
    /// Removes the prompt and the line from the screen, for other output, and shows them again.
    static void hideLine();
    void showLine();

    std::function<void()> whileWaiting = [] {};
    /// The words that the last word of the text may become.
    std::function<std::vector<std::string>(const std::string&)> complete = [](const std::string&) {
        return std::vector<std::string>();
    };

private:
    static LineEditor& of(EditLine* editor);
    static int readKey(EditLine* editor, wchar_t* key);
    static unsigned char completeWord(EditLine* editor, int key);
    static void showChoices(const std::vector<std::string>& words);
    void remember(const std::string& line);

    const char* prompt;
    std::string path;
    EditLine* editor;
    History* history;
};

}  // namespace dvbshell
