// OsdFollowers: which browsers follow which on-screen display layers.
// Threads: the loop's.   Blocks: never.   Fails: never; a browser with too many layers gets no more.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>

namespace dtvservice {

class OsdFollowers {
public:
    using Peer = std::uint32_t;
    /// Layers are any numbers of 32 bits, and a set has a few.
    static constexpr std::size_t kMostLayers = 64;

    /// False where the browser follows as many others as it may.
    bool add(Peer browser, std::uint32_t layer) {
        std::set<std::uint32_t>& followed = layers[browser];
        if (followed.size() >= kMostLayers && followed.count(layer) == 0) {
            return false;
        }
        followed.insert(layer);
        return true;
    }
    void remove(Peer browser, std::uint32_t layer) {
        const auto found = layers.find(browser);
        if (found != layers.end() && found->second.erase(layer) != 0 && found->second.empty()) {
            layers.erase(found);
        }
    }
    void forget(Peer browser) { layers.erase(browser); }

    std::set<Peer> followersOf(std::uint32_t layer) const {
        std::set<Peer> followers;
        for (const auto& browser : layers) {
            if (browser.second.count(layer) != 0) {
                followers.insert(browser.first);
            }
        }
        return followers;
    }
    bool isEmpty() const { return layers.empty(); }

private:
    std::map<Peer, std::set<std::uint32_t>> layers;
};

}  // namespace dtvservice
