// The application of the option --application: URL[,ORG.APP], with organisation_id and application_id in hexadecimal.
// Threads: any.
// Blocks:  never.
// Fails:   no value, and a text that says what is wrong and where.
#pragma once

#include <optional>
#include <string>

#include "si/ait.h"

namespace dtvservice {

/// An application that starts by itself on every service and goes on across tunes: AUTOSTART, of the basic profile in
/// version 1.1.1, not bound to a service. Its name is the URL's host. Without ORG.APP it is ffffff.1.
std::optional<si::Ait::Application> parseApplication(const std::string& text, std::string& error);

}  // namespace dtvservice
