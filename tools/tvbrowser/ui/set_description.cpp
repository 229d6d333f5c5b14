// The user agent.
#include "set_description.h"

#include <sys/utsname.h>

namespace tvbrowser {

std::string machineName() {
    utsname names{};
    return uname(&names) == 0 ? names.machine : "";
}

std::string userAgent(const SetDescription& set) {
    const std::string options = set.caSystems.empty() ? "" : "+DRM";
    return "Mozilla/5.0 (Linux) AppleWebKit/605.1.15 (KHTML, like Gecko) HbbTV/1.6.1 (" + options + "; " +
           set.vendorName + "; " + set.modelName + "; " + set.softwareVersion + "; " + set.hardwareVersion + "; " +
           set.familyName + ") " + set.modelName + "/" + set.softwareVersion;
}

}  // namespace tvbrowser
