// Broadcast: what is known of the broadcast, and what can be done with it, as JSON: calls with a value, and events. It
// listens to the library, keeps section filters open, and notices when the DTV service goes and comes back: then it
// announces itself again and opens its filters again.
//
// Calls, argument and value (absent argument: null):
//   presented                   {onid,tsid,sid} or null
//   serviceState                {connected}
//   channels                    [{onid,tsid,sid,name,type,idType,dsd,majorChannel}]
//   components                  [{index,type,pid,encoding,tag,language,aspectRatio,audioChannels,encrypted,
//                               audioDescription,hearingImpaired,active}]
//   programmes                  present and following: [{channel,eventId,running,name,text,longText,language,startTime,
//                               duration,parentalRatings,content,descriptors}]
//   openSchedule, closeSchedule true
//   schedule {onid,tsid,sid} or null      as programmes, by startTime
//   applications                {known,signalled,complete,list}; `known`: the presented service's PMT has come, so that
//                               "not signalled" is what the broadcast says
//   tune {idType,onid,tsid,sid,flags}, tuneByDescriptor {dsd,sid,flags}    true; the outcome is channelChanged
//   selectComponent {type} or {type,pid}, unselectComponent {type}         true
//   addStreamEventListener {id,componentTag,eventId} or {id,componentTag,object,name}   true; streamEvent has the id
//   removeStreamEventListener {id}        whether there was one
//   sendDrmMessage {session,system,messageType,message}, connectCa {session}, disconnectCa {slot}, requestPts
//                               whether it reached the DTV service
//   applicationStarted {ok}     true
// Events: service, channelChanged, channelsChanged, componentsChanged, selectedComponentChanged, programmesChanged,
//   scheduleChanged, applicationsChanged, streamEvent, drmReply, caConnected, caDisconnected, drmSystemStatus, osd,
//   terminalsStopped, engineStatus, pts, and warning {text} for what the broadcast has wrong.
//
// Threads: one, that of the loop: construction, calls, events, destruction.
// Blocks:  never. The destruction waits for a look for the DTV service. Filters may be closed later, by their worker.
// Fails:   a call with a wrong name or argument throws BadCall. Bad sections are left out.
#pragma once

#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "bad_call.h"
#include "carousel_question.h"
#include "library.h"
#include "si/triplet.h"

namespace tvbrowser {

class Broadcast {
public:
    /// Runs the task later on the loop's thread, in order. Called on any thread, also after the destruction, because an
    /// event whose delivery has begun still arrives: keep it callable until the process ends. Such tasks do nothing.
    using Post = std::function<void(std::function<void()>)>;
    /// Takes an event. Called on the loop's thread, never inside of a call.
    using Sink = std::function<void(const std::string& name, const nlohmann::json& value)>;

    Broadcast(const Library& library, Post post, Sink sink);
    Broadcast(const Broadcast&) = delete;
    Broadcast& operator=(const Broadcast&) = delete;
    ~Broadcast();

    nlohmann::json call(const std::string& name, const nlohmann::json& argument);

    /// Asks for a file of the presented service's carousels; the answer comes later, or not at all after the end.
    QuestionNumber askForFile(const CarouselPlace& place, TakeAnswer take);
    void cancelFile(QuestionNumber number);
    /// Reads the presented service's carousels before anything is asked of them.
    void readCarousels();

    /// The presented service; none until it is known.
    std::optional<si::Triplet> presented() const;
    /// Whether the DTV service answers.
    bool isConnected() const;

private:
    class Inside;
    struct Calls;
    /// A call without an argument.
    nlohmann::json question(const std::string& name);

    const std::unique_ptr<Inside> inside;
};

}  // namespace tvbrowser
