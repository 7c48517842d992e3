#include "Collector/Fault.h"

#include "Collector/JSONInput.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace tallyfoot::collector {

namespace {

using nlohmann::json;

std::optional<Fault::Kind> kindNamed(std::string_view name) {
    for (const auto& [kind, kindText] : faultKinds) {
        if (kindText == name) return kind;
    }
    return std::nullopt;
}

// Members of the wrong kind throw, which `parse` turns into an error.
void parseFiles(const json& files, Fault& fault) {
    if (files.is_object()) {
        fault.refusesEvery = wholeNumber<std::size_t>(files.at("every"));
        if (fault.refusesEvery == 0) throw std::invalid_argument("\"every\" is 1 or more");
    } else if (files.is_array()) {
        fault.refusedFiles = files.get<std::vector<std::string>>();
    } else if (files.get<std::string>() == "all") {
        fault.refusesAll = true;
    } else {
        throw std::invalid_argument("\"files\" is \"all\", a list of names or {\"every\": n}");
    }
}

std::string textOrNumber(const json& value) {
    return value.is_number_integer() ? value.dump() : value.get<std::string>();
}

// All of it is read at once, so that an unknown member is told from a known one.
void parseMember(const std::string& name, const json& value, Fault& fault) {
    if (name == "milliseconds") {
        fault.wait = std::chrono::milliseconds(wholeNumber<unsigned>(value));
    } else if (name == "files") {
        parseFiles(value, fault);
    } else if (name == "statusCode") {
        fault.statusCode = textOrNumber(value);
    } else if (name == "status") {
        fault.httpStatus = wholeNumber<int>(value);
    } else if (name == "body") {
        fault.body = value.get<std::string>();
    } else if (name == "location") {
        fault.location = value.get<std::string>();
    } else if (name == "accepted") {
        fault.accepted = value.get<bool>();
    } else if (name == "afterBytes") {
        fault.afterBytes = wholeNumber<std::size_t>(value);
    } else if (name != "kind" && name != "times") {
        throw std::invalid_argument("unknown member \"" + name + "\"");
    }
}

// What a kind cannot do without.
void checkFault(Fault& fault) {
    if (fault.kind == Fault::Kind::status && fault.statusCode.empty()) {
        throw std::invalid_argument("\"status\" needs a \"statusCode\"");
    }
    if (fault.httpStatus < 200 || fault.httpStatus > 599) {
        throw std::invalid_argument("\"status\" is a number from 200 to 599");
    }
    if (fault.kind == Fault::Kind::http && fault.body.empty()) fault.body = "text";
}

std::vector<Fault> parseDescription(const json& description) {
    Fault fault;
    const auto name = description.at("kind").get<std::string>();
    const auto kind = kindNamed(name);
    if (!kind) throw std::invalid_argument("no such kind: \"" + name + "\"");
    fault.kind = *kind;
    if (fault.kind == Fault::Kind::http) fault.httpStatus = 500;
    fault.refusesAll = fault.kind == Fault::Kind::refuse && !description.contains("files");
    for (const auto& [member, value] : description.items()) parseMember(member, value, fault);
    checkFault(fault);
    const auto times = description.contains("times") ? wholeNumber<std::size_t>(description["times"], 100000) : 1;
    return std::vector<Fault>(times, fault);
}

// The member that the value after the colon stands for.
std::string_view optionMember(Fault::Kind kind) {
    switch (kind) {
    case Fault::Kind::status: return "statusCode";
    case Fault::Kind::http: return "status";
    case Fault::Kind::delay: return "milliseconds";
    case Fault::Kind::reset: return "afterBytes";
    case Fault::Kind::answer: return "body";
    case Fault::Kind::refuse: return "files";
    case Fault::Kind::accept:
    case Fault::Kind::garbage:
    case Fault::Kind::dropReply: break;
    }
    return {};
}

json optionDescription(std::string_view option) {
    if (option.starts_with('{')) return parsedInput(option);
    const auto colon = option.find(':');
    const auto name = option.substr(0, colon);
    json description{{"kind", std::string(name)}};
    if (colon == std::string_view::npos) return description;
    const auto kind = kindNamed(name);
    const auto member = kind ? optionMember(*kind) : std::string_view();
    if (member.empty()) throw std::invalid_argument("\"" + std::string(name) + "\" takes no value");
    const auto value = option.substr(colon + 1);
    std::size_t number = 0;
    const auto end = value.data() + value.size();
    const bool isNumber = std::from_chars(value.data(), end, number).ptr == end && !value.empty();
    json parsed = isNumber && member != "body" ? json(number) : json(std::string(value));
    description[std::string(member)] = kind == Fault::Kind::refuse && isNumber ? json{{"every", parsed}} : parsed;
    return description;
}

} // namespace

bool Fault::refuses(std::string_view file, std::size_t index) const {
    if (kind != Kind::refuse) return false;
    return refusesAll || (refusesEvery > 0 && (index + 1) % refusesEvery == 0)
           || std::find(refusedFiles.begin(), refusedFiles.end(), file) != refusedFiles.end();
}

Result<std::vector<Fault>> Fault::parse(const json& description) {
    try {
        return parseDescription(description);
    } catch (const std::exception& failure) {
        return Error{failure.what()};
    }
}

Result<std::vector<Fault>> Fault::parseOption(std::string_view option) {
    try {
        return parseDescription(optionDescription(option));
    } catch (const std::exception& failure) {
        return Error{failure.what()};
    }
}

std::string_view text(Fault::Kind kind) noexcept {
    for (const auto& [candidate, kindText] : faultKinds) {
        if (candidate == kind) return kindText;
    }
    return {};
}

bool isAuthenticationRejection(std::string_view statusCode) noexcept {
    return statusCode == "10000002" || statusCode == "10000003" || statusCode == "10000008";
}

} // namespace tallyfoot::collector
