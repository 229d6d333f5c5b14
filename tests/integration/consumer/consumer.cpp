// A first test of the installed library on the minimal platform: gets the interfaces by name, sends a command, receives
// an event, and receives a section through the queue. Prints each step, and ends with 1 at the first failure.
#include <browser_AIT_catcher.h>
#include <dvb_api_interface.h>
#include <dvb_section_interface.h>
#include <frame/endian_table.h>
#include <tiny/tiny_platform.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <thread>

namespace {

using velmora::dtv::IDTVUnknown;

constexpr std::uint32_t kTuneToService = 0x28671236;
constexpr std::uint32_t kFilterOpen = 0x28671243;
constexpr std::uint32_t kOpenFilterConf = 0x28671256;
constexpr std::uint32_t kServiceChanged = 0x28671262;

void require(bool good, const char* what) {
    std::printf("%s  %s\n", good ? "ok " : "BAD", what);
    if (!good) {
        std::fflush(stdout);
        std::_Exit(1);
    }
}

template <typename Interface>
Interface& query(const char* name) {
    IDTVUnknown* found = nullptr;
    require(DTVAPI_QueryInterface(name, &found) == 0, name);
    return *static_cast<Interface*>(found);
}

_ovxDeserString_struct carry(std::string& text) {
    return {static_cast<std::uint32_t>(text.size()), text.data()};
}

/// Waits for a command of this kind and returns the fields of the last one.
std::vector<std::string> fieldsOf(std::uint32_t message) {
    for (int tries = 0; tries < 2000; ++tries) {
        const std::vector<tiny::Sent> all = tiny::sent();
        for (auto sent = all.rbegin(); sent != all.rend(); ++sent) {
            if (sent->message == message) {
                return sent->fields;
            }
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));  // between two looks
    }
    return {};
}

struct Sections : velmora::dtv::SectionFilterClient {
    void onSectionData(const std::string&, unsigned int pid, const unsigned char* data, unsigned int length) override {
        came.set_value({pid, std::string(data, data + length)});
    }
    std::promise<std::pair<unsigned int, std::string>> came;
};

void tune(velmora::dtv::DvbAPIInterface& api) {
    api.tuneToService(12, 1, 1025, 28106, 0);
    require(fieldsOf(kTuneToService) == std::vector<std::string>{"12", "", "1", "1025", "28106", "0"},
            "the platform was given the tune command's record");
    struct __attribute__((packed)) {
        _ovxDeserString_struct what;
        _ovxDeserString_struct channel;
    } record{};
    std::string what = "service_started";
    std::string channel = "1:1025:28106";
    record = {carry(what), carry(channel)};
    require(tiny::deliver(kServiceChanged, &record), "the library registered its events");
    require(api.getCurrentCCID() == "ccid:" + channel, "the channel is the event's");
}

void filter(velmora::dtv::DVBSectionInterface& filters) {
    auto& client = *new Sections;  // the library's thread may call it at any time
    std::string session = filters.generateSessionName();
    const unsigned char byte = 0x4E;
    const unsigned char bits = 0xFF;
    // The request waits for its confirmation event.
    std::future<bool> opened =
        std::async(std::launch::async, [&] { return filters.startSection(&client, session, 0x12, &byte, &bits, 1); });
    require(fieldsOf(kFilterOpen) == std::vector<std::string>{session, "18", "\x4E", "\xFF"},
            "the platform was given the filter's record");
    struct __attribute__((packed)) {
        std::uint32_t pid;
        _ovxDeserString_struct session;
        std::int16_t result;
    } confirmation{0x12, carry(session), 0};
    require(tiny::deliver(kOpenFilterConf, &confirmation), "the confirmation is taken");
    require(opened.get(), "the filter is open");
    require(tiny::queues().size() == 1, "there is one section queue");
    require(tiny::writeSection(tiny::queues()[0], session, {0x4E, 0xF0, 0x00}), "a section is written to it");
    const auto came = client.came.get_future().get();
    require(came.first == 0x12 && came.second == std::string("\x4E\xF0\x00", 3), "and reaches the client");
}

}  // namespace

int main() {
    auto& api = query<velmora::dtv::DvbAPIInterface>("DvbAPIInterface");
    tune(api);
    filter(query<velmora::dtv::DVBSectionInterface>("SectionFilterAPI"));
    require(velmora::dvbservice::BrowserAITCatcher::getInstance()->updateAIT("short") == -1,
            "the AIT catcher is reached by its class");
    require(!tiny::lines().empty(), "the library's lines reach the platform's log");
    // At the end of the process the library's thread still waits for a section, and the platform's objects still exist.
    return 0;
}
