// Tests of object carousels from their sections on.
#include "si/carousel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "made_carousels.h"

namespace {

using si::CarouselTree;
using si::ObjectCarousel;
using tsmake::CarouselState;
using tsmake::Section;
using Kind = si::CarouselNews::Kind;

Files folder(std::uint32_t seed = 0) {
    return {{"index.html", someBytes(seed, 100)},
            {"empty", ""},
            {"images/logo.png", someBytes(seed + 1, 3000)},
            {"images/more/dot.gif", someBytes(seed + 2, 43)},
            {"script.js", someBytes(seed + 3, 900)}};
}

/// A folder with so many modules that two lists have them.
Files manyFiles(std::uint32_t seed) {
    constexpr std::size_t kFiles = 100;
    Files files;
    for (std::size_t index = 0; index < kFiles; ++index) {
        files["file" + std::to_string(index)] = someBytes(seed, 1000);
    }
    return files;
}

std::vector<CarouselState> statesOf(const std::vector<Files>& versions) {
    return tsmake::carouselStates(carouselOf(versions));
}

void expectFiles(ObjectCarousel& carousel, const Files& files) {
    EXPECT_TRUE(carousel.tree()->isComplete());
    EXPECT_EQ(differenceOf(filesIn(*carousel.tree()), files), "");
}

}  // namespace

TEST(AnObjectCarousel, GivesEveryFileOfItsFolder) {
    for (const bool isCompressed : {false, true}) {
        tsmake::Carousel made = carouselOf({folder()});
        made.isCompressed = isCompressed;
        const CarouselState state = tsmake::carouselStates(made).at(0);
        ObjectCarousel carousel;
        feed(carousel, cycleOf(state));
        EXPECT_THAT(feed(carousel, state.control, Kind::tree), testing::ElementsAre("carousel 7 is complete"));
        expectFiles(carousel, folder());
        EXPECT_EQ(carousel.carouselId(), 7U);
        EXPECT_THAT(carousel.associationTags(), testing::ElementsAre(32));
    }
}

TEST(AnObjectCarousel, DoesNotDependOnTheOrderOfSections) {
    const CarouselState state = statesOf({folder()}).at(0);
    std::vector<Section> sections = cycleOf(state);
    std::mt19937 random(1);  // the same orders in every run
    for (int order = 0; order < 20; ++order) {
        std::shuffle(sections.begin(), sections.end(), random);
        ObjectCarousel carousel;
        feed(carousel, sections);
        feed(carousel, sections);
        feed(carousel, state.control);
        expectFiles(carousel, folder());
    }
}

TEST(AnObjectCarousel, SaysWhatIsAwaitedAndWhatIsNotThere) {
    const CarouselState state = statesOf({folder()}).at(0);
    ObjectCarousel carousel;
    EXPECT_EQ(carousel.tree()->find("index.html").state, CarouselTree::State::awaited) << "nothing has come";
    feed(carousel, state.control);
    feed(carousel, state.control);
    feed(carousel, blocksOf(state, state.modules[0]));
    EXPECT_FALSE(carousel.tree()->isComplete());
    EXPECT_EQ(carousel.tree()->find("images").state, CarouselTree::State::here);
    EXPECT_EQ(carousel.tree()->find("/images//more/").state, CarouselTree::State::here);
    EXPECT_EQ(carousel.tree()->find("").object->kind, si::CarouselObject::Kind::directory);
    EXPECT_EQ(carousel.tree()->find("images/logo.png").state, CarouselTree::State::awaited);
    EXPECT_EQ(carousel.tree()->find("images/none.png").state, CarouselTree::State::absent);
    EXPECT_EQ(carousel.tree()->find("none/logo.png").state, CarouselTree::State::absent);
    feed(carousel, cycleOf(state));
    EXPECT_EQ(carousel.tree()->find("images/logo.png").object->content.size, 3000U);
    EXPECT_EQ(carousel.tree()->find("index.html/more").state, CarouselTree::State::absent);
}

TEST(AnObjectCarousel, KeepsTheOldTreeUntilTheNewOneIsWhole) {
    const std::vector<CarouselState> states = statesOf({folder(), folder(100)});
    ObjectCarousel carousel;
    feed(carousel, cycleOf(states[0]));
    feed(carousel, states[0].control);
    const std::shared_ptr<const CarouselTree> old = carousel.tree();
    for (const Section& section : cycleOf(states[1])) {
        feed(carousel, {section});
        ASSERT_EQ(carousel.tree(), old);
    }
    feed(carousel, states[1].control);
    expectFiles(carousel, folder(100));
    EXPECT_EQ(differenceOf(filesIn(*old), folder()), "") << "who keeps a tree keeps its files";
}

TEST(AnObjectCarousel, WaitsForEveryListOfTheNewVersion) {
    const std::vector<CarouselState> states = statesOf({manyFiles(1), manyFiles(2)});
    ASSERT_EQ(states[0].control.size(), 3U) << "a DownloadServerInitiate and two lists";
    ObjectCarousel carousel;
    feed(carousel, cycleOf(states[0]));
    feed(carousel, states[0].control);
    expectFiles(carousel, manyFiles(1));
    // All is there that the new first list names, but the second may be an old one.
    feed(carousel, {states[1].control[0], states[1].control[1]});
    feed(carousel, cycleOf(states[1]));
    feed(carousel, {states[0].control[2], states[1].control[0], states[1].control[1]});
    EXPECT_EQ(differenceOf(filesIn(*carousel.tree()), manyFiles(1)), "");
    feed(carousel, cycleOf(states[1]));
    feed(carousel, states[1].control);
    expectFiles(carousel, manyFiles(2));
}

TEST(AnObjectCarousel, KeepsModulesThatDoNotChange) {
    Files changed = folder();
    changed["script.js"] = someBytes(77, 901);
    const std::vector<CarouselState> states = statesOf({folder(), changed});
    ObjectCarousel carousel;
    feed(carousel, cycleOf(states[0]));
    feed(carousel, states[0].control);
    const auto logo = carousel.tree()->find("images/logo.png").object;
    EXPECT_THAT(feed(carousel, cycleOf(states[1]), Kind::module), testing::SizeIs(1));
    feed(carousel, states[1].control);
    expectFiles(carousel, changed);
    EXPECT_EQ(carousel.tree()->find("images/logo.png").object, logo);
}

TEST(AnObjectCarousel, DropsAModuleWhoseBlocksDisagreeWithItsList) {
    const CarouselState state = statesOf({folder()}).at(0);
    CarouselState wrong = state;
    wrong.modules[1].bytes += "more";  // the last block is longer
    const std::vector<Section> blocks = blocksOf(wrong, wrong.modules[1]);
    ObjectCarousel carousel;
    feed(carousel, state.control);
    EXPECT_THAT(feed(carousel, blocks, Kind::dropped),
                testing::ElementsAre(testing::MatchesRegex("module 2, version 0: block . has .* bytes, not .*")));
    EXPECT_THAT(feed(carousel, blocks, Kind::dropped), testing::IsEmpty()) << "told once";
    EXPECT_EQ(carousel.modules().at(1).blocksHere, 0U);
    feed(carousel, cycleOf(state));
    feed(carousel, state.control);
    expectFiles(carousel, folder());
}

TEST(AnObjectCarousel, DropsAModuleWithMoreBlocksThanItsListSays) {
    const CarouselState state = statesOf({folder()}).at(0);
    CarouselState wrong = state;
    wrong.modules[2].bytes += std::string(70000, 'x');
    std::vector<Section> blocks = blocksOf(wrong, wrong.modules[2]);
    blocks.erase(blocks.begin() + 1, blocks.end() - 1);
    ObjectCarousel carousel;
    feed(carousel, state.control);
    EXPECT_THAT(feed(carousel, blocks, Kind::dropped),
                testing::ElementsAre(testing::MatchesRegex("module 3, version 0: block 36. is none of its ..")));
}

TEST(AnObjectCarousel, DropsAModuleThatDoesNotUncompress) {
    const CarouselState state = statesOf({folder()}).at(0);
    CarouselState wrong = state;
    wrong.modules[1].bytes[20] ^= 1;
    ObjectCarousel carousel;
    feed(carousel, state.control);
    EXPECT_THAT(feed(carousel, blocksOf(wrong, wrong.modules[1]), Kind::dropped),
                testing::ElementsAre(testing::StartsWith("module 2, version 0: it does not uncompress to ")));
    feed(carousel, cycleOf(state));
    feed(carousel, state.control);
    expectFiles(carousel, folder());
}

TEST(AnObjectCarousel, StaysWithinItsMemory) {
    const std::vector<CarouselState> states = statesOf({manyFiles(1), manyFiles(2)});
    for (std::size_t limit = 0; limit < 300000; limit += 7000) {
        ObjectCarousel carousel(limit);
        std::size_t leftOut = 0;
        for (const CarouselState& state : states) {
            for (int cycle = 0; cycle < 2; ++cycle) {
                for (const Section& section : cycleOf(state)) {
                    leftOut += feed(carousel, {section}, Kind::leftOut).size();
                    ASSERT_LE(carousel.heldBytes(), limit);
                }
            }
        }
        const Files files = filesIn(*carousel.tree());
        EXPECT_TRUE(leftOut != 0 || differenceOf(files, manyFiles(2)).empty()) << limit;
    }
}

TEST(AnObjectCarousel, GivesBackTheMemoryOfOldTrees) {
    const std::vector<CarouselState> states = statesOf({manyFiles(1), manyFiles(2)});
    ObjectCarousel carousel;
    std::size_t first = 0;
    for (int round = 0; round < 6; ++round) {
        const CarouselState& state = states[static_cast<std::size_t>(round % 2)];
        feed(carousel, cycleOf(state));
        feed(carousel, state.control);
        first = round == 0 ? carousel.heldBytes() : first;
        EXPECT_LE(carousel.heldBytes(), first + first / 20);
    }
}

TEST(AnObjectCarousel, IgnoresAnotherCarouselOnItsStream) {
    tsmake::Carousel other = carouselOf({folder(50)});
    other.id = 8;
    const CarouselState state = statesOf({folder()}).at(0);
    const CarouselState otherState = tsmake::carouselStates(other).at(0);
    ObjectCarousel carousel;
    for (int cycle = 0; cycle < 3; ++cycle) {
        std::vector<Section> sections = cycleOf(otherState);
        sections.erase(sections.begin());  // its DownloadServerInitiate is on another stream
        feed(carousel, sections);
        feed(carousel, cycleOf(state));
    }
    expectFiles(carousel, folder());
}

TEST(AnObjectCarousel, WithMessagesOfAnotherNumberIsReadWithAWarning) {
    tsmake::Carousel made = carouselOf({folder()});
    const CarouselState named = tsmake::carouselStates(made).at(0);
    made.id = 9;
    const CarouselState state = tsmake::carouselStates(made).at(0);
    std::vector<Section> control = state.control;
    control[0] = named.control[0];
    ObjectCarousel carousel;
    EXPECT_THAT(feed(carousel, control, Kind::warning),
                testing::ElementsAre("the messages of carousel 7 have the number 9"));
    feed(carousel, cycleOf(state));
    feed(carousel, control);
    expectFiles(carousel, folder());
}

TEST(AnObjectCarousel, SurvivesWrongBytes) {
    const std::vector<CarouselState> states = statesOf({folder(), folder(9)});
    std::vector<Section> sections = cycleOf(states[0]);
    const std::vector<Section> more = cycleOf(states[1]);
    sections.insert(sections.end(), more.begin(), more.end());
    std::mt19937 random(1);  // the same bytes in every run
    for (int round = 0; round < 300; ++round) {
        std::vector<Section> broken = sections;
        for (int change = 0; change < 10; ++change) {
            Section& section = broken[random() % broken.size()];
            section[8 + random() % (section.size() - 8)] = static_cast<std::uint8_t>(random());
        }
        ObjectCarousel carousel;
        feed(carousel, broken);
        carousel.tree()->visit([](const CarouselTree::Visited&) {});
        // Wrong bytes without a wrong check sum are another version for the reader.
        feed(carousel, cycleOf(states[0]));
    }
}
