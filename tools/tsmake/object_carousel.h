// Object carousels of folders: modules with directories, files and stream event objects, in as many lists as they need.
// Threads: any.
// Blocks:  never.
// Fails:   std::length_error when a name, a module or their number is too large.
#pragma once

#include "biop_writer.h"
#include "multiplex.h"

namespace tsmake {

/// One version of a carousel, from its second on. A module whose bytes are those of the version before keeps its
/// version.
struct CarouselState {
    Second second = 0;
    std::vector<Section> control;  ///< DownloadServerInitiate, then the lists
    biop::List list;               ///< what its blocks have in common
    std::vector<biop::Module> modules;
};
std::vector<CarouselState> carouselStates(const Carousel& carousel);

/// CarouselSender: the sections of a carousel in the order of sending: again and again all blocks, and between them the
/// control messages, at the start of each cycle and four times a second. A version ends with the section that is being
/// sent.
class CarouselSender {
public:
    explicit CarouselSender(const Carousel& newCarousel);

    struct Unit {
        std::uint16_t pid;
        Section section;  ///< empty before the first version
    };
    Unit next(std::uint64_t ticks);
    std::uint64_t bitRate() const { return carousel.bitRate; }

private:
    bool isControlDue(std::uint64_t ticks) const;
    std::uint64_t controlInterval() const;

    const Carousel& carousel;
    std::vector<CarouselState> states;
    std::size_t state = 0;
    bool hasBegun = false;
    std::size_t control = 0;  // the next message of the round; their number between two rounds
    std::uint64_t lastControl = 0;
    std::size_t module = 0;
    std::size_t block = 0;
    bool hasControlOfCycle = false;
};

}  // namespace tsmake
