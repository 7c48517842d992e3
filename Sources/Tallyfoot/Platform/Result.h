#pragma once

#include <string>
#include <utility>
#include <variant>

namespace tallyfoot {

// What the platform says of a failure: one readable text, ready for a console line.
struct Error {
    std::string description;
};

// A value or the error that took its place. `value` may be asked only of a success.
template <class Value>
class [[nodiscard]] Result {
public:
    Result(Value value) : outcome_(std::move(value)) {} // NOLINT: implicit, so that `return value;` reads well
    Result(Error error) : outcome_(std::move(error)) {} // NOLINT

    explicit operator bool() const noexcept { return std::holds_alternative<Value>(outcome_); }
    Value& value() & { return std::get<Value>(outcome_); }
    const Value& value() const& { return std::get<Value>(outcome_); }
    Value&& value() && { return std::get<Value>(std::move(outcome_)); }
    const Error& error() const { return std::get<Error>(outcome_); }

private:
    std::variant<Value, Error> outcome_;
};

template <>
class [[nodiscard]] Result<void> {
public:
    Result() = default;
    Result(Error error) : error_(std::move(error)), failed_(true) {} // NOLINT

    explicit operator bool() const noexcept { return !failed_; }
    const Error& error() const { return error_; }

private:
    Error error_;
    bool failed_ = false;
};

} // namespace tallyfoot
