// SentTogether: what is sent to browsers during its lifetime leaves in as few packets as the platform can make of it. A
// browser that is told of a new service then wakes once, and not for each table.
// Threads: the loop's.
// Blocks:  never.
#pragma once

namespace dtvservice {

class SentTogether {
public:
    SentTogether();
    SentTogether(const SentTogether&) = delete;
    SentTogether& operator=(const SentTogether&) = delete;
    ~SentTogether();

private:
    const bool isHolding;  // false within another one, which sends later, and where the platform cannot hold messages
};

}  // namespace dtvservice
