// Carousels that browsers mount: the messages, and the files in the run directory.
#include <filesystem>

#include "raw_browser.h"

namespace {

using Files = std::map<std::string, std::string>;

constexpr short kTag = 32;

Files filesBelow(const std::string& folder) {
    Files all;
    std::error_code failure;
    for (const auto& each : std::filesystem::recursive_directory_iterator(folder, failure)) {
        if (each.is_regular_file()) {
            all[each.path().string().substr(folder.size() + 1)] = fileText(each.path());
        }
    }
    return all;
}

const Files& files() {
    static const Files all = {{"index.html", "<html>"}, {"images/logo.png", std::string(20000, 'p')}, {"empty", ""}};
    return all;
}

tsmake::Multiplex withACarousel() {
    tsmake::Multiplex multiplex = kSample;
    tsmake::Carousel carousel;
    carousel.id = 2;
    carousel.isCompressed = false;
    carousel.tag = static_cast<std::uint8_t>(kTag);
    carousel.versions = {{0, "", files()}};
    multiplex.services[0].carousels = {carousel};
    std::string error;
    EXPECT_TRUE(tsmake::assignPids(multiplex, error)) << error;
    return multiplex;
}

const std::string kCarouselFolder = kRunDirectory + "/carousels";

/// The path of the only mounted carousel; empty if there is none.
std::string mountedThere() {
    std::error_code missing;
    const std::filesystem::directory_iterator first(kCarouselFolder, missing);
    return first == std::filesystem::directory_iterator() ? "" : first->path().string() + "/tree";
}

class AMountOfABrowser : public ARawBrowser {
protected:
    /// Presents the first service, asks for its carousel, and waits for the path.
    std::string mountedPath() {
        const std::string answer = "onDsmccMounted(5, 1, 1025, 28106, 32, 0, ";
        EXPECT_TRUE(presents(multiplex.services[0]));
        EXPECT_TRUE(mount(5, 28106, kTag));
        EXPECT_TRUE(eventually([&] { return isHeardToBegin(answer); })) << testing::PrintToString(client->texts());
        return mountedThere();
    }
    bool mount(unsigned int request, unsigned short sid, short tag) {
        return sends(&Commands::cmdMountDsmcc, request, static_cast<unsigned short>(1),
                     static_cast<unsigned short>(1025), sid, tag);
    }
    bool isHeardToBegin(const std::string& text) const {
        const std::vector<std::string> texts = client->texts();
        return std::any_of(texts.begin(), texts.end(),
                           [&text](const std::string& each) { return each.compare(0, text.size(), text) == 0; });
    }

    const tsmake::Multiplex multiplex = withACarousel();
    const std::string broadcast = writeBroadcast(multiplex, 3, "carousel.ts");
};

}  // namespace

TEST_F(AMountOfABrowser, HasEveryFileAndGoesWithTheService) {
    ServiceProcess process(broadcast);
    const std::string path = mountedPath();
    EXPECT_EQ(filesBelow(path), files());
    EXPECT_TRUE(heard("onDsmccMounted(5, 1, 1025, 28106, 32, 0, " + shownValue(path) + ")"));
    ASSERT_TRUE(mount(6, 28106, -1));
    EXPECT_TRUE(hears("onDsmccMounted(6, 1, 1025, 28106, -1, 0, " + shownValue(path) + ")")) << "the same one";
    EXPECT_EQ(process.end(SIGTERM), 0);
    EXPECT_TRUE(mountedThere().empty());
}

TEST_F(AMountOfABrowser, IsListedByTheStatus) {
    const ServiceProcess process(broadcast);
    const std::string path = mountedPath();
    EXPECT_THAT(operate({"--json", "status"}), testing::AllOf(testing::HasSubstr(R"("component_tag":32)"),
                                                              testing::HasSubstr("\"path\":\"" + path + "\"")));
    const std::string text = operate({"status"});
    EXPECT_THAT(text, testing::HasSubstr("carousels    1\n"));
    EXPECT_THAT(text, testing::HasSubstr(", version 1 in " + path + "\n"));
}

TEST_F(AMountOfABrowser, EndsWhenAnotherServiceIsPresented) {
    const ServiceProcess process(broadcast);
    EXPECT_EQ(filesBelow(mountedPath()), files());
    EXPECT_EQ(operate({"tune", "1:1025:28107"}), "");
    EXPECT_TRUE(eventually([&] { return mountedThere().empty(); }));
}

TEST_F(AMountOfABrowser, GoesWithAKilledServicesNextStart) {
    auto process = std::make_unique<ServiceProcess>(broadcast);
    const std::string path = mountedPath();
    process.reset();
    EXPECT_EQ(filesBelow(path), files()) << "the service was killed";
    const ServiceProcess next(broadcast);
    EXPECT_TRUE(eventually([&] { return mountedThere().empty(); }));
}

TEST_F(AMountOfABrowser, IsRefusedWithTheReason) {
    const ServiceProcess process(broadcast);
    mountedPath();
    ASSERT_TRUE(mount(7, 28107, kTag));
    EXPECT_TRUE(hears("onDsmccMounted(7, 1, 1025, 28107, 32, 1, 0:)")) << "it is not presented";
    ASSERT_TRUE(mount(8, 28106, 99));
    EXPECT_TRUE(hears("onDsmccMounted(8, 1, 1025, 28106, 99, 1, 0:)")) << "there is no such component";
    ASSERT_TRUE(mount(9, 28106, 1));
    EXPECT_TRUE(hears("onDsmccMounted(9, 1, 1025, 28106, 1, 2, 0:)")) << "it is no carousel";
}

TEST(AKilledBrowser, LeavesNoMount) {
    class Mounting : public AMountOfABrowser {
    public:
        void TestBody() override { mountedPath(); }
    };
    const ServiceProcess process(writeBroadcast(withACarousel(), 3, "carousel.ts"));
    const pid_t browser = fork();
    if (browser == 0) {
        Mounting mounting;
        mounting.TestBody();
        pause();
    }
    EXPECT_TRUE(eventually([&] { return filesBelow(mountedThere()) == files(); }));
    kill(browser, SIGKILL);
    EXPECT_EQ(waitpid(browser, nullptr, 0), browser);
    EXPECT_TRUE(eventually([&] { return mountedThere().empty(); }));
}
