// A session on a recorded DVB API and on filters whose sections a test sends.
// Threads: one.
// Blocks:  never.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "captured_output.h"
#include "interrupt.h"
#include "recording_api.h"
#include "session.h"

/// Filters that record what is opened and closed, and give what a broadcast carries.
class RecordedFilters : public velmora::dtv::DVBSectionInterface {
public:
    std::vector<std::string> calls;
    bool accepts = true;
    /// Called when a filter on a PID is open.
    std::function<void()> opened = [] {};
    /// What each PID carries, and each service's PMT; sent when a filter for its table opens.
    std::map<unsigned int, std::vector<std::string>> broadcast;
    std::map<unsigned int, std::string> pmts;

    void AddRef() override {}
    void Release() override {}
    std::string name() override { return "SectionFilterAPI"; }
    int startPMTRequest(velmora::dtv::SectionFilterClient* client, const std::string& session,
                        unsigned int serviceId) override {
        calls.push_back("startPMTRequest " + std::to_string(serviceId));
        if (pmts.count(serviceId) != 0) {
            send(client, session, serviceId, pmts[serviceId]);
        }
        return 0;
    }
    int stopPMTRequest(velmora::dtv::SectionFilterClient*, const std::string&) override {
        calls.emplace_back("stopPMTRequest");
        return 0;
    }
    std::string generateSessionName() override { return "session " + std::to_string(++sessions); }
    bool startSection(velmora::dtv::SectionFilterClient* client, const std::string& session, unsigned int pid,
                      const unsigned char* match, const unsigned char*, int length) override {
        calls.push_back("startSection " + std::to_string(pid));
        for (const std::string& section : broadcast[pid]) {
            if (accepts && (length == 0 || static_cast<unsigned char>(section[0]) == match[0])) {
                send(client, session, pid, section);
            }
        }
        opened();
        return accepts;
    }
    bool stopSection(velmora::dtv::SectionFilterClient*, const std::string&) override {
        calls.emplace_back("stopSection");
        return true;
    }

private:
    static void send(velmora::dtv::SectionFilterClient* client, const std::string& session, unsigned int number,
                     const std::string& section) {
        client->onSectionData(session, number, reinterpret_cast<const unsigned char*>(section.data()),
                              static_cast<unsigned int>(section.size()));
    }
    int sessions = 0;
};

class ARecordedSession : public testing::Test {
protected:
    ARecordedSession() { dvbshell::clearInterrupt(); }

    RecordingApi api;
    RecordedFilters filters;
    dvbshell::EventQueue queue;
    CapturedOutput output;
    dvbshell::Printer printer{output.file()};
    dvbshell::Host host{api, dvbshell::makeListener(queue)};
    dvbshell::Session session{host, filters, queue, printer};
};
