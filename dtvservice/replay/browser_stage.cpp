// Sends events and sections.
#include "browser_stage.h"

#include "event_sender.h"
#include "service_log.h"

namespace dtvservice {

void BrowserStage::event(const message_fields::Message& message, const std::vector<message_fields::Value>& values) {
    sendEvent(browsers, browser, message, values);
}

/// Without a queue a section goes nowhere, as with any service.
bool BrowserStage::section(const std::string& filter, const std::string& bytes) {
    if (!queue.isOpen(browser)) {
        sectionLost(filter, bytes);
        return true;
    }
    if (!queue.trySend(filter, bytes)) {
        return false;
    }
    tap.section(browser, filter, bytes, true);
    return true;
}

void BrowserStage::sectionLost(const std::string& filter, const std::string& bytes) {
    ++drops;
    tap.section(browser, filter, bytes, false);
    if (browsers.mayTell(browser)) {
        BLOG_TAGGED(blog::kUnsupported, "browser %u: a section is dropped: %s\n", browser,
                    queue ? "its queue is full" : "it has no section queue");
    }
}

void BrowserStage::seen(const RecordedStep& step, const std::string& filter) {
    if (step.kind == RecordedStep::Kind::droppedSection) {
        tap.section(browser, filter, step.bytes, false);
        return;
    }
    const bool isEvent = step.kind == RecordedStep::Kind::unsentEvent;
    tap.refused(isEvent ? bus::Direction::toBrowser : bus::Direction::toService, browser, step.message->identifier,
                step.text, step.result);
}

void BrowserStage::missed(const RecordedStep& command) {
    if (browsers.mayTell(browser)) {
        BLOG_TAGGED(blog::kUnsupported, "browser %u has not sent %s: the replay goes on without it at record %zu\n",
                    browser, command.message->name, command.record);
    }
}

void BrowserStage::left() {
    BLOG_TAGGED(
        blog::kUnsupported,
        "browser %u: the recorded browser disconnects here; this one stays, as a service cannot disconnect it\n",
        browser);
}

}  // namespace dtvservice
