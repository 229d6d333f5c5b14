// PageDocuments: the documents of one page, its own and those of its frames, and what each of them has of the
// broadcast. A document that ends gives it back.
// Threads: the main one.
// Blocks:  never.
// Fails:   a wrong call throws in the document.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "natives.h"

namespace tvbrowser {

class PageDocuments {
public:
    using FrameId = std::uint64_t;

    /// `newCall`: carries out what concerns the broadcast or the set. `newKey`: see Natives.
    PageDocuments(Natives::Call newCall, Natives::Log newLog, std::string newKey);
    PageDocuments(const PageDocuments&) = delete;
    PageDocuments& operator=(const PageDocuments&) = delete;
    /// Ends all documents.
    ~PageDocuments();

    /// A frame has a new document, in place of the one before.
    void begin(FrameId frame, JSCContext* context);
    /// A frame has gone, with its document.
    void end(FrameId frame);
    /// Tells all documents, or all but one.
    void tell(const std::string& name, const nlohmann::json& value, std::optional<FrameId> except = {});

private:
    using Number = std::uint64_t;
    struct Document {
        std::shared_ptr<Natives> natives;
        std::set<Number> streamListeners = {};
    };

    nlohmann::json callOf(FrameId frame, std::uint64_t instance, const std::string& name,
                          const nlohmann::json& argument);
    bool takeControl(FrameId frame);
    void leaveControl(FrameId frame);
    void remember(FrameId frame, const std::string& name, const nlohmann::json& argument);

    const Natives::Call call;
    const Natives::Log log;
    const std::string key;
    std::map<FrameId, Document> documents;
    std::optional<FrameId> controlling;  ///< has the object that controls the broadcast
    nlohmann::json keyset;               ///< the last that a document asked for; null before
};

}  // namespace tvbrowser
