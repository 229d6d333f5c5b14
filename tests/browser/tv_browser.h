// A television for a test: the reference service on a broadcast whose applications are pages of the test, and tvbrowser
// in a process of its own. Pages report values with report() of pages/report.js, which writes to the console.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "broadcasts.h"
#include "fed_broadcast.h"
#include "service_process.h"

namespace browser_tests {

/// Serves the pages.
class PageServer : public ChildProcess {
public:
    explicit PageServer(const std::string& name = "pages")
        : ChildProcess(SERVE_PAGES, {PAGES, kRunDirectory + "/held-"}, name, Runner::machine) {
        EXPECT_TRUE(eventually([this] { return output().find('\n') != std::string::npos; }));
    }
    /// Lets the request for held/NAME be answered, on which a page waits.
    static void release(const std::string& name) { std::ofstream(kRunDirectory + "/held-" + name); }
    /// "http://127.0.0.1:1234/"
    std::string url() const { return "http://127.0.0.1:" + std::to_string(std::stoi(output().substr(5))) + "/"; }
};

/// tvbrowser, with the commands of its standard input.
class Browser : public ChildProcess {
public:
    explicit Browser(std::vector<std::string> arguments = {}, const std::string& name = "tvbrowser")
        : Browser(newPipe(), std::move(arguments), name) {}
    ~Browser() { close(commands); }

    void command(const std::string& line) const {
        const std::string text = line + "\n";
        EXPECT_EQ(write(commands, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    void press(const std::string& key) const { command("key " + key); }
    void killWebProcess() const {
        EXPECT_EQ(std::system(("pkill -KILL -P " + std::to_string(pid()) + " WPEWebProcess").c_str()), 0);
    }
    bool says(const std::string& text) const {
        return eventually([&] { return output().find(text) != std::string::npos; });
    }
    /// Waits until the text has come as often as this.
    bool says(const std::string& text, std::size_t times) const {
        return eventually([&] { return count(text) >= times; });
    }
    std::size_t count(const std::string& text) const {
        const std::string all = output();
        std::size_t found = 0;
        for (std::size_t at = all.find(text); at != std::string::npos; at = all.find(text, at + text.size())) {
            ++found;
        }
        return found;
    }
    /// The values that pages have reported under a name, in their order.
    std::vector<std::string> reports(const std::string& name) const {
        const std::string start = "page: " + name + " ";
        std::vector<std::string> values;
        std::istringstream lines(output());
        for (std::string line; std::getline(lines, line);) {
            if (line.compare(0, start.size(), start) == 0 && !lines.eof()) {
                values.push_back(line.substr(start.size()));
            }
        }
        return values;
    }
    /// Waits for the first, or the `number`th, report of a name.
    std::string reported(const std::string& name, std::size_t number = 1,
                         std::chrono::milliseconds longest = std::chrono::seconds(20)) const {
        EXPECT_TRUE(eventually([&] { return reports(name).size() >= number; }, longest))
            << "no report " << number << " of " << name << " in\n"
            << output();
        const std::vector<std::string> values = reports(name);
        return values.size() < number ? "" : values[number - 1];
    }
    /// Waits until a page reports this value under the name.
    bool reports(const std::string& name, const std::string& value) const {
        return eventually([&] {
            const std::vector<std::string> values = reports(name);
            return std::find(values.begin(), values.end(), value) != values.end();
        });
    }

private:
    struct Pipe {
        int ends[2];
    };
    static Pipe newPipe() {
        Pipe made{};
        EXPECT_EQ(pipe2(made.ends, O_CLOEXEC), 0);
        return made;
    }
    Browser(const Pipe& input, std::vector<std::string> arguments, const std::string& name)
        : ChildProcess(TVBROWSER, std::move(arguments), name, Runner::machine,
                       [input] { dup2(input.ends[0], STDIN_FILENO); }),
          commands(input.ends[1]) {
        close(input.ends[0]);
    }

    const int commands;
};

/// The sample broadcast with pages of the tests as applications.
class ATvBrowser : public testing::Test {
protected:
    static constexpr std::uint8_t kAutostart = 1;
    static constexpr std::uint8_t kPresent = 2;

    /// An application whose entry point is a page, which may have a query.
    tsmake::Application application(const std::string& page, std::uint16_t id = 1,
                                    std::uint8_t control = kAutostart) const {
        tsmake::Application made;
        made.organisationId = kOrganisation;
        made.applicationId = id;
        made.controlCode = control;
        made.name = "Test";
        made.urlBase = pages.url();
        made.initialPath = page;
        return made;
    }
    /// The sample without applications.
    static tsmake::Multiplex broadcastWithoutApplications() {
        tsmake::Multiplex broadcast = kSample;
        for (tsmake::Service& service : broadcast.services) {
            service.ait.versions.clear();
        }
        return broadcast;
    }
    /// The page is the AUTOSTART application of the first service, and no other service has one.
    tsmake::Multiplex broadcastWith(const std::string& page) const {
        tsmake::Multiplex broadcast = broadcastWithoutApplications();
        broadcast.services[0].ait.versions = {{0, 1, {application(page)}}};
        return broadcast;
    }
    /// Starts service and browser on a broadcast.
    void start(const tsmake::Multiplex& broadcast, std::vector<std::string> arguments = {}, unsigned int seconds = 20) {
        writeBroadcast(broadcast, seconds, "broadcast.ts");
        startFile(std::move(arguments));
    }
    /// Starts on a file of packets.
    void startPackets(const std::string& packets) {
        std::ofstream(kFile, std::ios::binary) << packets;
        startFile({});
    }
    /// Starts on the first state of a broadcast, which change() replaces by the state of FedBroadcast::kSecondState.
    /// The first state does not have the packets of some PIDs.
    void startFed(const tsmake::Multiplex& broadcast, std::set<unsigned int> missing = {}) {
        fed = std::make_unique<FedBroadcast>(broadcast, std::move(missing));
        service = std::make_unique<ServiceProcess>(fed->input());
        browser = std::make_unique<Browser>();
    }
    void change() const { fed->change(); }
    /// Starts with the page as the AUTOSTART application.
    void page(const std::string& page) { start(broadcastWith(page)); }
    std::string reported(const std::string& name, std::size_t number = 1) const {
        return browser->reported(name, number);
    }
    void press(const std::string& key) const { browser->press(key); }
    bool says(const std::string& text) const { return browser->says(text); }
    void TearDown() override {
        if (HasFailure() && browser) {
            GTEST_LOG_(INFO) << "tvbrowser:\n" << browser->output();
        }
    }

    static constexpr std::uint32_t kOrganisation = 400;
    const std::string kFile = kRunDirectory + "/broadcast.ts";
    void startFile(std::vector<std::string> arguments) {
        service = std::make_unique<ServiceProcess>(kFile);
        browser = std::make_unique<Browser>(std::move(arguments));
    }

    PageServer pages;
    std::unique_ptr<FedBroadcast> fed;
    std::unique_ptr<ServiceProcess> service;
    std::unique_ptr<Browser> browser;
};

}  // namespace browser_tests
