#include "Collector/UploadHandler.h"

#include "Collector/HTTPServer.h"

#include <iostream>

namespace tallyfoot::collector {

namespace {

constexpr int tooLarge = 413; // set by the server library, which knows the bound

void send(const Answer& answer, httplib::Response& response) {
    response.status = answer.httpStatus;
    if (!answer.location.empty()) response.set_header("Location", answer.location);
    if (!answer.body.empty()) response.set_content(answer.body, answer.contentType);
}

} // namespace

void UploadHandler::handle(const httplib::ContentReader& readContent, httplib::Response& response) {
    const Fault fault = faults_.next();
    const bool resets = fault.kind == Fault::Kind::reset;
    std::string body;
    bool whole = false;
    if (!resets || fault.afterBytes > 0) {
        whole = readContent([&](const char* bytes, std::size_t count) {
            body.append(bytes, count);
            return !resets || body.size() < fault.afterBytes;
        });
    }
    if (resets) HTTPServer::current().resetAtEnd();
    if (resets || !whole) return handleInterrupted(fault, body.size(), response);
    handleWhole(fault, body, response);
}

void UploadHandler::handleInterrupted(const Fault& fault, std::size_t bodyBytes, httplib::Response& response) {
    auto& connection = HTTPServer::current();
    auto upload = checkInterruptedUpload(connection.head(), bodyBytes);
    Answer answer = answerToUnstored(upload, "The body did not come whole");
    answer.isSent = response.status == tooLarge;
    if (answer.isSent || connection.isBodyTooMuch()) {
        answer.httpStatus = tooLarge;
        upload.problems.push_back({"tooLarge", "the body is larger than the collector takes", ""});
        if (answer.isSent) send(answer, response);
    } else if (fault.kind != Fault::Kind::reset) {
        connection.dropAtEnd();
        upload.problems.push_back({"interrupted", "the client went away in the middle of the body", ""});
    }
    store_.store(upload, fault, answer);
    changes_.signal();
}

void UploadHandler::noteLostAnswer(std::int64_t upload) {
    try {
        store_.markUnanswered(upload);
    } catch (const DatabaseError& failure) { // the connection has ended: there is nobody else to tell
        std::cerr << "tallyfoot: the lost answer of upload " << upload << " is not noted: " << failure.what() << '\n';
    }
}

void UploadHandler::handleWhole(const Fault& fault, const std::string& body, httplib::Response& response) {
    auto& connection = HTTPServer::current();
    const auto upload = checkUpload(connection.head(), body);
    auto answer = answerTo(upload, fault);
    try {
        const auto id = store_.store(upload, fault, answer);
        changes_.signal();
        connection.onLostAnswer([this, id] { noteLostAnswer(id); });
    } catch (const DatabaseError& failure) {
        answer = answerToUnstored(upload, failure.what());
    }
    if (fault.wait.count() > 0) changes_.waitUntil(std::chrono::steady_clock::now() + fault.wait);
    if (!answer.isSent) connection.dropAtEnd();
    send(answer, response);
}

} // namespace tallyfoot::collector
