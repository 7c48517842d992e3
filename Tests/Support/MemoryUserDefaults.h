#pragma once

#include "Tallyfoot/Platform/Exclusive.h"
#include "Tallyfoot/Platform/UserDefaults.h"

#include <map>
#include <string>

namespace tallyfoot::testing {

// A store that lives as long as its object, and counts what it is asked for.
class MemoryUserDefaults final : public UserDefaults {
public:
    std::int64_t integer(std::string_view key) const override;
    double real(std::string_view key) const override;
    std::optional<PropertyList> object(std::string_view key) const override;

    void setInteger(std::string_view key, std::int64_t value) override;
    void setReal(std::string_view key, double value) override;
    void setObject(std::string_view key, const PropertyList& value) override;
    void remove(std::string_view key) override;
    bool synchronize() override;
    std::unique_ptr<SignalSafeStore> makeSignalSafeStore(std::string_view key) override; // safe in name only

    int synchronizations() const;

private:
    struct State {
        std::map<std::string, PropertyList, std::less<>> values;
        int synchronizations = 0;
    };
    Exclusive<State> state_;
};

} // namespace tallyfoot::testing
