// Object carousels: the service's search for stream event objects, and dvbshell's reader. Each record: the carousel's
// PID, then a section behind its length.
#include "broadcast_input.h"
#include "carousel_reader.h"
#include "event_objects.h"
#include "oracles.h"
#include "text/printable.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::run(data, size, {256U << 10U, 4000}, [](fuzz::Input input) {
        constexpr std::size_t kMostKept = 1U << 20U;
        broadcast::EventObjects objects({0, 1}, kMostKept);
        dvbshell::CarouselReader reader;
        while (!input.isEmpty()) {
            const std::uint16_t pid = input.u8() % 3;
            const std::vector<std::uint8_t> section = input.chunk();
            objects.onSection(pid, section);
            for (const dvbshell::CarouselNews& news : reader.add({section.begin(), section.end()})) {
                fuzz::expectPrintable(text::printable(news.text), "news of a carousel");
            }
        }
        std::size_t found = 0;
        for (const broadcast::EventObjects::Named& event : objects.events()) {
            found += event.path.size() + event.name.size();
        }
        fuzz::expect(found <= kMostKept, "more is kept of events than is allowed");
        for (const std::string& path : reader.paths()) {
            fuzz::expectPrintable(text::printable(path), "path in a carousel");
        }
        reader.progress();
    });
}
