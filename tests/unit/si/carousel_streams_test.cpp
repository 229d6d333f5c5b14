// Carousels of real broadcasts: what the reader takes out of them is what extract_carousels.py has counted, which
// shares no code with it. The broadcasts are not part of the project: DTV_STREAMS names their folder.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "demux.h"
#include "run_directory.h"
#include "si/carousel.h"

namespace {

using broadcast::kPacketSize;
using si::CarouselTree;
using Kind = si::CarouselObject::Kind;

std::string folderOfStreams() {
    const char* const given = std::getenv("DTV_STREAMS");
    return given != nullptr ? given : STREAMS_FOLDER;
}

std::string sha256(si::Bytes bytes) {
    const std::string path = OwnRunDirectory::instance().path() + "/file";
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data), static_cast<std::streamsize>(bytes.size));
    std::FILE* const pipe = popen(("sha256sum '" + path + "'").c_str(), "re");
    char digits[65] = {};
    EXPECT_EQ(std::fread(digits, 1, 64, pipe), 64U);
    pclose(pipe);
    return digits;
}

std::string namesOf(const si::CarouselObject& object) {
    std::string text;
    for (const si::CarouselObject::EventName& event : object.events) {
        text += (text.empty() ? "" : ",") + event.name + "=" + std::to_string(event.id);
    }
    return text;
}

std::string lineOf(const CarouselTree::Visited& visited) {
    static const std::map<Kind, std::string> kKinds = {{Kind::directory, "dir"},
                                                       {Kind::file, "fil"},
                                                       {Kind::stream, "str"},
                                                       {Kind::streamEvent, "ste"},
                                                       {Kind::other, "other"}};
    const std::string line = "/" + visited.path + " " + (visited.path.empty() ? "srg" : kKinds.at(visited.kind));
    if (!visited.found.object) {
        return line + " missing";
    }
    const si::CarouselObject& object = *visited.found.object;
    if (visited.kind == Kind::file) {
        return line + " " + std::to_string(object.content.size) + " " + sha256(object.content);
    }
    return visited.kind == Kind::streamEvent ? line + " " + namesOf(object) : line;
}

std::vector<std::string> linesOf(std::uint16_t pid, si::ObjectCarousel& carousel) {
    std::multiset<std::string> objects;
    carousel.tree()->visit([&objects](const CarouselTree::Visited& visited) {
        if (!visited.path.empty() || !visited.found.object) {
            objects.insert(lineOf(visited));
        }
    });
    std::vector<std::string> lines = {"PID " + std::to_string(pid) + " carousel " +
                                      std::to_string(*carousel.carouselId())};
    lines.insert(lines.end(), objects.begin(), objects.end());
    for (const si::ObjectCarousel::ModuleState& module : carousel.modules()) {
        if (module.blocksHere < module.blocks) {
            lines.push_back("module " + std::to_string(module.id) + " has " + std::to_string(module.blocksHere) +
                            " of " + std::to_string(module.blocks) + " blocks");
        }
    }
    return lines;
}

std::vector<std::string> extracted(const std::string& path, std::size_t percent) {
    std::ifstream file(path, std::ios::binary);
    std::stringstream all;
    all << file.rdbuf();
    const std::string packets = all.str();
    broadcast::Demux demux;
    std::map<std::uint16_t, si::ObjectCarousel> carousels;
    for (std::uint16_t pid = 0; pid < broadcast::kNullPid; ++pid) {
        demux.subscribe(pid, [&carousels, pid](si::Bytes section) {
            if (section.data[0] == si::kDownloadControlTableId || section.data[0] == si::kDownloadDataTableId) {
                carousels[pid].onSection(si::ObjectCarousel::From::root, section);
            }
        });
    }
    const std::size_t count = packets.size() / kPacketSize * percent / 100;
    for (std::size_t index = 0; index < count; ++index) {
        demux.feed(broadcast::TsPacket{reinterpret_cast<const std::uint8_t*>(packets.data()) + index * kPacketSize});
    }
    std::vector<std::string> lines;
    for (auto& [pid, carousel] : carousels) {
        if (carousel.carouselId()) {
            const std::vector<std::string> more = linesOf(pid, carousel);
            lines.insert(lines.end(), more.begin(), more.end());
        }
    }
    return lines;
}

/// A broadcast of the list, or a part of it.
struct Counted {
    std::string file;
    std::size_t percent = 0;
    std::vector<std::string> lines = {};
};

std::vector<Counted> countedBroadcasts() {
    std::ifstream list(STREAMS_LIST);
    std::vector<Counted> all;
    for (std::string line; std::getline(list, line);) {
        const std::size_t end = line.find(".ts ");
        if (end != std::string::npos && line[0] != '/') {
            all.push_back({line.substr(0, end + 3), std::stoul(line.substr(end + 4))});
        } else {
            all.back().lines.push_back(line);
        }
    }
    return all;
}

}  // namespace

TEST(CarouselsOfRealBroadcasts, GiveWhatAnIndependentReaderCounts) {
    if (!std::ifstream(folderOfStreams() + "/object-carousel.ts")) {
        GTEST_SKIP() << "the broadcasts are not in " << folderOfStreams();
    }
    const std::vector<Counted> all = countedBroadcasts();
    ASSERT_EQ(all.size(), 5U);
    for (const Counted& each : all) {
        EXPECT_EQ(extracted(folderOfStreams() + "/" + each.file, each.percent), each.lines)
            << each.percent << " % of " << each.file;
    }
}
