// Generated broadcasts for tests of two processes.
#pragma once

#include <fstream>
#include <set>
#include <string>

#include "run_directory.h"
#include "scheduler.h"
#include "tables.h"

constexpr std::size_t kPacketSize = 188;
inline const std::string kRunDirectory = OwnRunDirectory::instance().path();
inline const tsmake::Multiplex kSample = tsmake::sampleMultiplex();

inline std::string asText(const tsmake::Section& section) {
    return {section.begin(), section.end()};
}

/// Writes the first seconds of a multiplex to a file of the run directory.
inline std::string writeBroadcast(const tsmake::Multiplex& multiplex, unsigned int seconds, const std::string& name) {
    std::string path = kRunDirectory + "/" + name;
    std::ofstream file(path, std::ios::binary);
    tsmake::writeMultiplex(multiplex, seconds, [&file](const std::uint8_t* packet) {
        file.write(reinterpret_cast<const char*>(packet), static_cast<std::streamsize>(kPacketSize));
    });
    return path;
}

/// Removes the packets of some PIDs.
inline std::string withoutPids(const std::string& packets, const std::set<unsigned int>& pids) {
    constexpr unsigned int kPidBits = 0x1FFF;
    std::string kept;
    for (std::size_t at = 0; at < packets.size(); at += kPacketSize) {
        const auto high = static_cast<unsigned char>(packets[at + 1]);
        const auto low = static_cast<unsigned char>(packets[at + 2]);
        if (pids.count((static_cast<unsigned int>(high) << 8U | low) & kPidBits) == 0) {
            kept += packets.substr(at, kPacketSize);
        }
    }
    return kept;
}
