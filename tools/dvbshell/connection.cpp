// Looks for the DTV service.
#include "connection.h"

#include <cstdlib>
#include <iterator>
#include <thread>

namespace dvbshell {

namespace {

constexpr std::chrono::milliseconds kBetweenLooks{250};
constexpr std::chrono::milliseconds kBetweenTries{20};
constexpr std::uint32_t kUnusualLayer = 0xFFFFFFFF;

std::string layerText(std::uint32_t layer) {
    return "OSD layer " + std::to_string(layer);
}

std::string joined(const std::multiset<std::string>& texts) {
    std::string all;
    for (const std::string& text : texts) {
        all += (all.empty() ? "" : ", ") + text;
    }
    return all;
}

}  // namespace

bool Connection::isThere() {
    std::uint32_t layer = kUnusualLayer;
    while (layers.count(layer) != 0) {
        --layer;
    }
    return api.stopOSDDetection(layer) >= 0;
}

bool Connection::await(std::chrono::milliseconds longest) {
    const Clock::time_point end = Clock::now() + longest;
    while (!isThere()) {
        if (Clock::now() >= end) {
            gone = true;
            return false;
        }
        std::this_thread::sleep_for(kBetweenTries);
    }
    gone = false;
    return true;
}

std::optional<std::string> Connection::news(bool now) {
    if (!now && Clock::now() < nextLook) {
        return std::nullopt;
    }
    nextLook = Clock::now() + kBetweenLooks;
    const bool wasGone = gone;
    gone = !isThere();
    if (gone == wasGone) {
        return std::nullopt;
    }
    if (!gone) {
        const std::string text = lost.empty() ? "" : "; open again what was lost: " + lost;
        lost.clear();
        return "the DTV service is there again" + text;
    }
    lost = joined(opened);
    opened.clear();
    layers.clear();
    return "the DTV service has gone" + (lost.empty() ? "" : "; lost: " + lost);
}

void Connection::close(const std::string& what) {
    const auto found = opened.find(what);
    if (found != opened.end()) {
        opened.erase(found);
    }
}

void Connection::closeAll(const std::string& beginning) {
    for (auto what = opened.begin(); what != opened.end();) {
        what = what->compare(0, beginning.size(), beginning) == 0 ? opened.erase(what) : std::next(what);
    }
}

void Connection::followLayer(std::uint32_t layer) {
    if (layers.insert(layer).second) {
        open(layerText(layer));
    }
}

void Connection::leaveLayer(std::uint32_t layer) {
    if (layers.erase(layer) != 0) {
        close(layerText(layer));
    }
}

std::string noServiceText() {
    const char* const directory = std::getenv("DTV_RUN_DIR");
    const bool isElsewhere = directory != nullptr && *directory != '\0';
    return std::string("no DTV service answers") + (isElsewhere ? std::string(" in DTV_RUN_DIR ") + directory : "") +
           "; start one: dtvserviced --input FILE.ts";
}

}  // namespace dvbshell
