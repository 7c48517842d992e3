#include "Tallyfoot/Upload/UploadResult.h"

#include <nlohmann/json.hpp>

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string_view>
#include <utility>

namespace tallyfoot {

namespace {

using JSON = nlohmann::json;

template <class Number>
std::string digits(Number number) {
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
    return {text.data(), end};
}

// A whole number reads the same however it was sent: 200, 200.0 and 2e2 are all "200".
std::string digitsOfReal(double number) {
    constexpr double bound = 9007199254740992.0; // up to here a double holds every integer
    if (std::abs(number) <= bound && std::trunc(number) == number) return digits(static_cast<std::int64_t>(number));
    return digits(number);
}

// Fills the fields of one result from an object's members and keeps the first complaint.
class Decoder {
public:
    explicit Decoder(const JSON& object) : object_(object) {}

    void code(std::string_view key, std::string& into) {
        const JSON* const member = find(key);
        if (member == nullptr)
            complain(key, "is missing");
        else if (member->is_string())
            into = member->get_ref<const std::string&>();
        else if (member->is_number_unsigned())
            into = digits(member->get<std::uint64_t>());
        else if (member->is_number_integer())
            into = digits(member->get<std::int64_t>());
        else if (member->is_number_float())
            into = digitsOfReal(member->get<double>());
        else
            complain(key, "is neither a number nor a text");
    }

    void text(std::string_view key, std::string& into) {
        const JSON* const member = find(key);
        if (member == nullptr) return;
        if (member->is_string())
            into = member->get_ref<const std::string&>();
        else
            complain(key, "is not a text");
    }

    void texts(std::string_view key, std::optional<std::vector<std::string>>& into) {
        const JSON* const member = find(key);
        if (member == nullptr) return;
        if (!member->is_array()) return complain(key, "is not an array of texts");
        std::vector<std::string> all;
        all.reserve(member->size());
        for (const JSON& element : *member) {
            if (!element.is_string()) return complain(key, "is not an array of texts");
            all.push_back(element.get_ref<const std::string&>());
        }
        into = std::move(all);
    }

    const std::string& complaint() const noexcept { return complaint_; }

private:
    // The member, or nothing where it is absent or null.
    const JSON* find(std::string_view key) const {
        const auto found = object_.find(key);
        return found == object_.end() || found->is_null() ? nullptr : &*found;
    }

    void complain(std::string_view key, std::string_view fault) {
        if (complaint_.empty()) complaint_.append("The response's \"").append(key).append("\" ").append(fault);
    }

    const JSON& object_;
    std::string complaint_;
};

} // namespace

Result<UploadResult> decodeUploadResult(const JSON& response) {
    if (!response.is_object()) return Error{"The response is not an object"};
    Decoder decoder(response);
    UploadResult result;
    decoder.code("statusCode", result.statusCode);
    decoder.text("statusCodeInfo", result.statusCodeInfo);
    decoder.text("filename", result.filename);
    decoder.texts("success", result.success);
    decoder.texts("failure", result.failure);
    if (!decoder.complaint().empty()) return Error{decoder.complaint()};
    return result;
}

} // namespace tallyfoot
