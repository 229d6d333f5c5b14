// Uses libedit.
#include "line_editor.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <filesystem>

#include "command_line/help.h"
#include "completion.h"
#include "interrupt.h"

namespace dvbshell {

namespace {

constexpr int kHistorySize = 500;
constexpr int kMillisecondsBetweenKeys = 20;

/// Creates the folder and the file, readable for the user only.
bool prepareFile(const std::string& path) {
    namespace files = std::filesystem;
    std::error_code error;
    files::create_directories(files::path(path).parent_path(), error);
    const int file = path.empty() ? -1 : open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    if (file < 0) {
        return false;
    }
    const bool isPrivate = fchmod(file, 0600) == 0;
    close(file);
    return isPrivate;
}

std::string variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

/// Reads the rest of a UTF-8 character. A wrong byte becomes a question mark.
int readCharacter(wchar_t* key) {
    std::mbstate_t state{};
    for (int count = 0; count < 4; ++count) {
        char byte = 0;
        const ssize_t got = ::read(STDIN_FILENO, &byte, 1);
        if (got <= 0) {
            return static_cast<int>(got);
        }
        const std::size_t used = std::mbrtowc(key, &byte, 1, &state);
        if (used != static_cast<std::size_t>(-2)) {
            *key = used == static_cast<std::size_t>(-1) ? L'?' : *key;
            return 1;
        }
    }
    *key = L'?';
    return 1;
}

}  // namespace

std::string historyPath() {
    const std::string state = variable("XDG_STATE_HOME");
    const std::string home = variable("HOME");
    // Relative paths in the variable are invalid.
    if (!state.empty() && state.front() == '/') {
        return state + "/dvbshell/history";
    }
    return home.empty() ? "" : home + "/.local/state/dvbshell/history";
}

LineEditor::LineEditor(const char* newPrompt, std::string newHistoryPath)
    : prompt(newPrompt),
      path(std::move(newHistoryPath)),
      editor(el_init("dvbshell", stdin, stdout, stderr)),
      history(history_init()) {
    HistEvent event;
    ::history(history, &event, H_SETSIZE, kHistorySize);
    ::history(history, &event, H_SETUNIQUE, 1);
    path = prepareFile(path) ? path : "";
    if (!path.empty()) {
        ::history(history, &event, H_LOAD, path.c_str());
    }
    el_set(editor, EL_CLIENTDATA, this);
    el_set(
        editor, EL_PROMPT, +[](EditLine* each) { return const_cast<char*>(of(each).prompt); });
    el_set(editor, EL_EDITOR, "emacs");
    el_set(editor, EL_HIST, ::history, history);
    el_set(editor, EL_ADDFN, "dvbshell-complete", "complete", &LineEditor::completeWord);
    el_set(editor, EL_BIND, "^I", "dvbshell-complete", nullptr);
    el_set(editor, EL_GETCFN, &LineEditor::readKey);
    el_source(editor, nullptr);
}

LineEditor::~LineEditor() {
    el_end(editor);
    history_end(history);
}

LineEditor& LineEditor::of(EditLine* editor) {
    LineEditor* self = nullptr;
    el_get(editor, EL_CLIENTDATA, &self);
    return *self;
}

bool LineEditor::read(std::string& line) {
    while (true) {
        int count = 0;
        el_resize(editor);
        const char* const text = el_gets(editor, &count);
        if (isInterrupted()) {
            clearInterrupt();
            el_reset(editor);
            std::printf("^C\n");
            continue;
        }
        if (text == nullptr || count <= 0) {
            std::printf("\n");
            return false;
        }
        line.assign(text, static_cast<std::size_t>(count));
        line.erase(line.find_last_not_of('\n') + 1);
        remember(line);
        return true;
    }
}

void LineEditor::remember(const std::string& line) {
    if (line.find_first_not_of(' ') == std::string::npos) {
        return;
    }
    HistEvent event;
    ::history(history, &event, H_ENTER, line.c_str());
    if (!path.empty()) {
        ::history(history, &event, H_SAVE, path.c_str());
    }
}

int LineEditor::readKey(EditLine* editor, wchar_t* key) {
    while (!isInterrupted()) {
        pollfd input{STDIN_FILENO, POLLIN, 0};
        const int ready = poll(&input, 1, kMillisecondsBetweenKeys);
        // A Ctrl-D that came before the prompt is read as NUL here, after which libedit would quote the next key.
        if (ready > 0) {
            const int count = readCharacter(key);
            if (count != 1 || *key != L'\0') {
                return count;
            }
        }
        if (ready < 0 && errno != EINTR) {
            return -1;
        }
        of(editor).whileWaiting();
    }
    return 0;
}

void LineEditor::hideLine() {
    std::printf("\r\033[K");
}

void LineEditor::showLine() {
    std::fflush(stdout);
    el_set(editor, EL_REFRESH);
}

void LineEditor::showChoices(const std::vector<std::string>& words) {
    std::size_t widest = 0;
    for (const std::string& word : words) {
        widest = std::max(widest, word.size() + 2);
    }
    const std::size_t inRow = std::max<std::size_t>(1, command_line::helpWidth() / widest);
    std::printf("\n");
    for (std::size_t index = 0; index < words.size(); ++index) {
        const bool isLast = index + 1 == words.size() || (index + 1) % inRow == 0;
        std::printf("%-*s%s", isLast ? 0 : static_cast<int>(widest), words[index].c_str(), isLast ? "\n" : "");
    }
}

unsigned char LineEditor::completeWord(EditLine* editor, int) {
    LineEditor& self = of(editor);
    const LineInfo* const info = el_line(editor);
    const std::string line(info->buffer, info->cursor);
    const std::vector<std::string> words = self.complete(line);
    if (words.empty()) {
        return CC_REFRESH_BEEP;
    }
    const std::size_t begun = line.size() - (line.find_last_of(' ') + 1);
    const std::string added = commonBeginning(words).substr(begun) + (words.size() == 1 ? " " : "");
    if (!added.empty()) {
        return el_insertstr(editor, added.c_str()) == 0 ? CC_REFRESH : CC_ERROR;
    }
    showChoices(words);
    self.showLine();
    return CC_REDISPLAY;
}

}  // namespace dvbshell
