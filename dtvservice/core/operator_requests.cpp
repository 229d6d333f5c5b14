// Reads requests and writes answers; the rooms' handlers carry them out.
#include "operator_requests.h"

#include "request_values.h"

namespace dtvservice {

using nlohmann::json;

void OperatorRequests::add(const std::string& command, Handler handler) {
    handlers[command].push_back(std::move(handler));
}

void OperatorRequests::addLong(const std::string& command, LongHandler handler) {
    longHandlers[command] = std::move(handler);
}

OperatorRequests::Answer OperatorRequests::begin(const std::string& line) const {
    Rest rest;
    try {
        const json request = json::parse(line, nullptr, false);
        if (!request.is_object()) {
            throw std::invalid_argument("a request is a JSON object in one line");
        }
        rest = begin(get<std::string>(request, "command"), request);
    } catch (const std::invalid_argument& error) {
        rest = [text = std::string(error.what())] { return json{{"ok", false}, {"error", text}}; };
    }
    return [rest = std::move(rest)] { return rest().dump(-1, ' ', false, json::error_handler_t::replace); };
}

OperatorRequests::Rest OperatorRequests::begin(const std::string& command, const json& request) const {
    const auto found = longHandlers.find(command);
    Rest rest =
        found == longHandlers.end() ? [result = answer(command, request)] { return result; } : found->second(request);
    return [rest = std::move(rest)] {
        json result = rest();
        result["ok"] = true;
        return result;
    };
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
