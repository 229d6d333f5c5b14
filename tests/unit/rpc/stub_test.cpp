// The service's end of the interface: its events reach a proxy unchanged, and a proxy's commands reach its handler.
#include "browserdvbservice_stub.h"
#include "proxy_fixture.h"
#include "some_values.h"

using namespace lo::browserdvbservice;

namespace {

/// Records the names of received commands with the sender's address.
class RecordingHandler : public CommandHandler {
public:
    std::vector<std::string> commands;
    frame::MsgIds lastAsker;

#define COMMAND(identifier, operation, Message, fields)                                                      \
    int operation(frame::MsgIds& ids, const frame::TransportInfo& FIELDS_PARAMETER_TYPES(fields)) override { \
        commands.emplace_back(#operation);                                                                   \
        lastAsker = ids;                                                                                     \
        return 0;                                                                                            \
    }
#include "browserdvbservice_messages.inc"

    void browserConnected(const frame::TransportInfo&) override {}
    void browserDisconnected(const frame::TransportInfo&) override {}
};

}  // namespace

TEST_F(AProxy, MeetsItsServicesStubInEveryCommand) {
    RecordingHandler handler;
    ServiceStub stub(handler);
    stub.setLmqIOModule(recording::ioService());
    ServiceInterface& service = *proxy;
    std::vector<std::string> expected;
#define EXPECTED_COMMAND(operation, Message, decimal, hexadecimal, bytes, layout) \
    callWithSomeValues(service, &ServiceInterface::operation);                    \
    expected.emplace_back(#operation);
#include "expected_messages.inc"
    frame::TransportInfo transport;
    transport.peer = 12;
    for (const recording::SentMessage& message : recording::sent()) {
        ASSERT_TRUE(recording::inject(message.header, message.wire, nullptr, transport));
    }
    EXPECT_EQ(handler.commands, expected);
    EXPECT_EQ(handler.lastAsker.peer, 12U);
}

TEST_F(AProxy, MeetsItsServicesStubInEveryEvent) {
    RecordingHandler handler;
    ServiceStub stub(handler);
    stub.setLmqIOModule(recording::ioService());
    const boost::shared_ptr<RecordingClient> client = addedClient();
    ClientInterface& events = stub;
    std::vector<std::string> expected;
#define EXPECTED_EVENT(operation, Message, decimal, hexadecimal, bytes, layout) \
    callWithSomeValues(events, &ClientInterface::operation);                    \
    expected.emplace_back(#operation "(");
#include "expected_messages.inc"
    for (const recording::SentMessage& message : recording::sent()) {
        ASSERT_TRUE(recording::inject(message.header, message.wire));
    }
    const std::vector<std::string> heard = client->texts();
    ASSERT_EQ(heard.size(), expected.size());
    for (std::size_t index = 0; index < heard.size(); ++index) {
        EXPECT_EQ(heard[index].substr(0, expected[index].size()), expected[index]);
    }
}
