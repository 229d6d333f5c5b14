// AIT sections as plain values (TS 102 809, clause 5.3.4).
// Threads: any.
// Blocks:  never.
// Fails:   no value, and `error` says what is wrong and where.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "si/section.h"

namespace si {

constexpr std::uint16_t kApplicationTypeHbbTv = 0x0010;

struct Ait {
    struct Name {
        std::string language;
        std::string text;  ///< UTF-8
    };
    struct Transport {
        std::uint16_t protocolId = 0;  ///< 1 object carousel, 3 HTTP
        std::uint8_t label = 0;
        std::string urlBase;  ///< for HTTP
        /// Of the object carousel, for one of the service itself.
        std::optional<std::uint8_t> componentTag = std::nullopt;
    };
    /// A platform profile that the application needs, with its version.
    struct Profile {
        std::uint16_t profile = 0;
        std::uint8_t major = 0;
        std::uint8_t minor = 0;
        std::uint8_t micro = 0;
    };
    struct Application {
        std::uint32_t organisationId = 0;
        std::uint16_t applicationId = 0;
        std::uint8_t controlCode = 0;
        std::vector<Name> names;
        /// Of its own, and those of the common loop that it lists; in the order of its labels, the best first.
        std::vector<Transport> transports;
        std::string initialPath;
        std::vector<Profile> profiles;
        std::uint8_t priority = 0;
        bool isServiceBound = false;
        std::uint8_t visibility = 0;  ///< 0 to nobody, 1 to applications, 3 to users and applications
        std::optional<std::uint8_t> usage = std::nullopt;  ///< usage_type; 1 is digital text
        std::vector<std::string> boundaries;               ///< URL prefixes of the application's boundary extension
        Descriptors descriptors;                           ///< all descriptors, unchanged

        /// The URL base of the first HTTP transport; empty if there is none.
        std::string urlBase() const;
        /// The application's entry point: URL base and initial path, only the path, or empty.
        std::string url() const;
    };
    std::uint16_t applicationType = 0;
    bool testApplication = false;
    std::uint8_t version = 0;
    std::uint8_t sectionNumber = 0;
    std::uint8_t lastSectionNumber = 0;
    Descriptors commonDescriptors;
    std::vector<Application> applications;
};

std::optional<Ait> parseAit(Bytes section, std::string& error);

/// The name of a control code, for example "AUTOSTART" for 1; the number if the code is not defined.
std::string controlCodeName(std::uint8_t controlCode);

}  // namespace si
