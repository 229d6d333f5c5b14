// Reads an AIT that is an XML document of type application/vnd.dvb.ait+xml (TS 102 809, clause 5.4; TS 102 796, clause
// 7.2.3.2): by it a broadcast-independent application says what it is called, and which URLs belong to it.
// Threads: any.
// Blocks:  never.
// Fails:   no value, and `error` says what is wrong, and in which line if the document is no XML.
#pragma once

#include <optional>
#include <string>

#include "application_choice.h"

namespace tvbrowser {

/// The applications of HbbTV's type, in the order of the document, each with the first HTTP address that it has.
/// Elements that the terminal does not use may have any value; the document must be UTF-8.
std::optional<Applications> parseXmlAit(const std::string& document, std::string& error);

}  // namespace tvbrowser
