// Reads the JSON description of a multiplex.
#include "description.h"

#include <iconv.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <ctime>

#include "json_reader.h"
#include "si/section.h"
#include "stream_reader.h"

namespace tsmake {

namespace {

constexpr std::uint64_t kLeastPid = 0x0020;
constexpr std::uint64_t kMostPid = 0x1FFE;
constexpr std::uint64_t kMostSeconds = 86400;
constexpr std::size_t kLongestText = 200;

/// Converts UTF-8 text to a one-byte character table. Empty when the table lacks a character.
std::string inTable(const std::string& encoding, std::string text) {
    const iconv_t converter = iconv_open(encoding.c_str(), "UTF-8");
    if (converter == reinterpret_cast<iconv_t>(-1)) {
        return {};
    }
    std::string result(text.size(), '\0');
    char* in = text.data();
    char* out = result.data();
    std::size_t left = text.size();
    std::size_t room = result.size();
    const std::size_t failed = iconv(converter, &in, &left, &out, &room);
    iconv_close(converter);
    result.resize(result.size() - room);
    return failed == 0 ? result : std::string();
}

/// A DVB text, with the byte that selects its character table (EN 300 468, Annex A): none for ASCII, else UTF-8. A JSON
/// object selects a part of ISO 8859, 5 to 15.
std::string dvbText(JsonReader& in, const std::string& key) {
    const nlohmann::json* const value = in.member(key);
    std::string text;
    if (value != nullptr && value->is_object()) {
        in.object(key, [&text](JsonReader& table) {
            constexpr std::uint64_t kFirstPart = 5;
            const std::uint64_t part = table.number("iso8859", kFirstPart, 15);
            const std::string written = table.text("text");
            const std::string bytes = inTable("ISO-8859-" + std::to_string(part), written);
            if (bytes.empty() && !written.empty()) {
                table.fail("text", "has a character that is not in ISO 8859-" + std::to_string(part));
            }
            text = static_cast<char>(part - kFirstPart + 1) + bytes;
        });
    } else {
        constexpr char kUtf8 = 0x15;
        text = in.text(key, "");
        const bool isAscii =
            std::all_of(text.begin(), text.end(), [](char letter) { return static_cast<signed char>(letter) >= 0; });
        text = isAscii ? text : kUtf8 + text;
    }
    if (text.size() > kLongestText) {
        in.fail(key, "is longer than " + std::to_string(kLongestText) + " bytes");
    }
    return text;
}

/// Bytes in hexadecimal digits, or none if the text has others.
std::optional<std::string> hexBytesOf(const std::string& text) {
    std::string bytes;
    for (std::size_t at = 0; at + 1 < text.size() && std::isxdigit(static_cast<unsigned char>(text[at])) != 0 &&
                             std::isxdigit(static_cast<unsigned char>(text[at + 1])) != 0;
         at += 2) {
        bytes.push_back(static_cast<char>(std::stoi(text.substr(at, 2), nullptr, 16)));
    }
    return bytes.size() * 2 == text.size() ? std::optional(bytes) : std::nullopt;
}

/// A descriptor, or several.
std::string hexDescriptors(JsonReader& in, const std::string& key) {
    const std::string text = in.text(key, "");
    const std::optional<std::string> bytes = hexBytesOf(text);
    si::Descriptors descriptors;
    if (!bytes || !si::readDescriptors(*bytes, descriptors)) {
        in.fail(key, "\"" + text + "\" is not a descriptor in hexadecimal digits");
    }
    return *bytes;
}

std::uint16_t pidOf(JsonReader& in, const std::string& key = "pid") {
    return static_cast<std::uint16_t>(in.has(key) ? in.number(key, kLeastPid, kMostPid) : 0);
}

/// In the description, `null` means a stream without a component_tag.
std::optional<std::uint8_t> tagOf(JsonReader& in, std::optional<std::uint8_t> otherwise) {
    const nlohmann::json* const value = in.member("tag");
    if (value == nullptr) {
        return otherwise;
    }
    return value->is_null() ? std::nullopt : std::optional(in.numberOf<std::uint8_t>("tag"));
}

si::UtcSeconds timeOf(JsonReader& in, const std::string& key) {
    const std::string text = in.text(key, "2026-01-01T00:00:00Z");
    std::tm parts{};
    const char* const end = strptime(text.c_str(), "%Y-%m-%dT%H:%M:%SZ", &parts);
    if (end == nullptr || *end != '\0') {
        in.fail(key, "\"" + text + "\" is not a time like 2026-01-01T09:00:00Z");
    }
    const si::UtcSeconds day =
        si::utcSeconds(std::int64_t{1900} + parts.tm_year, static_cast<unsigned int>(parts.tm_mon + 1), parts.tm_mday);
    if (si::mjdOf(day) < 0 || si::mjdOf(day) > 0xFFFF) {
        in.fail(key, "tables have dates from 1858-11-17 to 2038-04-22");
    }
    return day + std::int64_t{3600} * parts.tm_hour + std::int64_t{60} * parts.tm_min + parts.tm_sec;
}

/// No state may begin earlier than the one before it.
template <typename State>
void checkOrder(const JsonReader& in, const std::string& key, const std::vector<State>& states) {
    for (std::size_t index = 1; index < states.size(); ++index) {
        if (states[index].second < states[index - 1].second) {
            in.fail(key + "[" + std::to_string(index) + "].second", "is earlier than the one before");
        }
    }
}

Second secondOf(JsonReader& in, const std::string& key = "second") {
    return static_cast<Second>(in.number(key, 0, kMostSeconds, 0));
}

/// The index of the value in a list of valid words.
template <std::size_t Count>
std::size_t wordOf(JsonReader& in, const std::string& key, const std::array<const char*, Count>& words) {
    const std::string text = in.text(key);
    std::string known;
    for (std::size_t index = 0; index < Count; ++index) {
        if (text == words[index]) {
            return index;
        }
        known += std::string(index == 0 ? "" : ", ") + words[index];
    }
    in.fail(key, "\"" + text + "\" is none of " + known);
}

/// Empty when the description names no language.
std::string languageOf(JsonReader& in) {
    std::string language = in.text("language", "");
    if (!language.empty() && language.size() != 3) {
        in.fail("language", "has three letters");
    }
    return language;
}

TeletextPage readPage(JsonReader& in) {
    TeletextPage page;
    page.language = languageOf(in);
    page.type = static_cast<std::uint8_t>(in.number("type", 1, 31, page.type));
    page.number = static_cast<unsigned int>(in.number("number", 100, 899));
    return page;
}

std::optional<StreamPlace> streamPlaceOf(JsonReader& in) {
    if (!in.has("stream")) {
        return std::nullopt;
    }
    std::string error;
    std::optional<StreamPlace> place = parseStreamPlace(in.text("stream"), error);
    if (!place) {
        in.fail("stream", error);
    }
    return place;
}

Component readComponent(JsonReader& in) {
    constexpr std::array<const char*, 4> kKinds = {"video", "audio", "subtitle", "teletext"};
    Component component;
    component.kind = static_cast<Component::Kind>(wordOf(in, "kind", kKinds));
    component.tag = tagOf(in, std::nullopt);
    component.language = languageOf(in);
    component.pid = pidOf(in);
    component.place = streamPlaceOf(in);
    in.list("pages", [&component](JsonReader& one) { component.pages.push_back(readPage(one)); });
    if (component.kind != Component::Kind::teletext && !component.pages.empty()) {
        in.fail("pages", "is for teletext");
    }
    return component;
}

EventComponent readEventComponent(JsonReader& in) {
    EventComponent component;
    component.streamContent = static_cast<std::uint8_t>(in.number("streamContent", 0, 15, component.streamContent));
    component.type = in.numberOf<std::uint8_t>("type", component.type);
    component.tag = in.numberOf<std::uint8_t>("tag");
    component.language = languageOf(in);
    component.text = dvbText(in, "text");
    return component;
}

EventRating readRating(JsonReader& in) {
    EventRating rating;
    rating.country = in.text("country");
    if (rating.country.size() != 3) {
        in.fail("country", "has three letters");
    }
    rating.rating = in.numberOf<std::uint8_t>("rating");
    return rating;
}

Event readEvent(JsonReader& in) {
    Event event;
    event.eventId = in.numberOf<std::uint16_t>("id");
    event.name = dvbText(in, "name");
    event.text = dvbText(in, "text");
    event.duration = static_cast<unsigned int>(in.number("seconds", 1, kMostSeconds, event.duration));
    in.list("components", [&event](JsonReader& one) { event.components.push_back(readEventComponent(one)); });
    in.list("parentalRatings", [&event](JsonReader& one) { event.ratings.push_back(readRating(one)); });
    event.descriptors = hexDescriptors(in, "descriptors");
    return event;
}

Profile readProfile(JsonReader& in) {
    Profile profile;
    profile.profile = in.numberOf<std::uint16_t>("profile", profile.profile);
    profile.major = in.numberOf<std::uint8_t>("major", profile.major);
    profile.minor = in.numberOf<std::uint8_t>("minor", profile.minor);
    profile.micro = in.numberOf<std::uint8_t>("micro", profile.micro);
    return profile;
}

/// What the application descriptor says beside the label of the transport.
void readApplicationDescriptor(JsonReader& in, Application& application) {
    constexpr std::uint64_t kMostVisible = 3;
    application.isServiceBound = !in.has("serviceBound") || in.flag("serviceBound");
    application.priority = in.numberOf<std::uint8_t>("priority", application.priority);
    application.visibility =
        static_cast<std::uint8_t>(in.number("visibility", 0, kMostVisible, application.visibility));
    if (in.has("profiles")) {
        application.profiles.clear();
        in.list("profiles", [&](JsonReader& one) { application.profiles.push_back(readProfile(one)); });
    }
}

/// Control codes in the order of TS 102 809, table 3; the first has code 1.
Application readApplication(JsonReader& in) {
    constexpr std::array<const char*, 8> kControls = {"autostart", "present", "destroy",  "kill",
                                                      "prefetch",  "remote",  "disabled", "playback_autostart"};
    Application application;
    application.organisationId = in.numberOf<std::uint32_t>("organisation");
    application.applicationId = in.numberOf<std::uint16_t>("id");
    application.controlCode = static_cast<std::uint8_t>(wordOf(in, "control", kControls) + 1);
    application.name = dvbText(in, "name");
    if (in.has("carousel")) {
        application.carouselTag = in.numberOf<std::uint8_t>("carousel");
    }
    application.urlBase = application.carouselTag ? in.text("urlBase", "") : in.text("urlBase");
    application.isCarouselFirst = in.flag("carouselFirst");
    application.initialPath = in.text("path");
    in.texts("boundaries", application.boundaries);
    readApplicationDescriptor(in, application);
    return application;
}

void readAit(JsonReader& in, Ait& ait) {
    ait.tag = tagOf(in, ait.tag);
    ait.pid = pidOf(in);
    ait.sections = static_cast<unsigned int>(in.number("sections", 1, 256, ait.sections));
    ait.interval = static_cast<unsigned int>(in.number("interval", 10, 60000, ait.interval));
    if (in.has("end")) {
        ait.end = secondOf(in, "end");
    }
    ait.emptySignalling = in.flag("emptySignalling");
    in.list("versions", [&ait](JsonReader& one) {
        AitVersion& version = ait.versions.emplace_back();
        version.second = secondOf(one);
        version.version = static_cast<std::uint8_t>(one.number("version", 0, 31));
        one.list("applications",
                 [&version](JsonReader& each) { version.applications.push_back(readApplication(each)); });
    });
    checkOrder(in, "versions", ait.versions);
}

/// Without the slash that may begin it.
std::string objectPathOf(JsonReader& in, const std::string& key) {
    const std::string text = in.text(key, "");
    std::string path = text.substr(text.rfind('/', 0) == 0 ? 1 : 0);
    if (!text.empty() && ("/" + path + "/").find("//") != std::string::npos) {
        in.fail(key, "has a part without a name");
    }
    return path;
}

/// A stream event's data: a text, or bytes in hexadecimal digits.
std::string dataOf(JsonReader& in) {
    if (!in.has("dataHex")) {
        return in.text("data", "");
    }
    const std::optional<std::string> bytes = hexBytesOf(in.text("dataHex"));
    if (!bytes) {
        in.fail("dataHex", "is not bytes in hexadecimal digits");
    }
    if (in.has("data")) {
        in.fail("dataHex", "stands beside data");
    }
    return *bytes;
}

void readStreamEvents(JsonReader& in, StreamEvents& all) {
    all.tag = tagOf(in, all.tag);
    all.pid = pidOf(in);
    all.object = objectPathOf(in, "object");
    all.carouselTag = in.numberOf<std::uint8_t>("carouselTag", all.carouselTag);
    all.carouselPid = pidOf(in, "carouselPid");
    in.list("events", [&all](JsonReader& one) {
        StreamEvent& event = all.events.emplace_back();
        event.eventId = one.numberOf<std::uint16_t>("id");
        event.name = one.text("name", "");
        event.data = dataOf(one);
        event.second = secondOf(one);
        if (event.data.size() > kLongestText) {
            one.fail("data", "is longer than " + std::to_string(kLongestText) + " bytes");
        }
    });
    checkOrder(in, "events", all.events);
}

CarouselEvents readEventObject(JsonReader& in, std::uint8_t streamTag) {
    CarouselEvents events;
    events.path = objectPathOf(in, "path");
    if (events.path.empty()) {
        in.fail("path", "is missing");
    }
    events.streamTag = in.numberOf<std::uint8_t>("streamTag", streamTag);
    in.list("events",
            [&events](JsonReader& one) { events.idsByName[one.text("name")] = one.numberOf<std::uint16_t>("id"); });
    return events;
}

void readVersions(JsonReader& in, std::vector<CarouselVersion>& versions) {
    if (in.has("folder")) {
        versions.push_back({0, in.text("folder")});
    }
    in.list("versions", [&versions](JsonReader& one) {
        const Second second = secondOf(one);
        versions.push_back({second, one.text("folder")});
    });
    checkOrder(in, "versions", versions);
    if (versions.empty()) {
        in.fail("folder", "is missing, and versions too");
    }
}

Carousel readCarousel(JsonReader& in, std::size_t number, const Service& service) {
    constexpr std::uint64_t kLargestBlock = 4066;  // what a section has room for
    constexpr std::uint64_t kLargestModule = std::uint64_t{1} << 24U;
    constexpr std::size_t kFirstTag = 32;
    Carousel carousel;
    carousel.id = in.numberOf<std::uint32_t>("id", number + 2);
    carousel.bitRate = in.number("bitRate", 1000, 200000000, carousel.bitRate);
    carousel.blockSize = static_cast<std::size_t>(in.number("blockSize", 1, kLargestBlock, carousel.blockSize));
    carousel.moduleSize = static_cast<std::size_t>(in.number("moduleSize", 1, kLargestModule, carousel.moduleSize));
    carousel.isCompressed = !in.has("compress") || in.flag("compress");
    carousel.tag = in.numberOf<std::uint8_t>("tag", kFirstTag + number);
    carousel.pid = pidOf(in);
    if (in.has("blockTag")) {
        carousel.blockTag = in.numberOf<std::uint8_t>("blockTag");
        carousel.blockPid = pidOf(in, "blockPid");
    }
    readVersions(in, carousel.versions);
    in.list("eventObjects", [&](JsonReader& one) {
        carousel.eventObjects.push_back(readEventObject(one, service.streamEvents.tag.value_or(0)));
    });
    in.list("contentTypes", [&carousel](JsonReader& one) {
        std::string& type = carousel.contentTypes[objectPathOf(one, "path")];
        type = one.text("type");
        if (type.size() > kLongestText) {
            one.fail("type", "is longer than " + std::to_string(kLongestText) + " bytes");
        }
    });
    return carousel;
}

PrivateSections readPrivateSections(JsonReader& in) {
    constexpr std::uint64_t kShortest = 16;
    PrivateSections sections;
    sections.tag = tagOf(in, std::nullopt);
    sections.pid = pidOf(in);
    sections.tableId = static_cast<std::uint8_t>(in.number("tableId", 0x40, 0xFE, sections.tableId));
    sections.perSecond = static_cast<unsigned int>(in.number("perSecond", 1, 10000, sections.perSecond));
    sections.size = static_cast<unsigned int>(in.number("size", kShortest, si::kLongestSection, sections.size));
    return sections;
}

Service readService(JsonReader& in) {
    Service service;
    service.serviceId = static_cast<std::uint16_t>(in.number("id", 1, 0xFFFF));
    service.serviceType = in.numberOf<std::uint8_t>("type", 0x19);
    service.name = dvbText(in, "name");
    service.isSilent = in.flag("silent");
    service.pmtPid = pidOf(in, "pmtPid");
    in.list("components", [&](JsonReader& one) { service.components.push_back(readComponent(one)); });
    in.list("events", [&](JsonReader& one) { service.events.push_back(readEvent(one)); });
    service.hasSchedule = in.flag("schedule");
    in.object("ait", [&](JsonReader& one) { readAit(one, service.ait); });
    in.object("streamEvents", [&](JsonReader& one) { readStreamEvents(one, service.streamEvents); });
    in.list("carousels", [&](JsonReader& one) {
        service.carousels.push_back(readCarousel(one, service.carousels.size(), service));
    });
    in.object("temi", [&](JsonReader& one) {
        service.timelineId = one.numberOf<std::uint8_t>("timelineId");
        service.timescale = static_cast<std::uint32_t>(one.number("timescale", 1, 0xFFFFFFFF));
    });
    in.list("privateSections", [&](JsonReader& one) { service.privateSections.push_back(readPrivateSections(one)); });
    return service;
}

OtherStream readOtherStream(JsonReader& in) {
    OtherStream stream;
    stream.originalNetworkId = in.numberOf<std::uint16_t>("originalNetworkId");
    stream.transportStreamId = in.numberOf<std::uint16_t>("transportStreamId");
    stream.deliverySystem = hexDescriptors(in, "deliverySystem");
    in.list("services", [&stream](JsonReader& one) {
        OtherService& service = stream.services.emplace_back();
        service.serviceId = static_cast<std::uint16_t>(one.number("id", 1, 0xFFFF));
        service.serviceType = one.numberOf<std::uint8_t>("type", 0x19);
        service.name = dvbText(one, "name");
    });
    return stream;
}

Multiplex readMultiplex(JsonReader& in) {
    Multiplex multiplex;
    multiplex.bitRate = in.number("bitRate", 100000, 200000000, multiplex.bitRate);
    multiplex.originalNetworkId = in.numberOf<std::uint16_t>("originalNetworkId");
    multiplex.transportStreamId = in.numberOf<std::uint16_t>("transportStreamId");
    multiplex.networkName = dvbText(in, "networkName");
    multiplex.provider = dvbText(in, "provider");
    multiplex.start = timeOf(in, "start");
    multiplex.deliverySystem = hexDescriptors(in, "deliverySystem");
    in.list("services", [&](JsonReader& one) {
        Service service = readService(one);
        for (const Service& other : multiplex.services) {
            if (other.serviceId == service.serviceId) {
                one.fail("id", std::to_string(service.serviceId) + " is the id of an earlier service too");
            }
        }
        multiplex.services.push_back(std::move(service));
    });
    in.list("otherStreams", [&](JsonReader& one) { multiplex.otherStreams.push_back(readOtherStream(one)); });
    return multiplex;
}

/// An error shows the wrong value, and so goes down all of its levels: a deep one would exhaust the stack.
nlohmann::json parseJson(const std::string& text) {
    constexpr int kDeepest = 32;
    constexpr bool kWithExceptions = true;
    constexpr bool kWithComments = true;
    const auto keep = [](int depth, nlohmann::json::parse_event_t, const nlohmann::json&) {
        if (depth > kDeepest) {
            throw DescriptionError("lists and objects are nested more than " + std::to_string(kDeepest) + " times");
        }
        return true;
    };
    return nlohmann::json::parse(text, keep, kWithExceptions, kWithComments);
}

}  // namespace

std::optional<Multiplex> parseDescription(const std::string& text, std::string& error) {
    try {
        const nlohmann::json json = parseJson(text);
        JsonReader reader(json, "");
        Multiplex multiplex = readMultiplex(reader);
        reader.finish();
        if (assignPids(multiplex, error)) {
            return multiplex;
        }
    } catch (const nlohmann::json::exception& failure) {
        error = failure.what();
    } catch (const DescriptionError& failure) {
        error = failure.what();
    }
    return std::nullopt;
}

}  // namespace tsmake
