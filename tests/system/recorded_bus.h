// What the running service and its browsers say to each other, written to a file by dtvmon.
#pragma once

#include <string>
#include <vector>

#include "service_process.h"

struct RecordedFile {
    const std::string path;

    /// What is in it so far, as lines or, with --json, as objects.
    std::string text(std::vector<std::string> options = {}) const {
        options.insert(options.end(), {"--read", path});
        ChildProcess reader(DTVMON, options, "reader");
        reader.wait();
        return reader.output();
    }
};

class RecordedBus {
public:
    /// Begins when this returns: by then the recording has a shell that has come for that alone.
    explicit RecordedBus(const std::string& newFile) : file{newFile}, writer(DTVMON, {"--write", newFile}, "writer") {
        EXPECT_TRUE(eventually([this] {
            ChildProcess shell(DVBSHELL, {"--library", LIBRARY_FILE, "--seconds", "0", "info"}, "first-shell");
            const bool isConnected = shell.wait() == 0;
            return isConnected && text().find("] connected") != std::string::npos;
        }));
    }

    std::string text() const { return file.text(); }
    bool comesToHave(const std::string& words) const {
        return eventually([&] { return text().find(words) != std::string::npos; });
    }
    /// Waits until all browsers have disconnected, as many and the shell at least.
    bool hasSeenAllGo(std::size_t least) const {
        return eventually([&] {
            const std::string all = text();
            const std::size_t came = timesIn(all, "] connected");
            return came > least && came == timesIn(all, "] disconnected");
        });
    }
    static std::size_t timesIn(const std::string& text, const std::string& words) {
        std::size_t times = 0;
        for (std::size_t at = text.find(words); at != std::string::npos; at = text.find(words, at + words.size())) {
            ++times;
        }
        return times;
    }
    void end() { EXPECT_EQ(writer.end(SIGINT), 0); }

private:
    const RecordedFile file;
    ChildProcess writer;
};
