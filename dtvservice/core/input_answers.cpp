// Writes what is known of the inputs.
#include "input_answers.h"

#include <nlohmann/json.hpp>

namespace dtvservice {

using broadcast::PidCounts;
using nlohmann::json;

namespace {

json described(const PidCounts& counts) {
    return {{"bit_rate", counts.bitRate},
            {"packets", counts.packets},
            {"continuity_errors", counts.continuityErrors},
            {"transport_errors", counts.transportErrors},
            {"scrambled_packets", counts.scrambled},
            {"sections", counts.sections},
            {"incomplete_sections", counts.cutSections},
            {"crc_errors", counts.crcErrors}};
}

json described(const Multiplex& multiplex, std::size_t number) {
    const InputReport& report = multiplex.report;
    json input = described(multiplex.demux.total());
    input.update({{"input", number},
                  {"source", report.source()},
                  {"state", report.stateName()},
                  {"reason", report.reason()},
                  {"service_count", multiplex.si.channels().size()},
                  {"skipped_bytes", report.counts.skippedBytes.load()},
                  {"dropped_packets", report.counts.droppedPackets.load()},
                  {"rtp_packets_lost", report.counts.rtpLost.load()},
                  {"rtp_datagrams_unreadable", report.counts.notRtp.load()}});
    return input;
}

json pidsOf(const broadcast::Demux& demux, EventLoop::Clock::time_point now) {
    json pids = json::array();
    for (std::uint16_t pid = 0; pid < broadcast::kPidCount; ++pid) {
        const PidCounts counts = demux.countsOf(pid);
        if (counts.packets != 0) {
            json entry = described(counts);
            entry["pid"] = pid;
            entry["idle_seconds"] = std::chrono::duration<double>(now - counts.lastPacket).count();
            pids.push_back(std::move(entry));
        }
    }
    return pids;
}

json listOf(const Multiplexes& multiplexes) {
    json inputs = json::array();
    for (const Multiplex& multiplex : multiplexes) {
        inputs.push_back(described(multiplex, inputs.size() + 1));
    }
    return inputs;
}

}  // namespace

json describeInputs(const Multiplexes& multiplexes) {
    return {{"inputs", listOf(multiplexes)}};
}

json countInputs(const Multiplexes& multiplexes, EventLoop::Clock::time_point now) {
    json inputs = listOf(multiplexes);
    std::size_t index = 0;
    for (const Multiplex& multiplex : multiplexes) {
        inputs[index++]["pids"] = pidsOf(multiplex.demux, now);
    }
    return {{"inputs", inputs}};
}

}  // namespace dtvservice
