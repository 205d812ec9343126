// Result: a value, or the reason why there is none. What readers return that leave it to their
// caller to report.
#pragma once

#include <string>
#include <variant>

namespace Kiln {

struct Reason {
    std::string text;  // what failed, without the system's text for `errnum`
    int errnum = 0;    // the system error number, 0 when the system is not the one that refused
};

template <class Value>
using Result = std::variant<Value, Reason>;

}  // namespace Kiln
