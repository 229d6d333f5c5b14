// Builds the objects of carousels and the download messages that carry them (ISO/IEC 13818-6, clauses 7 and 11; TR 101
// 202, clause 4.7).
// Threads: any.
// Blocks:  never.
// Fails:   std::length_error when a name or a section is too long.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "multiplex.h"
#include "section_writer.h"

namespace tsmake::biop {

inline const std::string kServiceGateway("srg\0", 4);
inline const std::string kDirectory("dir\0", 4);
inline const std::string kFile("fil\0", 4);
inline const std::string kStreamEvent("ste\0", 4);

/// A big-endian number of `width` bytes, at most eight.
std::string be(std::uint64_t value, unsigned int width);
/// The bytes behind their number in `width` bytes.
std::string withLength(const std::string& bytes, unsigned int width);

/// Where an object is, and in which list its module is.
struct Place {
    std::uint32_t carousel;
    std::uint16_t associationTag;
    std::uint16_t list;  ///< identification of the DownloadInfoIndication, without its lowest bit
    std::uint16_t module;
    std::string key;
};

struct Binding {
    std::string name;
    std::string kind;
    Place place;
};

std::string reference(const std::string& kind, const Place& place);
std::string directory(const std::string& kind, const std::string& key, const std::vector<Binding>& bindings);
/// Without a type there is no descriptor of it.
std::string file(const std::string& key, const std::string& content, const std::string& contentType);
/// `streamTag` is the association tag of the stream with the events.
std::string eventObject(const std::string& key, const std::map<std::string, std::uint16_t>& idsByName,
                        std::uint16_t streamTag);

/// A module as it is broadcast.
struct Module {
    std::uint16_t id = 0;
    std::uint8_t version = 0;
    std::string bytes;             ///< compressed if originalSize is not 0
    std::size_t originalSize = 0;  ///< 0: not compressed
};
Module compressed(Module module);

/// `associationTag` is that of the stream with the blocks.
struct List {
    std::uint32_t carousel;
    std::uint32_t transactionId;
    std::size_t blockSize;
    std::uint16_t associationTag;
};
Section serverInitiate(std::uint32_t transactionId, const Place& gateway);
Section infoIndication(const List& list, const std::vector<Module>& modules);
Section dataBlock(const List& list, const Module& module, std::size_t number);
std::size_t blockCount(const List& list, const Module& module);

}  // namespace tsmake::biop
