#include "MultipartParser.h"
#include "Support/ScriptedServer.h"
#include "UploadFixture.h"

#include "Tallyfoot/Platform/Posix/PosixURLSession.h"

#include <gmock/gmock.h>

#include <chrono>
#include <future>

namespace tallyfoot {

namespace {

using ::testing::ElementsAre;
using testing::errorKindOf;
using testing::errorTextOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::Optional;
using testing::resultOf;
using testing::ScriptedServer;
using Kind = UploadError::Kind;
using Ending = ScriptedServer::Ending;

constexpr auto acceptance = R"({"data":{"response":{"statusCode":200,"success":["1.log"]}}})";

// Uploads archives to a real server on the loopback interface.
class UploadOverHTTP : public ::testing::Test {
protected:
    std::future<UploadManager::Outcome> start(const std::string& name = "a.zip", std::string_view bytes = "PK") {
        const auto outcome = std::make_shared<std::promise<UploadManager::Outcome>>();
        host.manager->upload(host.archive(name, bytes), parameters,
                             [outcome](UploadManager::Outcome value) { outcome->set_value(std::move(value)); });
        return outcome->get_future();
    }

    static UploadManager::Outcome finish(std::future<UploadManager::Outcome> outcome) {
        if (outcome.wait_for(std::chrono::seconds(30)) != std::future_status::ready) {
            ADD_FAILURE() << "the upload did not complete";
            return {};
        }
        return outcome.get();
    }

    UploadManager::Outcome upload() { return finish(start()); }

    // What the upload ends in when the server does this.
    UploadManager::Outcome outcomeOf(std::string answer, Ending ending = Ending::keepsOpen) {
        server.script({.answer = std::move(answer), .ending = ending});
        return upload();
    }

    ScriptedServer server;
    testing::UploadFixture host{std::make_shared<PosixURLSession>(), server.url()};
    UploadManager::Parameters parameters{{"appName", "Shop"}, {"delimeter", "jsonsplit"}};
};

} // namespace

TEST_F(UploadOverHTTP, TheServerReceivesTheFormByteForByte) {
    std::string bytes = "PK\x03\x04";
    for (int byte = 0; byte < 256; ++byte) bytes += static_cast<char>(byte);
    server.script({.answer = ScriptedServer::response(acceptance)});
    EXPECT_NE(resultOf(finish(start("07-03-2024T14-05-09-124.zip", bytes))), nullptr);

    const auto request = server.request(0);
    EXPECT_TRUE(request.head.starts_with("POST /upload HTTP/1.1\r\n")) << request.head;
    const auto boundary = request.body.substr(2, std::string("tallyfoot.boundary.0a1b2c3d9f8e7d6c").size());
    EXPECT_THAT(boundary, ::testing::MatchesRegex("tallyfoot\\.boundary\\.[0-9a-f]{16}"));
    EXPECT_TRUE(request.hasLine("Content-Type: multipart/form-data; boundary=" + boundary)) << request.head;
    EXPECT_TRUE(request.hasLine("Content-Length: " + std::to_string(request.body.size()))) << request.head;
    EXPECT_THAT(request.head, Not(HasSubstr("Expect")));
    EXPECT_EQ(request.body,
              "--" + boundary + "\r\nContent-Disposition: form-data; name=\"appName\"\r\n\r\nShop\r\n--" + boundary
                  + "\r\nContent-Disposition: form-data; name=\"delimeter\"\r\n\r\njsonsplit\r\n--" + boundary
                  + "\r\nContent-Disposition: form-data; name=\"files\"; "
                    "filename=\"07-03-2024T14-05-09-124.zip\"\r\nContent-Type: application/zip\r\n\r\n"
                  + bytes + "\r\n--" + boundary + "--");
}

TEST_F(UploadOverHTTP, TheCookieHeaderCarriesTheTokenExactly) {
    host.token = "Caf\xC3\xA9=\"a; b\", c\\d:e";
    EXPECT_NE(resultOf(outcomeOf(ScriptedServer::response(acceptance))), nullptr);
    EXPECT_TRUE(server.request(0).hasLine("cookie: Caf\xC3\xA9=\"a; b\", c\\d:e")) << server.request(0).head;
}

TEST_F(UploadOverHTTP, ATokenThatWouldAddAHeaderIsNotSentAsOne) {
    for (const std::string& token : {std::string("a\r\nX-Evil: 1"), std::string("a\nX-Evil: 1"),
                                     std::string("a\rX-Evil: 1"), std::string("a\0X-Evil: 1", 11)}) {
        host.token = token;
        parameters["authtoken"] = token;
        const auto place = server.requestCount();
        EXPECT_NE(resultOf(outcomeOf(ScriptedServer::response(acceptance))), nullptr);
        const auto request = server.request(place);
        EXPECT_THAT(request.head, Not(HasSubstr("Evil")));
        EXPECT_THAT(request.head, Not(HasSubstr("cookie")));
        EXPECT_THAT(request.body, HasSubstr("name=\"authtoken\"\r\n\r\n" + token + "\r\n--"));
    }
}

TEST_F(UploadOverHTTP, TheHTTPStatusIsNotExamined) {
    for (const auto* status :
         {"200 OK", "201 Created", "400 Bad Request", "401 Unauthorized", "404 Not Found", "413 Content Too Large",
          "500 Internal Server Error", "503 Service Unavailable", "599 Odd"})
        EXPECT_NE(resultOf(outcomeOf(ScriptedServer::response(acceptance, status))), nullptr) << status;
    EXPECT_EQ(errorKindOf(outcomeOf(ScriptedServer::response("{}", "200 OK"))), Kind::invalidResponse);
}

TEST_F(UploadOverHTTP, AnAnswerWithoutABodyIsInvalidData) {
    EXPECT_EQ(errorKindOf(outcomeOf(ScriptedServer::response(""))), Kind::invalidData);
    EXPECT_EQ(errorKindOf(outcomeOf("HTTP/1.1 204 No Content\r\n\r\n")), Kind::invalidData);
    EXPECT_TRUE(host.console.contains("\"Invalid response data\""));
    EXPECT_FALSE(host.manager->isUploading("a.zip"));
}

TEST_F(UploadOverHTTP, AnAnswerInChunksIsWhole) {
    std::string answer = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
    for (const char character : std::string_view(acceptance))
        answer.append("1\r\n").append(1, character).append("\r\n");
    EXPECT_NE(resultOf(outcomeOf(answer + "0\r\n\r\n")), nullptr);
}

TEST_F(UploadOverHTTP, OfARedirectThatIsNotFollowedTheBodyDecides) {
    for (const auto* status : {"301 Moved Permanently", "302 Found", "303 See Other"}) {
        const auto before = server.requestCount();
        EXPECT_EQ(errorKindOf(outcomeOf(ScriptedServer::response("<html>", status, "Location: /other\r\n"))),
                  Kind::invalidResponse)
            << status;
        EXPECT_NE(resultOf(outcomeOf(ScriptedServer::response(acceptance, status, "Location: /other\r\n"))), nullptr)
            << status;
        EXPECT_EQ(server.requestCount(), before + 2) << status;
    }
}

TEST_F(UploadOverHTTP, ARedirectThatKeepsTheMethodIsFollowedWithTheWholeForm) {
    server.script({.answer = ScriptedServer::response("", "307 Temporary Redirect", "Location: /other\r\n")});
    EXPECT_NE(resultOf(outcomeOf(ScriptedServer::response(acceptance))), nullptr);
    EXPECT_TRUE(server.request(1).head.starts_with("POST /other HTTP/1.1\r\n"));
    EXPECT_EQ(server.request(1).body, server.request(0).body);
    EXPECT_TRUE(server.request(1).hasLine("cookie: token-1"));
}

TEST_F(UploadOverHTTP, AConnectionThatBreaksIsATransportError) {
    const auto whole = ScriptedServer::response(acceptance);
    const auto cases = {std::pair{std::string(), Ending::closes}, std::pair{std::string(), Ending::resets},
                        std::pair{whole.substr(0, 9), Ending::closes},
                        std::pair{whole.substr(0, whole.size() - 1), Ending::closes},
                        std::pair{whole.substr(0, whole.size() - 1), Ending::resets}};
    for (const auto& [answer, ending] : cases) {
        host.console.clear();
        const auto outcome = outcomeOf(answer, ending);
        EXPECT_EQ(errorKindOf(outcome), Kind::error) << answer;
        EXPECT_FALSE(errorTextOf(outcome).empty());
        EXPECT_EQ(host.console.lines().back(),
                  debugDescription("Failed to upload file: a.zip with error: " + errorTextOf(outcome)));
        EXPECT_FALSE(host.manager->isUploading("a.zip"));
    }
}

TEST_F(UploadOverHTTP, WhatIsNoHTTPIsATransportError) {
    EXPECT_EQ(errorKindOf(outcomeOf("SSH-2.0-Server\r\n\r\n\0\xFF garbage", Ending::closes)), Kind::error);
}

TEST_F(UploadOverHTTP, NobodyAtTheAddressIsATransportError) {
    const auto gone = [] { return ScriptedServer().url(); }();
    testing::UploadFixture other(std::make_shared<PosixURLSession>(), gone);
    std::promise<UploadManager::Outcome> outcome;
    other.manager->upload(other.archive("a.zip"), parameters,
                          [&](UploadManager::Outcome value) { outcome.set_value(std::move(value)); });
    EXPECT_EQ(errorKindOf(finish(outcome.get_future())), Kind::error);
}

TEST_F(UploadOverHTTP, ALongAnswerIsTakenWhole) {
    std::string body = R"({"data":{"response":{"statusCode":200,"success":["0.log")";
    for (int count = 1; count < 20000; ++count) body += ",\"" + std::to_string(count) + ".log\"";
    body += "]}}}";
    const auto outcome = outcomeOf(ScriptedServer::response(body));
    ASSERT_NE(resultOf(outcome), nullptr);
    EXPECT_EQ(resultOf(outcome)->success.value().size(), 20000U);
    EXPECT_EQ(resultOf(outcome)->success.value().back(), "19999.log");
}

TEST_F(UploadOverHTTP, AnAnswerWithoutEndIsATransportError) {
    EXPECT_EQ(
        errorKindOf(outcomeOf(ScriptedServer::response(std::string(64U << 20U, ' ') + acceptance), Ending::closes)),
        Kind::error);
    EXPECT_FALSE(host.manager->isUploading("a.zip"));
}

TEST_F(UploadOverHTTP, ALargeArchiveArrivesWhole) {
    std::string bytes;
    for (std::uint32_t word = 0; bytes.size() < (24U << 20U); ++word)
        bytes.append(reinterpret_cast<const char*>(&word), sizeof word);
    server.script({.answer = ScriptedServer::response(acceptance)});
    EXPECT_NE(resultOf(finish(start("a.zip", bytes))), nullptr);
    const auto body = server.request(0).body;
    const auto parts = testing::parseMultipart(body, body.substr(2, body.find("\r\n") - 2));
    ASSERT_TRUE(parts);
    EXPECT_TRUE(parts->back().content == bytes);
}

TEST_F(UploadOverHTTP, ManyUploadsAtOnceAllComplete) {
    std::vector<std::future<UploadManager::Outcome>> outcomes;
    for (int count = 0; count < 20; ++count) {
        server.script({.answer = ScriptedServer::response(acceptance)});
        outcomes.push_back(start(std::to_string(count) + ".zip"));
    }
    for (auto& outcome : outcomes) EXPECT_NE(resultOf(finish(std::move(outcome))), nullptr);
    for (int count = 0; count < 20; ++count) EXPECT_FALSE(host.manager->isUploading(std::to_string(count) + ".zip"));
}

TEST_F(UploadOverHTTP, AnUploadThatNobodyAnswersStaysInProgress) {
    server.script({.answer = {}, .ending = Ending::fallsSilent});
    const auto outcome = start();
    server.request(0);
    EXPECT_TRUE(host.manager->isUploading("a.zip"));
    EXPECT_EQ(outcome.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
}

TEST_F(UploadOverHTTP, AManagerGoesWithoutWaitingForItsUploads) {
    server.script({.answer = {}, .ending = Ending::fallsSilent});
    auto outcome = start();
    server.request(0);
    host.manager.reset();
    EXPECT_THROW(outcome.get(), std::future_error); // dropped, not completed
}

TEST_F(UploadOverHTTP, ACompletionMayLetTheManagerAndItsSessionGo) {
    server.script({.answer = ScriptedServer::response(acceptance)});
    std::promise<void> completed;
    host.manager->upload(host.archive("a.zip"), parameters, [&](const UploadManager::Outcome&) {
        host.manager.reset();
        completed.set_value();
    });
    EXPECT_EQ(completed.get_future().wait_for(std::chrono::seconds(30)), std::future_status::ready);
}

} // namespace tallyfoot
