// Identifiers by HMAC.
#include "device_id.h"

#include <glib.h>

namespace tvbrowser {

std::string deviceId(const std::string& secret, const nlohmann::json& argument) {
    const std::string origin = argument.value("origin", "");
    char* const digits = g_compute_hmac_for_string(G_CHECKSUM_SHA256, reinterpret_cast<const guchar*>(secret.data()),
                                                   secret.size(), origin.data(), static_cast<gssize>(origin.size()));
    std::string identifier = digits;
    g_free(digits);
    return identifier;
}

}  // namespace tvbrowser
