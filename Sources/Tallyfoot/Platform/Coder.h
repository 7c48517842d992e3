#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tallyfoot {

// One archived object: a class name and texts by key, in the order in which they were encoded.
// A field that is no text decodes as nothing. Apple: NSCoder.
class Coder {
public:
    explicit Coder(std::string className) : className_(std::move(className)) {}

    void encode(std::string text, std::string key) { fields_.emplace_back(std::move(key), std::move(text)); }
    std::optional<std::string> decode(std::string_view key) const {
        for (const auto& [name, text] : fields_)
            if (name == key) return text;
        return std::nullopt;
    }

    const std::string& className() const noexcept { return className_; }
    const std::vector<std::pair<std::string, std::string>>& fields() const noexcept { return fields_; }

private:
    std::string className_;
    std::vector<std::pair<std::string, std::string>> fields_;
};

} // namespace tallyfoot
