// SnapshotText: a text that one thread replaces while others read it. A reader always gets one complete text.
// Threads: any.
// Blocks:  never.
// Locks:   none of its own; a write replaces the pointer to an immutable text.
#pragma once

#include <memory>
#include <string>

namespace velmora::dvbservice {

class SnapshotText {
public:
    std::string get() const { return *std::atomic_load(&text); }
    void set(std::string newText) { std::atomic_store(&text, std::make_shared<const std::string>(std::move(newText))); }

private:
    std::shared_ptr<const std::string> text = std::make_shared<const std::string>();
};

}  // namespace velmora::dvbservice
