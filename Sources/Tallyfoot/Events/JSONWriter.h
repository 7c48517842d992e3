#pragma once

#include "Tallyfoot/Events/JSONReader.h"
#include "Tallyfoot/Events/JSONText.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace tallyfoot::json {

// Appends one compact JSON text, piece by piece. Takes the calls that a Reader makes.
class Writer {
public:
    explicit Writer(std::string& into) : into_(into) {}

    void null() { next() += "null"; }

    void boolean(bool truth) { next() += truth ? "true" : "false"; }

    void integer(std::int64_t number) { appendInteger(next(), number); }

    void unsignedInteger(std::uint64_t number) { appendUnsigned(next(), number); }

    bool real(double number) { return appendReal(next(), number); } // false unless finite

    bool string(std::string_view text) { return appendQuoted(next(), text); } // false for ill-formed UTF-8

    bool open(Container container) {
        next() += container == Container::object ? '{' : '[';
        closing_ += container == Container::object ? '}' : ']';
        isFirst_ = true;
        return true;
    }

    void close() {
        into_ += closing_.back();
        closing_.pop_back();
        isFirst_ = false;
    }

    bool key(std::string_view text) {
        const bool wellFormed = appendQuoted(next(), text);
        into_ += ':';
        isFirst_ = true; // no comma before the value
        return wellFormed;
    }

private:
    std::string& next() {
        if (!isFirst_) into_ += ',';
        isFirst_ = false;
        return into_;
    }

    std::string& into_;
    std::string closing_; // what the open containers end with, outermost first
    bool isFirst_ = true; // nothing stands before the next piece
};

} // namespace tallyfoot::json
