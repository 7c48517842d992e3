#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tallyfoot {

// A folder that ships with the application. Any thread. Apple: NSBundle.
class Bundle {
public:
    virtual ~Bundle() = default;
    // A text entry of the information property list, which is read once and then kept.
    virtual std::optional<std::string> information(std::string_view key) const = 0;
    virtual std::optional<std::string> pathForResource(std::string_view name, std::string_view type) const = 0;
};

class Bundles {
public:
    virtual ~Bundles() = default;
    virtual const Bundle& mainBundle() const = 0;
    virtual std::vector<std::shared_ptr<const Bundle>> allFrameworks() const = 0; // in the platform's order
};

} // namespace tallyfoot
