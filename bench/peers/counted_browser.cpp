// A browser whose instructions are counted, on a service that runs already.
//   counted_browser questions COUNT [LISTENERS]   asks an answering_service, again from inside each answer
//   counted_browser commands COUNT                sends that many that nobody answers
//   counted_browser sections COUNT [FILTERS]      takes them of an answering_service
//   counted_browser tunes COUNT                   tunes a dtvserviced on tsmake's sample
#include <dvb_helpers/empty_listener.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "browser.h"
#include "countdown.h"
#include "zapper.h"

namespace {

using velmora::dtv::helpers::EmptyListener;

class Asker final : public EmptyListener, public velmora::dtv::SectionFilterClient {
public:
    void ask(std::int64_t questions) {
        left = questions;
        bench::dvbApi().sendPtsRequest(0);
        allThere.wait();
    }
    void take(std::int64_t sections, std::int64_t filters) {
        const unsigned char none = 0;
        left = sections;
        for (std::int64_t count = 0; count < filters; ++count) {
            bench::sectionApi().startSection(this, bench::sectionApi().generateSessionName(), 100, &none, &none, 0);
        }
        bench::dvbApi().sendPtsRequest(static_cast<std::uint32_t>(sections));
        allThere.wait();
    }

private:
    void onPtsNotify(std::uint64_t, std::uint64_t) override { next(); }
    void onDrmResultReply(std::uint64_t, std::uint8_t, const std::string&, std::uint16_t) override { next(); }
    void onSectionData(const std::string&, unsigned int, const unsigned char*, unsigned int) override {
        if (--left == 0) {
            allThere.end();
        }
    }
    void next() {
        if (--left == 0) {
            allThere.end();
        } else {
            bench::dvbApi().sendPtsRequest(0);
        }
    }

    std::int64_t left = 0;
    bench::Countdown allThere;
};

void ask(std::int64_t count, std::int64_t listeners) {
    std::vector<std::shared_ptr<EmptyListener>> others;
    for (std::int64_t other = 1; other < listeners; ++other) {
        others.push_back(std::make_shared<EmptyListener>());
        bench::dvbApi().addListener(others.back());
    }
    const auto asker = std::make_shared<Asker>();
    bench::dvbApi().addListener(asker);
    asker->ask(count);
    bench::dvbApi().removeListener(asker);
}

void sendCommands(std::int64_t count) {
    for (; count > 0; --count) {
        bench::dvbApi().stopOSDDetection(0);
    }
    ask(1, 1);  // behind which all have come
}

void zap(std::int64_t count) {
    const auto zapper = std::make_shared<bench::Zapper>();
    bench::dvbApi().addListener(zapper);
    zapper->zap(count);
    bench::dvbApi().removeListener(zapper);
}

}  // namespace

int main(int arguments, char** argument) {
    const std::string what = arguments > 2 ? argument[1] : "";
    const std::int64_t count = arguments > 2 ? std::atoll(argument[2]) : 0;
    const std::int64_t more = arguments > 3 ? std::atoll(argument[3]) : 1;
    bench::waitForService();
    if (what == "questions") {
        ask(count, more);
    } else if (what == "commands") {
        sendCommands(count);
    } else if (what == "sections") {
        std::make_shared<Asker>()->take(count, more);
    } else if (what == "tunes") {
        zap(count);
    } else {
        std::fprintf(stderr, "bench: counted_browser counts no \"%s\"\n", what.c_str());
        return 1;
    }
    std::fflush(nullptr);
    _exit(0);
}
