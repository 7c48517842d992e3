#include "Support/MemoryUserDefaults.h"

#include "Tallyfoot/Platform/PropertyListNumbers.h"

namespace tallyfoot::testing {

std::int64_t MemoryUserDefaults::integer(std::string_view key) const {
    const auto value = object(key);
    return value ? integerValue(*value) : 0;
}

double MemoryUserDefaults::real(std::string_view key) const {
    const auto value = object(key);
    return value ? realValue(*value) : 0;
}

std::optional<PropertyList> MemoryUserDefaults::object(std::string_view key) const {
    return state_.read([&](const State& state) -> std::optional<PropertyList> {
        const auto found = state.values.find(key);
        if (found == state.values.end()) return std::nullopt;
        return found->second;
    });
}

void MemoryUserDefaults::setInteger(std::string_view key, std::int64_t value) { setObject(key, PropertyList{value}); }

void MemoryUserDefaults::setReal(std::string_view key, double value) { setObject(key, PropertyList{value}); }

void MemoryUserDefaults::setObject(std::string_view key, const PropertyList& value) {
    state_.modify([&](State& state) { state.values.insert_or_assign(std::string(key), value); });
}

void MemoryUserDefaults::remove(std::string_view key) {
    state_.modify([&](State& state) { state.values.erase(std::string(key)); });
}

bool MemoryUserDefaults::synchronize() {
    state_.modify([](State& state) { ++state.synchronizations; });
    return true;
}

namespace {

class MemoryStore final : public SignalSafeStore {
public:
    MemoryStore(UserDefaults& defaults, std::string_view key) : defaults_(defaults), key_(key) {}

    bool store(std::span<const Text> texts) noexcept override {
        PropertyList::Dictionary dictionary;
        for (const auto& [key, value] : texts) dictionary[std::string(key)] = {std::string(value)};
        defaults_.setObject(key_, {std::move(dictionary)});
        return true;
    }

private:
    UserDefaults& defaults_;
    std::string key_;
};

} // namespace

std::unique_ptr<SignalSafeStore> MemoryUserDefaults::makeSignalSafeStore(std::string_view key) {
    return std::make_unique<MemoryStore>(*this, key);
}

int MemoryUserDefaults::synchronizations() const {
    return state_.read([](const State& state) { return state.synchronizations; });
}

} // namespace tallyfoot::testing
