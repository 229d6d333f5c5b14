// Object carousels: the service's search for stream event objects. Each record: the carousel's PID, then a section
// behind its length.
#include "broadcast_input.h"
#include "event_objects.h"
#include "oracles.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::run(data, size, {256U << 10U, 4000}, [](fuzz::Input input) {
        constexpr std::size_t kMostKept = 1U << 20U;
        broadcast::EventObjects objects({0, 1}, kMostKept);
        while (!input.isEmpty()) {
            const std::uint16_t pid = input.u8() % 3;
            const std::vector<std::uint8_t> section = input.chunk();
            objects.onSection(pid, section);
        }
        std::size_t found = 0;
        for (const broadcast::EventObjects::Named& event : objects.events()) {
            found += event.path.size() + event.name.size();
        }
        fuzz::expect(found <= kMostKept, "more is kept of events than is allowed");
    });
}
