// AWatchedBus: the service's core in the test's own process, so that it sends and takes also what no broadcast causes,
// and dtvmon, which watches it.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "core.h"
#include "distinct_values.h"
#include "json_value.h"
#include "message_layout.h"
#include "operator_server.h"
#include "recording_client.h"
#include "service_process.h"

class AWatchedBus : public testing::Test {
protected:
    using json = nlohmann::json;
    /// A message with its values.
    struct Sent {
        std::string operation;
        std::vector<message_fields::FieldValue> values;
    };

    AWatchedBus() {
        EXPECT_EQ(operators.error(), "");
        core.browsers.connect(client);
    }
    ~AWatchedBus() override { loop.stop(); }

    /// Starts dtvmon and waits until it watches.
    std::unique_ptr<ChildProcess> monitor(std::vector<std::string> arguments) {
        auto child = std::make_unique<ChildProcess>(DTVMON, std::move(arguments), "dtvmon");
        EXPECT_TRUE(eventually([this] { return core.tap.isWatched(); })) << child->output();
        return child;
    }
    /// The objects that it prints, when it has printed as many.
    static std::vector<json> objectsOf(const ChildProcess& child, std::size_t count) {
        std::vector<json> objects;
        EXPECT_TRUE(eventually([&] {
            objects.clear();
            std::istringstream lines(child.output());
            for (std::string line; std::getline(lines, line) && !lines.eof();) {
                objects.push_back(json::parse(line, nullptr, false));
            }
            return objects.size() >= count;
        })) << child.output();
        return objects;
    }
    /// Sends every command and every event once, and returns what was sent.
    std::vector<Sent> sendsEveryMessage();

    const std::string socket = OwnRunDirectory::instance().path() + "/dtvctl.sock";
    RecordingClient client;
    dtvservice::EventLoop loop;
    dtvservice::Core core{loop};
    dtvservice::OperatorServer operators{socket, loop, core.tap,
                                         [this](const std::string& line) { return core.requests.begin(line); }};
};

inline std::vector<AWatchedBus::Sent> AWatchedBus::sendsEveryMessage() {
    std::vector<Sent> all;
    frame::MsgIds ids;
    ids.peer = 3;
    const auto note = [&all](std::uint32_t identifier, const char* operation, const DistinctValues& distinct) {
        all.push_back({operation, {}});
        std::size_t index = 0;
        for (const message_fields::Place& place : message_fields::layoutOf(*message_fields::findMessage(identifier))) {
            all.back().values.push_back({place.field, distinct.noted.at(index++)});
        }
    };
#define COMMAND(identifier, operation, Message, fields)                                                               \
    {                                                                                                                 \
        DistinctValues distinct;                                                                                      \
        distinct.call<lo::browserdvbservice::CommandHandler>(core.commands,                                           \
                                                             &lo::browserdvbservice::CommandHandler::operation, ids); \
        note(identifier, #operation, distinct);                                                                       \
    }
#define EVENT(identifier, operation, Message, decoder, fields)                                                     \
    {                                                                                                              \
        DistinctValues distinct;                                                                                   \
        std::apply(                                                                                                \
            [this](const auto&... values) { core.browsers.tell({3}, &dtvservice::Events::operation, values...); }, \
            distinct.valuesFor(&dtvservice::Events::operation));                                                   \
        note(identifier, #operation, distinct);                                                                    \
    }
#include "browserdvbservice_messages.inc"
    return all;
}
