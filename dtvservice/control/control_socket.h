// The operator's socket: its path, and the lines on it. Each request and each answer is one line of JSON.
// Threads: one per connection.
// Blocks:  as each operation says.
// Fails:   with a text that says why.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace control {

/// The longest request.
constexpr std::size_t kLongestLine = 1U << 20U;
/// The longest answer: a full programme guide, or the counts of some twenty inputs that each have packets on every PID.
constexpr std::size_t kLongestAnswer = 1U << 26U;

/// DTV_RUN_DIR, else XDG_RUNTIME_DIR/dtv, else /tmp/dtv-<uid>.
std::string runDirectory();
/// dtvctl.sock in the run directory.
std::string defaultSocketPath();

/// A connected socket. The destructor closes it.
class Connection {
public:
    explicit Connection(int newDescriptor = -1) : descriptor(newDescriptor) {}
    Connection(Connection&& other) noexcept;
    Connection& operator=(Connection&& other) noexcept;
    ~Connection();

    /// Not connected, with the reason, if nobody listens at the path.
    static Connection connectTo(const std::string& path, std::string& error);

    explicit operator bool() const { return descriptor >= 0; }
    int fd() const { return descriptor; }
    /// The user of the process at the other end; nothing if the system does not tell.
    std::optional<uid_t> peerUser() const;

    /// Sends the line and a line break. Waits for buffer space, `longest` in all. False if the line could not be sent
    /// completely.
    bool sendLine(const std::string& line, std::chrono::milliseconds longest);
    /// Sends what the socket takes now, and returns how much that is; nothing if the connection has ended.
    std::optional<std::size_t> sendSome(std::string_view bytes);
    /// From now on a wait for bytes ends after this time, as if the connection had ended, with errno EAGAIN.
    void waitAtMost(std::chrono::seconds longest) const;
    /// Waits for the next answer and returns it without its line break; nothing at the end or for one that is too long.
    std::optional<std::string> receiveAnswer();
    /// Reads once. False if the connection has ended.
    bool fill();
    /// The next complete line among the bytes read so far.
    std::optional<std::string> takeLine();
    /// All bytes read so far, of an answer that is not made of lines.
    std::string takeBytes();
    bool isTooLong() const { return received.size() > kLongestLine; }

private:
    int descriptor;
    std::string received;
    std::size_t searched = 0;  // bytes of `received` that have no line break
};

/// A listening socket with mode 0600. The destructor removes it. Replaces a socket that a killed service left behind.
class Listener {
public:
    Listener(const std::string& newPath, std::string& error);
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
    ~Listener();

    explicit operator bool() const { return descriptor >= 0; }
    int fd() const { return descriptor; }
    /// A connection of the same user or of root, or an empty one. The text tells why operators must wait, for example
    /// because the process has no more descriptors; it is empty if only this one is refused.
    Connection accept(std::string& problem) const;

private:
    std::string path;
    int descriptor = -1;
};

}  // namespace control
