// AddedApplication: an HbbTV application that every service of a multiplex gets in place of its own ones, as an AIT
// with its signalling in the PMT.
// Threads: any.
// Blocks:  never.
// Fails:   std::length_error when the application is too long for an AIT.
#pragma once

#include <optional>

#include "si/ait.h"
#include "si/tables.h"
#include "sub_table.h"

namespace broadcast {

class AddedApplication {
public:
    explicit AddedApplication(si::Ait::Application application);

    /// An AIT that has the application alone.
    const Section& ait() const { return ait_; }
    /// The PMT with a stream for this AIT, on a PID that the PMT does not use, and without the signalling of other
    /// HbbTV AITs. No value if that is longer than the section of a PMT may be.
    std::optional<Section> signalledIn(const si::Pmt& pmt) const;

private:
    Section ait_;
};

}  // namespace broadcast
