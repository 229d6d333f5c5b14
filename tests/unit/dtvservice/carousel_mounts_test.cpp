// Tests of carousels that are mounted as folders.
#include "carousel_mounts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <thread>

#include "eventually.h"
#include "made_carousels.h"
#include "packets.h"

namespace {

using dtvservice::CarouselMounts;
using dtvservice::TreeFolders;
using tsmake::CarouselState;
using Result = CarouselMounts::Result;

constexpr std::uint16_t kPid = 300;
constexpr std::uint16_t kSilentPid = 301;
constexpr std::uint16_t kVideoPid = 302;
constexpr std::int16_t kTag = 32;
constexpr std::int16_t kSilentTag = 33;
constexpr std::int16_t kVideoTag = 1;
constexpr std::size_t kEnough = std::size_t{1} << 30U;
constexpr std::chrono::hours kForever{1};

Files files(std::uint32_t seed) {
    return {{"index.html", someBytes(seed, 100)}, {"images/logo.png", someBytes(seed + 1, 3000)}, {"empty", ""}};
}

Files filesBelow(const std::string& folder) {
    Files all;
    std::error_code failure;
    for (const auto& each : std::filesystem::recursive_directory_iterator(folder, failure)) {
        if (each.is_regular_file()) {
            std::ifstream file(each.path(), std::ios::binary);
            all[each.path().string().substr(folder.size() + 1)] = {std::istreambuf_iterator<char>(file), {}};
        }
    }
    return all;
}

si::Pmt pmtOf(std::uint16_t service) {
    si::Pmt pmt;
    pmt.serviceId = service;
    const auto tag = [](std::int16_t value) { return si::Descriptor{0x52, {static_cast<std::uint8_t>(value)}}; };
    pmt.streams = {
        {0x1B, kVideoPid, {tag(kVideoTag)}}, {0x0B, kPid, {tag(kTag)}}, {0x0B, kSilentPid, {tag(kSilentTag)}}};
    return pmt;
}

/// A television set that presents the service 1:2:3.
class AMountedCarousel : public testing::Test {
protected:
    struct Answered {
        std::uint32_t browser;
        Result result;
        std::string path;
        bool operator==(const Answered& other) const {
            return browser == other.browser && result == other.result && path == other.path;
        }
    };

    AMountedCarousel() {
        char name[] = "/tmp/dtv-mounts-XXXXXX";
        base = mkdtemp(name);
        begin(kEnough, {kForever, kForever, std::chrono::milliseconds(1)});
    }
    ~AMountedCarousel() override {
        mounts.reset();
        folders.reset();
        std::filesystem::remove_all(base);
    }
    void begin(std::size_t mostBytes, CarouselMounts::Patience patience) {
        mounts.reset();
        folders = std::make_unique<TreeFolders>(loop, base + "/carousels", mostBytes);
        mounts = std::make_unique<CarouselMounts>(
            loop, *folders, [this](auto, const std::string& line) { told.push_back(line); }, patience);
        present(3);
    }
    void present(std::uint16_t service) { follow(pmtOf(service)); }
    void follow(const si::Pmt& pmt) {
        broadcast::Channel channel;
        channel.originalNetworkId = 1;
        channel.transportStreamId = 2;
        channel.serviceId = pmt.serviceId;
        mounts->follow(demux, channel, pmt, [](auto) { return Bytes(); });
    }
    void mount(std::uint32_t browser, std::int16_t tag = kTag, std::uint16_t tsid = 2) {
        mounts->add(browser, {1, tsid, 3, tag}, [this, browser](Result result, const std::string& path) {
            answers.push_back({browser, result, path});
        });
    }
    void play(const std::vector<tsmake::Section>& sections, std::uint16_t pid = kPid) {
        PacketMaker& maker = makers.try_emplace(pid, pid).first->second;
        for (const tsmake::Section& section : sections) {
            for (const Packet& packet : maker.packets({section})) {
                demux.feed({packet.data()});
            }
        }
    }
    /// A cycle, and the control messages of the next.
    void play(const CarouselState& state, std::uint16_t pid = kPid) {
        play(cycleOf(state), pid);
        play(state.control, pid);
    }
    template <typename Condition>
    bool runsUntil(Condition condition) {
        return eventually([&] {
            loop.runUntil(dtvservice::EventLoop::Clock::now());
            return condition();
        });
    }
    bool isAnswered(std::size_t count) {
        return runsUntil([&] { return answers.size() >= count; });
    }
    /// Plays one version, and waits until it is mounted.
    std::string mountedPath(const CarouselState& state) {
        mount(1);
        play(state);
        EXPECT_TRUE(isAnswered(1));
        return answers.empty() ? "" : answers[0].path;
    }
    bool isNothingLeft() const {
        return !std::filesystem::exists(base + "/carousels") || std::filesystem::is_empty(base + "/carousels");
    }

    std::string base;
    dtvservice::EventLoop loop;
    broadcast::Demux demux;
    std::unique_ptr<TreeFolders> folders;
    std::unique_ptr<CarouselMounts> mounts;
    std::map<std::uint16_t, PacketMaker> makers;
    std::vector<Answered> answers;
    std::vector<std::string> told;
};

std::vector<CarouselState> statesOf(const std::vector<Files>& versions) {
    return tsmake::carouselStates(carouselOf(versions));
}

}  // namespace

TEST_F(AMountedCarousel, HasEveryFile) {
    const std::string path = mountedPath(statesOf({files(1)})[0]);
    EXPECT_EQ(answers[0].result, Result::done);
    EXPECT_EQ(path.compare(0, base.size() + 11, base + "/carousels/"), 0) << path;
    EXPECT_EQ(differenceOf(filesBelow(path), files(1)), "");
    EXPECT_THAT(told, testing::Contains("the carousel on PID 300 is mounted: 3 files in 1 folders"));
}

TEST_F(AMountedCarousel, IsOpenToItsOwnerOnly) {
    const std::string path = mountedPath(statesOf({files(1)})[0]);
    const auto modeOf = [](const std::string& of) { return std::filesystem::status(of).permissions(); };
    EXPECT_EQ(modeOf(base + "/carousels"), std::filesystem::perms::owner_all);
    EXPECT_EQ(modeOf(path), std::filesystem::perms::owner_all);
}

TEST_F(AMountedCarousel, FollowsNewVersions) {
    const std::vector<CarouselState> states = statesOf({files(1), files(5), files(9)});
    const std::string path = mountedPath(states[0]);
    const std::string first = std::filesystem::canonical(path);
    play(states[1]);
    EXPECT_TRUE(runsUntil([&] { return differenceOf(filesBelow(path), files(5)).empty(); }));
    EXPECT_EQ(differenceOf(filesBelow(first), files(1)), "") << "who has opened the old one keeps it";
    play(states[2]);
    EXPECT_TRUE(runsUntil([&] { return differenceOf(filesBelow(path), files(9)).empty(); }));
    EXPECT_FALSE(std::filesystem::exists(first)) << "until the second next one";
    EXPECT_EQ(answers.size(), 1U);
}

TEST_F(AMountedCarousel, IsDescribedToTheOperator) {
    const std::vector<CarouselState> states = statesOf({files(1), files(5)});
    EXPECT_EQ(mounts->describe(10), nlohmann::json::array());
    mount(2, -1);
    EXPECT_EQ(mounts->describe(10), nlohmann::json::parse(R"([{"browser": 2, "sid": 3, "versions": 0}])"));
    const std::string path = mountedPath(states[0]);
    EXPECT_TRUE(isAnswered(2));
    const std::size_t modules = states[0].modules.size();
    const nlohmann::json chosen = {{"browser", 2}, {"sid", 3},           {"pid", kPid},
                                   {"path", path}, {"modules", modules}, {"modules_arrived", modules},
                                   {"versions", 1}};
    nlohmann::json named = chosen;
    named.update({{"browser", 1}, {"component_tag", kTag}});
    EXPECT_EQ(mounts->describe(10), nlohmann::json::array({chosen, named}));
    EXPECT_EQ(mounts->describe(1), nlohmann::json::array({chosen}));
    play(states[1]);
    EXPECT_TRUE(runsUntil([&] { return mounts->describe(1)[0]["versions"] == 2; }));
    mounts->forget(2);
    EXPECT_EQ(mounts->describe(10).size(), 1U);
}

TEST_F(AMountedCarousel, IsDescribedBeforeAllOfItHasCome) {
    mount(1);
    const CarouselState state = statesOf({files(1)})[0];
    play(state.control);
    const nlohmann::json described = mounts->describe(1).at(0);
    EXPECT_EQ(described.value("modules", 0U), state.modules.size());
    EXPECT_EQ(described.value("modules_arrived", 99U), 0U);
    EXPECT_FALSE(described.contains("path"));
}

TEST_F(AMountedCarousel, IsNeverAMixtureOfVersions) {
    constexpr std::uint32_t kVersions = 20;
    std::vector<Files> versions;
    for (std::uint32_t version = 0; version < kVersions; ++version) {
        versions.push_back(files(version * 3));
    }
    const std::vector<CarouselState> states = statesOf(versions);
    const std::string path = mountedPath(states[0]);
    std::atomic<std::size_t> seen{0};
    std::atomic<bool> isOver{false};
    std::atomic<int> mixtures{0};
    std::thread reader([&] {
        while (!isOver) {
            std::error_code failure;
            const Files read = filesBelow(std::filesystem::canonical(path, failure));
            const auto version = std::find(versions.begin(), versions.end(), read);
            mixtures += version == versions.end() ? 1 : 0;
            seen = static_cast<std::size_t>(version - versions.begin());
        }
    });
    for (std::size_t version = 1; version < states.size(); ++version) {
        play(states[version]);
        EXPECT_TRUE(runsUntil([&] { return seen == version; }));
    }
    isOver = true;
    reader.join();
    EXPECT_EQ(mixtures, 0);
}

TEST_F(AMountedCarousel, IsSharedAndGoesWithItsLastBrowser) {
    const std::string path = mountedPath(statesOf({files(1)})[0]);
    mount(2);
    EXPECT_EQ(answers.back(), (Answered{2, Result::done, path})) << "at once";
    mount(3, -1);
    EXPECT_EQ(answers.back(), (Answered{3, Result::done, path})) << "the first complete one";
    mounts->forget(1);
    mounts->forget(3);
    EXPECT_EQ(differenceOf(filesBelow(path), files(1)), "");
    mounts->forget(2);
    EXPECT_TRUE(runsUntil([&] { return isNothingLeft(); }));
}

TEST_F(AMountedCarousel, IsReadAnewAfterItWasRemoved) {
    const CarouselState state = statesOf({files(1)})[0];
    const std::string path = mountedPath(state);
    mounts->forget(1);
    mount(1);
    EXPECT_EQ(answers.size(), 1U);
    play(state);
    ASSERT_TRUE(isAnswered(2));
    EXPECT_NE(answers[1].path, path) << "nobody takes the new one for the old one";
    EXPECT_EQ(differenceOf(filesBelow(answers[1].path), files(1)), "");
}

TEST_F(AMountedCarousel, EndsWithItsService) {
    mountedPath(statesOf({files(1)})[0]);
    mount(2, kSilentTag);
    present(4);
    EXPECT_EQ(answers.back(), (Answered{2, Result::noSuchComponent, ""}));
    EXPECT_TRUE(runsUntil([&] { return isNothingLeft(); }));
}

TEST_F(AMountedCarousel, StaysWhileItsServiceIsPresentedAgain) {
    const std::string path = mountedPath(statesOf({files(1)})[0]);
    present(3);
    EXPECT_EQ(differenceOf(filesBelow(path), files(1)), "");
    si::Pmt without = pmtOf(3);
    without.streams.resize(1);
    follow(without);
    EXPECT_TRUE(runsUntil([&] { return isNothingLeft(); })) << "its component has gone";
}

TEST_F(AMountedCarousel, EndsWithTheServicesObject) {
    mountedPath(statesOf({files(1)})[0]);
    mounts.reset();
    folders.reset();
    EXPECT_TRUE(isNothingLeft());
}

TEST_F(AMountedCarousel, MayBeTheFirstCompleteOne) {
    mount(1, -1);
    const CarouselState state = statesOf({files(1)})[0];
    play(state, kSilentPid);
    ASSERT_TRUE(isAnswered(1));
    EXPECT_EQ(differenceOf(filesBelow(answers[0].path), files(1)), "");
}

TEST_F(AMountedCarousel, IsOneOfSeveral) {
    mount(1, kTag);
    mount(1, kSilentTag);
    play(statesOf({files(1)})[0]);
    play(statesOf({files(5)})[0], kSilentPid);
    ASSERT_TRUE(isAnswered(2));
    EXPECT_NE(answers[0].path, answers[1].path);
    std::sort(answers.begin(), answers.end(), [](auto& one, auto& other) { return one.path < other.path; });
    EXPECT_EQ(differenceOf(filesBelow(answers[0].path), files(1)), "");
    EXPECT_EQ(differenceOf(filesBelow(answers[1].path), files(5)), "");
}

TEST_F(AMountedCarousel, MayHaveItsBlocksOnAnotherService) {
    constexpr std::uint16_t kOtherPid = 400;
    constexpr std::uint8_t kBlockTag = 50;
    tsmake::Carousel made = carouselOf({files(1)});
    made.blockTag = kBlockTag;
    const CarouselState state = tsmake::carouselStates(made)[0];
    si::Pmt pmt = pmtOf(3);
    pmt.streams[1].descriptors.push_back({0x15, {2, 0, kBlockTag, 0, 2, 0, 9, 0, 1}});
    follow(pmt);
    mount(1);
    play(state.control);
    si::Pmt other = pmtOf(9);
    other.streams = {{0x0B, kOtherPid, {{0x52, {kBlockTag}}}}};
    mounts->setOtherPmt(other);
    play(cycleOf(state), kOtherPid);
    play(state.control);
    ASSERT_TRUE(isAnswered(1));
    EXPECT_EQ(differenceOf(filesBelow(answers[0].path), files(1)), "");
}

TEST_F(AMountedCarousel, NeedsAComponentOfThePresentedService) {
    mount(1, 99);
    mount(2, kTag, 7);
    mount(3, kVideoTag);
    EXPECT_THAT(answers,
                testing::ElementsAre(Answered{1, Result::noSuchComponent, ""}, Answered{2, Result::noSuchComponent, ""},
                                     Answered{3, Result::noCarousel, ""}));
    mounts->rest();
    mount(4);
    EXPECT_EQ(answers.back(), (Answered{4, Result::noSuchComponent, ""})) << "no PMT is known";
}

TEST_F(AMountedCarousel, HasToBeginInTime) {
    begin(kEnough, {std::chrono::seconds(0), kForever, std::chrono::milliseconds(1)});
    mount(1, kSilentTag);
    ASSERT_TRUE(isAnswered(1));
    EXPECT_EQ(answers[0].result, Result::noCarousel);
}

TEST_F(AMountedCarousel, HasToBeCompleteInTime) {
    begin(kEnough, {kForever, std::chrono::seconds(0), std::chrono::milliseconds(1)});
    mount(1);
    play(statesOf({files(1)})[0].control);
    ASSERT_TRUE(isAnswered(1));
    EXPECT_EQ(answers[0].result, Result::notComplete);
}

TEST_F(AMountedCarousel, NeedsRoom) {
    constexpr std::size_t kRoomForTwoFiles = 3 * si::TreeFolder::kPlaceOfAnEntry;
    begin(kRoomForTwoFiles, {kForever, kForever, std::chrono::milliseconds(1)});
    mountedPath(statesOf({files(1)})[0]);
    EXPECT_EQ(answers[0].result, Result::tooMuch);
    EXPECT_TRUE(runsUntil([&] { return isNothingLeft(); }));
    EXPECT_THAT(told, testing::Contains("the carousel on PID 300 is not mounted: its files need too much room"));
}

TEST_F(AMountedCarousel, StaysAsItWasWhereTheNextVersionHasNoRoom) {
    constexpr std::size_t kRoom = 6 * si::TreeFolder::kPlaceOfAnEntry;
    begin(kRoom, {kForever, kForever, std::chrono::milliseconds(1)});
    const Files large = {{"index.html", someBytes(1, 30000)}};
    const std::vector<CarouselState> states = statesOf({files(1), large, {{"small", "1"}}});
    const std::string path = mountedPath(states[0]);
    play(states[1]);
    EXPECT_TRUE(runsUntil(
        [&] { return told.back() == "the carousel on PID 300 stays as it was: its files need too much room"; }));
    EXPECT_EQ(differenceOf(filesBelow(path), files(1)), "");
    play(states[2]);
    EXPECT_TRUE(runsUntil([&] { return filesBelow(path) == Files{{"small", "1"}}; }));
}

TEST_F(AMountedCarousel, IsNotThereWhereItsFolderCannotBeMade) {
    std::ofstream(base + "/carousels") << "a file";
    mountedPath(statesOf({files(1)})[0]);
    EXPECT_EQ(answers[0].result, Result::notWritten);
    EXPECT_THAT(told, testing::Contains(testing::HasSubstr("/carousels: is not a folder of this user")));
}

TEST_F(AMountedCarousel, IsOneOfALimitedNumberForEachBrowser) {
    for (std::size_t number = 0; number < CarouselMounts::kMostMounts; ++number) {
        mount(1);
    }
    EXPECT_TRUE(answers.empty());
    mount(1);
    EXPECT_THAT(answers, testing::ElementsAre(Answered{1, Result::tooMuch, ""}));
    mount(2);
    EXPECT_EQ(answers.size(), 1U);
}

TEST_F(AMountedCarousel, FindsNothingOfAKilledService) {
    std::filesystem::create_directories(base + "/carousels/old/tree-1");
    std::filesystem::create_directories(base + "/kept/images");
    std::filesystem::create_directory_symlink(base + "/kept", base + "/carousels/link");
    folders->removeLeftOvers();
    EXPECT_TRUE(runsUntil([&] { return isNothingLeft(); }));
    EXPECT_TRUE(std::filesystem::exists(base + "/kept/images")) << "links are not followed";
}
