// The recording platform: implements the contract inside one process for unit tests. It records what was sent, returns
// the results that the test sets, injects events on a separate thread, and captures log lines with their level and
// fields.
// Threads: all functions from any thread, handlers included.
// Locks:   one mutex guards the recorded data; it is not held during a call of a handler, action or member.
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

/// Discards all recorded data and sets every result back to success. Running members keep running.
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
/// Waits until at least `count` messages have been sent. False after ten seconds.
bool waitForSent(std::size_t count);
/// Sets the result of all sends that follow.
void setSendResult(int result);
/// Called on the sender's thread after each send has been recorded; its result becomes the send's. It may throw.
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

/// Passes an event to the last handler registered for the header, on the injection thread, and waits for it. False when
/// no handler is registered or the image does not fit the handler's table; otherwise true, with the handler's result.
bool inject(const frame::MsgMeta& header, const std::vector<std::uint8_t>& image, int* handlerResult = nullptr,
            frame::TransportInfo transport = {});
/// Runs a function on the injection thread after the events injected so far, and waits for it.
void onInjectionThread(const std::function<void()>& function);

// --- what was logged -----------------------------------------------------------------------------------------------

struct LogLine {
    std::uint32_t level = 0;
    std::string format;  ///< the caller's format
    std::string text;    ///< formatted
    std::string tag;     ///< for the form "[tag] file:line:function(): message"; empty for the form without a tag
    std::string file;    ///< empty when the line has neither form
    int line = 0;
    std::string function;
    std::string message;
};

/// A line as a failed test shows it: on its own output line, with its level in words and unprintable bytes escaped.
std::string shownLine(std::uint32_t level, const std::string& text);
/// GoogleTest uses this to print a captured line.
void PrintTo(const LogLine& line, std::ostream* stream);

struct MemoryDump {
    std::string title;
    std::vector<std::uint8_t> bytes;
    int value = 0;
};

std::vector<LogLine> log();
/// Called for each captured line on the thread that writes it; a test may block the writer here.
void setLogAction(std::function<void(const LogLine&)> action);
/// The captured lines of a function, in order.
std::vector<LogLine> logOf(const std::string& function);
/// Waits until a line whose message contains `part` is captured. False after ten seconds.
bool waitForLog(const std::string& part);
std::vector<MemoryDump> dumps();
/// Lines above this importance (low 16 bits of the level) are unwanted. reset() allows all lines.
void setLogThreshold(std::uint32_t threshold);
/// How often a level was checked, and how often a line was formatted.
std::uint64_t levelChecks();
std::uint64_t formattedLines();

// --- lifecycle, threads, queues ------------------------------------------------------------------------------------

/// Set the results of setting up, starting and stopping an I/O service.
void setSetUpResult(int result);
void setStartResult(int result);
void setStopResult(int result);
/// Sets the result of creating a thread. When it is not 0, no thread is created.
void setThreadCreateResult(int error);
/// The requested kind of each thread so far, in order.
enum class ThreadKind { joinable, detached };
std::vector<ThreadKind> threadsCreated();
/// Makes the creation of section queues fail.
void setQueueCreationFails(bool fails);
/// Names of all queues created since the process began.
std::vector<std::string> queueNames();
/// The limits that a queue was created with; zeros when no queue has that name.
struct QueueLimits {
    std::size_t messageSize = 0;
    std::size_t messages = 0;
};
QueueLimits queueLimits(const std::string& queue);
/// Writes a section to the queue of that name; false when there is no such queue.
bool writeSection(const std::string& queue, const std::string& session, const std::vector<std::uint8_t>& section);
/// How many sections are waiting in the queue; 0 when there is no such queue.
std::size_t waitingSections(const std::string& queue);
/// Makes the next receive on that queue throw an interprocess error, or `error`. False when there is no such queue.
bool failReceive(const std::string& queue, std::exception_ptr error = nullptr);

}  // namespace recording
