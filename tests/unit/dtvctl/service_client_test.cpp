// Tests of asking a service that is not one, or has gone.
#include "service_client.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <thread>

#include "run_directory.h"

using nlohmann::json;

namespace {

/// Answers one request with this line, then closes the connection.
class AService {
public:
    explicit AService(const std::string& line)
        : listener(path(), error), thread([this, line] {
              pollfd operators{listener.fd(), POLLIN, 0};
              poll(&operators, 1, -1);
              control::Connection connection = listener.accept(error);
              while (!connection.takeLine() && connection.fill()) {
              }
              if (!line.empty()) {
                  connection.sendLine(line, std::chrono::minutes(1));
              }
          }) {}
    ~AService() { thread.join(); }

    static std::string path() { return OwnRunDirectory::instance().path() + "/service.sock"; }

private:
    std::string error;
    control::Listener listener;
    std::thread thread;
};

/// What the client throws for this answer.
template <typename Error>
std::string thrownFor(const std::string& line) {
    const AService service(line);
    dtvctl::ServiceClient client(AService::path());
    try {
        client.ask({{"command", "status"}});
    } catch (const Error& error) {
        return error.what();
    }
    return "nothing";
}

}  // namespace

TEST(AServiceClient, GivesTheAnswer) {
    const AService service(R"({"ok":true,"layers":[1]})");
    EXPECT_EQ(dtvctl::ServiceClient(AService::path()).ask({{"command", "status"}})["layers"], json({1}));
}

TEST(AServiceClient, TakesAnAnswerOfSeveralMegabytes) {
    const std::string most(5000000, 'x');
    const AService service(R"({"ok":true,"text":")" + most + "\"}");
    EXPECT_EQ(dtvctl::ServiceClient(AService::path()).ask({{"command", "status"}})["text"], most);
}

TEST(AServiceClient, TellsARefusalFromAServiceThatIsNone) {
    EXPECT_EQ(thrownFor<dtvctl::Refused>(R"({"ok":false,"error":"no such layer"})"), "no such layer");
    EXPECT_EQ(thrownFor<dtvctl::Refused>(R"({"ok":false,"error":7})"), "refused");
    EXPECT_EQ(thrownFor<dtvctl::NoService>(""), "the service has gone");
    const std::string none = "what serves the socket does not answer as the service does";
    EXPECT_EQ(thrownFor<dtvctl::NoService>("hello"), none);
    EXPECT_EQ(thrownFor<dtvctl::NoService>(R"({"ok":1})"), none);
    EXPECT_EQ(thrownFor<dtvctl::NoService>("{\"ok\":true,\"x\":\"\xff\"}"), none);
    const std::string deep(100000, '[');
    EXPECT_EQ(thrownFor<dtvctl::NoService>(R"({"ok":true,"x":)" + deep + std::string(deep.size(), ']') + "}"), none);
    EXPECT_THROW(dtvctl::ServiceClient("/nonexistent/socket"), dtvctl::NoService);
}

TEST(AServiceClient, DoesNotWaitForEver) {
    std::string error;
    const control::Listener deaf(AService::path(), error);
    dtvctl::ServiceClient client(AService::path(), std::chrono::seconds(1));
    try {
        client.ask({{"command", "status"}});
        FAIL();
    } catch (const dtvctl::NoService& failure) {
        EXPECT_STREQ(failure.what(), "the service does not answer");
    }
}

TEST(AServiceClient, TrustsItsOwnUserAndRootOnly) {
    EXPECT_TRUE(dtvctl::mayServe(1000, 1000));
    EXPECT_TRUE(dtvctl::mayServe(0, 1000));
    EXPECT_FALSE(dtvctl::mayServe(1001, 1000));
    EXPECT_FALSE(dtvctl::mayServe(1000, 0)) << "not even root trusts another user";
    EXPECT_TRUE(dtvctl::mayServe(0, 0));
}

TEST(AServiceClient, KnowsTheUserOfTheService) {
    const AService service("");
    std::string error;
    EXPECT_EQ(control::Connection::connectTo(AService::path(), error).peerUser(), geteuid()) << error;
}
