// Messages stay in the process. A sent record is read by its table; an event's record is passed to its decoder
// unchanged.
#include <cstring>
#include <map>
#include <mutex>

#include "frame/lmq_io_service.h"
#include "tiny/tiny_platform.h"

namespace {

// A carrier's fields: its length, and a kind of this platform's own for the bytes behind the pointer.
constexpr std::uint32_t kPointedTo = 16;
constexpr ovxEndianEntry kCarrier[] = {{ovxEndianKind32, 0}, {kPointedTo, 4}, {}};
constexpr std::uint32_t kCarrierSize = sizeof(_ovxDeserString_struct);

struct Handler {
    frame::MsgMeta header;
    frameLmqMessageHandler function;
    void* context;
};

std::mutex lock;  // guards the two below
std::vector<tiny::Sent>& log() {
    static auto& entries = *new std::vector<tiny::Sent>;
    return entries;
}
std::map<std::uint32_t, Handler>& handlers() {
    static auto& entries = *new std::map<std::uint32_t, Handler>;
    return entries;
}

void readFields(const ovxEndianTable& table, const char* record, std::vector<std::string>& fields) {
    std::uint32_t length = 0;
    for (const ovxEndianEntry* entry = table.entries; entry->word != 0; ++entry) {
        const std::uint32_t kind = entry->word >> 16U;
        const char* const at = record + (entry->word & 0xFFFFU);
        if (kind == ovxEndianKindNested) {
            readFields(*entry->nested, at, fields);
        } else if (kind == kPointedTo) {
            const char* bytes = nullptr;
            std::memcpy(&bytes, at, sizeof bytes);
            fields.back() = bytes == nullptr ? std::string() : std::string(bytes, length);
        } else {
            std::uint64_t value = 0;
            std::memcpy(&value, at, kind);
            length = static_cast<std::uint32_t>(value);
            fields.push_back(std::to_string(value));
        }
    }
}

}  // namespace

extern "C" {

const ovxEndianTable __ovx_EndianTable_ovxDeserString_t = {kCarrierSize, kCarrier};
const ovxEndianTable __ovx_EndianTable_ovxDeserBlobUint8_t = {kCarrierSize, kCarrier};
const ovxEndianTable __ovx_EndianTable_ovxDeserVectorU8_t = {kCarrierSize, kCarrier};

int frameLmqIOServiceSendStructure(frameLmqIOService*, frame::MsgIds&, const frame::MsgMeta& header, int,
                                   const ovxEndianTable* table, const void* record) {
    tiny::Sent entry{header.message, {}};
    readFields(*table, static_cast<const char*>(record), entry.fields);
    const std::lock_guard<std::mutex> guard(lock);
    log().push_back(std::move(entry));
    return 0;
}

int frameLmqIOServiceRegisterMessageHandlerFunction(frameLmqIOService*, const frame::MsgMeta& header,
                                                    frameLmqMessageHandler handler, void* context,
                                                    const ovxEndianTable*) {
    const std::lock_guard<std::mutex> guard(lock);
    handlers()[header.message] = {header, handler, context};
    return 0;
}
}

namespace tiny {

std::vector<Sent> sent() {
    const std::lock_guard<std::mutex> guard(lock);
    return log();
}

bool deliver(std::uint32_t message, const void* record) {
    Handler handler{};
    {
        const std::lock_guard<std::mutex> guard(lock);
        const auto found = handlers().find(message);
        if (found == handlers().end()) {
            return false;
        }
        handler = found->second;
    }
    handler.function(handler.header, frame::TransportInfo(), record, handler.context);
    return true;
}

}  // namespace tiny
