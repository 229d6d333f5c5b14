// Lines, descriptions and other texts, and the steps of a section queue.
#include "description.h"
#include "running_service.h"
#include "seeds.h"

namespace fuzz {

namespace {

constexpr const char* kRequests[] = {
    R"({"command":"channels"})",
    R"({"command":"statistics"})",
    R"({"command":"tune","onid":1,"tsid":1025,"sid":28107})",
    R"({"command":"osd","layer":3,"on":true})",
    R"({"command":"ca-insert","slot":1})",
    R"({"command":"ca-reply","ca_session":77,"code":0,"message":"text"})",
    R"({"command":"ca-remove","slot":1})",
    R"({"command":"engine","engine_status":1})",
    R"({"command":"stop-terminals"})",
    R"({"command":"status"})",
    R"({"command":"scenario","text":"{\"seconds\":0,\"steps\":[{\"at\":0,\"packets-lost\":{\"percent\":9}}]}"})",
    R"({"command":"scenario-progress","from":0})",
    R"({"command":"scenario-stop"})",
};

void writeOperator(SeedFiles& files) {
    constexpr std::size_t kUntilPresented = 400;
    RunningService service;
    service.playSample(kUntilPresented);
    service.join(1);
    std::string all;
    for (const char* const request : kRequests) {
        files.add("operator_json", Seed().raw(std::string(request)));
        files.add("operator_json", Seed().raw(service.ask(request)));
        all += std::string(request) + "\n";
    }
    files.add("operator_json", Seed().raw(all));
    // Two answers, for the comparison of what has changed between them.
    files.add("operator_json", Seed().raw(service.ask(kRequests[9]) + "\n{\"ok\":true,\"browsers\":[2]}\n"));
}

void writeDescriptions(SeedFiles& files, const std::string& everything) {
    const std::string descriptions[] = {tsmake::sampleDescription(), everything, "{}",
                                        R"({"original_network_id":1,"transport_stream_id":2,"services":[]})"};
    for (const std::string& description : descriptions) {
        files.add("tsmake_descriptions", Seed().raw(description));
    }
}

void writeScenarios(SeedFiles& files) {
    for (
        const std::string scenario :
        {R"({"steps":[{"at":1,"tune":{"onid":1,"tsid":1025,"sid":28107}},{"at":2,"signal-lost":{"seconds":1}}]})",
         R"({"name":"n","seconds":9,"repeat":3,"stay":true,"steps":[{"upon":"cmdTuneToService","every":true,"undo":{}}]})",
         R"({"steps":[{"upon":"cmdTuneToService","nth":2,"browser":1,"after":0.5,"answer-late":{"by":1,"times":2}}]})",
         R"({"steps":[{"at":70000,"ca-reply":{"code":256}},{"upon":"cmdTune","packets-lost":{"percent":-1}}]})"}) {
        files.add("scenarios", Seed().raw(scenario));
    }
}

void writeChannels(SeedFiles& files) {
    for (const std::string info : {"1:1025:28106", "", "::", "1:2", "-1:2:3", "1:2:x", "1:2:3:4"}) {
        files.add("channel_info_text", Seed().raw(info));
        files.add("ccid_keys", Seed().u16(1).u16(2).u16(3).raw(info));
    }
}

void writeQueues(SeedFiles& files) {
    enum Step : unsigned int { kOverwrite, kRead, kWrite, kReopen };
    Seed steps;
    steps.u8(0);
    for (unsigned int count = 0; count < 6; ++count) {
        steps.u8(kWrite).chunk(std::string("section")).u8(kRead);
    }
    constexpr unsigned int kReadAt = 128;
    steps.u8(kOverwrite).u16(kReadAt).chunk(std::string(4, '\x55')).u8(kWrite).chunk(std::string("x")).u8(kReopen);
    files.add("section_queue", steps);
    files.add("section_queue", Seed().u8(1).u8(0).u16(40).raw(std::string("1GNIRVTD")));
}

}  // namespace

void writeTextSeeds(SeedFiles& files, const std::string& everything) {
    writeOperator(files);
    writeDescriptions(files, everything);
    writeChannels(files);
    writeScenarios(files);
    writeQueues(files);
}

}  // namespace fuzz
