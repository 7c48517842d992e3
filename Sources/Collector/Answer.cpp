#include "Collector/Answer.h"

#include "Collector/JSONText.h"

#include <nlohmann/json.hpp>

namespace tallyfoot::collector {

namespace {

using nlohmann::ordered_json;

std::string body(const ordered_json& statusCode, std::string_view information, std::string_view filename,
                 const std::vector<std::string>& success, const std::vector<std::string>& failure) {
    const ordered_json response{{"statusCode", statusCode},
                                {"statusCodeInfo", information},
                                {"filename", filename},
                                {"success", success},
                                {"failure", failure}};
    return jsonText({{"data", {{"response", response}}}});
}

void fillFailure(const CheckedUpload& upload, int httpStatus, const std::string& reason, Answer& answer) {
    answer.httpStatus = httpStatus;
    answer.statusCode = std::to_string(httpStatus);
    answer.body = body(answer.statusCode, reason, upload.filename, {}, {upload.filename});
}

// The answer that lists every file by its fate.
void fillPlainAnswer(const CheckedUpload& upload, const Fault& fault, Answer& answer) {
    if (!upload.readable) return fillFailure(upload, 400, "The upload cannot be read", answer);
    std::vector<std::string> success;
    std::vector<std::string> failure;
    for (std::size_t index = 0; index < upload.files.size(); ++index) {
        const auto& file = upload.files[index];
        answer.accepted[index] = file.readable && !fault.refuses(file.name, index);
        (answer.accepted[index] ? success : failure).push_back(file.name);
    }
    answer.statusCode = "200";
    answer.body = body(200, failure.empty() ? "OK" : "Some files were not accepted", upload.filename, success, failure);
}

void fillStatusAnswer(const CheckedUpload& upload, const Fault& fault, Answer& answer) {
    if (isAuthenticationRejection(fault.statusCode)) {
        answer.body = body(fault.statusCode, "Authentication failed", upload.filename, {}, {});
    } else {
        fillPlainAnswer(upload, fault, answer);
        auto parsed = ordered_json::parse(answer.body);
        parsed["data"]["response"]["statusCode"] = fault.statusCode;
        parsed["data"]["response"]["statusCodeInfo"] = "Told to answer so";
        answer.body = jsonText(parsed);
    }
    answer.statusCode = fault.statusCode;
}

void fillHTTPAnswer(const CheckedUpload& upload, const Fault& fault, Answer& answer) {
    if (fault.body == "answer") fillPlainAnswer(upload, fault, answer);
    answer.httpStatus = fault.httpStatus;
    answer.location = fault.location;
    if (fault.body == "answer" || fault.body == "empty") return;
    answer.contentType = "text/plain";
    answer.body = "HTTP status " + std::to_string(fault.httpStatus) + ", as told\n";
}

void fillVerbatimAnswer(const Fault& fault, Answer& answer) {
    answer.body = fault.body;
    if (fault.accepted) answer.accepted.assign(answer.accepted.size(), true);
}

} // namespace

Answer answerTo(const CheckedUpload& upload, const Fault& fault) {
    Answer answer;
    answer.accepted.assign(upload.files.size(), false);
    switch (fault.kind) {
    case Fault::Kind::accept:
    case Fault::Kind::refuse:
    case Fault::Kind::delay: fillPlainAnswer(upload, fault, answer); break;
    case Fault::Kind::status: fillStatusAnswer(upload, fault, answer); break;
    case Fault::Kind::http: fillHTTPAnswer(upload, fault, answer); break;
    case Fault::Kind::garbage: answer.body = "{\"data\":{\"resp\xFF\x01 this is no JSON"; break;
    case Fault::Kind::answer: fillVerbatimAnswer(fault, answer); break;
    case Fault::Kind::reset: answer.isSent = false; break;
    case Fault::Kind::dropReply:
        fillPlainAnswer(upload, fault, answer);
        answer.isSent = false;
        break;
    }
    return answer;
}

Answer answerToUnstored(const CheckedUpload& upload, const std::string& reason) {
    Answer answer;
    answer.accepted.assign(upload.files.size(), false);
    fillFailure(upload, 500, reason, answer);
    return answer;
}

} // namespace tallyfoot::collector
