// The documents of a page, by frame.
#include "page_documents.h"

#include <utility>
#include <vector>

namespace tvbrowser {

namespace {

constexpr const char* kAddStreamListener = "addStreamEventListener";
constexpr const char* kRemoveStreamListener = "removeStreamEventListener";

}  // namespace

PageDocuments::PageDocuments(Natives::Call newCall, Natives::Log newLog, std::string newKey)
    : call(std::move(newCall)), log(std::move(newLog)), key(std::move(newKey)) {}

PageDocuments::~PageDocuments() {
    while (!documents.empty()) {
        end(documents.begin()->first);
    }
}

void PageDocuments::begin(FrameId frame, JSCContext* context) {
    end(frame);
    const auto natives = std::make_shared<Natives>(
        [this, frame](std::uint64_t instance, const std::string& name, const nlohmann::json& argument) {
            return callOf(frame, instance, name, argument);
        },
        log, key);
    documents[frame] = {natives};
    natives->offer(context);
}

void PageDocuments::end(FrameId frame) {
    const auto found = documents.find(frame);
    if (found == documents.end()) {
        return;
    }
    const Document ended = std::exchange(found->second, {});
    documents.erase(found);
    leaveControl(frame);
    ended.natives->end();
    for (const Number listener : ended.streamListeners) {
        call(0, kRemoveStreamListener, {{"id", listener}});
    }
}

void PageDocuments::tell(const std::string& name, const nlohmann::json& value, std::optional<FrameId> except) {
    std::vector<std::shared_ptr<Natives>> told;  // a listener may begin and end documents
    for (const auto& [frame, document] : documents) {
        if (frame != except) {
            told.push_back(document.natives);
        }
    }
    for (const std::shared_ptr<Natives>& natives : told) {
        natives->tell(name, value);
    }
}

nlohmann::json PageDocuments::callOf(FrameId frame, std::uint64_t instance, const std::string& name,
                                     const nlohmann::json& argument) {
    if (name == "takeControl") {
        return takeControl(frame);
    }
    if (name == "keyset") {
        return keyset;
    }
    if (name == "leaveControl") {
        leaveControl(frame);
        return true;
    }
    nlohmann::json result = call(instance, name, argument);
    remember(frame, name, argument);
    return result;
}

void PageDocuments::remember(FrameId frame, const std::string& name, const nlohmann::json& argument) {
    if (name == kAddStreamListener) {
        documents.at(frame).streamListeners.insert(argument.at("id").get<Number>());
    } else if (name == kRemoveStreamListener) {
        documents.at(frame).streamListeners.erase(argument.at("id").get<Number>());
    } else if (name == "setKeyset") {
        keyset = argument;
        tell("keyset", argument, frame);
    }
}

/// An object controls the broadcast until its document says so, or ends. One that has left its document does, when
/// another wants the control.
bool PageDocuments::takeControl(FrameId frame) {
    if (controlling && controlling != frame) {
        const std::shared_ptr<Natives> natives = documents.at(*controlling).natives;
        natives->tell("controlIsWanted", nullptr);
    }
    if (controlling && controlling != frame) {
        return false;
    }
    controlling = frame;
    return true;
}

void PageDocuments::leaveControl(FrameId frame) {
    if (controlling == frame) {
        controlling.reset();
    }
}

}  // namespace tvbrowser
