#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tallyfoot::testing {

struct Part {
    std::map<std::string, std::string> headers; // names as they were sent
    std::string content;

    std::string name() const { return parameter("name").value_or("(no name)"); }

    std::optional<std::string> fileName() const { return parameter("filename"); }

private:
    std::optional<std::string> parameter(std::string_view key) const; // of the content disposition
};

// Reads a multipart body as a strict server does: nothing before the first delimiter, every
// delimiter on a line of its own, nothing after the closing one. Nothing when it is not like that.
std::optional<std::vector<Part>> parseMultipart(std::string_view body, std::string_view boundary);

} // namespace tallyfoot::testing
