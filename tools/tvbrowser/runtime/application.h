// What the application manager knows of applications: those that the AIT of the presented channel signals, and the one
// that runs.
// Threads: any.
// Blocks:  never.
// Fails:   parseApplicationId() gives no value for a text that is no id.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tvbrowser {

struct ApplicationId {
    std::uint32_t organisation = 0;
    std::uint16_t application = 0;

    friend bool operator==(const ApplicationId& one, const ApplicationId& other) {
        return one.organisation == other.organisation && one.application == other.application;
    }
};

/// Reads "ORG.APP", both hexadecimal.
std::optional<ApplicationId> parseApplicationId(const std::string& text);

/// "190.1f": hexadecimal, in small letters and without zeros before it.
std::string applicationIdText(const ApplicationId& id);

/// application_control_code (TS 102 809, clause 5.2.4).
enum class ControlCode : std::uint8_t {
    autostart = 1,
    present = 2,
    destroy = 3,
    kill = 4,
    prefetch = 5,
    remote = 6,
    disabled = 7,
    playbackAutostart = 8
};

/// A platform profile that an application needs, with its version.
struct Profile {
    std::uint16_t profile = 0;  ///< bits: 1 download, 2 recording, 4 RTSP; 0 is the basic profile
    std::uint8_t major = 0;
    std::uint8_t minor = 0;
    std::uint8_t micro = 0;

    friend bool operator==(const Profile& one, const Profile& other) {
        return one.profile == other.profile && one.major == other.major && one.minor == other.minor &&
               one.micro == other.micro;
    }
};

constexpr std::uint8_t kVisibleToAll = 3;

/// An application of an AIT. Test applications are left out before.
struct SignalledApplication {
    ApplicationId id;
    ControlCode control = ControlCode::present;  ///< any value of the byte
    std::string name;
    std::string url;  ///< entry point by HTTP, or in a carousel of the service; empty: none
    std::uint8_t priority = 0;
    std::uint8_t visibility = kVisibleToAll;  ///< 0 to nobody, 1 to applications, 3 to users too
    bool isServiceBound = false;
    std::vector<Profile> profiles = {};        ///< one of them is enough; none listed: any terminal
    std::vector<std::string> boundaries = {};  ///< URL prefixes beyond the origin of the entry point
    std::vector<std::string> otherUrls = {};   ///< the same entry point by other transports, the best first
};

bool operator==(const SignalledApplication& one, const SignalledApplication& other);

/// Counts the starts of applications. Requests of a page carry the number of the application that made them, so that a
/// late one never meets another application.
using Instance = std::uint64_t;

struct RunningApplication {
    Instance instance = 0;
    std::optional<ApplicationId> id;  ///< known when an AIT signals it, or the operator gave it
    std::string name;
    std::string url;  ///< entry point, with the query and fragment of its start
    std::vector<std::string> boundaries = {};
    bool isServiceBound = false;
    bool isBroadcastRelated = false;
    bool isVisible = false;  ///< hidden until its page calls show()
};

}  // namespace tvbrowser
