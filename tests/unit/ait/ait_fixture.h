// AIT sections for tests, and a client that records what it receives.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <mutex>

#include "aitsection.h"
#include "browser_AIT_catcher.h"
#include "browser_AIT_storage.h"
#include "dvbaitsection_apis.h"
#include "locks/lock.h"
#include "logged.h"

constexpr std::uint32_t kOrdinary = 0x5F0FA0;
constexpr std::uint32_t kFailure = 0x5F03E8;
constexpr const char* kTag = "B-LOG";

using Bytes = std::vector<std::uint8_t>;

/// A section with the header fields that the library reads. The last four bytes hold `crc`, whatever the content.
inline Bytes aitBytes(unsigned int version, unsigned int number, unsigned int lastNumber, std::uint32_t crc,
                      std::size_t length = 16) {
    Bytes bytes(length, 0xAA);
    bytes[0] = 0x74;
    bytes[5] = static_cast<std::uint8_t>(0xC1U | version << 1U);
    bytes[6] = static_cast<std::uint8_t>(number);
    bytes[7] = static_cast<std::uint8_t>(lastNumber);
    for (int shift = 24; shift >= 0; shift -= 8) {
        bytes[length - 4 + static_cast<std::size_t>(24 - shift) / 8] = static_cast<std::uint8_t>(crc >> shift);
    }
    return bytes;
}

inline std::string asText(const Bytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

class KeepingAitClient final : public velmora::dtv::AITSectionClient {
public:
    struct Delivery {
        int onId;
        int tsId;
        int sId;
        Bytes section;
        bool operator==(const Delivery& other) const {
            return onId == other.onId && tsId == other.tsId && sId == other.sId && section == other.section;
        }
    };
    void onCurrentChannelAIT(std::uint16_t onId, std::uint16_t tsId, std::uint16_t sId, const Bytes& section) override {
        {
            const locks::Lock lock(mutex);
            kept.push_back({onId, tsId, sId, section});
        }
        if (reaction) {
            reaction();
        }
    }
    /// Called inside every delivery, after it was recorded.
    std::function<void()> reaction;

    std::vector<Delivery> deliveries() const {
        const locks::Lock lock(mutex);
        return kept;
    }

private:
    mutable std::mutex mutex;
    std::vector<Delivery> kept GUARDED_BY(mutex);
};

/// Recognises the messages whose level is failure, by their beginning.
inline bool isFailure(const std::string& message) {
    const std::vector<std::string> failures = {
        "Invalid AIT Section length", "This Channel AIT is not stored.", "channelInfo.size() =",         "pthread_",
        "sendAITData aitAPI is NULL", "AIT section index over flow.",    "Get browserAitCatcher failed."};
    return std::any_of(failures.begin(), failures.end(),
                       [&message](const std::string& failure) { return message.rfind(failure, 0) == 0; });
}

/// The messages of all captured lines except traces. Checks the level and the tag of each.
inline std::vector<std::string> allMessages() {
    std::vector<std::string> messages;
    for (const recording::LogLine& line : logged::withoutTraces()) {
        EXPECT_THAT(line, logged::tagged(isFailure(line.message) ? kFailure : kOrdinary, kTag, line.file, line.function,
                                         line.message));
        messages.push_back(line.message);
    }
    return messages;
}

/// The same for one file.
inline std::vector<std::string> messagesOf(const std::string& file) {
    std::vector<std::string> messages = allMessages();
    std::vector<std::string> own;
    const std::vector<recording::LogLine> lines = logged::withoutTraces();
    for (std::size_t index = 0; index < messages.size(); ++index) {
        if (lines[index].file == file) {
            own.push_back(messages[index]);
        }
    }
    return own;
}

/// The functions of the captured lines, in order.
inline std::vector<std::string> functionsOf(const std::string& file) {
    std::vector<std::string> functions;
    for (const recording::LogLine& line : logged::withoutTraces()) {
        if (line.file == file) {
            functions.push_back(line.function);
        }
    }
    return functions;
}
