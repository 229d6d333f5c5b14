// Stores messages for the operator.
#include "drm_messages.h"

#include <algorithm>
#include <utility>

namespace dtvservice {

bool DrmMessages::add(DrmMessage message) {
    std::size_t count = 1;
    std::size_t bytes = message.type.size() + message.text.size();
    for (const DrmMessage& other : messages) {
        if (other.browser == message.browser) {
            ++count;
            bytes += other.type.size() + other.text.size();
        }
    }
    if (count > kMostMessages || bytes > kMostText) {
        return false;
    }
    messages.push_back(std::move(message));
    return true;
}

std::optional<DrmMessage> DrmMessages::take(std::uint64_t session) {
    const auto found = std::find_if(messages.begin(), messages.end(),
                                    [session](const DrmMessage& message) { return message.session == session; });
    if (found == messages.end()) {
        return std::nullopt;
    }
    DrmMessage message = std::move(*found);
    messages.erase(found);
    return message;
}

void DrmMessages::forget(std::uint32_t browser) {
    messages.remove_if([browser](const DrmMessage& message) { return message.browser == browser; });
}

}  // namespace dtvservice
