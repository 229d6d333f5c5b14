// Recordings of the bus from anybody, and what dtvmon shows of them. The bytes come in two parts, as from a socket.
#include <nlohmann/json.hpp>

#include "bus/pcapng.h"
#include "lines.h"
#include "oracles.h"

namespace {

/// What is read must be what is written of it.
void writeAndRead(const bus::Record& record) {
    bus::PcapngReader reader;
    reader.add(bus::pcapngStart() + bus::pcapngBlock(record));
    bus::Record again;
    std::string problem;
    fuzz::expect(reader.take(again, problem) && problem.empty(), "a record cannot be read again: " + problem);
    fuzz::expect(again.time == record.time && bus::pack(again) == bus::pack(record), "a record has changed");
}

void show(const bus::Record& record) {
    const dtvmon::Seen seen = dtvmon::see(record);
    fuzz::expectPrintable(dtvmon::lineOf(seen, true), "a line");
    using Json = nlohmann::ordered_json;
    fuzz::expectJson(dtvmon::jsonOf(seen, true).dump(-1, ' ', false, Json::error_handler_t::replace), "an object");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::run(data, size, {256U << 10U, 4000}, [](fuzz::Input input) {
        const std::size_t first = input.u16();
        const std::vector<std::uint8_t> begin = input.take(first);
        bus::PcapngReader reader;
        bus::Record record;
        std::string problem;
        for (const std::vector<std::uint8_t>& part : {begin, input.rest()}) {
            reader.add({reinterpret_cast<const char*>(part.data()), part.size()});
            while (reader.take(record, problem)) {
                if (problem.empty()) {
                    writeAndRead(record);
                    show(record);
                } else {
                    fuzz::expectPrintable(problem, "a problem");
                }
            }
        }
        fuzz::expectPrintable(reader.problemAtEnd(), "a problem at the end");
    });
}
