#pragma once

#include "Collector/Problem.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tallyfoot::collector {

// Request line and headers of a request, letter for letter as they came: the HTTP server decodes and
// trims them, which would hide what a client really sent.
struct RequestHead {
    struct Header {
        std::string name;
        std::string value; // without the blanks around it
    };

    std::string method;
    std::string target;
    std::string version;
    std::vector<Header> headers; // in their order

    // Reads what it can; everything out of order is a problem.
    static RequestHead parse(std::string_view bytes, Problems& problems);

    // All headers of a name, which is compared without regard to case.
    std::vector<Header> all(std::string_view name) const;
};

std::string_view trimmedBlanks(std::string_view text); // without spaces and tabs at its ends

} // namespace tallyfoot::collector
