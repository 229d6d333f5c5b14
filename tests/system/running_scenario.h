// A scenario that dtvctl runs for a test: an example, or a text of the test's own.
#pragma once

#include <gmock/gmock.h>

#include <regex>

#include "service_process.h"

class RunningScenario {
public:
    /// Starts a file; returns when the service has begun it.
    RunningScenario(const ServiceProcess& service, const std::string& name, const std::string& file)
        : begun("scenario " + name + ": started"),
          before(service.log().rfind(begun)),
          console(DTVCTL, {"--json", "run", file}, "run") {
        EXPECT_TRUE(eventually([&] { return service.log().rfind(begun) != before; })) << console.output();
    }

    static std::string exampleFile(const std::string& name) { return std::string(EXAMPLES) + "/" + name + ".json"; }
    /// A file with this text.
    static std::string file(const std::string& name, const std::string& text) {
        std::string path = OwnRunDirectory::instance().path() + "/" + name + ".json";
        std::ofstream(path) << text;
        return path;
    }
    /// The example with faults that last until stop(), for what may take its time.
    static std::string lastingFile(const std::string& name) {
        static const std::regex kSeconds(R"("seconds": [0-9.]+)");
        return file(name, std::regex_replace(fileText(exampleFile(name)), kSeconds, "\"seconds\": 600"));
    }

    /// Waits until it has ended by itself, each step done.
    void ends() {
        const bool hasEnded =
            eventually([this] { return console.output().find("\"event\":\"scenario_ended\"") != std::string::npos; });
        EXPECT_EQ(hasEnded ? console.wait() : console.end(SIGINT), 0) << console.output();
        EXPECT_THAT(console.output(), testing::HasSubstr("\"steps_failed\":0"));
    }
    /// Ends it.
    void stop() {
        EXPECT_EQ(console.end(SIGINT), 1);
        EXPECT_THAT(console.output(), testing::HasSubstr("\"event\":\"scenario_ended\""));
    }

private:
    const std::string begun;
    const std::size_t before;  // where the log has it of an earlier one
    ChildProcess console;
};
