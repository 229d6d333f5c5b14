// Sink: where the records that are wanted go.
// Threads: one.
// Blocks:  while writing.
// Fails:   throws std::runtime_error if it cannot write.
#pragma once

#include "seen.h"

namespace dtvmon {

class Sink {
public:
    Sink() = default;
    Sink(const Sink&) = delete;
    Sink& operator=(const Sink&) = delete;
    virtual ~Sink() = default;

    virtual void add(const Seen& seen) = 0;
    /// No record is there now.
    virtual void pause() {}
    /// A second has passed in which the service was followed.
    virtual void second() {}
    /// No record comes any more.
    virtual void end() {}
};

}  // namespace dtvmon
