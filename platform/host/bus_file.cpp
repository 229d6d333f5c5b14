// Notes and writes.
#include "bus_file.h"

#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <system_error>
#include <thread>
#include <utility>

#include "bus/origin.h"
#include "bus/pcapng.h"
#include "descriptors.h"
#include "log_sink.h"
#include "own_process.h"
#include "settings.h"

namespace host {

namespace {

/// For how long records gather before they are written together.
constexpr std::chrono::milliseconds kPace{10};
constexpr std::chrono::seconds kPatience{2};

/// Without a level, because who asks for the file wants to know.
void complain(const std::string& problem) {
    LogSink::instance().write("DTV_BUS_FILE: " + problem + "\n");
}

/// The process that has the file open keeps it, also before one of the same number in another name space.
int openedFile(const std::string& path, std::string& problem) {
    constexpr int kFlags = O_WRONLY | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    const int descriptor = aboveStandard(::open(path.c_str(), kFlags, 0600));
    struct stat found {};
    const bool isOpen = descriptor >= 0 && fstat(descriptor, &found) == 0;
    if (isOpen && !S_ISREG(found.st_mode)) {
        problem = "it is no regular file";
    } else if (isOpen && flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        problem = "another process writes it";
    } else if (!isOpen || ftruncate(descriptor, 0) != 0) {
        problem = std::strerror(errno);
    }
    if (!problem.empty() && descriptor >= 0) {
        close(descriptor);
    }
    return problem.empty() ? descriptor : -1;
}

BusFile* openForProcess() {
    const std::string& setting = settings().busFile;
    return setting.empty()
               ? nullptr
               : BusFile::open(BusFile::pathFor(setting, static_cast<std::uint32_t>(ownProcess()))).release();
}

}  // namespace

BusFile* BusFile::ofProcess() {
    static BusFile* const file = openForProcess();
    return file;
}

std::string BusFile::pathFor(const std::string& setting, std::uint32_t process) {
    const std::size_t slash = setting.rfind('/');
    const std::size_t name = slash == std::string::npos ? 0 : slash + 1;
    const std::size_t dot = setting.rfind('.');
    const std::size_t at = dot == std::string::npos || dot <= name ? setting.size() : dot;
    return setting.substr(0, at) + "." + std::to_string(process) + setting.substr(at);
}

std::unique_ptr<BusFile> BusFile::open(const std::string& path) {
    std::string problem;
    const int descriptor = openedFile(path, problem);
    if (descriptor < 0) {
        complain("cannot open " + path + ": " + problem);
        return nullptr;
    }
    std::unique_ptr<BusFile> file(new BusFile(descriptor));
    if (!file->startThread()) {
        complain("no thread writes " + path);
        close(descriptor);
        return nullptr;
    }
    return file;
}

BusFile::BusFile(int newDescriptor)
    : descriptor(newDescriptor), process(static_cast<std::uint32_t>(ownProcess())), program(bus::programOf(process)) {}

/// The thread takes none of the process's signals. A file that reaches a limit of its size would end the process by
/// one.
bool BusFile::startThread() {
    sigset_t all{};
    sigset_t before{};
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    bool isStarted = true;
    try {
        std::thread([this] { run(); }).detach();
    } catch (const std::system_error&) {
        isStarted = false;
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return isStarted;
}

void BusFile::connected() {
    bus::Record record;
    record.kind = bus::Kind::connected;
    add(std::move(record));
}

void BusFile::disconnected() {
    bus::Record record;
    record.kind = bus::Kind::disconnected;
    add(std::move(record));
}

void BusFile::message(bus::Direction direction, std::uint32_t identifier, std::string_view image) {
    bus::Record record;
    record.direction = direction;
    record.message = identifier;
    record.bytes = image;
    add(std::move(record));
}

void BusFile::refused(bus::Direction direction, std::uint32_t identifier, const std::string& why, int result) {
    bus::Record record;
    record.kind = bus::Kind::refused;
    record.direction = direction;
    record.message = identifier;
    record.text = why;
    record.result = result;
    add(std::move(record));
}

void BusFile::received(const velmora::msgqueue::IPCMessage& message) {
    if (const auto* const section = dynamic_cast<const velmora::msgqueue::SectionDataIPCMessage*>(&message)) {
        bus::Record record;
        record.kind = bus::Kind::sectionQueued;
        record.direction = bus::Direction::toBrowser;
        record.text = section->sessionName;
        record.bytes.assign(reinterpret_cast<const char*>(section->data), section->dataLength);
        add(std::move(record));
    }
}

/// A forked child has no thread that writes, and its parent's thread may have held the lock.
void BusFile::add(bus::Record record) {
    if (isBroken || static_cast<std::uint32_t>(ownProcess()) != process) {
        return;
    }
    record.side = bus::Side::browser;
    record.process = process;
    record.program = program;
    const locks::Lock lock(mutex);
    // Under the lock, so that times and places in the file have one order.
    record.time = bus::timeNow();
    const bool isFirst = waiting.isEmpty();
    waiting.add(bus::pcapngBlock(record));
    if (isFirst) {
        changed.notify_all();
    }
}

void BusFile::flush() {
    if (static_cast<std::uint32_t>(ownProcess()) == process) {
        locks::Lock lock(mutex);
        changed.wait_for(lock.forWaiting(), kPatience,
                         [this]() REQUIRES(mutex) { return waiting.isEmpty() && !isWriting; });
    }
}

void BusFile::run() {
    while (true) {
        {
            locks::Lock lock(mutex);
            isWriting = false;
            changed.notify_all();
            changed.wait(lock.forWaiting(), [this]() REQUIRES(mutex) { return !waiting.isEmpty(); });
        }
        std::this_thread::sleep_for(kPace);
        write(takeWaiting());
    }
}

std::string BusFile::takeWaiting() {
    const locks::Lock lock(mutex);
    isWriting = true;
    return waiting.take();
}

/// When the bytes do not fit the file, it ends behind those of before.
void BusFile::write(const std::string& bytes) {
    std::size_t written = 0;
    while (!isBroken && written < bytes.size()) {
        const ssize_t count = ::write(descriptor, bytes.data() + written, bytes.size() - written);
        if (count >= 0) {
            written += static_cast<std::size_t>(count);
        } else if (errno != EINTR) {
            complain(std::string("nothing more is written: ") + std::strerror(errno));
            isBroken = true;
            [[maybe_unused]] const int cut = ftruncate(descriptor, static_cast<off_t>(size));
        }
    }
    size += bytes.size();
}

}  // namespace host
