// Files out of the carousels of the presented service.
#include "carousel_files.h"

#include "fake_filters.h"
#include "made_carousels.h"
#include "made_tables.h"

using testing::ElementsAre;
using testing::IsEmpty;
using tvbrowser::CarouselAnswer;
using tvbrowser::CarouselFiles;
using tvbrowser::CarouselPlace;
using tvbrowser::SectionFilters;

namespace {

const si::Triplet kHere{1, 1025, 10};
const si::Triplet kElsewhere{1, 1025, 11};
constexpr std::uint16_t kPid = 500;
constexpr std::uint16_t kOtherPid = 501;
constexpr std::uint8_t kTag = 32;
constexpr std::uint8_t kOtherTag = 33;

class TheFiles : public testing::Test {
protected:
    TheFiles() {
        filters.onConnected();
        service = serviceWith({carouselOf({{{"a", "one a"}, {"dir/b", someBytes(1, 3000)}},
                                           {{"a", "two a"}, {"dir/b", someBytes(2, 3000)}, {"c", "two c"}}})});
    }
    static tsmake::Service serviceWith(const std::vector<tsmake::Carousel>& carousels) {
        tsmake::Service made;
        made.serviceId = kHere.sid;
        made.carousels = carousels;
        for (std::size_t index = 0; index < carousels.size(); ++index) {
            made.carousels[index].pid = static_cast<std::uint16_t>(kPid + index);
            made.carousels[index].tag = static_cast<std::uint8_t>(kTag + index);
        }
        return made;
    }
    void present() {
        files.setService(kHere);
        files.setPmt(pmtOf(tsmake::pmtSection(service)));
        tasks.run();
    }
    static CarouselPlace place(const std::string& path, std::optional<std::uint8_t> tag = kTag) {
        return {kHere.onid, kHere.tsid, kHere.sid, tag, path};
    }
    /// The answer becomes one of told().
    tvbrowser::QuestionNumber ask(const CarouselPlace& what) {
        const auto number = files.ask(what, [this, path = what.path](const CarouselAnswer& answer) {
            all.push_back(path + ": " + (answer.file ? bytesOf(*answer.file) : answer.error));
        });
        tasks.run();
        return number;
    }
    static std::string bytesOf(const si::CarouselObject& file) {
        return {reinterpret_cast<const char*>(file.content.data), file.content.size};
    }
    void send(const std::vector<Section>& sections, std::uint16_t pid = kPid) {
        for (const Section& section : sections) {
            interface.deliver(pid, section);
        }
        tasks.run();
    }
    /// With the control messages twice, because only then the gateway is of the same state as the lists.
    std::vector<Section> cycle(std::size_t version = 0, std::size_t carousel = 0) const {
        const tsmake::CarouselState state = tsmake::carouselStates(service.carousels[carousel]).at(version);
        std::vector<Section> sections = cycleOf(state);
        sections.insert(sections.begin(), state.control.begin(), state.control.end());
        return sections;
    }
    bool areOpen(std::size_t count) {
        return eventually([&] { return interface.openCount() == count; });
    }
    /// What has been told since the last call.
    std::vector<std::string> told() { return std::exchange(all, {}); }

    FakeFilters& interface = newFakeFilters();
    Tasks tasks;
    tsmake::Service service;
    std::vector<std::string> all;
    std::vector<std::string> logged;
    SectionFilters filters{interface, tasks.post()};
    CarouselFiles files{filters, tasks.post(), [this](const std::string& line) { logged.push_back(line); }};
};

}  // namespace

TEST_F(TheFiles, AreReadFromTheFirstQuestionOnUntilTheServiceIsLeft) {
    present();
    EXPECT_TRUE(areOpen(0));
    ask(place("a"));
    ASSERT_TRUE(areOpen(2));
    send(cycle());
    EXPECT_THAT(told(), ElementsAre("a: one a"));
    ask(place("/dir/b"));
    EXPECT_THAT(told(), ElementsAre("/dir/b: " + someBytes(1, 3000)));
    EXPECT_TRUE(areOpen(2));
    files.setService(kElsewhere);
    EXPECT_TRUE(areOpen(0));
}

TEST_F(TheFiles, MayBeReadBeforeTheyAreAskedFor) {
    files.readAhead();
    present();
    EXPECT_TRUE(areOpen(0)) << "no service was presented then";
    files.readAhead();
    ASSERT_TRUE(areOpen(2));
    send(cycle());
    files.readAhead();
    ask(place("a"));
    EXPECT_THAT(told(), ElementsAre("a: one a"));
}

TEST_F(TheFiles, ThatAreNotThereYetAreWaitedFor) {
    present();
    ask(place("dir/b"));
    ASSERT_TRUE(areOpen(2));
    const std::vector<Section> sections = cycle();
    send({sections.begin(), sections.end() - 1});
    EXPECT_THAT(told(), IsEmpty());
    send({sections.back()});
    EXPECT_THAT(told(), ElementsAre("dir/b: " + someBytes(1, 3000)));
}

TEST_F(TheFiles, ThatNoDirectoryNamesFailAsSoonAsThatIsKnown) {
    present();
    ask(place("none"));
    ask(place("dir/none"));
    ASSERT_TRUE(areOpen(2));
    EXPECT_THAT(told(), IsEmpty());
    send(cycle());
    EXPECT_THAT(told(), ElementsAre("none: the carousel has no such file", "dir/none: the carousel has no such file"));
    ask(place("a/none"));
    EXPECT_THAT(told(), ElementsAre("a/none: the carousel has no such file"));
}

TEST_F(TheFiles, AreNoDirectories) {
    present();
    ask(place("dir"));
    ask(place(""));
    ASSERT_TRUE(areOpen(2));
    send(cycle());
    EXPECT_THAT(told(), ElementsAre("dir: it is a directory, not a file", ": it is a directory, not a file"));
}

TEST_F(TheFiles, OfAVersionComeTogether) {
    present();
    ask(place("a"));
    ASSERT_TRUE(areOpen(2));
    send(cycle());
    send(cycle());
    told();
    const std::vector<Section> sections = cycle(1);
    for (std::size_t half : {sections.size() / 2, sections.size() - 1}) {
        send({sections.begin(), sections.begin() + static_cast<std::ptrdiff_t>(half)});
        ask(place("a"));
        ask(place("dir/b"));
        ask(place("c"));
        EXPECT_THAT(told(),
                    ElementsAre("a: one a", "dir/b: " + someBytes(1, 3000), "c: the carousel has no such file"));
    }
    send(sections);
    send(sections);
    ask(place("a"));
    ask(place("dir/b"));
    ask(place("c"));
    EXPECT_THAT(told(), ElementsAre("a: two a", "dir/b: " + someBytes(2, 3000), "c: two c"));
}

TEST_F(TheFiles, StayWhenTheirVersionIsReplaced) {
    present();
    std::shared_ptr<const si::CarouselObject> kept;
    files.ask(place("dir/b"), [&kept](const CarouselAnswer& answer) { kept = answer.file; });
    tasks.run();
    ASSERT_TRUE(areOpen(2));
    send(cycle());
    files.setService(kElsewhere);
    tasks.run();
    ASSERT_TRUE(kept);
    EXPECT_EQ(bytesOf(*kept), someBytes(1, 3000));
}

TEST_F(TheFiles, AreOfTheCarouselThatIsMeant) {
    service = serviceWith({carouselOf({{{"a", "first"}}}), carouselOf({{{"a", "second"}, {"b", "only here"}}})});
    service.carousels[1].id = 8;
    present();
    ask(place("a", kOtherTag));
    ask(place("b", std::nullopt));
    ask(place("b", kTag));
    ASSERT_TRUE(areOpen(4));
    send(cycle());
    EXPECT_THAT(told(), ElementsAre("b: the carousel has no such file"));
    send(cycle(0, 1), kOtherPid);
    EXPECT_THAT(told(), ElementsAre("a: second", "b: only here"));
}

TEST_F(TheFiles, OfNoCarouselOrAnotherServiceFailAtOnce) {
    present();
    ask(place("a", 77));
    CarouselPlace other = place("a");
    other.sid = kElsewhere.sid;
    ask(other);
    EXPECT_THAT(told(), ElementsAre("a: the service has no such carousel", "a: its service is not presented"));
}

TEST_F(TheFiles, MayBeAskedForBeforeTheirServiceIsThere) {
    ask(place("a"));
    files.setService(kHere);
    tasks.run();
    EXPECT_THAT(told(), IsEmpty());
    present();
    ASSERT_TRUE(areOpen(2));
    send(cycle());
    EXPECT_THAT(told(), ElementsAre("a: one a"));
}

TEST_F(TheFiles, FailWhenTheirServiceOrTheirCarouselEnds) {
    present();
    ask(place("a"));
    files.setService(kElsewhere);
    tasks.run();
    EXPECT_THAT(told(), ElementsAre("a: its service is not presented"));
    present();
    ask(place("a"));
    service.carousels.clear();
    files.setPmt(pmtOf(tsmake::pmtSection(service)));
    tasks.run();
    EXPECT_THAT(told(), ElementsAre("a: the service has no such carousel"));
}

TEST_F(TheFiles, GoOnWhenTheSameServiceIsPresentedAgain) {
    present();
    ask(place("a"));
    present();
    ASSERT_TRUE(areOpen(2));
    EXPECT_TRUE(eventually([this] {
        send(cycle());
        return !all.empty();
    }));
    EXPECT_THAT(told(), ElementsAre("a: one a"));
}

TEST_F(TheFiles, AreReadAnewWhenTheBroadcastBeginsAnew) {
    present();
    ask(place("a"));
    ASSERT_TRUE(areOpen(2));
    send(cycle());
    EXPECT_THAT(told(), ElementsAre("a: one a"));
    files.startAgain();
    ask(place("a"));
    EXPECT_THAT(told(), IsEmpty());
    service = serviceWith({carouselOf({{{"a", "other"}, {"dir/b", someBytes(1, 3000)}}})});
    EXPECT_TRUE(eventually([this] {
        send(cycle());
        return !all.empty();
    }));
    EXPECT_THAT(told(), ElementsAre("a: other"));
}

TEST_F(TheFiles, AreNotToldWhenTheQuestionIsCancelled) {
    present();
    const auto first = ask(place("a"));
    ask(place("a"));
    files.cancel(first);
    ASSERT_TRUE(areOpen(2));
    send(cycle());
    EXPECT_THAT(told(), ElementsAre("a: one a"));
}

TEST_F(TheFiles, AreWaitedForInALimitedNumber) {
    present();
    for (std::size_t number = 0; number < CarouselFiles::kMostWaiting; ++number) {
        ask(place("a"));
    }
    EXPECT_THAT(told(), IsEmpty());
    ask(place("dir/b"));
    EXPECT_THAT(told(), ElementsAre("dir/b: too many files are waited for"));
}

TEST_F(TheFiles, MayBeOnAStreamOfAnotherServiceOfTheMultiplex) {
    constexpr std::uint16_t kPmtPid = 101;
    constexpr std::uint16_t kBlockPid = 502;
    service.carousels[0].blockTag = kOtherTag;
    service.carousels[0].blockPid = kBlockPid;
    // The PMT of this service has only the stream with the lists, and a descriptor that leads to the other's for its
    // tag.
    tsmake::SectionWriter writer(0x02, kHere.sid, 0);
    writer.u16(0xFFFF).open12();
    writer.openDescriptor(0x15)
        .u8(2)
        .u16(kOtherTag)
        .u16(kHere.tsid)
        .u16(kElsewhere.sid)
        .u16(kHere.onid)
        .close()
        .close();
    writer.u8(0x0B).u16(0xE000U | kPid).open12().openDescriptor(0x52).u8(kTag).close().close();
    tsmake::SectionWriter other(0x02, kElsewhere.sid, 0);
    other.u16(0xFFFF).open12().close();
    other.u8(0x0B).u16(0xE000U | kBlockPid).open12().openDescriptor(0x52).u8(kOtherTag).close().close();
    tsmake::SectionWriter pat(0x00, kHere.tsid, 0);
    pat.u16(kElsewhere.sid).u16(0xE000U | kPmtPid);
    files.setService(kHere);
    files.setPmt(pmtOf(writer.finish()));
    ask(place("a"));
    ASSERT_TRUE(areOpen(2));
    const tsmake::CarouselState state = tsmake::carouselStates(service.carousels[0]).at(0);
    send(state.control);
    send(state.control);
    ASSERT_TRUE(areOpen(3)) << "the PAT";
    send({pat.finish()}, 0);
    ASSERT_TRUE(eventually([&] {
        send({other.finish()}, kPmtPid);
        return interface.openCount() == 4;
    })) << "the blocks, in place of the other PMT";
    ASSERT_TRUE(eventually([&] {
        for (const tsmake::biop::Module& module : state.modules) {
            send(blocksOf(state, module), kBlockPid);
        }
        return !all.empty();
    }));
    EXPECT_THAT(told(), ElementsAre("a: one a"));
}

TEST_F(TheFiles, OfABrokenCarouselAreToldInTheLog) {
    present();
    ask(place("a"));
    ASSERT_TRUE(areOpen(2));
    std::vector<Section> sections = cycle();
    send({sections.begin(), sections.begin() + 2});
    EXPECT_THAT(logged, IsEmpty());
    Section wrong = sections.back();
    wrong.back() ^= 1U;
    send({wrong});
    EXPECT_THAT(logged, IsEmpty()) << "a section with a wrong CRC_32 is no section";
}
