// The operator's socket: where it is, and lines over it. One request is one line of JSON, one answer another.
// Threads: one a connection.   Blocks: as each operation says.   Fails:   with a text.
#pragma once

#include <optional>
#include <string>

namespace control {

/// The longest line that either end takes.
constexpr std::size_t kLongestLine = 1U << 20U;

/// dtvctl.sock in the run directory: DTV_RUN_DIR, else XDG_RUNTIME_DIR/dtv, else /tmp/dtv-<uid>.
std::string defaultSocketPath();

/// A connected socket, closed with the object.
class Connection {
public:
    explicit Connection(int newDescriptor = -1) : descriptor(newDescriptor) {}
    Connection(Connection&& other) noexcept;
    Connection& operator=(Connection&& other) noexcept;
    ~Connection();

    /// Not connected, and the reason, when nobody listens at the path.
    static Connection connectTo(const std::string& path, std::string& error);

    explicit operator bool() const { return descriptor >= 0; }
    int fd() const { return descriptor; }

    /// The whole line, with a line break behind it; false when the other end is gone. Waits for room.
    bool sendLine(const std::string& line);
    /// The next line without its break; none at the end, or where one is too long. Waits for it.
    std::optional<std::string> receiveLine();
    /// One read; whether the other end is still there.
    bool fill();
    /// The next line of what was read so far.
    std::optional<std::string> takeLine();
    bool isTooLong() const { return received.size() > kLongestLine; }

private:
    int descriptor;
    std::string received;
};

/// A listening socket, mode 0600, removed with the object. One that a killed service left is taken over.
class Listener {
public:
    Listener(const std::string& newPath, std::string& error);
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
    ~Listener();

    explicit operator bool() const { return descriptor >= 0; }
    int fd() const { return descriptor; }
    Connection accept() const;

private:
    std::string path;
    int descriptor = -1;
};

}  // namespace control
