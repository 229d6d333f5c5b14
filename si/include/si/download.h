// The download messages of object carousels: DownloadServerInitiate, DownloadInfoIndication, DownloadDataBlock (ISO/IEC
// 13818-6, clause 7.3; TR 101 202, clause 4.7).
// Threads: any.
// Blocks:  never.
// Fails:   no value for another kind of message or malformed data. Does not check CRC_32.
#pragma once

#include <optional>
#include <vector>

#include "si/biop.h"
#include "si/section.h"

namespace si {

constexpr std::uint8_t kDownloadControlTableId = 0x3B;
constexpr std::uint8_t kDownloadDataTableId = 0x3C;

/// The part of a transaction_id that stays when its message changes.
constexpr std::uint16_t identificationOf(std::uint32_t transactionId) {
    return static_cast<std::uint16_t>(transactionId & 0xFFFEU);
}

/// A DownloadInfoIndication. The downloadId of an object carousel is its carousel's identifier.
struct DownloadInfo {
    struct Module {
        std::uint16_t id = 0;
        std::uint32_t size = 0;  ///< as broadcast, which may be compressed
        std::uint8_t version = 0;
        std::optional<std::uint32_t> originalSize = std::nullopt;  ///< uncompressed size; only for a compressed module
        std::optional<std::uint16_t> associationTag = std::nullopt;  ///< of the stream that carries the blocks
    };
    std::uint32_t transactionId = 0;
    std::uint32_t downloadId = 0;
    std::uint16_t blockSize = 0;
    std::vector<Module> modules;
};

/// A DownloadDataBlock.
struct DownloadBlock {
    std::uint32_t downloadId = 0;
    std::uint16_t moduleId = 0;
    std::uint8_t moduleVersion = 0;
    std::uint16_t number = 0;
    Bytes data;  ///< within the section
};

/// The service gateway that a DownloadServerInitiate names.
std::optional<ObjectReference> serviceGateway(Bytes section);
std::optional<DownloadInfo> downloadInfo(Bytes section);
std::optional<DownloadBlock> downloadBlock(Bytes section);

}  // namespace si
