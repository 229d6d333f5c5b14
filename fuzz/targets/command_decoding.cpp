// Commands of one browser, from their bytes to what the service does. Each record: the message, then its image behind
// its length.
#include "running_service.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr dtvservice::Browser kBrowser = 1;
    return fuzz::run(data, size, {8U << 20U, 8000}, [](fuzz::Input input) {
        constexpr std::size_t kUntilPresented = 400;
        fuzz::RunningService service;
        service.playSample(kUntilPresented);
        service.join(kBrowser);
        while (!input.isEmpty()) {
            const std::uint8_t place = input.u8();
            service.command(kBrowser, place, input.chunk());
        }
        service.leave(kBrowser);
    });
}
