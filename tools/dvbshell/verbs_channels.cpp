// The verbs about channels: tune, channels, info, watch.
#include "channels.h"
#include "tuning.h"
#include "verbs.h"

namespace dvbshell {

namespace {

constexpr std::chrono::seconds kLongestScan{5};
constexpr std::chrono::seconds kLongestForName{2};

Job prepareTune(ArgumentReader& reader) {
    constexpr unsigned int kMostIdType = 0x7FFFFFFF;
    const Triplet channel = reader.triplet(reader.argument());
    const auto idType = static_cast<int>(reader.option("id-type", kMostIdType).value_or(kIdTypeDvbTerrestrial));
    const std::chrono::seconds longest = reader.seconds().value_or(kLongestTune);
    return [channel, idType, longest](Session& session) {
        startTune(session, idType, channel);
        return followTune(session, goalOf(channel), Clock::now() + longest);
    };
}

std::vector<message_fields::FieldValue> valuesOf(const Triplet& channel) {
    return {namedValue("onid", channel.onid), namedValue("tsid", channel.tsid), namedValue("sid", channel.sid)};
}

void reportChannel(Session& session, const Channel& channel, bool isPresented) {
    const std::string line = tripletText(channel.triplet) + "  " + (channel.name.empty() ? "-" : channel.name);
    std::vector<message_fields::FieldValue> values = valuesOf(channel.triplet);
    values.push_back(namedValue("name", channel.name));
    session.report({line + (isPresented ? "  (presented)" : "")}, "channel", std::move(values));
}

int listChannels(Session& session, std::chrono::seconds longest) {
    ChannelScan scan(session);
    if (!scan.isOpen()) {
        return fail(session, "the DTV service did not open the filters on PAT, SDT and NIT");
    }
    scan.wait(Clock::now() + longest);
    const std::optional<Triplet> presented = session.presented();
    for (const Channel& channel : scan.list().channels()) {
        session.knownChannels.insert(tripletText(channel.triplet));
        reportChannel(session, channel, presented && presented->sid == channel.triplet.sid);
    }
    if (session.connection.isGone()) {
        return kNoService;
    }
    if (!scan.list().hasPat()) {
        return failInTime(session, "channels: no complete PAT came in " + std::to_string(longest.count()) + " s");
    }
    if (!scan.list().hasNames()) {
        failInTime(session,
                   "channels: no complete SDT came in " + std::to_string(longest.count()) + " s: names are missing");
    }
    return kDone;
}

Job prepareChannels(ArgumentReader& reader) {
    const std::chrono::seconds longest = reader.seconds().value_or(kLongestScan);
    return [longest](Session& session) { return listChannels(session, longest); };
}

int showPresented(Session& session, std::chrono::seconds longest) {
    const std::optional<Triplet> channel = session.presented();
    std::string name;
    if (channel) {
        ChannelScan scan(session);
        scan.wait(Clock::now() + longest);
        name = scan.list().nameOf(*channel);
    }
    const std::string ccid = session.host.api.getCurrentCCID();
    const std::uint64_t bytes = session.host.api.getCurrentDsd().size();
    constexpr Triplet kUnknown{kMostNumber16, kMostNumber16, kMostNumber16};
    std::vector<message_fields::FieldValue> values = valuesOf(channel.value_or(kUnknown));
    values.insert(values.end(), {namedValue("name", name), namedValue("ccid", ccid), namedValue("dsd_bytes", bytes)});
    session.report(
        {"channel  " + ccid + (name.empty() ? "" : "  " + name), "dsd      " + std::to_string(bytes) + " bytes"},
        "info", std::move(values));
    return channel ? kDone : kFailed;
}

Job prepareInfo(ArgumentReader& reader) {
    const std::chrono::seconds longest = reader.seconds().value_or(kLongestForName);
    return [longest](Session& session) { return showPresented(session, longest); };
}

int watch(Session& session, Clock::time_point end) {
    while (const std::optional<Event> event = session.next(session.events, end, true)) {
        session.print(*event);
    }
    return kDone;
}

Job prepareWatch(ArgumentReader& reader) {
    const std::optional<std::chrono::seconds> longest = reader.seconds();
    return [longest](Session& session) {
        return watch(session, longest ? Clock::now() + *longest : Clock::time_point::max());
    };
}

}  // namespace

VerbGroup channelVerbs() {
    return {
        "Channels",
        {
            {{"tune",
              {channelArgument("ONID:TSID:SID")},
              "present a channel, and print what arrives",
              "The numbers are decimal, or hexadecimal after 0x. At the prompt the command ends when the channel is "
              "presented, on the command line after --seconds. If there is no such channel it fails, and names the "
              "channel that stays.",
              "tune 1:1025:28106"},
             prepareTune,
             Verb::Needs::events},
            {{"channels",
              {},
              "list the presented multiplex, with names",
              "The interface has no operation for a channel list, so this reads PAT, SDT and NIT through section "
              "filters, for at most --seconds (5).",
              "channels --seconds 10"},
             prepareChannels},
            {{"info", {}, "print the presented channel", "Waits for its name for at most --seconds (2).", "info"},
             prepareInfo},
            {{"watch",
              {},
              "print what arrives, until Ctrl-C",
              "With --seconds it ends by itself. It goes on without the DTV service, and tells when that goes and "
              "comes back.",
              "watch --seconds 10"},
             prepareWatch,
             Verb::Needs::events},
        },
    };
}

}  // namespace dvbshell
