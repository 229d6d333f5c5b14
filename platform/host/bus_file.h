// BusFile: what this process says to DTV services and hears from them, in the pcapng file that DTV_BUS_FILE names. A
// message is noted before it is sent, so that the answer comes behind it.
// Threads: any. A thread of its own writes, some milliseconds later.
// Blocks:  flush(); everything else never.
// Locks:   mutex guards what waits for the thread; it is not held while bytes are written.
// Fails:   a file that cannot be opened or written is told once in the log, and nothing more is noted. What comes faster
//          than it can be written is lost, and a record says how much.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "bus/backlog.h"
#include "bus/record.h"
#include "locks/lock.h"
#include "velmora/msgqueue/ipc_message_queue.h"

namespace host {

class BusFile {
public:
    /// The file of this process, which is opened for its first client or queue; null without one. Never destroyed.
    static BusFile* ofProcess();

    /// "bus.pcapng" becomes "bus.4711.pcapng", so that processes with the same setting have a file each.
    static std::string pathFor(const std::string& setting, std::uint32_t process);
    /// Null, with a line, when the file or its thread cannot be made. The object must then live as long as the process.
    static std::unique_ptr<BusFile> open(const std::string& path);

    BusFile(const BusFile&) = delete;
    BusFile& operator=(const BusFile&) = delete;

    void connected();
    void disconnected();
    void message(bus::Direction direction, std::uint32_t identifier, std::string_view image);
    /// A message that did not leave or cannot be read, or a service that is not there: then the identifier is 0.
    void refused(bus::Direction direction, std::uint32_t identifier, const std::string& why, int result = 0);
    /// What was read from a queue, if it is a section.
    void received(const velmora::msgqueue::IPCMessage& message);

    /// Waits until everything so far is written, two seconds at most.
    void flush() EXCLUDES(mutex);

private:
    explicit BusFile(int newDescriptor);

    bool startThread();
    void add(bus::Record record) EXCLUDES(mutex);
    void run() EXCLUDES(mutex);
    std::string takeWaiting() EXCLUDES(mutex);
    void write(const std::string& bytes);

    const int descriptor;
    const std::uint32_t process;
    const std::string program;
    std::atomic<bool> isBroken{false};
    std::mutex mutex;
    std::condition_variable changed;
    bus::Backlog waiting GUARDED_BY(mutex){bus::Side::browser};
    bool isWriting GUARDED_BY(mutex) = false;
    std::uint64_t size = 0;  // of the file's complete records; the thread's
};

}  // namespace host
