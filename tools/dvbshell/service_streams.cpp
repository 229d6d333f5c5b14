// Finds streams in PMTs.
#include "service_streams.h"

#include <algorithm>

#include "sections.h"
#include "words.h"

namespace dvbshell {

namespace {

constexpr std::chrono::seconds kLongestForPmt{5};

bool isWanted(const si::Pmt::Stream& stream, const StreamChoice& choice) {
    const std::optional<std::uint8_t> tag = si::componentTag(stream);
    return choice.tag ? tag && *tag == *choice.tag
                      : std::find(choice.types.begin(), choice.types.end(), stream.streamType) != choice.types.end();
}

}  // namespace

StreamChoice readChoice(ArgumentReader& reader, const std::optional<std::string>& argument,
                        std::vector<std::uint8_t> types, const char* what) {
    StreamChoice choice{std::nullopt, std::nullopt, std::move(types), what};
    if (!argument) {
        return choice;
    }
    const std::vector<std::string> parts = split(*argument, ':');
    choice.serviceId = reader.number("SID", parts[0], kMostNumber16);
    if (parts.size() > 1) {
        choice.tag = reader.number("TAG", parts[1], kMostByte);
    }
    if (parts.size() > 2) {
        reader.refuse("\"" + *argument + "\" is not SID or SID:TAG");
    }
    return choice;
}

ChosenStreams findStreams(Session& session, const StreamChoice& choice) {
    const std::optional<Triplet> presented = session.presented();
    if (!choice.serviceId && !presented) {
        fail(session, "no channel is presented; name a service");
        return {};
    }
    const unsigned int serviceId = choice.serviceId ? *choice.serviceId : static_cast<unsigned int>(presented->sid);
    const std::string service = "service " + std::to_string(serviceId);
    const std::optional<std::string> section = awaitPmt(session, serviceId, Clock::now() + kLongestForPmt);
    std::string error;
    const std::optional<si::Pmt> pmt = section ? si::parsePmt(*section, error) : std::nullopt;
    if (!pmt) {
        section
            ? fail(session, "the PMT of " + service + " cannot be read: " + error)
            : failInTime(session, "no PMT of " + service + " came in " + std::to_string(kLongestForPmt.count()) + " s");
        return {};
    }
    ChosenStreams chosen{*pmt, {}};
    for (const si::Pmt::Stream& stream : pmt->streams) {
        if (isWanted(stream, choice)) {
            chosen.pids.push_back(stream.pid);
        }
    }
    if (chosen.pids.empty()) {
        fail(session, service + " has no " +
                          (choice.tag ? "component with the tag " + std::to_string(*choice.tag)
                                      : std::string("component that may carry ") + choice.what));
    }
    return chosen;
}

}  // namespace dvbshell
