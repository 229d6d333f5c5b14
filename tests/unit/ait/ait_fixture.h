// AIT sections for tests, and a client that keeps what it is given.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <mutex>

#include "aitsection.h"
#include "browser_AIT_catcher.h"
#include "browser_AIT_storage.h"
#include "dvbaitsection_apis.h"
#include "logged.h"

constexpr std::uint32_t kOrdinary = 0x5F0FA0;
constexpr std::uint32_t kFailure = 0x5F03E8;
constexpr const char* kTag = "B-LOG";

using Bytes = std::vector<std::uint8_t>;

/// A section with the fields that are looked at; `crc` stands in its last four bytes as given.
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
            const std::lock_guard<std::mutex> lock(mutex);
            kept.push_back({onId, tsId, sId, section});
        }
        if (reaction) {
            reaction();
        }
    }
    /// Called inside of every delivery, after it was kept.
    std::function<void()> reaction;

    std::vector<Delivery> deliveries() const {
        const std::lock_guard<std::mutex> lock(mutex);
        return kept;
    }

private:
    mutable std::mutex mutex;  // guards kept
    std::vector<Delivery> kept;
};

/// How each line that is no ordinary one begins.
inline bool isFailure(const std::string& message) {
    const std::vector<std::string> failures = {
        "Invalid AIT Section length", "This Channel AIT is not stored.", "channelInfo.size() =",         "pthread_",
        "sendAITData aitAPI is NULL", "AIT section index over flow.",    "Get browserAitCatcher failed."};
    return std::any_of(failures.begin(), failures.end(),
                       [&message](const std::string& failure) { return message.rfind(failure, 0) == 0; });
}

/// The captured lines without their traces, as messages. Each has the level and the tag that lines of its kind have.
inline std::vector<std::string> allMessages() {
    std::vector<std::string> messages;
    for (const recording::LogLine& line : logged::withoutTraces()) {
        EXPECT_THAT(line, logged::tagged(isFailure(line.message) ? kFailure : kOrdinary, kTag, line.file, line.function,
                                         line.message));
        messages.push_back(line.message);
    }
    return messages;
}

/// The same of one file.
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

/// The functions of the captured lines, in their order.
inline std::vector<std::string> functionsOf(const std::string& file) {
    std::vector<std::string> functions;
    for (const recording::LogLine& line : logged::withoutTraces()) {
        if (line.file == file) {
            functions.push_back(line.function);
        }
    }
    return functions;
}
