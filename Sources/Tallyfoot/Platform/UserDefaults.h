#pragma once

#include "Tallyfoot/Platform/PropertyList.h"
#include "Tallyfoot/Platform/SignalSafeStore.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tallyfoot {

// The application's key-value store. It outlives the process, kill -9 included, with the last
// completed write of every key; a set is visible at once. Any thread, also two processes at once.
// A store that cannot be written keeps its values for the life of the process. Apple: NSUserDefaults.
class UserDefaults {
public:
    virtual ~UserDefaults() = default;

    // A text reads as its leading digits, anything else that is no number as 0.
    virtual std::int64_t integer(std::string_view key) const = 0;
    virtual double real(std::string_view key) const = 0;
    virtual std::optional<PropertyList> object(std::string_view key) const = 0;

    virtual void setInteger(std::string_view key, std::int64_t value) = 0;
    virtual void setReal(std::string_view key, double value) = 0;
    virtual void setObject(std::string_view key, const PropertyList& value) = 0;
    virtual void remove(std::string_view key) = 0; // Apple: -[setURL:forKey:] with nil

    // False when something set before could not be kept on disk.
    virtual bool synchronize() = 0;

    // Made beforehand, for crash hooks, and used only while the store lives. Null where there is
    // no place on disk for the key.
    virtual std::unique_ptr<SignalSafeStore> makeSignalSafeStore(std::string_view /*key*/) { return nullptr; }
};

} // namespace tallyfoot
