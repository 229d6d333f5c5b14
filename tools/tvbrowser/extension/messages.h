// What the UI process and the extension say to each other, and to the first script of a page.
// Each message has two strings as parameters: a name and a value in JSON.
// Threads: any.
// Blocks:  never.
// Fails:   never.
#pragma once

namespace tvbrowser {

/// What the extension is given at its start: the path of the library, the secret of PageSettings, the key of the
/// natives.
constexpr const char* kExtensionDataType = "(sss)";

constexpr const char* kParametersType = "(ss)";
/// Page to set: a call of the set, such as createApplication.
constexpr const char* kCallMessage = "call";
/// Set to page: an event, such as a key.
constexpr const char* kEventMessage = "event";
/// Page to set: a line for the log. The name is the line's subject: page, script or extension.
constexpr const char* kLogMessage = "log";

/// The natives stand in a document under this name until the first script has taken them away.
constexpr const char* kNativesName = "__tvbrowserNatives";

}  // namespace tvbrowser
