// What a call with a wrong name or argument throws.
#pragma once

#include <stdexcept>

namespace tvbrowser {

class BadCall : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace tvbrowser
