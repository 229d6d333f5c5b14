// Reads requests and writes answers; the rooms' handlers carry them out.
#include "operator_requests.h"

#include "request_values.h"

namespace dtvservice {

using nlohmann::json;

void OperatorRequests::add(const std::string& command, Handler handler) {
    handlers[command].push_back(std::move(handler));
}

std::string OperatorRequests::answer(const std::string& line) const {
    json result;
    try {
        const json request = json::parse(line, nullptr, false);
        if (!request.is_object()) {
            throw std::invalid_argument("a request is a JSON object in one line");
        }
        result = answer(get<std::string>(request, "command"), request);
        result["ok"] = true;
    } catch (const std::invalid_argument& error) {
        result = {{"ok", false}, {"error", error.what()}};
    }
    return result.dump(-1, ' ', false, json::error_handler_t::replace);
}

json OperatorRequests::answer(const std::string& command, const json& request) const {
    const auto found = handlers.find(command);
    if (found == handlers.end()) {
        throw std::invalid_argument("unknown command " + command);
    }
    json result = json::object();
    for (const Handler& handler : found->second) {
        result.update(handler(request));
    }
    return result;
}

}  // namespace dtvservice
