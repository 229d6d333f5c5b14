// Writes the programme guide as XMLTV.
#include <algorithm>
#include <cstdio>

#include "guide.h"
#include "si/event.h"
#include "text/printable.h"

namespace dtvservice {

namespace {

constexpr std::uint32_t kFirstPrintable = 0x20;

/// A character that is escaped, or that XML does not allow, which is left out. Bytes that are not UTF-8 are left out
/// too.
std::string reference(const text::Character& character) {
    const bool isAllowed =
        character.code >= kFirstPrintable || character.code == '\n' || character.code == '\t' || character.code == '\r';
    if (character.size == 0 || !isAllowed) {
        return {};
    }
    char digits[16];
    std::snprintf(digits, sizeof digits, "&#x%X;", static_cast<unsigned int>(character.code));
    return digits;
}

/// As content or as the value of an attribute. What could control a terminal is written as a reference.
std::string escaped(const std::string& plain) {
    std::string xml;
    const auto keep = [&xml](std::string_view bytes) {
        xml += bytes == "&"                                         ? "&amp;"
               : bytes == "<"                                       ? "&lt;"
               : bytes == ">"                                       ? "&gt;"
               : bytes == "\""                                      ? "&quot;"
               : bytes == "\xEF\xBF\xBE" || bytes == "\xEF\xBF\xBF" ? ""  // no characters
                                                                    : bytes;
    };
    text::eachCharacter(plain, keep,
                        [&xml](std::string_view, const text::Character& character) { xml += reference(character); });
    return xml;
}

std::string element(const std::string& name, const std::string& attributes, const std::string& content) {
    return "<" + name + attributes + ">" + escaped(content) + "</" + name + ">\n";
}

std::string attribute(const std::string& name, const std::string& value) {
    return " " + name + "=\"" + escaped(value) + "\"";
}

std::string channelId(const GuideService& service) {
    return std::to_string(service.triplet.onid) + "." + std::to_string(service.triplet.tsid) + "." +
           std::to_string(service.triplet.sid) + ".dvb";
}

/// "20260101090000 +0000"
std::string timeText(si::UtcSeconds time) {
    std::string text = si::dateText(time) + si::clockText(time);
    text.erase(std::remove_if(text.begin(), text.end(), [](char letter) { return letter < '0' || letter > '9'; }),
               text.end());
    return text + " +0000";
}

/// The language of an event's texts; empty if the broadcast gives no code.
std::string languageOf(const si::Eit::Event& event) {
    const bool isCode =
        !event.language.empty() && std::all_of(event.language.begin(), event.language.end(), [](char letter) {
            return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z');
        });
    return isCode ? attribute("lang", event.language) : "";
}

std::string categories(const si::Eit::Event& event) {
    static constexpr const char* kGenres[] = {"",
                                              "Movie / Drama",
                                              "News / Current affairs",
                                              "Show / Game show",
                                              "Sports",
                                              "Children's / Youth programmes",
                                              "Music / Ballet / Dance",
                                              "Arts / Culture (without music)",
                                              "Social / Political issues / Economics",
                                              "Education / Science / Factual topics",
                                              "Leisure hobbies"};
    std::string xml;
    for (const std::uint8_t nibbles : si::contentNibbles(event.descriptors)) {
        const std::size_t genre = nibbles >> 4U;
        if (genre != 0 && genre < std::size(kGenres)) {
            xml += "    " + element("category", attribute("lang", "en"), kGenres[genre]);
        }
    }
    return xml;
}

std::string ratings(const si::Eit::Event& event) {
    constexpr unsigned int kLastAge = 15;
    constexpr unsigned int kYears = 3;
    std::string xml;
    for (const si::ParentalRating& each : si::parentalRatings(event.descriptors)) {
        if (each.rating != 0 && each.rating <= kLastAge) {
            xml += "    <rating" + attribute("system", each.country) + "><value>" +
                   std::to_string(each.rating + kYears) + "</value></rating>\n";
        }
    }
    return xml;
}

std::string programme(const GuideService& service, const si::Eit::Event& event) {
    const std::string extended = si::extendedText(event.descriptors);
    const std::string text = event.text + (event.text.empty() || extended.empty() ? "" : "\n") + extended;
    return "  <programme" + attribute("start", timeText(*event.start)) +
           attribute("stop", timeText(*event.start + event.durationSeconds)) +
           attribute("channel", channelId(service)) + ">\n    " + element("title", languageOf(event), event.name) +
           (text.empty() ? "" : "    " + element("desc", languageOf(event), text)) + categories(event) +
           ratings(event) + "  </programme>\n";
}

}  // namespace

std::string guideXmltv(const std::vector<GuideService>& services) {
    std::string xml =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE tv SYSTEM \"xmltv.dtd\">\n"
        "<tv generator-info-name=\"dtvserviced\">\n";
    for (const GuideService& service : services) {
        const std::string name = service.name.empty() ? channelId(service) : service.name;
        xml += "  <channel" + attribute("id", channelId(service)) + ">\n    " + element("display-name", "", name) +
               "  </channel>\n";
    }
    for (const GuideService& service : services) {
        for (const si::Eit::Event& event : service.events) {
            xml += event.start ? programme(service, event) : "";
        }
    }
    return xml + "</tv>\n";
}

}  // namespace dtvservice
