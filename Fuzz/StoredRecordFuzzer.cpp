// Any line: the record made of it is the line itself or its compact form, however it was arrived at,
// and what was well-formed stays so.
#include "Fuzz/Require.h"

#include "Tallyfoot/Events/JSON.h"
#include "Tallyfoot/Events/Text.h"

#include <nlohmann/json.hpp>

using namespace tallyfoot;
using fuzzing::require;

namespace {

std::optional<nlohmann::json> deEscapedByTree(std::string_view text) {
    auto object = json::dictionary(text);
    if (!object || !object->contains("custom") || !(*object)["custom"].is_string()) return std::nullopt;
    auto array = json::array((*object)["custom"].get_ref<const std::string&>());
    if (!array) return std::nullopt;
    (*object)["custom"] = std::move(*array);
    if (!json::write(*object)) return std::nullopt;
    return object;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto text = fuzzing::text(data, size);
    const auto compact = json::deEscapedCustomData(text);
    if (const auto expected = deEscapedByTree(text)) {
        require(json::parse(compact) == expected, "the compact text says what the tree says");
        require(json::write(*json::parse(compact))->size() == compact.size(), "the compact text is compact");
        require(text::isWellFormed(compact), "the compact text is well-formed");
    } else {
        require(compact == text, "without usable custom data the text stays");
    }
    return 0;
}
