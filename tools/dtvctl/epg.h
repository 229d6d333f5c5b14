// The programme guide: asking for it, and its layout as text.
// Threads: one.
// Blocks:  askForGuide() until the service has collected programmes for as long as is wanted.
// Fails:   as the ServiceClient.
#pragma once

#include <string>

#include "service_client.h"

namespace dtvctl {

/// The answer, when the service has collected programmes for so many seconds. It begins with the first request.
nlohmann::json askForGuide(ServiceClient& client, const nlohmann::json& request, std::chrono::seconds collected);

/// Each service, and below it a line for each programme: start, duration, name.
std::string guideText(const nlohmann::json& answer);

}  // namespace dtvctl
