// Events of a hostile service, from their bytes through the proxy and the library to a browser's listener, whose events
// dvbshell prints. Each record: the message, then its image behind its length.
#include "browser_dvb_apis.h"
#include "browser_dvb_service.h"
#include "events.h"
#include "json_printer.h"
#include "oracles.h"
#include "printed.h"
#include "wire.h"

namespace {

/// The library of this process, with one listener.
class Library {
public:
    Library() {
        velmora::dvbservice::BrowserDVBService::getInstance();
        velmora::dvbservice::BrowserDvbAPI::getInstance()->addListener(dvbshell::makeListener(queue));
    }

    void show() {
        while (const std::optional<dvbshell::Event> event = queue.take(dvbshell::Clock::time_point())) {
            fuzz::expectPrintable(fuzz::printed<dvbshell::Printer>(*event), "printed event");
            std::string line = fuzz::printed<dvbshell::JsonPrinter>(*event);
            line.pop_back();
            fuzz::expectJson(line, "event as JSON");
            fuzz::expectPrintable(line, "event as JSON");
        }
    }

private:
    dvbshell::EventQueue queue;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // Never destroyed: the library keeps the listener until the process ends.
    static auto* const library = new Library;
    return fuzz::run(data, size, {256U << 10U, 4000}, [](fuzz::Input input) {
        while (!input.isEmpty()) {
            const std::uint8_t place = input.u8();
            fuzz::wire::deliver(place, 1, input.chunk());
            library->show();
        }
    });
}
