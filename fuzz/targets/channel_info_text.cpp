// The texts with which the service tells the library the current channel.
#include "browser_dvb_service.h"
#include "oracles.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static auto* const service = velmora::dvbservice::BrowserDVBService::getInstance();
    return fuzz::run(data, size, {64U << 10U, 400}, [](fuzz::Input input) {
        const std::string info = input.restAsText();
        service->updateCurrentChannelInfo(info);
        int onid = -2;
        int tsid = -2;
        int sid = -2;
        const int result = service->getCurrentChannelInfo(onid, tsid, sid);
        const std::string ccid = service->getCurrentCCID();
        fuzz::expectPrintable(ccid, "the CCID");
        if (result == 0) {
            const std::string told =
                "ccid:" + std::to_string(onid) + ":" + std::to_string(tsid) + ":" + std::to_string(sid);
            fuzz::expect(onid >= 0 && tsid >= 0 && sid >= 0 && ccid == told, "the CCID is not the channel's: " + ccid);
        } else {
            fuzz::expect(onid == -2 && tsid == -2 && sid == -2, "an unknown channel was told");
        }
        frame::MsgIds ids;
        service->onServiceChanged(ids, frame::TransportInfo(), "service_started", info);
        service->onAcquireDtvServiceInfo(ids, frame::TransportInfo(), info);
    });
}
