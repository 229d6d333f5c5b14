// The browser's room for the broadcast in the test's own process, beside a service process.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <list>
#include <memory>

#include "broadcast.h"
#include "broadcasts.h"
#include "description.h"
#include "posted_tasks.h"
#include "service_process.h"

using nlohmann::json;

/// The loop of a test. Events may still be posted after the test, so it is kept for the life of the process.
class TestLoop : public PostedTasks {
public:
    static TestLoop& make() {
        static auto& all = *new std::list<TestLoop>;
        return all.emplace_back();
    }
};

/// Makes a broadcast of a description, and writes its first seconds.
inline std::string broadcastOf(const std::string& description, unsigned int seconds, const std::string& name) {
    std::string error;
    const std::optional<tsmake::Multiplex> multiplex = tsmake::parseDescription(description, error);
    EXPECT_TRUE(multiplex) << error;
    return multiplex ? writeBroadcast(*multiplex, seconds, name) : "";
}

inline json tripletOf(int sid, int tsid = 1025) {
    return {{"onid", 1}, {"tsid", tsid}, {"sid", sid}};
}

struct RoomEvent {
    std::string name;
    json value;
};

/// A room with its loop, and the events that it has told.
class RunningRoom {
public:
    RunningRoom() {
        std::string error;
        const std::optional<tvbrowser::Library> library = tvbrowser::loadLibrary(LIBRARY_FILE, error);
        EXPECT_TRUE(library) << error;
        room = std::make_unique<tvbrowser::Broadcast>(
            *library, [&posts = loop](std::function<void()> task) { posts.post(std::move(task)); },
            [this](const std::string& name, const json& value) {
                events.push_back({name, value});
            });
    }

    template <typename Condition>
    bool becomes(Condition condition) {
        return eventually([&] {
            loop.run();
            return condition();
        });
    }
    json call(const std::string& name, const json& argument = nullptr) { return room->call(name, argument); }
    bool has(const std::string& name, const json& value) const {
        return std::any_of(events.begin(), events.end(),
                           [&](const RoomEvent& event) { return event.name == name && event.value == value; });
    }
    std::ptrdiff_t count(const std::string& name) const {
        return std::count_if(events.begin(), events.end(), [&](const RoomEvent& event) { return event.name == name; });
    }
    bool hears(const std::string& name, const json& value = nullptr) {
        return becomes([&] { return has(name, value); });
    }
    bool presents(int sid, int tsid = 1025) {
        return becomes([&] { return call("presented") == tripletOf(sid, tsid); });
    }
    /// Repeats the tune until the service has read enough of the broadcast.
    bool tunesTo(int sid, int tsid = 1025) {
        json argument = tripletOf(sid, tsid);
        argument["idType"] = 12;
        return becomes([&] {
            if (call("presented") != tripletOf(sid, tsid)) {
                call("tune", argument);
            }
            return call("presented") == tripletOf(sid, tsid);
        });
    }
    /// The names of the channels, when there are as many.
    std::vector<std::string> channelNames(std::size_t count) {
        std::vector<std::string> names;
        becomes([&] {
            names.clear();
            for (const json& channel : call("channels")) {
                names.push_back(channel["name"]);
            }
            return names.size() == count && std::find(names.begin(), names.end(), "") == names.end();
        });
        return names;
    }

    TestLoop& loop = TestLoop::make();
    std::vector<RoomEvent> events;
    std::unique_ptr<tvbrowser::Broadcast> room;
};

class TheBroadcastRoom : public testing::Test {
protected:
    bool connects() {
        return room.becomes([&] { return room.room->isConnected() && room.room->presented(); });
    }

    RunningRoom room;
};
