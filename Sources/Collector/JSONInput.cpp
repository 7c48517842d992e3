#include "Collector/JSONInput.h"

#include "Collector/RecordReader.h"

namespace tallyfoot::collector {

nlohmann::json parsedInput(std::string_view text) {
    const auto bounded = [](int depth, nlohmann::json::parse_event_t, nlohmann::json&) {
        if (depth > deepestRecord) throw std::invalid_argument("nested too deep");
        return true;
    };
    return nlohmann::json::parse(text, bounded);
}

} // namespace tallyfoot::collector
