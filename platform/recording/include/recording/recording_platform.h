// The recording platform: keeps the contract inside one process for unit tests. It keeps what was sent, returns results
// that the test sets, injects events on a thread of its own, and captures log lines with their level and fields.
// Threads: all functions from any thread, handlers included.
// Locks:   one mutex guards what is recorded; no handler, action or member is called while it is held.
#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "frame/lmq_io_service.h"
#include "frame/process_member.h"
#include "platform_common/record_image.h"

namespace recording {

/// Forgets everything recorded and sets every result back to success; running members stay.
void reset();

// --- what was sent -------------------------------------------------------------------------------------------------

struct SentMessage {
    frameLmqIOService* service = nullptr;
    frame::MsgIds ids;
    frame::MsgMeta header;
    int reserved = 0;
    const ovxEndianTable* table = nullptr;
    std::vector<std::uint8_t> wire;                          ///< the record's image as it would travel
    std::shared_ptr<platform_common::DecodedRecord> record;  ///< a deep copy, in host layout
};

std::vector<SentMessage> sent();
/// Waits until at least `count` messages have been sent; false when that takes more than ten seconds.
bool waitForSent(std::size_t count);
/// What sends return from now on.
void setSendResult(int result);
/// Called for each send after it was recorded, on the sender's thread; its result is the send's. May throw.
void setSendAction(std::function<int(const SentMessage&)> action);

// --- what was registered, and events -------------------------------------------------------------------------------

struct Registration {
    frameLmqIOService* service = nullptr;
    frame::MsgMeta header;
    frameLmqMessageHandler handler = nullptr;
    void* context = nullptr;
    const ovxEndianTable* table = nullptr;
};

std::vector<Registration> registrations();

/// A handle for a member that a test sets up itself.
frameLmqIOService* ioService();

/// Brings an event to the last handler registered for the header, on the injection thread, and waits for it. False when
/// nobody registered, or when the image does not fit the handler's table; true with the handler's result.
bool inject(const frame::MsgMeta& header, const std::vector<std::uint8_t>& image, int* handlerResult = nullptr,
            frame::TransportInfo transport = {});
/// Runs a function on the injection thread, behind the events injected so far, and waits for it.
void onInjectionThread(const std::function<void()>& function);

// --- what was logged -----------------------------------------------------------------------------------------------

struct LogLine {
    std::uint32_t level = 0;
    std::string format;  ///< as the caller gave it
    std::string text;    ///< formatted
    std::string tag;     ///< of the shape "[tag] file:line:function(): message"; empty for the shape without a tag
    std::string file;    ///< empty when the line has neither shape
    int line = 0;
    std::string function;
    std::string message;
};

/// A line as a failed test shows it: on a line of the output of its own, its level in words, unprintable bytes escaped.
std::string shownLine(std::uint32_t level, const std::string& text);
/// What GoogleTest prints of a captured line.
void PrintTo(const LogLine& line, std::ostream* stream);

struct MemoryDump {
    std::string title;
    std::vector<std::uint8_t> bytes;
    int value = 0;
};

std::vector<LogLine> log();
/// Called for each line after it was captured, on the thread that writes it: a test may hold the writer there.
void setLogAction(std::function<void(const LogLine&)> action);
/// The captured lines of a function, in order.
std::vector<LogLine> logOf(const std::string& function);
/// Waits until a line whose message contains `part` is captured; false when that takes more than ten seconds.
bool waitForLog(const std::string& part);
std::vector<MemoryDump> dumps();
/// Lines above this importance (low 16 bits of the level) are not wanted. All are, after reset().
void setLogThreshold(std::uint32_t threshold);
/// How often a level was asked for, and how often a line was formatted.
std::uint64_t levelChecks();
std::uint64_t formattedLines();

// --- lifecycle, threads, queues ------------------------------------------------------------------------------------

/// What setting up, starting and stopping an I/O service return from now on.
void setSetUpResult(int result);
void setStartResult(int result);
void setStopResult(int result);
/// What creating a thread returns from now on, when not 0; no thread is created then.
void setThreadCreateResult(int error);
/// How the threads were to be created so far, in their order.
enum class ThreadKind { joinable, detached };
std::vector<ThreadKind> threadsCreated();
/// Lets the creation of section queues fail.
void setQueueCreationFails(bool fails);
/// Names of the queues created since the process began.
std::vector<std::string> queueNames();
/// With what limits a queue was created; zeros when there is none of that name.
struct QueueLimits {
    std::size_t messageSize = 0;
    std::size_t messages = 0;
};
QueueLimits queueLimits(const std::string& queue);
/// Writes a section to the queue of that name; false when there is no such queue.
bool writeSection(const std::string& queue, const std::string& session, const std::vector<std::uint8_t>& section);
/// How many sections nobody has received yet; 0 when there is no such queue.
std::size_t waitingSections(const std::string& queue);
/// Lets the next receive on that queue throw an interprocess error, or `error`; false when there is no such queue.
bool failReceive(const std::string& queue, std::exception_ptr error = nullptr);

}  // namespace recording
