// LineByHand: a log line of the usual form, with the time, to a file by the simplest means.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <string>

#include "browser.h"
#include "ovx/log.h"

namespace bench {

class LineByHand {
public:
    LineByHand() = default;
    LineByHand(const LineByHand&) = delete;
    LineByHand& operator=(const LineByHand&) = delete;
    ~LineByHand() { close(file); }

    /// False when the file does not take it.
    bool write(int value) {
        timespec now{};
        clock_gettime(CLOCK_REALTIME, &now);
        char line[256];
        const int length = std::snprintf(line, sizeof line, "%02d:%02d:%02d.%03ld %d F [%s] %s:%d:%s(): value %d\n", 12,
                                         0, static_cast<int>(now.tv_sec % 60), now.tv_nsec / 1000000, process, "bench",
                                         blog_base_name(__FILE__), __LINE__, __func__, value);
        return ::write(file, line, static_cast<std::size_t>(length)) == length;
    }

private:
    const int file = open((runDirectory() + "/by_hand").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    const int process = getpid();
};

}  // namespace bench
