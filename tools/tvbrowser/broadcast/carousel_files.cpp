// Answers questions for files.
#include "carousel_files.h"

#include <utility>
#include <vector>

namespace tvbrowser {

namespace {

CarouselAnswer failure(const std::string& why) {
    return {nullptr, why};
}

const char* nameOf(si::CarouselObject::Kind kind) {
    using Kind = si::CarouselObject::Kind;
    return kind == Kind::directory     ? "a directory"
           : kind == Kind::stream      ? "a stream"
           : kind == Kind::streamEvent ? "a stream event object"
                                       : "an object of an unknown kind";
}

CarouselAnswer answerOf(const std::shared_ptr<const si::CarouselObject>& object) {
    return object->kind == si::CarouselObject::Kind::file
               ? CarouselAnswer{object, ""}
               : failure(std::string("it is ") + nameOf(object->kind) + ", not a file");
}

}  // namespace

QuestionNumber CarouselFiles::ask(const CarouselPlace& place, TakeAnswer take) {
    const QuestionNumber number = ++last;
    waiting.emplace(number, Question{place, std::move(take), waiting.size() >= kMostWaiting});
    answerSoon();
    return number;
}

void CarouselFiles::setService(const si::Triplet& newService) {
    service = newService;
    pmt.reset();
    carousels.stop();
    answerSoon();
}

void CarouselFiles::setPmt(const si::Pmt& newPmt) {
    pmt = newPmt;
    if (carousels.isReading()) {
        carousels.read(newPmt);
    }
    answerSoon();
}

void CarouselFiles::startAgain() {
    if (carousels.isReading()) {
        carousels.stop();
        carousels.read(*pmt);
    }
}

void CarouselFiles::readAhead() {
    if (pmt && !carousels.isReading()) {
        carousels.read(*pmt);
    }
}

void CarouselFiles::answerSoon() {
    if (!waiting.empty() && !std::exchange(isAnswering, true)) {
        post([this] {
            isAnswering = false;
            answer();
        });
    }
}

/// An answer may ask, or cancel other questions.
void CarouselFiles::answer() {
    std::vector<QuestionNumber> numbers;
    for (const auto& [number, question] : waiting) {
        numbers.push_back(number);
    }
    for (const QuestionNumber number : numbers) {
        const auto found = waiting.find(number);
        const std::optional<CarouselAnswer> known = found == waiting.end() ? std::nullopt : answerTo(found->second);
        if (known) {
            const TakeAnswer take = std::move(found->second.take);
            waiting.erase(found);
            take(*known);
        }
    }
}

/// No value while it is not known.
std::optional<CarouselAnswer> CarouselFiles::answerTo(const Question& question) {
    const CarouselPlace& place = question.place;
    if (question.isTooMany) {
        return failure("too many files are waited for");
    }
    if (service && !place.isOf(*service)) {
        return failure("its service is not presented");
    }
    if (!service || !pmt) {
        return std::nullopt;
    }
    readAhead();
    const std::vector<BroadcastCarousels::Found> all = carousels.find(place.componentTag, place.path);
    bool isAwaited = false;
    for (const BroadcastCarousels::Found& found : all) {
        if (found.state == State::here) {
            return answerOf(found.object);
        }
        isAwaited = isAwaited || found.state == State::awaited;
    }
    if (isAwaited) {
        return std::nullopt;
    }
    return failure(all.empty() ? "the service has no such carousel" : "the carousel has no such file");
}

}  // namespace tvbrowser
