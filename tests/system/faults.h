// What the tests of faults share: peers that do not keep to the protocol, processes that are stopped, limited or run as
// another user, and what a process spends while something fails.
#pragma once

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cstring>
#include <filesystem>
#include <sstream>

#include "descriptors_of.h"
#include "sanitizers.h"
#include "service_process.h"

namespace faults {

inline const std::string kRunDirectory = OwnRunDirectory::instance().path();
constexpr uid_t kNobody = 65534;

inline bool isEmulated() {
    return !std::vector<std::string> EMULATOR.empty();
}

inline sockaddr_un addressOf(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
}

inline const sockaddr* asGeneric(const sockaddr_un& address) {
    return reinterpret_cast<const sockaddr*>(&address);
}

/// A connected socket without any protocol.
class RawPeer {
public:
    RawPeer(const std::string& path, int type) : descriptor(socket(AF_UNIX, type | SOCK_CLOEXEC, 0)) {
        const sockaddr_un address = addressOf(path);
        isConnected = connect(descriptor, asGeneric(address), sizeof address) == 0;
    }
    RawPeer(const RawPeer&) = delete;
    RawPeer& operator=(const RawPeer&) = delete;
    ~RawPeer() { close(descriptor); }

    /// Sends without waiting. False if there was no room, or if the other end has gone.
    bool send(const std::string& bytes) {
        const ssize_t sent = ::send(descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        hasGone = hasGone || (sent < 0 && errno != EAGAIN);
        return sent == static_cast<ssize_t>(bytes.size());
    }
    /// What has come; empty if nothing has, or at the end.
    std::string received() const {
        std::string bytes(65536, '\0');
        const ssize_t count = recv(descriptor, bytes.data(), bytes.size(), MSG_DONTWAIT);
        bytes.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
        return bytes;
    }

    bool isConnected = false;
    bool hasGone = false;

private:
    int descriptor;
};

/// A browser that sends packets of its own making.
class RawBrowser : public RawPeer {
public:
    RawBrowser() : RawPeer(kRunDirectory + "/browserdvbservice.sock", SOCK_SEQPACKET) {}
};

class RawOperator : public RawPeer {
public:
    RawOperator() : RawPeer(kRunDirectory + "/dtvctl.sock", SOCK_STREAM) {}
};

/// A packet on the browsers' socket.
inline std::string packet(const std::string& mark, std::uint32_t interfaceId, std::uint32_t messageId,
                          std::uint8_t direction, const std::string& image) {
    constexpr std::uint32_t kAny = 0xFFFFFFFF;
    std::string bytes = mark;
    const auto put = [&bytes](std::uint32_t word) {
        const std::uint32_t network = htonl(word);
        bytes.append(reinterpret_cast<const char*>(&network), sizeof network);
    };
    put(kAny);
    put(interfaceId);
    put(messageId);
    bytes += static_cast<char>(direction);
    bytes.append(3, '\0');
    put(kAny);
    put(static_cast<std::uint32_t>(image.size()));
    return bytes + image;
}

/// The state letter of a process in /proc, and its processor time in clock ticks.
struct ProcessState {
    char letter = '?';
    long ticks = 0;
};

inline ProcessState stateOf(pid_t process) {
    const std::string text = fileText("/proc/" + std::to_string(process) + "/stat");
    // The name in parentheses may have blanks.
    std::istringstream words(text.substr(std::min(text.size(), text.rfind(')') + 1)));
    ProcessState state;
    std::string skipped;
    words >> state.letter;
    constexpr int kBeforeUserTime = 10;
    for (int word = 0; word < kBeforeUserTime; ++word) {
        words >> skipped;
    }
    long user = 0;
    long system = 0;
    words >> user >> system;
    state.ticks = user + system;
    return state;
}

/// Stops the process with SIGSTOP; it reads and answers nothing until it gets SIGCONT or is killed.
inline bool stops(pid_t process) {
    kill(process, SIGSTOP);
    return eventually([process] { return stateOf(process).letter == 'T'; });
}

/// How often the threads of a process have given the processor up by themselves.
inline long waitsOf(pid_t process) {
    constexpr const char* kName = "voluntary_ctxt_switches:";
    long waits = 0;
    std::error_code ignored;
    for (const auto& thread :
         std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/task", ignored)) {
        std::ifstream status(thread.path() / "status");
        for (std::string line; std::getline(status, line);) {
            waits += line.rfind(kName, 0) == 0 ? std::stol(line.substr(std::strlen(kName))) : 0;
        }
    }
    return waits;
}

/// Whether the process waits most of the time. Counts its processor time while it begins to wait some times: a thread
/// that spins does not.
inline testing::AssertionResult isIdle(pid_t process) {
    constexpr long kTimes = 8;
    constexpr long kMostTicks = 50;
    const long waits = waitsOf(process);
    const long ticks = stateOf(process).ticks;
    if (!eventually([&] { return waitsOf(process) >= waits + kTimes; })) {
        return testing::AssertionFailure() << "it does not wait";
    }
    const long used = stateOf(process).ticks - ticks;
    return used <= kMostTicks ? testing::AssertionSuccess()
                              : testing::AssertionFailure() << used << " ticks of processor time";
}

inline std::size_t timesIn(const std::string& text, const std::string& part) {
    std::size_t times = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++times;
    }
    return times;
}

inline std::size_t linesOf(const std::string& text) {
    return timesIn(text, "\n");
}

/// Sets the soft limit of a process; returns the limits before.
inline rlimit limit(pid_t process, __rlimit_resource resource, rlim_t most) {
    rlimit before{};
    EXPECT_EQ(prlimit(process, resource, nullptr, &before), 0);
    const rlimit after{most, before.rlim_max};
    EXPECT_EQ(prlimit(process, resource, &after, nullptr), 0);
    return before;
}

/// A user who runs nothing else, also not another test.
inline uid_t userWithoutProcesses() {
    constexpr uid_t kAboveRealUsers = 1000000;
    return kAboveRealUsers + static_cast<uid_t>(getpid());
}

/// For a new process, before its program: becomes another user.
inline void become(uid_t user) {
    if (setgroups(0, nullptr) != 0 || setgid(user) != 0 || setuid(user) != 0) {
        _exit(126);
    }
}

/// Why no test can run the program as another user; empty if it can.
inline std::string whyNotAs(uid_t user, const std::string& program) {
    if (geteuid() != 0) {
        return "only root can run a program as another user";
    }
    const pid_t child = fork();
    if (child == 0) {
        become(user);
        _exit(access(program.c_str(), X_OK) == 0 ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return status == 0 ? "" : "another user may not run " + program;
}

/// A directory of its own, with this mode and owner.
class Directory {
public:
    explicit Directory(mode_t mode, uid_t owner = geteuid()) {
        char name[] = "/tmp/dtv-faults-XXXXXX";
        path_ = mkdtemp(name);
        EXPECT_EQ(chown(path_.c_str(), owner, static_cast<gid_t>(-1)), 0);
        EXPECT_EQ(chmod(path_.c_str(), mode), 0);
    }
    Directory(const Directory&) = delete;
    Directory& operator=(const Directory&) = delete;
    ~Directory() {
        chmod(path_.c_str(), 0700);
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    const std::string& path() const { return path_; }

private:
    std::string path_;
};

}  // namespace faults
