// Reading an object carousel from its sections: speed, and memory by what its files have. One iteration is the whole
// carousel. What uncompresses the modules and does nothing else is beside it.
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <zlib.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "object_carousel.h"
#include "si/carousel.h"

namespace {

using tsmake::CarouselState;

constexpr std::size_t kFiles = 1000;
constexpr std::size_t kFileSize = 20000;

/// Words in random order, which compress to a third, as pages and scripts do.
std::string someText(std::mt19937& random) {
    std::string text;
    while (text.size() < kFileSize) {
        text += std::to_string(random() % 10000) + (random() % 2 == 0 ? " div class=\"item\" " : " function(event) ");
    }
    text.resize(kFileSize);
    return text;
}

const tsmake::Carousel& carousel(bool isCompressed) {
    const auto make = [](bool compress) {
        std::mt19937 random(1);
        tsmake::Carousel made;
        made.id = 1;
        made.isCompressed = compress;
        for (tsmake::Second version = 0; version < 2; ++version) {
            made.versions.push_back({version, ""});
            for (std::size_t index = 0; index < kFiles; ++index) {
                made.versions.back().files["folder/file" + std::to_string(index)] = someText(random);
            }
        }
        return made;
    };
    static const tsmake::Carousel plain = make(false);
    static const tsmake::Carousel compressed = make(true);
    return isCompressed ? compressed : plain;
}

const std::vector<CarouselState>& states(bool isCompressed) {
    static const std::vector<CarouselState> plain = tsmake::carouselStates(carousel(false));
    static const std::vector<CarouselState> compressed = tsmake::carouselStates(carousel(true));
    return isCompressed ? compressed : plain;
}

/// Control messages, all blocks, and control messages, in the order of a cycle that the reader joins in its middle.
std::vector<tsmake::Section> sectionsOf(const CarouselState& state) {
    std::vector<tsmake::Section> blocks;
    for (const tsmake::biop::Module& module : state.modules) {
        for (std::size_t block = 0; block < tsmake::biop::blockCount(state.list, module); ++block) {
            blocks.push_back(tsmake::biop::dataBlock(state.list, module, block));
        }
    }
    std::rotate(blocks.begin(), blocks.begin() + static_cast<std::ptrdiff_t>(blocks.size() / 2), blocks.end());
    std::vector<tsmake::Section> sections = state.control;
    sections.insert(sections.end(), blocks.begin(), blocks.end());
    sections.insert(sections.end(), state.control.begin(), state.control.end());
    return sections;
}

/// The heap in use, also what it has by mmap.
double heap() {
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

/// Feeds the sections; the most that the heap has grown to.
double feed(si::ObjectCarousel& reader, const std::vector<tsmake::Section>& sections) {
    constexpr std::size_t kBetweenLooks = 50;
    double most = 0;
    for (std::size_t index = 0; index < sections.size(); ++index) {
        reader.onSection(si::ObjectCarousel::From::root, sections[index]);
        most = index % kBetweenLooks == 0 ? std::max(most, heap()) : most;
    }
    return most;
}

void read(benchmark::State& state, bool isCompressed) {
    const std::vector<tsmake::Section> sections = sectionsOf(states(isCompressed)[0]);
    std::size_t bytes = 0;
    for (const tsmake::Section& section : sections) {
        bytes += section.size();
    }
    while (state.KeepRunning()) {
        si::ObjectCarousel reader;
        for (const tsmake::Section& section : sections) {
            reader.onSection(si::ObjectCarousel::From::root, section);
        }
        if (!reader.tree()->isComplete()) {
            state.SkipWithError("the carousel is not complete");
            return;
        }
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * state.iterations());
}

/// Of the tree, and the most while a version with other files is read.
void keep(benchmark::State& state, bool isCompressed) {
    constexpr double kContent = static_cast<double>(kFiles * kFileSize);
    const std::vector<tsmake::Section> first = sectionsOf(states(isCompressed)[0]);
    const std::vector<tsmake::Section> second = sectionsOf(states(isCompressed)[1]);
    while (state.KeepRunning()) {
        const double before = heap();
        si::ObjectCarousel reader;
        feed(reader, first);
        state.counters["memory"] = (heap() - before) / kContent;
        state.counters["memory_of_update"] = (feed(reader, second) - before) / kContent;
    }
}

void uncompress(benchmark::State& state) {
    while (state.KeepRunning()) {
        for (const tsmake::biop::Module& module : states(true)[0].modules) {
            std::vector<std::uint8_t> bytes(module.originalSize);
            uLongf size = bytes.size();
            if (::uncompress(bytes.data(), &size, reinterpret_cast<const Bytef*>(module.bytes.data()),
                             module.bytes.size()) != Z_OK) {
                state.SkipWithError("a module cannot be uncompressed");
                return;
            }
            benchmark::DoNotOptimize(bytes.data());
        }
    }
}

BENCHMARK_CAPTURE(read, plain, false)->Name("carousel/read/plain");
BENCHMARK_CAPTURE(read, compressed, true)->Name("carousel/read/compressed");
BENCHMARK(uncompress)->Name("carousel/zlib/compressed");
BENCHMARK_CAPTURE(keep, plain, false)->Name("carousel/keep/plain");
BENCHMARK_CAPTURE(keep, compressed, true)->Name("carousel/keep/compressed");

}  // namespace
