// MadeValues: values that each browser's process makes up, such as the names of filters, so that they differ between a
// recorded browser and the one that it is replayed to. A command of both tells which value stands for which.
// Threads: one at a time.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "message_fields.h"

namespace dtvservice {

class MadeValues {
public:
    using Values = std::vector<message_fields::FieldValue>;

    /// Whether a command is the recorded one: all values are equal, or are made up and may stand for each other.
    bool fit(const message_fields::Message& command, const Values& recorded, const Values& live) const;
    /// From now on the made-up values of a recorded command stand for those of the live one.
    void bind(const Values& recorded, const Values& live);
    /// What the browser calls it; the recorded value if that is not known, or not made up.
    message_fields::Value liveOf(const message_fields::FieldValue& recorded) const;
    std::string liveFilter(const std::string& recorded) const;

private:
    using Key = std::pair<std::string_view, message_fields::Value>;  // a field's name, and the recorded value

    bool mayStandFor(const Key& recorded, const message_fields::Value& wanted) const;

    std::map<Key, message_fields::Value> known;
};

}  // namespace dtvservice
