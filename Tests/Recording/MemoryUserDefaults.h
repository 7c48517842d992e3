#pragma once

#include "Tallyfoot/Platform/Exclusive.h"
#include "Tallyfoot/Platform/UserDefaults.h"

#include <map>
#include <string>

namespace tallyfoot::testing {

// The numbers of a store, for as long as the test lasts. Any thread.
class MemoryUserDefaults final : public UserDefaults {
public:
    std::int64_t integer(std::string_view key) const override { return numberAs<std::int64_t>(key); }
    double real(std::string_view key) const override { return numberAs<double>(key); }
    std::optional<PropertyList> object(std::string_view key) const override {
        return values_.read([&](const Values& values) -> std::optional<PropertyList> {
            const auto place = values.find(key);
            return place == values.end() ? std::nullopt : std::optional(place->second);
        });
    }

    void setInteger(std::string_view key, std::int64_t value) override { setObject(key, {value}); }
    void setReal(std::string_view key, double value) override { setObject(key, {value}); }
    void setObject(std::string_view key, const PropertyList& value) override {
        values_.modify([&](Values& values) { values.insert_or_assign(std::string(key), value); });
    }
    void remove(std::string_view key) override {
        values_.modify([&](Values& values) { values.erase(std::string(key)); });
    }
    bool synchronize() override { return true; }

private:
    using Values = std::map<std::string, PropertyList, std::less<>>;

    template <class Number>
    Number numberAs(std::string_view key) const {
        const auto value = object(key);
        const auto* number = value ? value->as<Number>() : nullptr;
        return number == nullptr ? Number() : *number;
    }

    Exclusive<Values> values_;
};

} // namespace tallyfoot::testing
