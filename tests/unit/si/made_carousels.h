// Carousels that tsmake makes, and what a reader says of them.
#pragma once

#include <map>
#include <random>
#include <string>
#include <vector>

#include "object_carousel.h"
#include "si/carousel.h"

using Files = std::map<std::string, std::string>;

/// Bytes that are the same in every run, and others for each seed. Every second kilobyte repeats one byte, so that they
/// can be compressed to a half.
inline std::string someBytes(std::uint32_t seed, std::size_t size) {
    constexpr std::size_t kKilobyte = 1024;
    static const std::string kNoise = [] {
        std::string noise(64 * kKilobyte, '\0');
        std::minstd_rand random(1);
        for (char& byte : noise) {
            byte = static_cast<char>(random() >> 8U);
        }
        return noise;
    }();
    constexpr std::size_t kStep = 7919;
    std::string bytes;
    bytes.reserve(size + 2 * kKilobyte);
    while (bytes.size() < size) {
        bytes.append(kNoise, (seed * kStep + bytes.size()) % (kNoise.size() - kKilobyte), kKilobyte);
        bytes.append(kKilobyte, static_cast<char>(seed));
    }
    bytes.resize(size);
    return bytes;
}

/// Modules are small, so that there are several of them, with several blocks.
inline tsmake::Carousel carouselOf(const std::vector<Files>& versions) {
    tsmake::Carousel carousel;
    carousel.id = 7;
    carousel.tag = 32;
    carousel.blockSize = 200;
    carousel.moduleSize = 1000;
    tsmake::Second second = 0;
    for (const Files& files : versions) {
        carousel.versions.push_back({second++, "", files});
    }
    return carousel;
}

inline std::vector<tsmake::Section> blocksOf(const tsmake::CarouselState& state, const tsmake::biop::Module& module) {
    std::vector<tsmake::Section> sections;
    for (std::size_t block = 0; block < tsmake::biop::blockCount(state.list, module); ++block) {
        sections.push_back(tsmake::biop::dataBlock(state.list, module, block));
    }
    return sections;
}

/// A cycle: control messages, then all blocks.
inline std::vector<tsmake::Section> cycleOf(const tsmake::CarouselState& state) {
    std::vector<tsmake::Section> sections = state.control;
    for (const tsmake::biop::Module& module : state.modules) {
        const std::vector<tsmake::Section> blocks = blocksOf(state, module);
        sections.insert(sections.end(), blocks.begin(), blocks.end());
    }
    return sections;
}

/// Feeds the sections; returns the news of one kind.
inline std::vector<std::string> feed(si::ObjectCarousel& carousel, const std::vector<tsmake::Section>& sections,
                                     std::optional<si::CarouselNews::Kind> kind = std::nullopt) {
    std::vector<std::string> texts;
    for (const tsmake::Section& section : sections) {
        for (const si::CarouselNews& news : carousel.onSection(si::ObjectCarousel::From::root, section)) {
            if (news.kind == kind) {
                texts.push_back(news.text);
            }
        }
    }
    return texts;
}

/// The files that are here, by path.
inline Files filesIn(const si::CarouselTree& tree) {
    Files files;
    tree.visit([&files](const si::CarouselTree::Visited& visited) {
        if (visited.kind == si::CarouselObject::Kind::file && visited.found.object) {
            const si::Bytes content = visited.found.object->content;
            files[visited.path] = std::string(reinterpret_cast<const char*>(content.data), content.size);
        }
    });
    return files;
}

/// The paths that only one has, or with other bytes; empty if both are the same.
inline std::string differenceOf(const Files& some, const Files& others) {
    std::string paths;
    for (const auto& [path, bytes] : some) {
        const auto other = others.find(path);
        paths += other == others.end() || other->second != bytes ? " " + path : "";
    }
    for (const auto& each : others) {
        paths += some.count(each.first) == 0 ? " " + each.first : "";
    }
    return paths;
}
