#pragma once

#include "Tallyfoot/Export.h"
#include "Tallyfoot/Facade/Configuration/Endpoint.h"
#include "Tallyfoot/Platform/PropertyList.h"

#include <memory>
#include <optional>
#include <string>

namespace tallyfoot {

struct PlatformServices;

// Which server uploads go to: the endpoint's base address comes from the property list
// "Environment" that the host ships in a framework. Any thread.
class TALLYFOOT_EXPORT Environment {
public:
    Environment(); // on the process's own platform; nothing is read yet
    explicit Environment(const PlatformServices& services);
    ~Environment();
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

    std::optional<Endpoint> endpoint() const;
    // Reads the property list again and composes the upload path. What cannot be resolved leaves
    // the path as it was, silently. A number that is no endpoint counts as none.
    void setEndpoint(std::optional<Endpoint> endpoint);

    std::string uploadPath() const; // "no such path" until an endpoint was resolved
    void setUploadPath(std::string path);

    // The property list as it was last found; none before, and none when that file was unreadable.
    std::optional<PropertyList::Dictionary> environmentDict() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace tallyfoot
