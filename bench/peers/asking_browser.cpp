// A browser that asks an answering_service which runs already, for counts of instructions under emulation.
//   asking_browser questions|sections COUNT   ends when all answers, or all sections of one filter, have come
#include <dvb_helpers/empty_listener.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "browser.h"
#include "countdown.h"

namespace {

class Asker final : public velmora::dtv::helpers::EmptyListener, public velmora::dtv::SectionFilterClient {
public:
    void ask(std::int64_t questions) {
        left = questions;
        bench::dvbApi().sendPtsRequest(0);
        allThere.wait();
    }
    void take(std::int64_t sections) {
        const std::string session = bench::sectionApi().generateSessionName();
        const unsigned char none = 0;
        left = sections;
        bench::sectionApi().startSection(this, session, 100, &none, &none, 0);
        bench::dvbApi().sendPtsRequest(static_cast<std::uint32_t>(sections));
        allThere.wait();
    }

private:
    void onPtsNotify(std::uint64_t, std::uint64_t) override {
        if (--left == 0) {
            allThere.end();
        } else {
            bench::dvbApi().sendPtsRequest(0);
        }
    }
    void onSectionData(const std::string&, unsigned int, const unsigned char*, unsigned int) override {
        if (--left == 0) {
            allThere.end();
        }
    }

    std::int64_t left = 0;
    bench::Countdown allThere;
};

}  // namespace

int main(int, char** arguments) {
    const auto asker = std::make_shared<Asker>();
    bench::dvbApi().addListener(asker);
    bench::waitForService();
    const std::int64_t count = std::atoll(arguments[2]);
    if (arguments[1] == std::string("questions")) {
        asker->ask(count);
    } else {
        asker->take(count);
    }
    _exit(0);
}
