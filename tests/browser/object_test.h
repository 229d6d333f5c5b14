// For tests of the objects of pages: the page is the application of every service, so that it goes on when it tunes.
#pragma once

#include "tv_browser.h"

namespace browser_tests {

class AnObject : public ATvBrowser {
protected:
    tsmake::Multiplex broadcastWithEverywhere(const std::string& page, tsmake::Multiplex broadcast = kSample) const {
        for (tsmake::Service& each : broadcast.services) {
            each.ait.versions = {{0, 1, {application(page)}}};
        }
        return broadcast;
    }
    void pageEverywhere(const std::string& page) { start(broadcastWithEverywhere(page)); }
    /// The first events that the page has reported.
    std::vector<std::string> events(std::size_t count) const {
        std::vector<std::string> all;
        for (std::size_t number = 1; number <= count; ++number) {
            all.push_back(reported("event", number));
        }
        return all;
    }
    /// Runs dtvctl.
    static void operate(const std::vector<std::string>& command) {
        ChildProcess dtvctl(DTVCTL, command, "dtvctl");
        EXPECT_EQ(dtvctl.wait(), 0) << dtvctl.output();
    }
    /// As pages write the values of lists.
    using Events = std::vector<std::string>;
};

}  // namespace browser_tests
