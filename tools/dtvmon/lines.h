// Records as lines, for people or as JSON.
// Threads: any; a sink one.
// Blocks:  the sink, while writing.
// Fails:   never; an output that cannot be written shows in its stream.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "sink.h"

namespace dtvmon {

/// "12:00:00.123456 1 dvbshell[4711] -> cmdSendPtsRequest  pts_request 0", with bytes in further lines if wanted.
std::string lineOf(const Seen& seen, bool withBytes);
/// The record as a JSON object.
nlohmann::ordered_json jsonOf(const Seen& seen, bool withBytes);

class Lines : public Sink {
public:
    Lines(bool newAsJson, bool newWithBytes) : asJson(newAsJson), withBytes(newWithBytes) {}
    void add(const Seen& seen) override;
    void pause() override;

private:
    bool asJson;
    bool withBytes;
};

}  // namespace dtvmon
