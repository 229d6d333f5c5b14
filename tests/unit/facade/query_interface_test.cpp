// The entry point and the singleton.
#include <future>
#include <set>
#include <thread>

#include "alone.h"
#include "browser_AIT_catcher.h"
#include "dvbaitsection_apis.h"
#include "facade_fixture.h"
#include "section_filter_api.h"
#include "singleton.h"

using velmora::dtv::IDTVUnknown;

namespace {

constexpr const char* kFile = "interface_factory.cpp";

IDTVUnknown* untouched() {
    return reinterpret_cast<IDTVUnknown*>(std::intptr_t{0x5A5A});
}

auto creating(const std::string& name) {
    return logged::tagged(0x5F0FA0, "B-LOG", kFile, "DTVAPI_QueryInterface", "Creating interface : " + name + "\n");
}

/// A singleton class whose constructor always throws.
struct Fragile {
    Fragile() { throw std::runtime_error("not yet"); }
};

/// A singleton class whose construction lasts until the test ends it.
struct Slow {
    Slow() {
        ++constructions;
        if (constructions == 1) {
            begun.set_value();
            finish.wait();
        }
    }
    static std::atomic<int> constructions;
    static std::promise<void> begun;
    static std::future<void> finish;
};
std::atomic<int> Slow::constructions{0};
std::promise<void> Slow::begun;
std::future<void> Slow::finish;

/// A singleton class that reports its destruction.
struct Mourned {
    ~Mourned() { std::fputs("destroyed\n", stderr); }
};

/// A singleton class that counts its constructions and waits in them until all threads are there.
struct Counted {
    Counted() {
        ++constructions;
        while (waiting < 4) {
            std::this_thread::yield();
        }
    }
    static std::atomic<int> constructions;
    static std::atomic<int> waiting;
};
std::atomic<int> Counted::constructions{0};
std::atomic<int> Counted::waiting{0};

}  // namespace

TEST(TheEntryPoint, HandsOutEachInterfaceUnderItsOwnName) {
    for (const char* const name : {"DvbAPIInterface", "SectionFilterAPI", "DvbAITAPI"}) {
        recording::reset();
        IDTVUnknown* found = nullptr;
        EXPECT_EQ(DTVAPI_QueryInterface(name, &found), 0);
        ASSERT_NE(found, nullptr);
        EXPECT_EQ(found->name(), name);
        EXPECT_THAT(recording::log().front(), creating(name));
        EXPECT_TRUE(recording::sent().empty()) << "the DTV service is not needed for it";
        recording::reset();
        IDTVUnknown* again = nullptr;
        EXPECT_EQ(DTVAPI_QueryInterface(name, &again), 0);
        EXPECT_EQ(again, found);
        EXPECT_THAT(recording::log(), testing::ElementsAre(creating(name))) << "and no other line";
        EXPECT_TRUE(recording::sent().empty());
    }
}

TEST(TheEntryPoint, RefusesUnknownNames) {
    for (const char* const name :
         {"sectionfilterapi", "DvbAITSectionAPI", "DVBSectionInterface", "", "DvbAPIInterface ", "DvbAPIInterfac",
          "DvbAPIInterfaceX", "DvbAPI", "DVBAPIINTERFACE", " DvbAPIInterface", "SectionFilterAPI2", "SectionFilterAP",
          "SectionFilter", "DvbAITAPIX", "DvbAITAP", "dvbaitapi", "DvbAIT"}) {
        recording::reset();
        IDTVUnknown* found = untouched();
        EXPECT_EQ(DTVAPI_QueryInterface(name, &found), -1);
        EXPECT_EQ(found, untouched());
        EXPECT_THAT(recording::log(),
                    testing::ElementsAre(creating(name),
                                         logged::tagged(0x5F0BB8, "B-LOG", kFile, "DTVAPI_QueryInterface",
                                                        "Interface Not Supported: " + std::string(name) + "\n")));
    }
}

TEST(TheEntryPoint, ThrowsForANullName) {
    IDTVUnknown* found = untouched();
    try {
        DTVAPI_QueryInterface(nullptr, &found);
        FAIL() << "nothing thrown";
    } catch (const std::logic_error& error) {
        EXPECT_STREQ(error.what(), "basic_string::_M_construct null not valid");
    }
    EXPECT_EQ(found, untouched());
}

TEST(TheEntryPoint, GivesObjectsThatReferenceCountingDoesNotTouch) {
    IDTVUnknown* found = nullptr;
    ASSERT_EQ(DTVAPI_QueryInterface("DvbAPIInterface", &found), 0);
    for (int count = 0; count < 5; ++count) {
        found->Release();
    }
    found->AddRef();
    EXPECT_EQ(found->name(), "DvbAPIInterface");
}

TEST(TheEntryPoint, LogsTheFacadesCreation) {
    if (velmora::base::Singleton<velmora::dvbservice::BrowserDvbAPI>::instance_ != 0) {
        GTEST_SKIP() << "another test of this process has made it";
    }
    recording::reset();
    IDTVUnknown* found = nullptr;
    ASSERT_EQ(DTVAPI_QueryInterface("DvbAPIInterface", &found), 0);
    const std::vector<recording::LogLine> lines = recording::log();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_THAT(lines[1], logged::tagged(0x5F0FA0, "B-LOG", "browser_dvb_apis.cpp", "BrowserDvbAPI", "called.\n"));
}

TEST(ASingleton, KeepsItsAddressInItsInstanceWord) {
    using velmora::dvbservice::SectionFilterAPI;
    SectionFilterAPI* const instance = SectionFilterAPI::getInstance();
    EXPECT_EQ(SectionFilterAPI::GetInstance(), instance);
    EXPECT_EQ(velmora::base::Singleton<SectionFilterAPI>::instance_, reinterpret_cast<std::intptr_t>(instance));
}

TEST(ASingleton, IsTheSharedCatcher) {
    using velmora::dvbservice::BrowserAITCatcher;
    EXPECT_EQ(BrowserAITCatcher::getInstance(), BrowserAITCatcher::GetInstance());
}

TEST(ASingleton, IsPublishedOnlyWhenItIsWhole) {
    using Scheme = velmora::base::Singleton<Slow>;
    std::promise<void> finish;
    Slow::finish = finish.get_future();
    std::future<Slow*> creator = std::async(std::launch::async, [] { return Scheme::get(); });
    Slow::begun.get_future().wait();
    EXPECT_EQ(__atomic_load_n(&Scheme::instance_, __ATOMIC_SEQ_CST), 1) << "being created";
    std::future<Slow*> second = std::async(std::launch::async, [] { return Scheme::get(); });
    EXPECT_EQ(second.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout) << "nothing to give yet";
    finish.set_value();
    EXPECT_EQ(second.get(), creator.get());
    EXPECT_EQ(Slow::constructions, 1);
}

TEST(ASingleton, IsNotDestroyedWhenTheProcessEnds) {
    if (!isAlone()) {
        GTEST_SKIP() << "the process that ends has the threads of other tests";
    }
    EXPECT_EXIT(
        {
            velmora::base::Singleton<Mourned>::get();
            std::exit(0);
        },
        testing::ExitedWithCode(0), testing::Not(testing::HasSubstr("destroyed")));
}

TEST(ASingleton, IsLeftBeingCreatedByAConstructorThatThrows) {
    using Scheme = velmora::base::Singleton<Fragile>;
    EXPECT_EQ(Scheme::instance_, 0);
    EXPECT_THROW(Scheme::get(), std::runtime_error);
    EXPECT_EQ(Scheme::instance_, 1);
    Scheme::instance_ = 0;
}

TEST(ASingleton, IsConstructedOnceWhenThreadsRace) {
    std::vector<std::future<Counted*>> racers;
    for (int count = 0; count < 4; ++count) {
        racers.push_back(std::async(std::launch::async, [] {
            ++Counted::waiting;
            return velmora::base::Singleton<Counted>::get();
        }));
    }
    std::set<Counted*> found;
    for (std::future<Counted*>& racer : racers) {
        found.insert(racer.get());
    }
    EXPECT_EQ(found.size(), 1U);
    EXPECT_EQ(Counted::constructions, 1);
}

TEST(TheServiceObject, IsCreatedOnceWhenThreadsRace) {
    using velmora::dvbservice::BrowserDVBService;
    recording::reset();
    std::atomic<int> ready{0};
    std::vector<std::future<BrowserDVBService*>> racers;
    for (int count = 0; count < 2; ++count) {
        racers.push_back(std::async(std::launch::async, [&ready] {
            ++ready;
            while (ready < 2) {
                std::this_thread::yield();
            }
            return BrowserDVBService::getInstance();
        }));
    }
    BrowserDVBService* const first = racers[0].get();
    EXPECT_EQ(racers[1].get(), first);
    EXPECT_EQ(BrowserDVBService::getInstance(), first);
    // When this test runs in its own process, it sees the creation; after another test it sees none.
    std::size_t creations = 0;
    for (const recording::LogLine& line : recording::log()) {
        creations += line.message.rfind("Creating BrowserDVBService", 0) == 0 ? 1 : 0;
    }
    EXPECT_LE(creations, 1U);
    EXPECT_EQ(recording::logOf("start").size(), 3 * creations);
    ASSERT_EQ(recording::sent().size(), creations);
    if (creations == 1) {
        EXPECT_EQ(recording::sent()[0].header.messageId, 0x28671246U);
    }
}
