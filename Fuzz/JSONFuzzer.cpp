// Any text: it is accepted exactly when another reader accepts it, within our bounds, and what was
// read is written so that both read it back the same.
#include "Fuzz/Require.h"

#include "Tallyfoot/Events/JSON.h"

#include <nlohmann/json.hpp>

using namespace tallyfoot;
using fuzzing::require;

namespace {

// The other reader takes a zero byte for the end, fragments for texts, and knows no deepest level.
bool isWithinOurBounds(std::string_view text) {
    if (text.find('\0') != std::string_view::npos) return false;
    struct Depth : nlohmann::json_sax<nlohmann::json> {
        bool open() { return ++depth <= 512; }
        bool close() { return --depth >= 0; }
        bool element() const { return depth > 0; }
        bool null() override { return element(); }
        bool boolean(bool) override { return element(); }
        bool number_integer(number_integer_t) override { return element(); }
        bool number_unsigned(number_unsigned_t) override { return element(); }
        bool number_float(number_float_t, const string_t&) override { return element(); }
        bool string(string_t&) override { return element(); }
        bool binary(binary_t&) override { return false; }
        bool start_object(std::size_t) override { return open(); }
        bool key(string_t&) override { return true; }
        bool end_object() override { return close(); }
        bool start_array(std::size_t) override { return open(); }
        bool end_array() override { return close(); }
        bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override { return false; }
        int depth = 0;
    } depth;
    return nlohmann::json::sax_parse(text, &depth);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto text = fuzzing::text(data, size);
    const auto value = json::parse(text);
    require(value.has_value() == isWithinOurBounds(text), "both readers accept the same");
    if (!value) return 0;
    const auto written = json::write(*value);
    require(written.has_value(), "what was read can be written");
    require(json::parse(*written) == value, "what was written reads back the same");
    require(nlohmann::json::parse(*written, nullptr, false) == *value, "another reader agrees");
    require(json::write(*json::parse(*written)) == written, "writing is stable");
    return 0;
}
