// A browser host: tunes to a service and prints what the TV reports, until the service's PMT has arrived.
//   browser_host ONID:TSID:SID
#include <dvb_api_interface.h>
#include <dvb_helpers/empty_listener.h>

#include <cstdio>
#include <future>

/// The library may call it until the process ends, so it owns everything that it uses.
class Host final : public velmora::dtv::helpers::EmptyListener {
public:
    explicit Host(int sid) : wanted(sid) {}

    void OnChannelChanged(bool started, std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid) override {
        std::printf("%s %u:%u:%u\n", started ? "presented:" : "tuning failed, presented:", onid, tsid, sid);
        presented = started && sid == wanted;
        if (!started) {
            finish(false);
        }
    }
    void onPMTSectionUpdated(std::uint16_t, std::uint16_t, std::uint16_t sid, int, std::string section) override {
        std::printf("PMT of %u: %zu bytes\n", sid, section.size());
        if (presented && sid == wanted) {
            finish(true);
        }
    }
    std::promise<bool> result;

private:
    void finish(bool good) {
        std::call_once(finished, [&] { result.set_value(good); });
    }
    const int wanted;
    bool presented = false;  // transport thread only
    std::once_flag finished;
};

int main(int count, char** arguments) {
    int onid = 0, tsid = 0, sid = 0;
    if (count != 2 || std::sscanf(arguments[1], "%d:%d:%d", &onid, &tsid, &sid) != 3) {
        std::fprintf(stderr, "usage: browser_host ONID:TSID:SID\n");
        return 2;
    }
    velmora::dtv::IDTVUnknown* found = nullptr;
    DTVAPI_QueryInterface("DvbAPIInterface", &found);
    auto* const api = static_cast<velmora::dtv::DvbAPIInterface*>(found);
    const auto host = std::make_shared<Host>(sid);
    std::future<bool> result = host->result.get_future();
    api->addListener(host);
    constexpr int kIdDvbT = 12;  // OIPF DAE, clause 7.13.11
    api->tuneToService(kIdDvbT, onid, tsid, sid, 0);
    const bool good = result.wait_for(std::chrono::seconds(10)) == std::future_status::ready && result.get();
    api->removeListener(host);
    std::printf("%s\n", good ? api->getCurrentCCID().c_str() : "the service is not presented");
    return good ? 0 : 1;
}
