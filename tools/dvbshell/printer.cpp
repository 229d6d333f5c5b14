// Prints events as text.
#include "printer.h"

#include <algorithm>

#include "message_fields.h"
#include "si/ait.h"
#include "si/tables.h"
#include "text/printable.h"
#include "tree_text.h"

namespace dvbshell {

namespace {

using message_fields::namedText;

/// Where an event's own text begins, and what belongs to it in the lines below.
constexpr int kTextColumn = 20;

std::string triplet(const Event& event) {
    return std::to_string(event.onid) + ":" + std::to_string(event.tsid) + ":" + std::to_string(event.sid);
}

const char* updateName(int update) {
    return update == 0 ? "" : ", changed";
}

/// "09:00"
std::string minuteText(si::UtcSeconds time) {
    return si::clockText(time).substr(0, 5);
}

std::string eventTime(const si::Eit::Event& event) {
    if (!event.start) {
        return "time undefined";
    }
    return si::dateText(*event.start) + " " + minuteText(*event.start) + "-" +
           minuteText(*event.start + event.durationSeconds) + " UTC";
}

std::string aitHead(const si::Ait& ait) {
    return "application_type " + message_fields::hexadecimalNumber(ait.applicationType, 4) + ", version " +
           std::to_string(ait.version) + ", section " + std::to_string(ait.sectionNumber) + "/" +
           std::to_string(ait.lastSectionNumber);
}

}  // namespace

void Printer::head(Clock::time_point time, const char* what, const std::string& text) {
    std::fprintf(output(), "%8.3f  %-8s %s\n", secondsOf(time), what, text::printable(text).c_str());
}

double Printer::secondsOf(Clock::time_point time) const {
    return std::max(0.0, std::chrono::duration<double>(time - begin).count());
}

void Printer::result(const Operation& operation, const Outcome& outcome) {
    std::string text = operation.slot;
    text += outcome.values.empty() ? "" : "  " + message_fields::text(outcome.values);
    text += outcome.text ? "  " + *outcome.text : "";
    text += outcome.result ? "  result " + std::to_string(*outcome.result) : "";
    text += outcome.values.empty() && !outcome.text && !outcome.result ? "  done" : "";
    note(text);
}

void Printer::note(const std::string& text) {
    std::fprintf(output(), "%s\n", text::printable(text).c_str());
    std::fflush(output());
}

void Printer::print(const Event& event, const std::string& ccid) {
    switch (event.kind) {
        case EventKind::channel:
            head(event.time, "channel", triplet(event) + "  " + ccid + (event.started ? "  started" : "  not started"));
            break;
        case EventKind::aitChannel:
            head(event.time, "AIT", "of another channel follows");
            break;
        case EventKind::pmt:
            printPmt(event);
            break;
        case EventKind::eit:
            printEit(event);
            break;
        case EventKind::ait:
            printAit(event);
            break;
        case EventKind::application:
            printApplications(event);
            break;
        case EventKind::filtered:
            printFiltered(event);
            break;
        case EventKind::other:
            printValues(event);
    }
    std::fflush(output());
}

void Printer::printPmt(const Event& event) {
    std::string error;
    const std::optional<si::Pmt> pmt = si::parsePmt(event.section, error);
    if (!pmt) {
        printUnreadable(event, "PMT", error);
        return;
    }
    head(event.time, "PMT",
         triplet(event) + "  version " + std::to_string(pmt->version) + ", PCR PID " + std::to_string(pmt->pcrPid) +
             updateName(event.update));
    int longest = 0;
    for (const si::Pmt::Stream& stream : pmt->streams) {
        longest = std::max(longest, static_cast<int>(text::printable(si::streamName(stream)).size()));
    }
    for (const si::Pmt::Stream& stream : pmt->streams) {
        const std::optional<std::uint8_t> tag = si::componentTag(stream);
        std::fprintf(output(), "%*sPID %4u  stream_type 0x%02X  %-*s  %-3s  %s\n", kTextColumn, "", stream.pid,
                     stream.streamType, longest, text::printable(si::streamName(stream)).c_str(),
                     text::printable(si::language(stream)).c_str(),
                     tag ? namedText("component_tag", *tag).c_str() : "");
    }
}

void Printer::printEit(const Event& event) {
    std::string error;
    const std::optional<si::Eit> eit = si::parseEit(event.section, error);
    if (!eit) {
        printUnreadable(event, "EIT", error);
        return;
    }
    head(event.time, "EIT",
         std::string(eit->sectionNumber == 0 ? "present" : "following") + " of service " +
             std::to_string(eit->serviceId) + ", version " + std::to_string(eit->version) + updateName(event.update));
    if (eit->events.empty()) {
        std::fprintf(output(), "%20sno event\n", "");
    }
    for (const si::Eit::Event& item : eit->events) {
        std::fprintf(output(), "%20s%s  %s\n", "", eventTime(item).c_str(), text::printable(item.name).c_str());
    }
}

void Printer::printAit(const Event& event) {
    std::string error;
    const std::optional<si::Ait> ait = si::parseAit(event.section, error);
    if (!ait) {
        printUnreadable(event, "AIT", error);
        return;
    }
    head(event.time, "AIT", triplet(event) + "  " + aitHead(*ait));
}

/// Prints an AIT section of the catcher: each application, followed by its descriptors.
void Printer::printApplications(const Event& event) {
    if (event.section.empty()) {
        head(event.time, "apps", triplet(event) + "  this section has not come");
        return;
    }
    std::string error;
    const std::optional<si::Ait> ait = si::parseAit(event.section, error);
    if (!ait) {
        printUnreadable(event, "apps", error);
        return;
    }
    constexpr int kUrlIndent = 29;
    head(event.time, "apps", triplet(event) + "  " + aitHead(*ait));
    const si::Node tree = si::describeSection(event.section);
    std::vector<si::Node> common = tree.nodes;
    common.resize(ait->commonDescriptors.size());
    printLines(treeLines(common), kTextColumn);
    for (std::size_t index = 0; index < ait->applications.size(); ++index) {
        const si::Ait::Application& application = ait->applications[index];
        std::string line = namedText("organisation_id", application.organisationId);
        line.append(", ").append(namedText("application_id", application.applicationId));
        line.append("  ").append(si::controlCodeName(application.controlCode));
        line.append("  ").append(application.names.empty() ? "(no name)" : application.names.front().text);
        printLines({line}, kTextColumn);
        printLines({application.url()}, kUrlIndent);
        printLines(treeLines(tree.nodes[common.size() + index].nodes), kUrlIndent);
    }
}

void Printer::printFiltered(const Event& event) {
    const si::Node tree = si::describeSection(event.section);
    head(event.time, "section", tree.name + "  " + fieldsText(tree));
    printLines(treeLines(tree.nodes), kTextColumn);
}

void Printer::printValues(const Event& event) {
    head(event.time, "event", event.name + "  " + message_fields::text(valuesOf(event)));
    if (!event.section.empty()) {
        printLines(treeLines({si::describeSection(event.section)}), kTextColumn);
    }
}

void Printer::printLines(const std::vector<std::string>& lines, int indent) {
    for (const std::string& line : lines) {
        std::fprintf(output(), "%*s%s\n", indent, "", text::printable(line).c_str());
    }
}

void Printer::printUnreadable(const Event& event, const char* what, const std::string& error) {
    constexpr std::size_t kMostBytes = 32;
    head(event.time, what,
         "cannot be read: " + error + ": " + message_fields::hexadecimal(event.section.substr(0, kMostBytes)) +
             (event.section.size() > kMostBytes ? "..." : ""));
}

}  // namespace dvbshell
