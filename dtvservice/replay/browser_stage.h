// BrowserStage: shows the steps of a recording to a live browser and to those who watch the bus.
// Threads: the loop's.
// Blocks:  never.
// Fails:   never; what is lost is in the log.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cursor.h"
#include "section_queue.h"

namespace dtvservice {

class BrowserStage : public Stage {
public:
    /// Browsers and tap must outlive this object.
    BrowserStage(Browsers& newBrowsers, BusTap& newTap, Browser newBrowser)
        : browsers(newBrowsers), tap(newTap), browser(newBrowser) {}

    void event(const message_fields::Message& message, const std::vector<message_fields::Value>& values) override;
    bool section(const std::string& filter, const std::string& bytes) override;
    void sectionLost(const std::string& filter, const std::string& bytes) override;
    void seen(const RecordedStep& step, const std::string& filter) override;
    void missed(const RecordedStep& command) override;
    void left() override;

    SectionQueue queue;
    std::uint64_t drops = 0;

private:
    Browsers& browsers;
    BusTap& tap;
    Browser browser;
};

}  // namespace dtvservice
