// The verbs about tables: sections, pmt, ait.
#include "ait_link.h"
#include "interrupt.h"
#include "sections.h"
#include "tuning.h"
#include "verbs.h"

namespace dvbshell {

namespace {

constexpr std::chrono::seconds kLongest{5};
constexpr std::chrono::seconds kLongestOfCount{60};
constexpr const char* kJsonOrHex = "--hex prints no JSON; the objects of --json have the bytes in \"section\"";

Pattern readPattern(ArgumentReader& reader) {
    const command_line::Arguments& arguments = reader.arguments();
    const Pattern given{reader.bytes("--match", arguments.value("match").value_or("")),
                        reader.bytes("--mask", arguments.value("mask").value_or(""))};
    Pattern pattern = given;
    if (given.match.size() != given.mask.size()) {
        reader.refuse("--match has " + std::to_string(given.match.size()) + " bytes, --mask " +
                      std::to_string(given.mask.size()));
    }
    const std::optional<std::string> table = arguments.value("table");
    if (table && !setTable(*table, pattern)) {
        reader.refuse("--table: \"" + *table + "\" is not ID or ID/MASK, each from 0 to 255");
    }
    return pattern;
}

Job prepareSections(ArgumentReader& reader) {
    constexpr unsigned int kMostSections = 1000000000;
    SectionsRequest request;
    request.pid = reader.number("PID", reader.argument(), kMostPid);
    request.pattern = readPattern(reader);
    request.count = reader.option("count", kMostSections);
    request.longest = reader.seconds().value_or(request.count ? kLongestOfCount : kLongest);
    if (const std::optional<std::string> path = reader.arguments().value("out")) {
        request.show = SectionsRequest::Show::file;
        request.path = *path;
    } else if (reader.arguments().has("hex")) {
        request.show = SectionsRequest::Show::hexadecimal;
    }
    const bool asLines = request.show == SectionsRequest::Show::hexadecimal;
    if (asLines && reader.arguments().has("json")) {
        reader.refuse(kJsonOrHex);
    }
    return [request, asLines](Session& session) {
        // A prompt may write JSON, too.
        if (asLines && session.json) {
            fail(session, kJsonOrHex);
            return static_cast<int>(kUsageError);
        }
        return followSections(session, request);
    };
}

Job preparePmt(ArgumentReader& reader) {
    std::optional<unsigned int> service;
    if (reader.hasArgument()) {
        service = reader.number("SID", reader.argument(), kMostNumber16);
    }
    const std::chrono::seconds longest = reader.seconds().value_or(kLongest);
    return [service, longest](Session& session) {
        const std::optional<Triplet> presented = session.presented();
        if (!service && !presented) {
            return fail(session, "pmt: no channel is presented; name a service");
        }
        return followPmt(session, service ? *service : static_cast<unsigned int>(presented->sid), longest);
    };
}

bool replay(Session& session, const std::optional<Triplet>& wanted) {
    const std::optional<Triplet> channel = wanted ? wanted : session.presented();
    if (!channel) {
        fail(session, "ait: the current channel is not known");
        return false;
    }
    return session.host.ait != nullptr && session.host.ait->replay(channel->onid, channel->tsid, channel->sid);
}

/// Asks for the stored AIT and prints what comes of it. It has a moment to come even if the time is over.
int showStored(Session& session, const std::optional<Triplet>& wanted, Clock::time_point end) {
    constexpr std::chrono::milliseconds kQuiet{500};
    const bool asked = replay(session, wanted);
    bool came = false;
    session.takeUntilQuiet(kQuiet, std::max(end, Clock::now() + kQuiet), [&](const Event& event) {
        session.print(event);
        came = came || event.kind == EventKind::application;
    });
    if (asked && !came && !isInterrupted()) {
        session.printer.note("nothing is stored: no AIT has come, or its version is 0");
    }
    return asked ? kDone : kFailed;
}

/// Prints events until the AIT has arrived and no event follows for a moment.
bool followAit(Session& session, const std::optional<Triplet>& wanted, Clock::time_point end) {
    constexpr std::chrono::milliseconds kQuiet{500};
    bool came = false;
    Clock::time_point until = end;
    while (const std::optional<Event> event = session.next(session.events, until)) {
        session.print(*event);
        const bool isAit = event->kind == EventKind::ait || event->kind == EventKind::application;
        // The AIT of the previous channel may arrive first.
        came = came || (isAit && (!wanted || isOfChannel(*event, *wanted)));
        until = came ? std::min(end, Clock::now() + kQuiet) : end;
    }
    return came;
}

int ait(Session& session, const std::optional<Triplet>& wanted, std::chrono::seconds longest) {
    if (wanted) {
        startTune(session, kIdTypeDvbTerrestrial, *wanted);
    } else {
        // The service sends each AIT section once, so ask for them again.
        session.host.api.triggerAitRestart();
    }
    const Clock::time_point end = Clock::now() + longest;
    const bool came = followAit(session, wanted, end);
    if (session.connection.isGone()) {
        return kNoService;
    }
    if (!came) {
        return failInTime(session, "no AIT came in " + std::to_string(longest.count()) + " s");
    }
    session.printer.note("from memory:");
    return showStored(session, wanted, end);
}

Job prepareAit(ArgumentReader& reader) {
    const std::optional<Triplet> wanted =
        reader.hasArgument() ? std::make_optional(reader.triplet(reader.argument())) : std::nullopt;
    const std::chrono::seconds longest = reader.seconds().value_or(kLongest);
    const bool storedOnly = reader.arguments().has("stored");
    return [wanted, longest, storedOnly](Session& session) {
        return storedOnly ? showStored(session, wanted, Clock::now() + longest) : ait(session, wanted, longest);
    };
}

}  // namespace

VerbGroup tableVerbs() {
    return {
        "Tables",
        {
            {{"sections",
              {{"PID"}},
              "open a section filter and print its sections",
              "Ends after --count sections, or after --seconds (5; 60 with --count).",
              "sections 0x12 --table 0x4E --count 2"},
             prepareSections},
            {{"pmt",
              {{"[SID]"}},
              "print the PMT of a service",
              "Without a service_id, of the presented channel.",
              "pmt 28106"},
             preparePmt},
            {{"ait",
              {channelArgument("[ONID:TSID:SID]")},
              "print a channel's HbbTV applications",
              "Tunes to the channel, or asks for the AIT of the presented one again; prints what comes in --seconds "
              "(5); then prints the AIT that the library has stored.",
              "ait 1:1025:28106"},
             prepareAit,
             Verb::Needs::events},
        },
    };
}

}  // namespace dvbshell
