// Real processes that exit while threads are inside the library: every process exits without a crash, and destroys the
// objects only if no thread is inside.
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <future>
#include <thread>

#include "browser_AIT_catcher.h"
#include "browser_dvb_apis.h"
#include "browser_dvb_service.h"
#include "dvbaitsection_apis.h"
#include "eventually.h"
#include "logged.h"
#include "section_filter_api.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using velmora::dvbservice::BrowserAITCatcher;
using velmora::dvbservice::BrowserDvbAPI;
using velmora::dvbservice::BrowserDVBService;
using velmora::dvbservice::DvbAITSectionAPI;
using velmora::dvbservice::SectionFilterAPI;

constexpr int kEnded = 3;
constexpr int kScenarioFailed = 4;

/// How a process ended, and what it had logged.
struct End {
    bool inTime = false;
    int status = 0;
    std::vector<std::string> lines;  // only lines about creation, destruction, waits and the null service

    bool isClean() const { return inTime && WIFEXITED(status) && WEXITSTATUS(status) == kEnded; }
    std::size_t count(const std::string& part) const {
        return static_cast<std::size_t>(std::count_if(lines.begin(), lines.end(), [&part](const std::string& line) {
            return line.find(part) != std::string::npos;
        }));
    }
};

int reportTo = -1;
std::function<void()> afterwards;

/// Registered before the library creates any object, so it runs after all objects have been destroyed.
void lastHandler() {
    if (afterwards) {
        afterwards();
    }
    for (const recording::LogLine& line : recording::log()) {
        for (const char* const wanted : {"Destroy ", "Wait response timeout", "Null Service"}) {
            if (line.message.find(wanted) != std::string::npos) {
                const std::string text = line.function + ": " + line.message;
                [[maybe_unused]] const ssize_t written = write(reportTo, text.data(), text.size());
            }
        }
    }
}

[[noreturn]] void runScenario(int report, const std::function<void()>& scenario) {
    reportTo = report;
    recording::reset();
    std::atexit(&lastHandler);
    scenario();
    std::exit(kEnded);
}

/// Runs a scenario in a separate process, which then exits. `last` runs in it after the library's objects were
/// destroyed.
End endOf(const std::function<void()>& scenario, std::function<void()> last = {}) {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    afterwards = std::move(last);
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        runScenario(ends[1], scenario);
    }
    close(ends[1]);
    End end;
    end.inTime = eventually([&] { return waitpid(child, &end.status, WNOHANG) == child; });
    if (!end.inTime) {
        kill(child, SIGKILL);
        waitpid(child, &end.status, 0);
    }
    std::string text;
    char piece[4096];
    for (ssize_t length = 0; (length = read(ends[0], piece, sizeof piece)) > 0;) {
        text.append(piece, static_cast<std::size_t>(length));
    }
    close(ends[0]);
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        end.lines.push_back(line);
    }
    return end;
}

void require(bool condition) {
    if (!condition) {
        _exit(kScenarioFailed);
    }
}

/// A thread that continues while and after the exit handlers run.
template <typename Function>
void detached(Function function) {
    std::thread(function).detach();
}

/// Confirms each request to open a filter at once, and requests to close one only if `closes`.
void answerFilters(bool closes) {
    recording::setSendAction([closes](const recording::SentMessage& message) {
        frame::MsgIds ids;
        if (message.header.messageId == 0x28671243) {
            const unsigned int pid = static_cast<unsigned int>(message.wire[10]) << 8U | message.wire[11];
            BrowserDVBService::getInstance()->onBrowserOpenFilterConf(ids, {}, pid, "s", 0);
        } else if (closes && message.header.messageId == 0x28671244) {
            BrowserDVBService::getInstance()->onBrowserOCloseFilterConf(ids, {}, "s", 0);
        }
        return 0;
    });
}

bool waitForSentMessage(std::uint32_t identifier) {
    return eventually([identifier] {
        const std::vector<recording::SentMessage> sent = recording::sent();
        return std::any_of(sent.begin(), sent.end(), [identifier](const recording::SentMessage& message) {
            return message.header.messageId == identifier;
        });
    });
}

/// Runs a reaction on the first section that it receives. The process exits while threads use it, so it is never
/// destroyed.
class ReactingSectionClient final : public velmora::dtv::SectionFilterClient {
public:
    explicit ReactingSectionClient(std::function<void()> newReaction) : reaction(std::move(newReaction)) {}
    std::promise<void> entered;
    void onSectionData(const std::string&, unsigned int, const unsigned char*, unsigned int) override {
        entered.set_value();
        reaction();
    }

private:
    std::function<void()> reaction;
};

/// Opens a filter and delivers a section, so that the client is inside its first call.
void deliverTo(ReactingSectionClient& client) {
    answerFilters(true);
    require(SectionFilterAPI::getInstance()->startSection(&client, "s", 0x111, nullptr, nullptr, 0));
    require(recording::writeSection(recording::queueNames().at(0), "s", {1, 2, 3}));
    client.entered.get_future().wait();
}

class BlockingAitClient final : public velmora::dtv::AITSectionClient {
public:
    std::promise<void> entered;
    std::promise<void> mayLeave;
    std::atomic<int> calls{0};
    void onCurrentChannelAIT(std::uint16_t, std::uint16_t, std::uint16_t, const std::vector<std::uint8_t>&) override {
        if (calls++ == 0) {
            entered.set_value();
            mayLeave.get_future().wait();
        }
    }
};

std::string aitSection(char version) {
    return std::string("\x74\xB0\x0D\x00\x10", 5) + version + std::string(10, '\0');
}

}  // namespace

TEST(AProcess, DestroysTheServiceObjectWhenItExits) {
    const End end = endOf([] { BrowserDvbAPI::getInstance()->notifyMwhbStart(); });
    EXPECT_TRUE(end.isClean());
    EXPECT_THAT(end.lines, ElementsAre(testing::HasSubstr("~BrowserDVBService: Destroy BrowserDVBService(")));
}

TEST(AProcess, ExitsWhileAThreadWaitsForTheAudioSource) {
    const End end = endOf([] {
        detached([] { BrowserDvbAPI::getInstance()->setAudioSource("a"); });
        require(waitForSentMessage(0x2867123A));
    });
    EXPECT_TRUE(end.isClean());
    EXPECT_THAT(end.lines, IsEmpty()) << "the object stays";
}

TEST(AProcess, ExitsWhileAThreadOpensAFilter) {
    const End end = endOf([] {
        detached([] { SectionFilterAPI::getInstance()->startSection(nullptr, "s", 1, nullptr, nullptr, 0); });
        require(waitForSentMessage(0x28671243));
    });
    EXPECT_TRUE(end.isClean());
    EXPECT_THAT(end.lines, IsEmpty()) << "the object stays, and the exit does not last as long as the wait";
}

TEST(AProcess, ExitsWhileAThreadClosesAFilter) {
    const End end = endOf([] {
        answerFilters(false);
        require(SectionFilterAPI::getInstance()->startSection(nullptr, "s", 1, nullptr, nullptr, 0));
        detached([] { SectionFilterAPI::getInstance()->stopSection(nullptr, "s"); });
        require(waitForSentMessage(0x28671244));
    });
    EXPECT_TRUE(end.isClean());
    EXPECT_THAT(end.lines, IsEmpty());
}

TEST(AProcess, ExitsWhileAClientSendsFromInsideItsSection) {
    const End end = endOf([] {
        static auto& client = *new ReactingSectionClient([] {
            // Until the proxy has gone, commands are still sent.
            require(eventually([] { return BrowserDvbAPI::getInstance()->sendPtsRequest(7) == -1; }));
            BrowserDvbAPI::getInstance()->tuneToService(0, 1, 2, 3, 0);
        });
        deliverTo(client);
    });
    EXPECT_TRUE(end.isClean());
    EXPECT_EQ(end.count("cmdTuneToService: Null Service Interface!!!"), 1U);
    EXPECT_EQ(end.count("cmdSendPtsRequest: Null Service Interface!!!"), 1U);
}

TEST(AProcess, ExitsWhileAClientBlocks) {
    const End end = endOf([] {
        static auto& client = *new ReactingSectionClient([] {
            while (true) {
                pause();
            }
        });
        deliverTo(client);
    });
    EXPECT_TRUE(end.isClean());
    EXPECT_EQ(end.count("Destroy "), 0U);
}

TEST(AProcess, ExitsFromInsideASection) {
    const End end = endOf([] {
        static auto& client = *new ReactingSectionClient([] { std::exit(kEnded); });
        deliverTo(client);
        while (true) {
            pause();
        }
    });
    EXPECT_TRUE(end.isClean());
    EXPECT_EQ(end.count("Destroy "), 0U);
}

TEST(AProcess, ExitsWhileAListenerHandsOverAnAit) {
    static auto& client = *new BlockingAitClient;
    static std::promise<void> done;
    const End end = endOf(
        [] {
            BrowserAITCatcher* const catcher = BrowserAITCatcher::getInstance();
            catcher->updateCurrentChannelInfo(0, 1, 2, 3);
            DvbAITSectionAPI::getInstance()->registerClient(&client);
            detached([catcher] {
                catcher->updateAIT(aitSection('\x03'));
                catcher->updateCurrentChannelInfo(0, 1, 2, 4);
                catcher->updateAIT(aitSection('\x05'));
                done.set_value();
            });
            client.entered.get_future().wait();
        },
        // The catcher was not destroyed, because this thread is inside it.
        [] {
            client.mayLeave.set_value();
            done.get_future().wait();
            if (client.calls != 2) {
                _exit(kScenarioFailed);
            }
        });
    EXPECT_TRUE(end.isClean());
}

TEST(AProcess, RefusesCallsAfterItsObjectsEnd) {
    static BrowserAITCatcher* catcher = nullptr;
    const End end = endOf(
        [] {
            BrowserDvbAPI::getInstance()->notifyMwhbStart();
            catcher = BrowserAITCatcher::getInstance();
        },
        [] {
            require(BrowserDvbAPI::getInstance()->sendPtsRequest(1) == -1);
            require(BrowserDvbAPI::getInstance()->getCurrentCCID().empty());
            BrowserDvbAPI::getInstance()->triggerAitRestart();
            require(!SectionFilterAPI::getInstance()->startSection(nullptr, "s", 1, nullptr, nullptr, 0));
            require(BrowserAITCatcher::getInstance() == catcher);
            require(catcher->updateCurrentChannelInfo(0, 1, 2, 3) == -1);
            require(catcher->updateAIT(aitSection('\x03')) == -1);
            require(catcher->getCurrentChannelAIT(1, 2, 3) == 0);
        });
    EXPECT_TRUE(end.isClean());
    EXPECT_EQ(end.count("Destroy "), 1U);
}

TEST(AProcess, ExitsWhileThreadsCallWithoutAPause) {
    const End end = endOf([] {
        static std::atomic<int> rounds{0};
        recording::setLogThreshold(0);
        for (int thread = 0; thread < 3; ++thread) {
            detached([] {
                while (true) {
                    BrowserDvbAPI::getInstance()->sendPtsRequest(1);
                    BrowserDvbAPI::getInstance()->getCurrentCCID();
                    BrowserAITCatcher::getInstance()->updateCurrentChannelInfo(0, 1, 2, 3);
                    ++rounds;
                }
            });
        }
        require(eventually([] { return rounds > 30; }));
    });
    EXPECT_TRUE(end.isClean());
}
