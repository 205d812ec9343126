// A value, or the reason why there is none. Returned by whatever can fail for a reason that
// somebody may want to read.
#pragma once

#include <optional>
#include <string>
#include <utility>

namespace Kiln {

struct Reason {
    std::string text;  // whole, ready to be shown
};

// Made from a value or from a Reason, so a function returns either as it is.
template <class Value>
class [[nodiscard]] Result {
public:
    Result(Value value) : value_(std::move(value)) {}
    Result(Reason reason) : reason_(std::move(reason.text)) {}

    // Whether there is a value. Only then may it be looked at.
    explicit operator bool() const { return value_.has_value(); }
    const Value& operator*() const { return *value_; }
    Value& operator*() { return *value_; }
    const Value* operator->() const { return &*value_; }
    Value* operator->() { return &*value_; }

    // Empty where there is a value.
    const std::string& reason() const { return reason_; }

private:
    std::optional<Value> value_;
    std::string reason_;
};

// The result of an action that has no value: `return {};` for done.
template <>
class [[nodiscard]] Result<void> {
public:
    Result() = default;
    Result(Reason reason) : failed_(true), reason_(std::move(reason.text)) {}

    explicit operator bool() const { return !failed_; }
    const std::string& reason() const { return reason_; }

private:
    bool failed_ = false;
    std::string reason_;
};

using Done = Result<void>;

}  // namespace Kiln
