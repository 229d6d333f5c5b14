// URLs of files in object carousels: dvb://ONID.TSID.SID.TAG/PATH, numbers hexadecimal, TAG the component_tag of the
// stream with the carousel's DownloadServerInitiate. Scheme, host and its numbers in their shortest form and in small
// letters are the origin of the file (TS 102 796, clause 6.3).
// Threads: any.
// Blocks:  never.
// Fails:   no value, and `error` says what is wrong.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "si/triplet.h"

namespace tvbrowser {

struct CarouselPlace {
    std::uint16_t onid = 0;
    std::optional<std::uint16_t> tsid;  ///< absent: any
    std::uint16_t sid = 0;
    std::optional<std::uint8_t> componentTag;  ///< absent: each carousel of the service
    std::string path;                          ///< as the carousel has it; without query and fragment

    /// An original_network_id that is not known on one side counts as the same.
    bool isOf(const si::Triplet& service) const;
};

std::optional<CarouselPlace> parseCarouselUrl(const std::string& text, std::string& error);

/// `path`: as in a URL, with or without a slash in front; may have query and fragment.
std::string carouselUrl(const si::Triplet& service, std::uint8_t componentTag, const std::string& path);

}  // namespace tvbrowser
