// The page for people: watching and using the television in any browser.
#include <sys/socket.h>

#include <arpa/inet.h>

#include "tv_browser.h"

namespace browser_tests {

namespace {

class ThePageForPeople : public ATvBrowser {
protected:
    void startWithPage(const tsmake::Multiplex& broadcast) {
        start(broadcast, {"--http", "0"});
        ASSERT_TRUE(says("page for people: http://127.0.0.1:"));
        const std::string output = browser->output();
        const std::size_t at = output.find("http://127.0.0.1:");
        port = static_cast<std::uint16_t>(std::stoi(output.substr(at + std::string("http://127.0.0.1:").size())));
    }
    std::string url() const { return "http://127.0.0.1:" + std::to_string(port) + "/"; }

    /// Sends a request as it stands, and returns the answer.
    std::string ask(const std::string& request) const {
        const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(send(socket, request.data(), request.size(), 0), static_cast<ssize_t>(request.size()));
        std::string answer;
        char bytes[4096];
        for (ssize_t count = recv(socket, bytes, sizeof bytes, 0); count > 0;
             count = recv(socket, bytes, sizeof bytes, 0)) {
            answer.append(bytes, static_cast<std::size_t>(count));
        }
        close(socket);
        return answer;
    }
    std::string get(const std::string& path, const std::string& headers = "Host: 127.0.0.1\r\n") const {
        return ask("GET " + path + " HTTP/1.1\r\n" + headers + "Connection: close\r\n\r\n");
    }
    std::string post(const std::string& path, const std::string& body, const std::string& headers = "") const {
        return ask("POST " + path + " HTTP/1.1\r\nHost: localhost\r\n" + headers +
                   "Connection: close\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
    }
    tsmake::Multiplex broadcastToStartByRed() const {
        tsmake::Multiplex broadcast = broadcastWithoutApplications();
        broadcast.services[0].ait.versions = {{0, 1, {application("life.html?first", 1, kPresent)}}};
        return broadcast;
    }

    std::uint16_t port = 0;
};

std::string status(const std::string& answer) {
    return answer.substr(0, answer.find("\r\n"));
}

TEST_F(ThePageForPeople, ShowsTheApplicationThatTheRedButtonStartsInADesktopBrowser) {
    if (std::system("command -v chromedriver >/dev/null") != 0) {
        GTEST_SKIP() << "chromedriver is not installed; ./run test --browser installs it";
    }
    startWithPage(broadcastToStartByRed());
    ChildProcess desktop(PAGE_FOR_PEOPLE, {url(), "Velmora One HD", "32,64,96"}, "desktop", Runner::machine);
    EXPECT_EQ(desktop.wait(), 0) << desktop.output();
}

TEST_F(ThePageForPeople, PressesKeysAndStartsApplications) {
    startWithPage(broadcastToStartByRed());
    EXPECT_TRUE(says("channel: "));
    EXPECT_TRUE(eventually([this] { return status(post("/start", "190.1")) == "HTTP/1.1 200 OK"; }));
    EXPECT_EQ(reported("running"), "first");
    EXPECT_EQ(status(post("/key", "RED")), "HTTP/1.1 200 OK");
    EXPECT_EQ(reported("key"), "403");
}

TEST_F(ThePageForPeople, RefusesKeysAndApplicationsThatThereAreNot) {
    startWithPage(broadcastWithoutApplications());
    EXPECT_EQ(status(post("/key", "PURPLE")), "HTTP/1.1 400 Bad Request");
    EXPECT_EQ(status(post("/start", "190.1")), "HTTP/1.1 400 Bad Request");
    EXPECT_EQ(status(post("/start", "one")), "HTTP/1.1 400 Bad Request");
    EXPECT_EQ(status(get("/../../etc/passwd")), "HTTP/1.1 404 Not Found");
}

TEST_F(ThePageForPeople, CannotBeUsedByPagesOfOtherHosts) {
    startWithPage(broadcastWithoutApplications());
    EXPECT_EQ(status(get("/state", "Host: evil.example\r\n")), "HTTP/1.1 403 Forbidden");
    EXPECT_EQ(status(get("/screen.png", "")), "HTTP/1.1 400 Bad Request");
    EXPECT_EQ(status(post("/key", "RED", "Origin: http://evil.example\r\n")), "HTTP/1.1 403 Forbidden");
    EXPECT_EQ(status(post("/key", "RED", "Origin: http://localhost:9000\r\n")), "HTTP/1.1 200 OK");
}

TEST_F(ThePageForPeople, GivesTheScreenAndTheLog) {
    startWithPage(broadcastWithoutApplications());
    EXPECT_TRUE(says("channel: "));
    const std::string png = get("/screen.png");
    EXPECT_NE(png.find("\x89PNG"), std::string::npos);
    EXPECT_NE(get("/state").find("channel: 1:1025:28106"), std::string::npos);
    EXPECT_EQ(get("/state?after=1000").find("channel: 1:1025:28106"), std::string::npos);
}

}  // namespace

}  // namespace browser_tests
