// Finds the names of events.
#include "event_names.h"

namespace tvbrowser {

EventNames::Answer EventNames::answerFrom(const BroadcastCarousels::Found& found, const std::string& name) {
    if (found.state == si::CarouselTree::State::awaited) {
        return {State::awaited};
    }
    if (found.state == si::CarouselTree::State::absent || found.object->kind != si::CarouselObject::Kind::streamEvent) {
        return {State::absent};
    }
    for (const si::CarouselObject::EventName& event : found.object->events) {
        if (event.name == name) {
            return {State::found, event.id, found.object->associationTags};
        }
    }
    return {State::absent};
}

EventNames::Answer EventNames::find(std::optional<std::uint8_t> componentTag, const std::string& path,
                                    const std::string& name) {
    Answer best;
    for (const BroadcastCarousels::Found& found : carousels.find(componentTag, path)) {
        Answer answer = answerFrom(found, name);
        if (answer.state == State::found) {
            return answer;
        }
        best.state = answer.state == State::awaited ? State::awaited : best.state;
    }
    return best;
}

}  // namespace tvbrowser
