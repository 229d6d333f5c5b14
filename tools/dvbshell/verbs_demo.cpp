// The demonstration as a verb of the command line.
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>

#include "ait_link.h"
#include "demo.h"
#include "verbs.h"

namespace dvbshell {

namespace {

bool readList(Session& session, const std::string& path, std::vector<ListedService>& services) {
    std::ifstream file(path);
    if (!file) {
        fail(session, "cannot open " + path + ": " + std::strerror(errno));
        return false;
    }
    const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    std::string error;
    if (!parseServiceList(text, services, error)) {
        fail(session, path + ": " + error);
        return false;
    }
    return true;
}

int demo(Session& session, const std::string& path, const std::vector<Triplet>& wanted) {
    std::vector<ListedService> services;
    if (!readList(session, path, services)) {
        return kFailed;
    }
    DemoPlan plan;
    std::string error;
    if (wanted.empty()) {
        plan = planDemo(services);
    } else if (!planDemo(services, wanted, plan, error)) {
        return fail(session, "demo: " + error);
    }
    const auto replay = [&session](const Triplet& channel) {
        session.host.ait->replay(channel.onid, channel.tsid, channel.sid);
    };
    return runDemo(session, plan, replay, kLongestForService);
}

Job prepareDemo(ArgumentReader& reader) {
    const std::string path = reader.argument();
    std::vector<Triplet> wanted;
    for (const std::string& text : reader.arguments().values("service")) {
        wanted.push_back(reader.triplet(text));
    }
    return [path, wanted](Session& session) { return demo(session, path, wanted); };
}

}  // namespace

VerbGroup commandLineVerbs() {
    return {
        "The demonstration",
        {{{"demo",
           {{"LIST", command_line::anyFile()}},
           "tune through the services of LIST",
           "LIST is what dtvserviced --list prints. The demonstration shows four services at most, first those with "
           "HbbTV applications, or those of --service; says which it leaves out; and ends with a summary of what "
           "has arrived.",
           "demo services.txt --service 1:1025:28106"},
          prepareDemo,
          Verb::Needs::events}}};
}

}  // namespace dvbshell
