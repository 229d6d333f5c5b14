// Every message of the catalogue, seen by the program dtvmon.
#include "watched_bus.h"

#include <fstream>

#include "bus/pcapng.h"

TEST_F(AWatchedBus, IsShownWithTheValuesOfEveryMessage) {
    const auto child = monitor({"--json"});
    const std::vector<Sent> all = sendsEveryMessage();
    const std::vector<json> seen = objectsOf(*child, all.size());
    ASSERT_EQ(seen.size(), all.size());
    for (std::size_t index = 0; index < all.size(); ++index) {
        json values = json::object();
        for (const message_fields::FieldValue& value : all[index].values) {
            message_fields::addTo(values, value);
        }
        EXPECT_EQ(seen[index]["operation"], all[index].operation);
        EXPECT_EQ(seen[index]["values"], values) << all[index].operation;
        EXPECT_EQ(seen[index]["record"], "message");
        EXPECT_EQ(seen[index]["browser"], 3);
        const bool isCommand = all[index].operation.rfind("cmd", 0) == 0;
        EXPECT_EQ(seen[index]["direction"], isCommand ? "to_service" : "to_browser");
        EXPECT_FALSE(seen[index].contains("problem"));
    }
    EXPECT_EQ(client.texts().size(), 32U) << "the browser gets every event";
    EXPECT_EQ(child->end(SIGTERM), 0);
}

TEST_F(AWatchedBus, ShowsAnEventThatDidNotLeave) {
    const auto child = monitor({"--json"});
    client.answer = -107;
    core.browsers.tell({3}, &dtvservice::Events::onAllTerminalStoped);
    const std::vector<json> seen = objectsOf(*child, 2);
    ASSERT_EQ(seen.size(), 2U);
    EXPECT_EQ(seen[1]["record"], "refused");
    EXPECT_EQ(seen[1]["operation"], "onAllTerminalStoped");
    EXPECT_EQ(seen[1]["result"], -107);
}

TEST_F(AWatchedBus, IsWrittenToAFileThatShowsTheSame) {
    const std::string file = OwnRunDirectory::instance().path() + "/bus.pcapng";
    const auto writer = monitor({"--write", file, "--only", "on*"});
    core.browsers.tell({3}, &dtvservice::Events::onHbbtvEngineStatusChanged, 4U);
    core.tap.section(3, "filter", "no section", false);
    core.browsers.tell({4}, &dtvservice::Events::onAllTerminalStoped);
    const auto read = [&file](std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), {"--read", file});
        ChildProcess reader(DTVMON, arguments, "reader");
        reader.wait();
        return reader.output();
    };
    const auto linesIn = [](const std::string& text) { return std::count(text.begin(), text.end(), '\n'); };
    ASSERT_TRUE(eventually([&] { return linesIn(read({})) == 2; })) << read({});
    EXPECT_THAT(read({"--browser", "3"}), testing::HasSubstr("onHbbtvEngineStatusChanged  engine_status 4"));
    EXPECT_EQ(linesIn(read({"--browser", "3"})), 1);
    EXPECT_THAT(read({"--statistics"}), testing::HasSubstr("onAllTerminalStoped"));
    EXPECT_EQ(writer->end(SIGINT), 0);
}

TEST_F(AWatchedBus, LosesNothingButTheCopyOfASlowMonitor) {
    std::string error;
    control::Connection slow = control::Connection::connectTo(socket, error);
    ASSERT_TRUE(slow.sendLine(R"({"command":"monitor"})", std::chrono::seconds(10)));
    ASSERT_TRUE(eventually([this] { return core.tap.isWatched(); }));
    const std::string section(4096, 'x');
    constexpr std::size_t kSections = 4000;
    for (std::size_t count = 0; count < kSections; ++count) {
        core.tap.section(1, "filter", section, true);
    }
    core.browsers.tell({3}, &dtvservice::Events::onAllTerminalStoped);
    EXPECT_EQ(client.texts().size(), 1U) << "the bus goes on";
    ASSERT_TRUE(slow.fill());
    while (!slow.takeLine()) {
        ASSERT_TRUE(slow.fill());
    }
    bus::PcapngReader reader;
    bus::Record record;
    std::string problem;
    std::size_t seen = 0;
    bool hasLost = false;
    while (seen < kSections + 1) {
        reader.add(slow.takeBytes());
        while (reader.take(record, problem)) {
            ASSERT_EQ(problem, "");
            hasLost = hasLost || record.kind == bus::Kind::lost;
            seen += record.kind == bus::Kind::lost ? record.count : 1;
        }
        ASSERT_TRUE(seen >= kSections + 1 || slow.fill());
    }
    EXPECT_EQ(seen, kSections + 1);
    EXPECT_TRUE(hasLost);
    core.browsers.tell({3}, &dtvservice::Events::onAllTerminalStoped);
    while (!reader.take(record, problem)) {
        ASSERT_TRUE(slow.fill());
        reader.add(slow.takeBytes());
    }
    EXPECT_EQ(record.kind, bus::Kind::message) << "it goes on behind what it has lost";
}

TEST_F(AWatchedBus, IsNotWatchedWhenItsMonitorsHaveGone) {
    auto child = monitor({});
    EXPECT_EQ(child->end(SIGKILL), -1);
    EXPECT_TRUE(eventually([this] { return !core.tap.isWatched(); }));
}

TEST_F(AWatchedBus, TakesNoMoreMonitorsThanItMay) {
    for (std::size_t count = 0; count < dtvservice::BusTap::kMostMonitors; ++count) {
        ASSERT_TRUE(core.tap.join());
    }
    ChildProcess refused(DTVMON, {}, "refused");
    EXPECT_EQ(refused.wait(), 1);
    EXPECT_EQ(refused.output(), "dtvmon: as many monitors watch as may\n");
}

namespace {

/// A record with what one of its kind has.
bus::Record recordOf(bus::Kind kind, bus::Side side, std::uint32_t message, const std::string& bytes) {
    bus::Record record;
    record.time = 1767225600123456789;
    record.kind = kind;
    record.side = side;
    record.browser = side == bus::Side::service ? 2 : 0;
    record.process = bytes.empty() ? 0 : 4711;
    record.program = bytes.empty() ? "" : "dvbshell";
    record.text = kind == bus::Kind::message ? "" : "text";
    switch (kind) {
        case bus::Kind::message:
            record.message = message;
            record.bytes = bytes;
            break;
        case bus::Kind::refused:
            record.message = message;
            record.result = message == 0 ? 0 : -107;
            break;
        case bus::Kind::sectionQueued:
        case bus::Kind::sectionDropped:
            record.bytes = bytes;
            break;
        case bus::Kind::lost:
            record.text = "";
            record.count = 3;
            break;
        default:
            break;
    }
    return record;
}

}  // namespace

TEST(TheMonitorsJson, FollowsTheSchemaForEveryKindOfRecord) {
    const std::string path = OwnRunDirectory::instance().path() + "/kinds.pcapng";
    std::ofstream file(path, std::ios::binary);
    file << bus::pcapngStart();
    const std::string section("\0\xB0\x0D\x04\x01\xC1\0\0\0\x01\xE1\0\0\0\0\0", 16);
    constexpr std::uint32_t kPtsRequest = 0x28671249;
    std::ptrdiff_t written = 0;
    for (const bus::Side side : {bus::Side::service, bus::Side::browser}) {
        for (unsigned int kind = 0; kind <= static_cast<unsigned int>(bus::kLastKind); ++kind) {
            for (const std::uint32_t message : {0U, kPtsRequest, 77U}) {
                for (const std::string& bytes : {std::string(), std::string("\0\0\0\x07", 4), section}) {
                    file << bus::pcapngBlock(recordOf(static_cast<bus::Kind>(kind), side, message, bytes));
                    ++written;
                }
            }
        }
    }
    file.close();
    for (const auto& [also, lines] : {std::pair("--bytes", written), std::pair("--statistics", std::ptrdiff_t{1})}) {
        ChildProcess reader(DTVMON, {"--json", also, "--read", path}, "reader");
        EXPECT_EQ(reader.wait(), 0) << "compares with the schema";
        const std::string output = reader.output();
        EXPECT_EQ(std::count(output.begin(), output.end(), '\n'), lines);
    }
}
