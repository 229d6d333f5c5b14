// The actions of steps.
#include "service_faults.h"

#include <algorithm>
#include <utility>

#include "dtv_optional/peer_process.h"
#include "service_log.h"

namespace dtvservice {

using nlohmann::json;

ServiceFaults::ServiceFaults(Core& newCore, Transport newTransport, MessageFaults::Over newOver)
    : core(newCore),
      transport(std::move(newTransport)),
      over(std::move(newOver)),
      messages([this](FaultId id) {
          lasting.erase(id);
          over(id);
      }),
      events(newCore, messages) {}

std::string ServiceFaults::begin(const Step& step, std::uint32_t asker, FaultId id) {
    const std::string name = step.action->name;
    const Asked asked = {step.values, name, asker, id};
    if (step.action->kind == Action::Kind::request) {
        return request(asked);
    }
    std::string problem = begin(asked);
    if (problem.empty() && step.action->kind == Action::Kind::fault) {
        lasting[id] = name;
    }
    return problem;
}

std::string ServiceFaults::begin(const Asked& asked) {
    using Packets = PacketFaults::Kind;
    using Messages = MessageFaults::Kind;
    static const std::map<std::string, std::function<std::string(ServiceFaults&, const Asked&)>> kFaults = {
        {"signal-lost", &ServiceFaults::loseSignal},
        {"packets-lost", [](auto& self, const Asked& each) { return self.addPackets(each, Packets::withheld); }},
        {"packets-damaged", [](auto& self, const Asked& each) { return self.addPackets(each, Packets::damaged); }},
        {"pid-withheld", [](auto& self, const Asked& each) { return self.addPackets(each, Packets::withheld); }},
        {"service-stopped", &ServiceFaults::stopService},
        {"service-frozen", &ServiceFaults::freeze},
        {"answer-withheld", [](auto& self, const Asked& each) { return self.addMessages(each, Messages::withheld); }},
        {"answer-late", [](auto& self, const Asked& each) { return self.addMessages(each, Messages::late); }},
        {"answer-twice", [](auto& self, const Asked& each) { return self.addMessages(each, Messages::twice); }},
        {"commands-dropped",
         [](auto& self, const Asked& each) { return self.addMessages(each, Messages::commandDropped); }},
        {"sections-dropped",
         [](auto& self, const Asked& each) { return self.addMessages(each, Messages::sectionDropped); }},
        {"browser-disconnected", &ServiceFaults::disconnect},
        {"undo", &ServiceFaults::undoNamed}};
    return kFaults.at(asked.name)(*this, asked);
}

/// The operator's own code does it, so a scenario and dtvctl cannot differ.
std::string ServiceFaults::request(const Asked& asked) {
    json line = asked.values;
    line["command"] = asked.name;
    const json answer = json::parse(core.requests.answer(line.dump(-1, ' ', false, json::error_handler_t::replace)));
    return answer.at("ok").get<bool>() ? "" : answer.at("error").get<std::string>();
}

/// Adds the fault to the inputs that it is for; false if there is none.
bool ServiceFaults::setPacketFault(const json& values, const PacketFaults::Fault& fault) {
    bool isFound = false;
    for (Multiplex& multiplex : core.multiplexes) {
        if (!values.contains("input") || values["input"] == core.multiplexes.numberOf(multiplex)) {
            PacketFaults& faults = packets[&multiplex];
            faults.add(fault);
            multiplex.demux.disturb([&faults](broadcast::TsPacket packet) { return faults.pass(packet); });
            isFound = true;
        }
    }
    return isFound;
}

std::string ServiceFaults::addPackets(const Asked& asked, PacketFaults::Kind kind) {
    constexpr double kAll = 100;
    const json& values = asked.values;
    std::optional<std::uint16_t> pid;
    if (values.contains("pid")) {
        pid = values["pid"].get<std::uint16_t>();
    }
    const PacketFaults::Fault fault = {asked.id, kind, pid, values.value("percent", kAll),
                                       std::mt19937(values.value("seed", 1U))};
    return setPacketFault(values, fault) ? "" : "there is no such input";
}

/// The operator sees an input that has failed. Browsers see what they see then.
std::string ServiceFaults::loseSignal(const Asked& asked) {
    std::string problem = addPackets(asked, PacketFaults::Kind::withheld);
    for (Multiplex& multiplex : core.multiplexes) {
        if (!asked.values.contains("input") || asked.values["input"] == core.multiplexes.numberOf(multiplex)) {
            multiplex.report.failed("the signal is lost, by a scenario");
            signals[asked.id].insert(&multiplex);
        }
    }
    return problem;
}

void ServiceFaults::undoPackets(FaultId id) {
    for (Multiplex& multiplex : core.multiplexes) {
        const auto faults = packets.find(&multiplex);
        if (faults != packets.end()) {
            faults->second.remove(id);
            if (faults->second.empty()) {
                multiplex.demux.disturb(nullptr);
                packets.erase(faults);
            }
        }
    }
}

/// An input may be lost by several faults; it is back after the last one.
void ServiceFaults::restoreSignal(FaultId id) {
    const auto found = signals.find(id);
    if (found == signals.end()) {
        return;
    }
    const std::set<Multiplex*> restored = std::move(found->second);
    signals.erase(found);
    for (Multiplex* const multiplex : restored) {
        const bool isStillLost = std::any_of(signals.begin(), signals.end(), [multiplex](const auto& other) {
            return other.second.count(multiplex) != 0;
        });
        if (!isStillLost) {
            multiplex->demux.discontinuity();
            multiplex->report.opened(EventLoop::Clock::now());
        }
    }
}

Browser ServiceFaults::browserOf(const Asked& asked) {
    return asked.values.value("browser", asked.asker);
}

std::string ServiceFaults::addMessages(const Asked& asked, MessageFaults::Kind kind) {
    const json& values = asked.values;
    MessageFaults::Fault fault;
    fault.id = asked.id;
    fault.kind = kind;
    fault.message = kind == MessageFaults::Kind::commandDropped
                        ? identifierOf(commandNames(), values.value("operation", std::string()))
                        : identifierOf(eventNames(), values.value("event", std::string()));
    fault.browser = browserOf(asked);
    fault.filter = values.value("filter", std::string());
    fault.left = values.value("times", std::uint64_t{0});
    fault.late = Step::Duration(values.value("by", 0.0));
    messages.add(std::move(fault));
    core.browsers.divert(&events);
    core.losesSection = [this](Browser browser, const std::string& filter) {
        return messages.dropsSection(browser, filter);
    };
    return "";
}

bool ServiceFaults::letsPass(Browser asker, std::uint32_t command) {
    if (!messages.dropsCommand(asker, command)) {
        return true;
    }
    core.tap.refused(bus::Direction::toService, asker, command, "dropped by a scenario");
    return false;
}

std::string ServiceFaults::stopService(const Asked& asked) {
    if (!transport.stop) {
        return "this service has no transport to stop";
    }
    if (!isStopped) {
        core.browsers.disconnect();
        transport.stop();
        isStopped = true;
    }
    stops.insert(asked.id);
    return "";
}

/// Tries again every second: the reason may pass.
void ServiceFaults::startTransport() {
    if (!isStopped || !stops.empty()) {
        return;
    }
    isStopped = !transport.start();
    if (isStopped != std::exchange(hasFailed, isStopped)) {
        BLOG_TAGGED(
            isStopped ? blog::kFailure : blog::kOrdinary, "%s\n",
            isStopped ? "browsers cannot connect again yet; trying every second" : "browsers can connect again");
    }
    if (isStopped) {
        core.loop.postAt(EventLoop::Clock::now() + std::chrono::seconds(1), [this] { startTransport(); });
    }
}

std::string ServiceFaults::freeze(const Asked& asked) {
    const auto length = std::chrono::duration_cast<EventLoop::Clock::duration>(
        Step::Duration(asked.values.at("seconds").get<double>()));
    core.loop.freezeUntil(EventLoop::Clock::now() + length);
    return "";
}

std::string ServiceFaults::disconnect(const Asked& asked) {
    if (dtv_optional::disconnectPeer == nullptr) {
        return "this platform cannot end a connection";
    }
    const Browser only = browserOf(asked);
    bool isDone = false;
    for (const Browser browser : core.browsers.all()) {
        if (only == 0 || only == browser) {
            isDone = dtv_optional::disconnectPeer(browser) || isDone;
        }
    }
    return isDone ? "" : "there is no such browser";
}

std::string ServiceFaults::undoNamed(const Asked& asked) {
    std::vector<FaultId> ended;
    for (const auto& [id, name] : lasting) {
        if (!asked.values.contains("fault") || asked.values["fault"] == name) {
            ended.push_back(id);
        }
    }
    for (const FaultId id : ended) {
        undo(id);
        over(id);
    }
    return ended.empty() ? "no such fault lasts" : "";
}

void ServiceFaults::undo(FaultId id) {
    lasting.erase(id);
    messages.remove(id);
    undoPackets(id);
    restoreSignal(id);
    if (stops.erase(id) != 0) {
        startTransport();
    }
}

void ServiceFaults::undoAll() {
    const std::map<FaultId, std::string> all = lasting;
    for (const auto& fault : all) {
        undo(fault.first);
    }
    messages.clear();
    core.browsers.divert(nullptr);
    core.losesSection = nullptr;
}

}  // namespace dtvservice
