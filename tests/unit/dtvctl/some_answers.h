// Answers of the service for tests.
#pragma once

#include <nlohmann/json.hpp>

/// One input, and nothing else that is not zero or empty.
inline nlohmann::json aStatus() {
    return nlohmann::json::parse(R"({
        "ok": true, "browsers": [], "filters": 0, "queue_drops": 0, "osd_layers": [],
        "ca_slots": [], "mounts": [], "drm_messages": [], "drm_waiting": 0,
        "inputs": [{
            "input": 1, "source": "udp://:5000", "state": "silent", "reason": "silent for 3 s", "service_count": 0,
            "bit_rate": 0, "packets": 0, "continuity_errors": 0, "transport_errors": 0, "scrambled_packets": 0,
            "sections": 0, "incomplete_sections": 0, "crc_errors": 0, "skipped_bytes": 0, "dropped_packets": 0,
            "rtp_packets_lost": 0, "rtp_datagrams_unreadable": 0}]})");
}

inline nlohmann::json aService() {
    return {{"onid", 1}, {"tsid", 1025}, {"sid", 28106}, {"name", "Velmora One HD"}, {"input", 1}};
}
