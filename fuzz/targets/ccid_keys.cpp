// The keys under which the AIT catcher stores the sections of a channel.
#include <stdexcept>

#include "browser_AIT_catcher.h"
#include "oracles.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static auto* const catcher = velmora::dvbservice::BrowserAITCatcher::getInstance();
    return fuzz::run(data, size, {64U << 10U, 400}, [](fuzz::Input input) {
        const std::uint16_t onid = input.u16();
        const std::uint16_t tsid = input.u16();
        const std::uint16_t sid = input.u16();
        const std::string key = catcher->convertToCCId(onid, tsid, sid);
        fuzz::expect(key == std::to_string(onid) + ":" + std::to_string(tsid) + ":" + std::to_string(sid),
                     "wrong key " + key);
        catcher->sendAITData(key, {});
        const std::string text = input.restAsText();
        try {
            catcher->sendAITData(text, {});
        } catch (const std::invalid_argument&) {
            // Not made of numbers.
        } catch (const std::out_of_range&) {
            // A number that no int holds.
        }
        catcher->getAITDataAsyc(text);
    });
}
