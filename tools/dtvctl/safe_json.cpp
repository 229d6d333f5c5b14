// Prints JSON with the time.
#include "safe_json.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "text/printable.h"

namespace dtvctl {

using nlohmann::json;

namespace {

/// Seconds since the epoch, to the millisecond.
double epochSeconds() {
    constexpr double kMilliseconds = 1000;
    const std::chrono::duration<double> now = std::chrono::system_clock::now().time_since_epoch();
    return std::round(now.count() * kMilliseconds) / kMilliseconds;
}

}  // namespace

std::string safeJson(const json& value) {
    return text::printableJson(value.dump(-1, ' ', false, json::error_handler_t::replace));
}

void printJson(json object) {
    object["time"] = epochSeconds();
    std::printf("%s\n", safeJson(object).c_str());
}

}  // namespace dtvctl
