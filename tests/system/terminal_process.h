// A program on a terminal of its own: the test types and reads the screen's text. No log file is set, as for a user.
#pragma once

#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>

#include "service_process.h"

class TerminalProcess {
public:
    TerminalProcess(const std::string& program, std::vector<std::string> arguments, unsigned short columns = 80) {
        const winsize size{50, columns, 0, 0};
        process = forkpty(&terminal, nullptr, nullptr, &size);
        if (process == 0) {
            unsetenv("DTV_LOG_FILE");
            unsetenv("DTV_LOG_LEVEL");
            unsetenv("COLUMNS");
            setenv("TERM", "xterm", 1);
            setenv("LSAN_OPTIONS", "print_suppressions=0:suppressions=" KNOWN_LEAKS, 1);
            setenv("XDG_STATE_HOME", (OwnRunDirectory::instance().path() + "/state").c_str(), 1);
            become(program, std::move(arguments));
        }
    }
    TerminalProcess(const TerminalProcess&) = delete;
    TerminalProcess& operator=(const TerminalProcess&) = delete;
    ~TerminalProcess() {
        if (process > 0) {
            kill(process, SIGKILL);
            waitpid(process, nullptr, 0);
        }
        close(terminal);
    }

    void type(const std::string& keys) const {
        EXPECT_EQ(write(terminal, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
    }
    /// Waits until the text appears after what earlier calls found.
    bool shows(const std::string& text) {
        return eventually([&] {
            readWhatIsThere();
            const std::size_t found = screen.find(text, seen);
            seen = found == std::string::npos ? seen : found + text.size();
            return found != std::string::npos;
        });
    }
    /// Waits until the text is anywhere on the screen.
    bool has(const std::string& text) {
        return eventually([&] {
            readWhatIsThere();
            return screen.find(text) != std::string::npos;
        });
    }
    /// Types a key until the program ends; returns the exit code, or -1. A key that the terminal itself interprets is
    /// lost if it comes before the program reads keys one by one.
    int endsOn(const char* key) {
        EXPECT_TRUE(eventually([this, key] {
            [[maybe_unused]] const ssize_t written = write(terminal, key, 1);
            readWhatIsThere();
            return ended || (ended = waitpid(process, &status, WNOHANG) == process);
        })) << screen;
        return wait();
    }
    /// The exit code, or -1.
    int wait() {
        EXPECT_TRUE(eventually([this] {
            readWhatIsThere();
            return ended || (ended = waitpid(process, &status, WNOHANG) == process);
        })) << screen;
        process = ended ? -1 : process;
        return ended && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    const std::string& text() const { return screen; }

private:
    void readWhatIsThere() {
        pollfd input{terminal, POLLIN, 0};
        char bytes[4096];
        while (poll(&input, 1, 0) > 0 && (input.revents & POLLIN) != 0) {
            const ssize_t count = read(terminal, bytes, sizeof bytes);
            if (count <= 0) {
                return;
            }
            screen.append(bytes, static_cast<std::size_t>(count));
        }
    }

    int terminal = -1;
    pid_t process = -1;
    std::string screen;
    std::size_t seen = 0;
    bool ended = false;
    int status = 0;
};
