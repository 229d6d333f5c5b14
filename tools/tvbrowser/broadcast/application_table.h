// ApplicationTable: the applications that the AIT of the presented service has.
// Sections come from the library's AIT catcher, which may replay those that it has stored at an earlier visit: from the
// moment that a section came by the broadcast, only sections of its version count.
// Threads: one.
// Blocks:  never.
// Fails:   bad sections are left out, with a text.
#pragma once

#include <optional>
#include <string>

#include "si/ait.h"
#include "si/tables.h"
#include "si/triplet.h"
#include "table_sections.h"
#include "values.h"

namespace tvbrowser {

class ApplicationTable {
public:
    /// Another service is presented.
    void clear(const si::Triplet& newService) {
        *this = ApplicationTable();
        service = newService;
    }
    /// Without a stream for an AIT in the PMT, the AIT is gone.
    void setPmt(const si::Pmt& pmt);
    /// The broadcast sends a section of this version.
    void hear(std::uint8_t version);
    /// A section from the catcher; an empty one stands for a missing one.
    void add(si::Bytes section, std::string& error);

    json value() const;
    /// Whether the value has changed since the last call. A value counts from the PMT on.
    bool takeNews();

private:
    json applicationValue(const si::Ait::Application& application) const;

    si::Triplet service;
    bool isKnown = false;
    bool isSignalled = false;
    std::optional<std::uint8_t> version;
    TableSections<si::Ait> sections;
    std::optional<json> told;
};

}  // namespace tvbrowser
