// Every reader of sections, descriptors and texts in `si`, and what dvbshell prints of them.
#include "json_printer.h"
#include "oracles.h"
#include "printed.h"
#include "right_section.h"
#include "si/ait.h"
#include "si/components.h"
#include "si/description.h"
#include "si/download.h"
#include "si/stream_event.h"
#include "si/text.h"
#include "text/printable.h"
#include "tree_text.h"

namespace {

void parse(const std::vector<std::uint8_t>& section) {
    std::string error;
    si::parsePat(section, error);
    si::parseNit(section, error);
    si::parseSdt(section, error);
    si::parseEit(section, error);
    si::parseAit(section, error);
    if (const std::optional<si::Pmt> pmt = si::parsePmt(section, error)) {
        si::components(*pmt, si::firstEventDescriptors(section));
        si::hbbtvAitPids(*pmt);
        si::listsHbbTvAit(*pmt);
    }
    si::streamEvents(section);
    si::serviceGateway(section);
    si::downloadInfo(section);
    si::downloadBlock(section);
    std::size_t cost = 0;
    si::carouselObjects(section, section.size() * 100, cost);
}

/// As events of each kind whose section dvbshell takes apart.
void print(const std::vector<std::uint8_t>& section) {
    using dvbshell::EventKind;
    for (const EventKind kind : {EventKind::pmt, EventKind::eit, EventKind::ait, EventKind::application,
                                 EventKind::filtered, EventKind::other}) {
        dvbshell::Event event;
        event.kind = kind;
        event.name = "onSectionData";
        event.section.assign(section.begin(), section.end());
        fuzz::expectPrintable(fuzz::printed<dvbshell::Printer>(event), "printed section");
    }
    dvbshell::Event event;
    event.section.assign(section.begin(), section.end());
    std::string line = fuzz::printed<dvbshell::JsonPrinter>(event);
    line.pop_back();
    fuzz::expectJson(line, "section as JSON");
    fuzz::expectPrintable(line, "section as JSON");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::run(data, size, {256U << 10U, 2000}, [](fuzz::Input input) {
        std::vector<std::uint8_t> section = input.rest();
        fuzz::expectPrintable(text::printable(si::toUtf8(section)), "text");
        parse(section);
        si::describeSection(section);
        fuzz::putRight(section);
        parse(section);
        print(section);
    });
}
