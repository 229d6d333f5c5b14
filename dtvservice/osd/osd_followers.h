// OsdFollowers: which browsers follow which on-screen display layers.
// Threads: the loop's.
// Blocks:  never.
// Fails:   add() refuses layers above a limit.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>

namespace dtvservice {

class OsdFollowers {
public:
    using Peer = std::uint32_t;
    /// Per browser: a TV has only a few layers, but a browser may name any 32-bit number.
    static constexpr std::size_t kMostLayers = 64;

    /// False if the browser already follows the maximum number of other layers.
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
