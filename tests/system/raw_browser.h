// A browser without the library: it sends every command itself and records every event with all values.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <boost/make_shared.hpp>
#include <sstream>

#include "app-browserdvbservice-proxy-main.h"
#include "broadcasts.h"
#include "frame/process.h"
#include "recording_client.h"
#include "service_process.h"

class ARawBrowser : public testing::Test {
protected:
    ARawBrowser() {
        frame::Process process = frame::Process::getInstance();
        EXPECT_EQ(process.startAppMembersSync(CreateBrowserDvbServiceProxy), 0);
        EXPECT_EQ(process.getInterfaceReference(reference, lo::browserdvbservice::kInterfaceName), 0);
        service = static_cast<lo::browserdvbservice::ServiceInterface*>(reference->pointer());
        service->addClient(client);
    }
    ~ARawBrowser() override {
        if (service != nullptr) {
            leaves();
        }
    }

    void leaves() {
        service->removeClient(client);
        service = nullptr;
        frame::Process::getInstance().stopAppMembers();
    }

    /// Sends a command until it reaches the service.
    template <typename Command, typename... Arguments>
    bool sends(Command command, const Arguments&... arguments) {
        return eventually([&] {
            frame::MsgIds ids;
            return (service->*command)(ids, frame::TransportInfo(), arguments...) == 0;
        });
    }
    /// The tune command's channel for a service of the sample's multiplex.
    static lo::browserdvbservice::TuneInfoChannel channelOf(const tsmake::Service& wanted) {
        lo::browserdvbservice::TuneInfoChannel channel;
        channel.idType = 12;
        channel.onid = 1;
        channel.tsid = 1025;
        channel.sid = wanted.serviceId;
        return channel;
    }
    /// Tunes until the service is presented and its PMT has arrived. Then waits until every sent tune is done.
    bool presents(const tsmake::Service& wanted) {
        const lo::browserdvbservice::TuneInfoChannel channel = channelOf(wanted);
        const std::string pmt = shownValue(asText(tsmake::pmtSection(wanted)));
        return eventually([&] {
                   sends(&lo::browserdvbservice::ServiceInterface::cmdTuneToService, channel);
                   return heard("onPmtDataChange(1, 1025, " + std::to_string(wanted.serviceId) + ", 0, " + pmt + ")");
               }) &&
               answersWhatWasAsked();
    }
    /// Waits for an event by its text.
    testing::AssertionResult hears(const std::string& text) {
        if (eventually([&] { return heard(text); }, std::chrono::seconds(10))) {
            return testing::AssertionSuccess();
        }
        return testing::AssertionFailure() << testing::PrintToString(client->texts());
    }
    bool heard(const std::string& text) const {
        const std::vector<std::string> texts = client->texts();
        return std::find(texts.begin(), texts.end(), text) != texts.end();
    }
    /// How often an event has arrived so far.
    std::ptrdiff_t timesHeard(const std::string& text) const {
        const std::vector<std::string> texts = client->texts();
        return std::count(texts.begin(), texts.end(), text);
    }
    /// Waits until the service has handled every command so far. It handles commands in order.
    bool answersWhatWasAsked() {
        const std::string answer = "onVodMaxdomeSecureSerialNumber(0:)";
        const auto before = timesHeard(answer);
        return sends(&Commands::cmdVodGetMaxdomeSecureSerialNumber, std::string()) &&
               eventually([&] { return timesHeard(answer) > before; });
    }
    /// The numbers of every event of that name so far.
    std::vector<std::vector<std::uint64_t>> numbersOf(const std::string& event) const {
        std::vector<std::vector<std::uint64_t>> all;
        for (const std::string& text : client->texts()) {
            if (text.compare(0, event.size() + 1, event + "(") == 0) {
                std::vector<std::uint64_t> numbers;
                std::istringstream values(text.substr(event.size() + 1));
                for (std::uint64_t number = 0; values >> number; values.ignore(2)) {
                    numbers.push_back(number);
                }
                all.push_back(std::move(numbers));
            }
        }
        return all;
    }

    /// What dtvctl prints for its arguments.
    static std::string operate(const std::vector<std::string>& arguments) {
        ChildProcess console(DTVCTL, arguments, "dtvctl");
        console.wait();
        return console.output();
    }

    using Commands = lo::browserdvbservice::ServiceInterface;
    boost::shared_ptr<frame::Interface> reference;
    lo::browserdvbservice::ServiceInterface* service = nullptr;
    boost::shared_ptr<RecordingClient> client = boost::make_shared<RecordingClient>();
};
