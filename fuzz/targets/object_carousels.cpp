// Files out of object carousels: the carousels of a service. Each record: its kind, then bytes behind their length: a
// section of the first stream or of the second one, a PMT, or the PMT of another service.
#include "oracles.h"
#include "si/file_names.h"
#include "si/service_carousels.h"

namespace {

constexpr std::uint16_t kFirstPid = 100;
constexpr std::size_t kMostHeld = 1U << 20U;

si::Pmt twoStreams() {
    constexpr std::uint8_t kMessages = 0x0B;
    constexpr std::uint8_t kStreamIdentifier = 0x52;
    si::Pmt pmt;
    for (const std::uint8_t tag : {std::uint8_t{32}, std::uint8_t{33}}) {
        pmt.streams.push_back(
            {kMessages, static_cast<std::uint16_t>(kFirstPid + tag - 32), {{kStreamIdentifier, {tag}}}});
    }
    return pmt;
}

/// Whether there is a new complete tree.
bool check(const std::vector<si::ServiceCarousels::News>& all) {
    bool hasTree = false;
    for (const si::ServiceCarousels::News& each : all) {
        fuzz::expectPrintable(each.news.text, "news of a carousel");
        hasTree = hasTree || (each.pid == kFirstPid && each.news.kind == si::CarouselNews::Kind::tree);
    }
    return hasTree;
}

/// The name of an entry as that of a file, beside all others of its tree.
void checkName(si::FileNames& names, const std::string& name) {
    constexpr std::size_t kLongest = 255;
    const std::string own = names.take(name);
    fuzz::expect(!own.empty() && own != "." && own != ".." && own.size() <= kLongest &&
                     own.find('/') == std::string::npos && own.find('\0') == std::string::npos,
                 "a name is not safe");
}

/// What a tree has: bytes, which must be those of the module, and a sum of them.
std::size_t sumOf(const si::CarouselTree& tree) {
    std::size_t sum = 0;
    si::FileNames names;
    tree.visit([&](const si::CarouselTree::Visited& visited) {
        if (visited.found.object) {
            const si::Bytes content = visited.found.object->content;
            for (std::size_t index = 0; index < content.size; index += 64) {
                sum = sum * 31 + content.data[index];
            }
            sum += visited.path.size();
            checkName(names, visited.path.substr(visited.nameAt));
        }
    });
    return sum;
}

/// Whether the first stream's carousel is complete anew.
bool play(si::ServiceCarousels& carousels, fuzz::Input& input) {
    enum Kind : unsigned int { kFirst, kSecond, kPmt, kOtherPmt, kKinds };
    const unsigned int kind = input.u8() % kKinds;
    const std::vector<std::uint8_t> bytes = input.chunk();
    if (kind == kFirst || kind == kSecond) {
        return check(carousels.onSection(static_cast<std::uint16_t>(kFirstPid + kind), bytes));
    }
    std::string error;
    if (const std::optional<si::Pmt> pmt = si::parsePmt(bytes, error)) {
        if (kind == kPmt) {
            check(carousels.setPmt(*pmt));
        } else {
            carousels.setOtherPmt(*pmt);
        }
    }
    return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::run(data, size, {1U << 20U, 8000}, [](fuzz::Input input) {
        si::ServiceCarousels carousels(kMostHeld);
        carousels.setPmt(twoStreams());
        std::shared_ptr<const si::CarouselTree> complete;
        std::size_t sum = 0;
        while (!input.isEmpty()) {
            const bool hasTree = play(carousels, input);
            for (auto& [pid, carousel] : carousels.carousels()) {
                fuzz::expect(carousel.heldBytes() <= kMostHeld, "more is held than is allowed");
            }
            if (hasTree && !complete) {
                complete = carousels.carousels().at(kFirstPid).tree();
                fuzz::expect(complete->isComplete(), "a tree is told that is not complete");
                sum = sumOf(*complete);
            }
        }
        fuzz::expect(!complete || sumOf(*complete) == sum, "a tree has changed");
        for (auto& [pid, carousel] : carousels.carousels()) {
            sumOf(*carousel.tree());
            carousel.tree()->find("index.html");
            carousel.modules();
        }
        carousels.otherServices();
    });
}
