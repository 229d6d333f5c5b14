// Section filters without a DTV service: a test says what they answer, and delivers sections.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <deque>
#include <map>
#include <mutex>
#include <set>
#include <string>

#include "dvb_section_interface.h"
#include "eventually.h"
#include "posted_tasks.h"
#include "section_filters.h"
#include "values.h"

/// It lives as long as the process, because workers that have to end use it.
class FakeFilters final : public velmora::dtv::DVBSectionInterface {
public:
    struct Open {
        velmora::dtv::SectionFilterClient* client;
        unsigned int pid;
        unsigned int table;
    };

    void AddRef() override {}
    void Release() override {}
    std::string name() override { return "SectionFilterAPI"; }
    int startPMTRequest(velmora::dtv::SectionFilterClient*, const std::string&, unsigned int) override { return 0; }
    int stopPMTRequest(velmora::dtv::SectionFilterClient*, const std::string&) override { return 0; }
    std::string generateSessionName() override {
        static std::atomic<unsigned int> sessions{0};  // of all fakes: one router has the sessions of a process
        return "session " + std::to_string(++sessions);
    }
    bool startSection(velmora::dtv::SectionFilterClient* client, const std::string& session, unsigned int pid,
                      const unsigned char* mask, const unsigned char*, int length) override {
        while (hangs) {
            std::this_thread::yield();
        }
        const locks::Lock lock(mutex);
        ++starts;
        if (!refuses) {
            open[session] = {client, pid, length == 0 ? 0U : mask[0]};
        }
        return !refuses;
    }
    bool stopSection(velmora::dtv::SectionFilterClient*, const std::string& session) override {
        const locks::Lock lock(mutex);
        return open.erase(session) != 0;
    }

    std::size_t openCount() {
        const locks::Lock lock(mutex);
        return open.size();
    }
    std::set<std::string> openSessions() {
        const locks::Lock lock(mutex);
        std::set<std::string> sessions;
        for (const auto& [session, filter] : open) {
            sessions.insert(session);
        }
        return sessions;
    }
    /// To every filter of the PID and table, as the delivery thread does.
    void deliver(unsigned int pid, const std::vector<std::uint8_t>& section) {
        std::map<std::string, Open> now;
        {
            const locks::Lock lock(mutex);
            now = open;
        }
        for (const auto& [session, filter] : now) {
            if (filter.pid == pid && filter.table == section[0]) {
                filter.client->onSectionData(session, pid, section.data(), static_cast<unsigned int>(section.size()));
            }
        }
    }

    std::atomic<bool> refuses{false};
    std::atomic<bool> hangs{false};
    std::atomic<unsigned int> starts{0};

private:
    std::mutex mutex;
    std::map<std::string, Open> open GUARDED_BY(mutex);
};

inline FakeFilters& newFakeFilters() {
    static auto& all = *new std::deque<FakeFilters>;
    return all.emplace_back();
}

/// Posted on the test's thread and on those of workers.
class Tasks : public PostedTasks {
public:
    tvbrowser::Post post() {
        return [this](std::function<void()> task) { PostedTasks::post(std::move(task)); };
    }
};
