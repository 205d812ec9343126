// A value, or the reason why there is none. Returned by whatever can fail for a reason that
// somebody may want to read.
#pragma once

#include <string>
#include <variant>

namespace Kiln {

struct Reason {
    std::string text;  // whole, ready to be shown
};

template <class Value>
using Result = std::variant<Value, Reason>;

}  // namespace Kiln
