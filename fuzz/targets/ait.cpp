// AIT sections of a hostile platform: the record of one, the storage of a channel, and the catcher with its channels.
#include "aitsection.h"
#include "browser_AIT_catcher.h"
#include "browser_AIT_storage.h"
#include "dvbaitsection_apis.h"
#include "oracles.h"

namespace {

using velmora::dvbservice::AITSection;
using velmora::dvbservice::AITStorage;
using velmora::dvbservice::BrowserAITCatcher;

/// Checks that each delivered section is the one that was fed or stored.
class Client final : public velmora::dtv::AITSectionClient {
public:
    std::size_t longest = 0;

private:
    void onCurrentChannelAIT(std::uint16_t, std::uint16_t, std::uint16_t,
                             const std::vector<std::uint8_t>& section) override {
        fuzz::expect(section.size() <= longest, "a section is longer than all that were fed");
    }
};

void record(const std::vector<std::uint8_t>& bytes) {
    AITSection section(bytes.data(), static_cast<int>(bytes.size()));
    section.dump(true);
    AITSection copy(section);
    copy.replaceData(bytes);
    copy.replaceData(bytes.data(), static_cast<int>(bytes.size() / 2));
    section = copy;
    section.dump(true);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::run(data, size, {1U << 20U, 4000}, [](fuzz::Input input) {
        Client client;
        velmora::dvbservice::DvbAITSectionAPI::getInstance()->registerClient(&client);
        BrowserAITCatcher catcher;
        AITStorage storage(input.chunk());
        while (!input.isEmpty()) {
            constexpr unsigned int kChannels = 4;
            const std::uint16_t sid = input.u8() % kChannels;
            const std::vector<std::uint8_t> section = input.chunk();
            client.longest = std::max(client.longest, section.size());
            record(section);
            storage.saveAITSection(section);
            storage.getAITSection(storage.getAITSectionCount());
            catcher.updateCurrentChannelInfo(0, 1, 1, sid);
            catcher.updateAIT({section.begin(), section.end()});
        }
        for (const char* const key : {"1:1:0", "1:1:1", "1:1:9"}) {
            catcher.getAITDataAsyc(key);
        }
        velmora::dvbservice::DvbAITSectionAPI::getInstance()->unRegisterClient(&client);
    });
}
