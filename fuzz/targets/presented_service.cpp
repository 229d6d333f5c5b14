// A service that presents services to browsers: what a broadcast, browsers and an operator do, in any order.
#include "running_service.h"

namespace {

enum Step : std::uint8_t { kSample, kOwnBroadcast, kCommand, kJoin, kLeave, kOperator, kSteps };

constexpr unsigned int kBrowsers = 3;
constexpr std::size_t kPacketsInStep = 16;

void doNext(fuzz::RunningService& service, fuzz::BroadcastInput& broadcast, fuzz::Input& input) {
    const unsigned int step = input.u8();
    const dtvservice::Browser browser = 1 + step / kSteps % kBrowsers;
    switch (step % kSteps) {
        case kSample:
            service.playSample(kPacketsInStep * input.u8());
            break;
        case kOwnBroadcast:
            broadcast.play(input);
            service.runTasks();
            break;
        case kCommand: {
            const std::uint8_t place = input.u8();
            service.command(browser, place, input.chunk());
            break;
        }
        case kJoin:
            service.join(browser);
            break;
        case kLeave:
            service.leave(browser);
            break;
        default:
            service.ask(input.text());
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::run(data, size, {16U << 20U, 20000}, [](fuzz::Input input) {
        fuzz::RunningService service;
        fuzz::BroadcastInput broadcast(service.demux());
        while (!input.isEmpty()) {
            doNext(service, broadcast, input);
        }
    });
}
