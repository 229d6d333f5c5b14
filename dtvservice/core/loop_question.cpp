// Asks the loop.
#include "loop_question.h"

#include <future>
#include <memory>

namespace dtvservice {

std::optional<std::string> askLoop(EventLoop& loop, std::function<std::function<std::string()>()> question,
                                   const std::function<bool()>& isEnding) {
    using Rest = std::function<std::string()>;
    auto answered = std::make_shared<std::promise<Rest>>();
    std::future<Rest> result = answered->get_future();
    loop.post([question = std::move(question), answered] { answered->set_value(question()); });
    while (result.wait_for(std::chrono::milliseconds(100)) != std::future_status::ready) {
        if (isEnding()) {
            return std::nullopt;
        }
    }
    return result.get()();
}

}  // namespace dtvservice
