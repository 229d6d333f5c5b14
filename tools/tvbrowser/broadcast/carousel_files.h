// CarouselFiles: files out of the object carousels of the presented service. It reads the carousels from the first
// question on, or when it is told to, until another service is presented. A file is of the newest version of its
// carousel that is there as a whole; while there is none yet, of what has come so far.
//
// A question is answered when the file is there, or as soon as it is sure that it will not come: until then it waits,
// at the longest as long as its service is presented.
// Threads: one; files belong to any.
// Blocks:  never.
// Fails:   an answer says why there is no file.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "broadcast_carousels.h"
#include "carousel_question.h"
#include "values.h"

namespace tvbrowser {

class CarouselFiles {
public:
    static constexpr std::size_t kMostWaiting = 1000;

    /// `newPost`: answers are never given inside of ask(), setService() or setPmt().
    CarouselFiles(SectionFilters& filters, Post newPost, BroadcastCarousels::Log log)
        : post(std::move(newPost)),
          carousels(
              filters, si::ObjectCarousel::kMostBytes, [this] { answerSoon(); }, std::move(log)) {}

    /// Nothing is asked before the first service is presented: such a question waits for it.
    QuestionNumber ask(const CarouselPlace& place, TakeAnswer take);
    /// The question is not answered any more.
    void cancel(QuestionNumber number) { waiting.erase(number); }
    /// A service is presented, also the same one again; its PMT follows.
    void setService(const si::Triplet& newService);
    void setPmt(const si::Pmt& newPmt);
    /// The broadcast begins anew: its versions say nothing about those of before.
    void startAgain();
    /// Reads the presented service's carousels from now on, so that files are there when they are asked for.
    void readAhead();

private:
    struct Question {
        CarouselPlace place;
        TakeAnswer take;
        bool isTooMany;
    };
    using State = si::CarouselTree::State;

    void answerSoon();
    void answer();
    std::optional<CarouselAnswer> answerTo(const Question& question);

    const Post post;
    BroadcastCarousels carousels;
    std::optional<si::Triplet> service;
    std::optional<si::Pmt> pmt;
    std::map<QuestionNumber, Question> waiting;
    QuestionNumber last = 0;
    bool isAnswering = false;  // a task is on its way
};

}  // namespace tvbrowser
