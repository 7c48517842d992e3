#include "MultipartParser.h"
#include "Support/ManualURLSession.h"
#include "Support/RequestBody.h"
#include "UploadFixture.h"

#include "Tallyfoot/Upload/UploadManager.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <latch>
#include <thread>

namespace tallyfoot {

namespace {

using ::testing::ElementsAre;
using testing::errorKindOf;
using testing::errorTextOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::Optional;
using testing::resultOf;
using Kind = UploadError::Kind;

constexpr auto address = "http://127.0.0.1:9090/upload";
constexpr auto accepted =
    R"({"data":{"response":{"statusCode":200,"statusCodeInfo":"OK","filename":"a.zip","success":["1.log"],"failure":[]}}})";

// Uploads one archive through a session that the test answers by hand.
class UploadManagerTest : public ::testing::Test {
protected:
    void upload(const std::string& name = "a.zip", std::string_view bytes = "PK") {
        uploadPath(host.archive(name, bytes));
    }

    void uploadPath(const std::string& path) {
        host.manager->upload(path, parameters, [this](UploadManager::Outcome outcome) {
            nameWasOutWhenCompleted = !host.manager->isUploading("a.zip");
            outcomes.push_back(std::move(outcome));
        });
    }

    // What the one upload of an archive ends in when the server's body is this.
    UploadManager::Outcome outcomeOf(const std::string& body) {
        upload();
        host.console.clear();
        session->answer(body);
        EXPECT_EQ(outcomes.size(), 1U);
        EXPECT_FALSE(host.manager->isUploading("a.zip"));
        return outcomes.empty() ? UploadManager::Outcome{} : outcomes.back();
    }

    std::shared_ptr<testing::ManualURLSession> session = std::make_shared<testing::ManualURLSession>();
    testing::UploadFixture host{session, address};
    UploadManager::Parameters parameters{{"appName", "Shop"}, {"delimeter", "jsonsplit"}};
    std::vector<UploadManager::Outcome> outcomes;
    bool nameWasOutWhenCompleted = false;
};

} // namespace

TEST_F(UploadManagerTest, SendsTheParametersAndTheArchive) {
    upload("a.zip", "PK\x03\x04 bytes");
    ASSERT_EQ(session->waiting(), 1U);
    const auto request = session->requests().at(0);
    EXPECT_EQ(request.url, address);
    EXPECT_EQ(request.method, "POST");
    const auto boundary = request.headers.at(0).second.substr(std::string("multipart/form-data; boundary=").size());
    EXPECT_THAT(boundary, ::testing::MatchesRegex("tallyfoot\\.boundary\\.[0-9a-f]{16}"));
    const auto parts = testing::parseMultipart(testing::bodyOf(request), boundary);
    ASSERT_TRUE(parts);
    ASSERT_EQ(parts->size(), 3U);
    EXPECT_EQ(parts->at(0).name(), "appName");
    EXPECT_EQ(parts->at(0).content, "Shop");
    EXPECT_EQ(parts->at(1).name(), "delimeter");
    EXPECT_EQ(parts->at(1).content, "jsonsplit");
    EXPECT_EQ(parts->at(2).name(), "files");
    EXPECT_EQ(parts->at(2).fileName(), "a.zip");
    EXPECT_EQ(parts->at(2).headers.at("Content-Type"), "application/zip");
    EXPECT_EQ(parts->at(2).content, "PK\x03\x04 bytes");
}

TEST_F(UploadManagerTest, EveryUploadOfTheProcessHasTheSameBoundary) {
    upload("a.zip");
    upload("b.zip");
    EXPECT_EQ(session->requests().at(0).headers.at(0), session->requests().at(1).headers.at(0));
}

TEST_F(UploadManagerTest, TheTokenIsTheWholeCookieHeader) {
    host.token = "session=\"a; b\"; Caf\xC3\xA9 ";
    upload();
    const std::pair<std::string, std::string> cookie{"cookie", "session=\"a; b\"; Caf\xC3\xA9 "};
    EXPECT_THAT(session->requests().at(0).headers, ElementsAre(::testing::_, cookie));
}

TEST_F(UploadManagerTest, TheTokenIsAskedForAtEachUpload) {
    upload();
    host.token = "token-2";
    upload();
    EXPECT_EQ(session->requests().at(0).headers.at(1).second, "token-1");
    EXPECT_EQ(session->requests().at(1).headers.at(1).second, "token-2");
}

TEST_F(UploadManagerTest, WithoutAnAuthenticationAnUploadIsFatal) {
    const auto manager = std::make_shared<UploadManager>(
        UploadManager::Collaborators{host.fileManager, host.random, DebugConsole(host.console, host.isOn), session, {}},
        address);
    const auto path = host.archive("a.zip");
    EXPECT_DEATH(manager->upload(path, {}, [](UploadManager::Outcome) {}), "authentication");
}

TEST_F(UploadManagerTest, TellsTheConsoleWhatItSends) {
    upload();
    const auto text = host.console.text();
    const std::string before = "\"Request is http://127.0.0.1:9090/upload\"\n\"-----------\"\n▿ Tallyfoot.URLRequest\n";
    const std::string after = " bytes\n\"Started uploading file: a.zip\"\n";
    EXPECT_TRUE(text.starts_with(before)) << text;
    EXPECT_TRUE(text.ends_with(after)) << text;
    EXPECT_THAT(text, HasSubstr("\n  - body: " + std::to_string(session->requests().at(0).bodySize()) + after));
    EXPECT_THAT(text, Not(HasSubstr("token-1")));
}

TEST_F(UploadManagerTest, WithTheSwitchOffOnlyTheDumpsAreWritten) {
    host.isOn = false;
    upload();
    EXPECT_TRUE(host.console.text().starts_with("▿ Tallyfoot.URLRequest\n")) << host.console.text();
    EXPECT_THAT(host.console.text(), Not(HasSubstr("Started uploading")));
    host.console.clear();
    session->answer(std::string(accepted));
    EXPECT_TRUE(host.console.text().starts_with("▿ Tallyfoot.UploadResult\n")) << host.console.text();
    EXPECT_THAT(host.console.text(), Not(HasSubstr("Completed")));
    ASSERT_EQ(outcomes.size(), 1U);
    EXPECT_NE(resultOf(outcomes[0]), nullptr);
}

TEST_F(UploadManagerTest, ADecodedAnswerIsTheOneResult) {
    const auto outcome = outcomeOf(accepted);
    const auto* const result = resultOf(outcome);
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(result->statusCode, "200");
    EXPECT_EQ(result->statusCodeInfo, "OK");
    EXPECT_EQ(result->filename, "a.zip");
    EXPECT_THAT(result->success, Optional(ElementsAre("1.log")));
    EXPECT_THAT(result->failure, Optional(::testing::IsEmpty()));
    EXPECT_EQ(host.console.text(), "\"Completed uploading file: a.zip\"\n"
                                   "\"Request response: {\\\"data\\\":{\\\"response\\\":{\\\"statusCode\\\":200,"
                                   "\\\"statusCodeInfo\\\":\\\"OK\\\",\\\"filename\\\":\\\"a.zip\\\","
                                   "\\\"success\\\":[\\\"1.log\\\"],\\\"failure\\\":[]}}}\"\n"
                                   "▿ Tallyfoot.UploadResult\n"
                                   "  - statusCode: \"200\"\n"
                                   "  - statusCodeInfo: \"OK\"\n"
                                   "  - filename: \"a.zip\"\n"
                                   "  ▿ success: 1 element\n"
                                   "    - \"1.log\"\n"
                                   "  - failure: 0 elements\n");
}

TEST_F(UploadManagerTest, OtherMembersOfTheAnswerArePassedOver) {
    const auto outcome = outcomeOf(R"({"version":1,"data":{"time":[],"response":{"statusCode":"7","more":{}}}})");
    ASSERT_NE(resultOf(outcome), nullptr);
    EXPECT_EQ(resultOf(outcome)->statusCode, "7");
}

TEST_F(UploadManagerTest, ATransportErrorIsReportedWithItsText) {
    upload();
    host.console.clear();
    session->answer(Error{"The \"line\" is down"});
    ASSERT_EQ(outcomes.size(), 1U);
    EXPECT_EQ(errorKindOf(outcomes[0]), Kind::error);
    EXPECT_EQ(errorTextOf(outcomes[0]), "The \"line\" is down");
    EXPECT_EQ(host.console.text(), "\"Failed to upload file: a.zip with error: The \\\"line\\\" is down\"\n");
    EXPECT_FALSE(host.manager->isUploading("a.zip"));
}

TEST_F(UploadManagerTest, AnEmptyBodyIsInvalidData) {
    EXPECT_EQ(errorKindOf(outcomeOf("")), Kind::invalidData);
    EXPECT_EQ(host.console.text(), "\"Invalid response data\"\n");
}

TEST_F(UploadManagerTest, ABodyThatIsNoJSONIsAnInvalidResponse) {
    EXPECT_EQ(errorKindOf(outcomeOf("<html>")), Kind::invalidResponse);
    EXPECT_EQ(host.console.text(), "\"Completed uploading file: a.zip\"\n\"Request response: <html>\"\n");
}

TEST_F(UploadManagerTest, ABodyOfAnyBytesIsShownAsText) {
    EXPECT_EQ(errorKindOf(outcomeOf(std::string("\xFF\0\x1B[2J", 6))), Kind::invalidResponse);
    EXPECT_EQ(host.console.text(),
              "\"Completed uploading file: a.zip\"\n\"Request response: \xEF\xBF\xBD\\0\\u{1B}[2J\"\n");
}

TEST_F(UploadManagerTest, AnAnswerWithoutItsObjectsIsAnInvalidResponse) {
    for (const std::string body :
         {"{}", "[]", "null", "7", "\"text\"", R"({"data":null})", R"({"data":[]})", R"({"data":{}})",
          R"({"data":{"response":null}})", R"({"data":{"response":[]}})", R"({"data":{"response":"200"}})",
          R"({"response":{"statusCode":200}})", R"({"statusCode":200})", R"({"Data":{"response":{"statusCode":200}}})",
          R"([{"data":{"response":{"statusCode":200}}}])"}) {
        outcomes.clear();
        EXPECT_EQ(errorKindOf(outcomeOf(body)), Kind::invalidResponse) << body;
        EXPECT_THAT(host.console.lines(),
                    ElementsAre("\"Completed uploading file: a.zip\"", ::testing::StartsWith("\"Request response: ")))
            << body;
    }
}

TEST_F(UploadManagerTest, AnAnswerThatIsCutOffOrFollowedByMoreIsAnInvalidResponse) {
    const std::string whole = accepted;
    for (std::size_t length = 1; length < whole.size(); ++length) {
        outcomes.clear();
        EXPECT_EQ(errorKindOf(outcomeOf(whole.substr(0, length))), Kind::invalidResponse) << length;
    }
    outcomes.clear();
    EXPECT_EQ(errorKindOf(outcomeOf(whole + "x")), Kind::invalidResponse);
    outcomes.clear();
    EXPECT_NE(resultOf(outcomeOf(whole + "\r\n")), nullptr);
}

TEST_F(UploadManagerTest, AnAnswerNestedWithoutEndIsAnInvalidResponse) {
    EXPECT_EQ(errorKindOf(outcomeOf(std::string(1U << 20U, '['))), Kind::invalidResponse);
    outcomes.clear();
    std::string objects;
    for (int level = 0; level < 100000; ++level) objects += "{\"data\":";
    EXPECT_EQ(errorKindOf(outcomeOf(objects)), Kind::invalidResponse);
}

TEST_F(UploadManagerTest, OfAKeyGivenTwiceTheFirstCounts) {
    const auto outcome = outcomeOf(R"({"data":{"response":{"statusCode":1,"statusCode":2},"response":{}},"data":7})");
    ASSERT_NE(resultOf(outcome), nullptr);
    EXPECT_EQ(resultOf(outcome)->statusCode, "1");
}

TEST_F(UploadManagerTest, AnAnswerOfIllFormedTextIsAnInvalidResponse) {
    EXPECT_EQ(errorKindOf(outcomeOf("{\"data\":{\"response\":{\"statusCode\":\"2\xFF\"}}}")), Kind::invalidResponse);
}

TEST_F(UploadManagerTest, AResponseThatDoesNotDecodeSaysWhy) {
    const auto outcome = outcomeOf(R"({"data":{"response":{"statusCode":200,"success":"all"}}})");
    EXPECT_EQ(errorKindOf(outcome), Kind::error);
    EXPECT_EQ(errorTextOf(outcome), "The response's \"success\" is not an array of texts");
    EXPECT_THAT(host.console.lines(),
                ElementsAre("\"Completed uploading file: a.zip\"", ::testing::StartsWith("\"Request response: ")));
}

TEST_F(UploadManagerTest, APathThatIsNoURLIsReportedAtOnceAndKeepsTheName) {
    for (const std::optional<std::string>& path :
         {std::optional<std::string>("no such path"), std::optional<std::string>("")}) {
        testing::UploadFixture other(session, path);
        std::vector<UploadManager::Outcome> seen;
        other.manager->upload(other.archive("a.zip"), parameters,
                              [&](UploadManager::Outcome outcome) { seen.push_back(std::move(outcome)); });
        ASSERT_EQ(seen.size(), 1U);
        EXPECT_EQ(errorKindOf(seen[0]), Kind::invalidUploadPath);
        EXPECT_EQ(other.console.text(), "\"Error while creating multipart request\"\n");
        EXPECT_TRUE(other.manager->isUploading("a.zip"));
    }
    EXPECT_EQ(session->waiting(), 0U);
}

TEST_F(UploadManagerTest, AnUnsetUploadPathIsAnInvalidOne) {
    testing::UploadFixture other(session, std::nullopt);
    std::vector<UploadManager::Outcome> seen;
    other.manager->upload(other.archive("a.zip"), parameters,
                          [&](UploadManager::Outcome outcome) { seen.push_back(std::move(outcome)); });
    ASSERT_EQ(seen.size(), 1U);
    EXPECT_EQ(errorKindOf(seen[0]), Kind::invalidUploadPath);
    EXPECT_EQ(other.console.text(), "\"Error while creating multipart request\"\n");
    EXPECT_TRUE(other.manager->isUploading("a.zip"));
    EXPECT_EQ(session->waiting(), 0U);
}

TEST_F(UploadManagerTest, AFileThatCannotBeReadIsInvalidDataAndLeavesTheSet) {
    uploadPath(host.folder / "missing.zip");
    ASSERT_EQ(outcomes.size(), 1U);
    EXPECT_EQ(errorKindOf(outcomes[0]), Kind::invalidData);
    EXPECT_FALSE(errorTextOf(outcomes[0]).empty());
    EXPECT_EQ(host.console.text(),
              debugDescription("Failed to upload file: missing.zip with error: " + errorTextOf(outcomes[0])) + "\n");
    EXPECT_FALSE(host.manager->isUploading("missing.zip"));
    EXPECT_EQ(session->waiting(), 0U);
}

TEST_F(UploadManagerTest, AFolderIsNoArchive) {
    uploadPath(host.folder.path().string());
    ASSERT_EQ(outcomes.size(), 1U);
    EXPECT_EQ(errorKindOf(outcomes[0]), Kind::invalidData);
}

TEST_F(UploadManagerTest, AnEmptyFileIsSent) {
    upload("a.zip", "");
    EXPECT_EQ(session->waiting(), 1U);
}

TEST_F(UploadManagerTest, ANameIsUploadingUntilItsAnswer) {
    EXPECT_FALSE(host.manager->isUploading("a.zip"));
    upload("a.zip");
    upload("b.zip");
    EXPECT_TRUE(host.manager->isUploading("a.zip"));
    EXPECT_TRUE(host.manager->isUploading("b.zip"));
    EXPECT_FALSE(host.manager->isUploading(host.folder / "a.zip"));
    session->answer(1, std::string(accepted));
    EXPECT_TRUE(host.manager->isUploading("a.zip"));
    EXPECT_FALSE(host.manager->isUploading("b.zip"));
    session->answer(Error{"down"});
    EXPECT_FALSE(host.manager->isUploading("a.zip"));
}

TEST_F(UploadManagerTest, TheNameIsOutBeforeTheCompletionHearsOfIt) {
    upload();
    session->answer(std::string(accepted));
    EXPECT_TRUE(nameWasOutWhenCompleted);
}

TEST_F(UploadManagerTest, ASecondUploadOfANameIsSentAsWell) {
    upload();
    upload();
    EXPECT_EQ(session->waiting(), 2U);
    session->answer(std::string(accepted));
    EXPECT_FALSE(host.manager->isUploading("a.zip"));
    session->answer(std::string(accepted));
    EXPECT_EQ(outcomes.size(), 2U);
}

TEST_F(UploadManagerTest, ACompletionMayUploadTheSameNameAgain) {
    const auto path = host.archive("a.zip");
    int completions = 0;
    host.manager->upload(path, parameters, [&](const UploadManager::Outcome&) {
        ++completions;
        host.manager->upload(path, parameters, [&](const UploadManager::Outcome&) { ++completions; });
    });
    session->answer(Error{"down"});
    EXPECT_TRUE(host.manager->isUploading("a.zip"));
    session->answer(std::string(accepted));
    EXPECT_EQ(completions, 2);
}

TEST_F(UploadManagerTest, AManagerThatIsGoneCompletesNothing) {
    upload();
    host.console.clear();
    host.manager.reset();
    session->answer(std::string(accepted));
    EXPECT_TRUE(outcomes.empty());
    EXPECT_EQ(host.console.text(), "");
}

TEST_F(UploadManagerTest, ACompletionMayLetTheManagerGo) {
    const std::weak_ptr<UploadManager> manager = host.manager;
    bool completed = false;
    host.manager->upload(host.archive("a.zip"), parameters, [&](const UploadManager::Outcome&) {
        host.manager.reset();
        completed = true;
    });
    session->answer(std::string(accepted));
    EXPECT_TRUE(completed);
    EXPECT_TRUE(manager.expired());
}

TEST_F(UploadManagerTest, AnUploadUnderWayDoesNotKeepTheManager) {
    const std::weak_ptr<UploadManager> manager = host.manager;
    upload();
    host.manager.reset();
    EXPECT_TRUE(manager.expired());
}

TEST_F(UploadManagerTest, UploadsAndAnswersOfManyThreadsAllComplete) {
    constexpr int threadCount = 4;
    constexpr int uploadsEach = 50;
    host.isOn = false;
    std::atomic<int> completions{0};
    std::latch start(threadCount);
    {
        std::vector<std::jthread> threads;
        for (int thread = 0; thread < threadCount; ++thread)
            threads.emplace_back([&, thread] {
                const auto name = std::to_string(thread) + ".zip";
                const auto path = host.archive(name);
                start.arrive_and_wait();
                for (int count = 0; count < uploadsEach; ++count) {
                    host.manager->upload(path, parameters, [&](const UploadManager::Outcome&) { ++completions; });
                    EXPECT_FALSE(host.manager->isUploading("none.zip"));
                    session->answer(std::string(accepted)); // somebody's: at least this thread's is waiting
                }
            });
    }
    EXPECT_EQ(completions, threadCount * uploadsEach);
    EXPECT_EQ(session->waiting(), 0U);
    for (int thread = 0; thread < threadCount; ++thread)
        EXPECT_FALSE(host.manager->isUploading(std::to_string(thread) + ".zip"));
}

} // namespace tallyfoot
