// What is asked of the carousels of the presented service, and what comes back.
// Threads: any.
// Blocks:  never.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "carousel_url.h"
#include "si/biop.h"

namespace tvbrowser {

/// A file, or why there is none.
struct CarouselAnswer {
    std::shared_ptr<const si::CarouselObject> file = nullptr;  ///< keeps its bytes
    std::string error = {};
};

/// Counts the questions.
using QuestionNumber = std::uint64_t;
using TakeAnswer = std::function<void(const CarouselAnswer&)>;

}  // namespace tvbrowser
