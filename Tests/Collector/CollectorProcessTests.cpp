#include "Collector/Database.h"
#include "Support/CollectorProcess.h"
#include "Support/TemporaryFolder.h"
#include "TestUpload.h"

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <set>

namespace tallyfoot::testing {
namespace {

using nlohmann::json;

std::set<std::string> identifiers(const json& events) {
    std::set<std::string> all;
    for (const auto& event : events) all.insert(event.at("evtId").get<std::string>());
    return all;
}

TestUpload twoLogs() {
    return TestUpload({{"a.log", log({record("a-1"), record("a-2")})}, {"b.log", log({record("b-1")})}});
}

TEST(CollectorProcess, AcceptsAWellFormedUploadWithoutAProblem) {
    CollectorProcess collector;
    const auto answer = send(collector.port(), TestUpload());
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.response().at("statusCode"), 200);
    EXPECT_EQ(answer.response().at("success"), json::array({"07-03-2024T14-05-09-001.log"}));
    EXPECT_EQ(answer.response().at("failure"), json::array());
    EXPECT_EQ(answer.response().at("filename"), "07-03-2024T14-05-09-123.zip");
    EXPECT_EQ(collector.problems(), json::array());
    EXPECT_EQ(identifiers(collector.confirmed()), std::set<std::string>{"id-1"});
}

TEST(CollectorProcess, KeepsWhatTheClientSentLetterForLetter) {
    CollectorProcess collector;
    TestUpload upload;
    upload.target =
        "/qmx/tallyfootServer/businessareas/utilities/subjectareas/tallyfootServer/proxy/tallyfootUploadFiles";
    upload.cookie = "token%20with%41 marks;=";
    upload.setField("authtoken", upload.cookie);
    send(collector.port(), upload);
    const auto kept = collector.uploads().at(0);
    EXPECT_EQ(kept.at("target"), upload.target);
    EXPECT_EQ(kept.at("cookie"), upload.cookie);
    EXPECT_EQ(kept.at("fields").at("appid"), "shop-1");
    EXPECT_EQ(kept.at("boundary"), upload.boundary);
    EXPECT_EQ(collector.problems(), json::array());
}

TEST(CollectorProcess, RecordsComeBackWithTheirNumbersUntouched) {
    CollectorProcess collector;
    const std::string text =
        R"({"evtId":"n","evtType":"action","custom":[{"big":123456789012345678901,"small":1.50}]})";
    send(collector.port(), TestUpload({{"a.log", text + "jsonsplit"}}));
    const auto reply = talk(collector.port(), "GET /v1/events HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n");
    EXPECT_NE(reply.body.find(text), std::string::npos) << reply.body;
}

TEST(CollectorProcess, RefusesTheFilesItIsToldTo) {
    CollectorProcess collector;
    collector.queueFaults({{{"kind", "refuse"}, {"files", {"a.log"}}}});
    const auto answer = send(collector.port(), twoLogs());
    EXPECT_EQ(answer.response().at("success"), json::array({"b.log"}));
    EXPECT_EQ(answer.response().at("failure"), json::array({"a.log"}));
    EXPECT_EQ(identifiers(collector.confirmed()), std::set<std::string>{"b-1"});
    EXPECT_EQ(collector.events().size(), 3U);
}

TEST(CollectorProcess, RefusesEverySecondFile) {
    CollectorProcess collector;
    collector.queueFaults({{{"kind", "refuse"}, {"files", {{"every", 2}}}}});
    EXPECT_EQ(send(collector.port(), twoLogs()).response().at("failure"), json::array({"b.log"}));
}

TEST(CollectorProcess, RefusesAllFiles) {
    CollectorProcess collector;
    collector.queueFaults({{{"kind", "refuse"}, {"files", "all"}}});
    EXPECT_EQ(send(collector.port(), twoLogs()).response().at("failure"), json::array({"a.log", "b.log"}));
    EXPECT_EQ(collector.confirmed(), json::array());
}

TEST(CollectorProcess, AuthenticationRejectionConfirmsNothing) {
    CollectorProcess collector;
    collector.queueFaults({{{"kind", "status"}, {"statusCode", "10000003"}}});
    const auto answer = send(collector.port(), TestUpload());
    EXPECT_EQ(answer.response().at("statusCode"), "10000003");
    EXPECT_EQ(answer.response().at("failure"), json::array());
    EXPECT_EQ(collector.confirmed(), json::array());
}

TEST(CollectorProcess, AnotherStatusCodeConfirmsAsTheListsSay) {
    CollectorProcess collector;
    collector.queueFaults({{{"kind", "status"}, {"statusCode", "42"}}});
    EXPECT_EQ(send(collector.port(), TestUpload()).response().at("statusCode"), "42");
    EXPECT_EQ(collector.confirmed().size(), 1U);
}

TEST(CollectorProcess, AnswersWithAnHTTPStatus) {
    CollectorProcess collector;
    collector.queueFaults({{{"kind", "http"}, {"status", 503}},
                           {{"kind", "http"}, {"status", 500}, {"body", "answer"}},
                           {{"kind", "http"}, {"status", 500}, {"body", "empty"}}});
    const auto text = send(collector.port(), TestUpload());
    EXPECT_EQ(text.status, 503);
    EXPECT_TRUE(json::parse(text.body, nullptr, false).is_discarded());
    EXPECT_EQ(collector.confirmed().size(), 0U);
    const auto answer = send(collector.port(), TestUpload());
    EXPECT_EQ(answer.status, 500);
    EXPECT_EQ(answer.response().at("success").size(), 1U);
    EXPECT_EQ(collector.confirmed().size(), 1U);
    EXPECT_EQ(send(collector.port(), TestUpload()).body, "");
}

TEST(CollectorProcess, AnswersLate) {
    CollectorProcess collector;
    collector.queueFaults({{{"kind", "delay"}, {"milliseconds", 300}}});
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(send(collector.port(), TestUpload()).status, 200);
    EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(300));
}

TEST(CollectorProcess, AnswersGarbage) {
    CollectorProcess collector;
    collector.queueFaults({{{"kind", "garbage"}}});
    const auto answer = send(collector.port(), TestUpload());
    EXPECT_EQ(answer.status, 200);
    EXPECT_TRUE(json::parse(answer.body, nullptr, false).is_discarded());
    EXPECT_EQ(collector.confirmed(), json::array());
}

TEST(CollectorProcess, AnswersATextAsItIs) {
    CollectorProcess collector;
    collector.queueFaults({{{"kind", "answer"}, {"body", R"({"data":{}})"}}});
    EXPECT_EQ(send(collector.port(), TestUpload()).body, R"({"data":{}})");
    EXPECT_EQ(collector.confirmed(), json::array());
}

TEST(CollectorProcess, ResetsTheConnectionAfterSomeBytes) {
    CollectorProcess collector;
    collector.queueFaults({{{"kind", "reset"}, {"afterBytes", 100}}});
    EXPECT_EQ(send(collector.port(), TestUpload()).end, Exchange::End::reset);
    EXPECT_EQ(collector.events(), json::array());
    const auto upload = collector.uploads().at(0);
    EXPECT_EQ(upload.at("fault"), "reset");
    EXPECT_FALSE(upload.at("answered"));
    EXPECT_GE(upload.at("bodyBytes"), 100);
    EXPECT_EQ(collector.problems(), json::array());
}

TEST(CollectorProcess, ResetsTheConnectionBeforeTheBodyAndAfterAllOfIt) {
    CollectorProcess collector;
    collector.queueFaults({{{"kind", "reset"}}, {{"kind", "reset"}, {"afterBytes", 1000000}}});
    EXPECT_EQ(send(collector.port(), TestUpload()).end, Exchange::End::reset);
    EXPECT_EQ(send(collector.port(), TestUpload()).end, Exchange::End::reset);
    EXPECT_EQ(collector.events(), json::array());
}

TEST(CollectorProcess, AcceptsAndDropsTheReplyAndKnowsTheDuplicateWhenItComesAgain) {
    CollectorProcess collector;
    collector.queueFaults({{{"kind", "dropReply"}}});
    EXPECT_EQ(send(collector.port(), TestUpload()).end, Exchange::End::closed);
    EXPECT_EQ(collector.confirmed().size(), 1U);
    EXPECT_FALSE(collector.uploads().at(0).at("answered"));
    EXPECT_EQ(send(collector.port(), TestUpload()).status, 200);
    EXPECT_EQ(collector.confirmed().size(), 1U);
    EXPECT_EQ(collector.events("duplicate=true").size(), 1U);
    EXPECT_EQ(collector.summary().at("duplicates"), 1);
}

TEST(CollectorProcess, LivesOnWhenItCannotNoteThatAnAnswerWasLost) {
    TemporaryFolder folder;
    const auto database = folder / "collector.sqlite";
    CollectorProcess collector({"--database", database});
    collector::Database(database).execute(
        "CREATE TRIGGER refused BEFORE UPDATE ON uploads BEGIN SELECT RAISE(ABORT, 'as told'); END");
    collector.queueFaults({{{"kind", "dropReply"}}});
    EXPECT_EQ(send(collector.port(), TestUpload()).end, Exchange::End::closed);
    EXPECT_EQ(send(collector.port(), TestUpload()).status, 200);
}

TEST(CollectorProcess, AnEventThatWasRefusedIsNoDuplicateWhenItComesAgain) {
    CollectorProcess collector;
    collector.queueFaults({{{"kind", "refuse"}}});
    send(collector.port(), TestUpload());
    send(collector.port(), TestUpload());
    EXPECT_EQ(collector.confirmed().size(), 1U);
    EXPECT_EQ(collector.summary().at("duplicates"), 0);
}

TEST(CollectorProcess, FaultsAreTakenInTheirOrderAndOneATime) {
    CollectorProcess collector({"--fault", "status:10000002", "--fault", "http:500"});
    collector.queueFaults({{{"kind", "garbage"}, {"times", 2}}});
    EXPECT_EQ(send(collector.port(), TestUpload()).response().at("statusCode"), "10000002");
    EXPECT_EQ(send(collector.port(), TestUpload()).status, 500);
    EXPECT_EQ(collector.summary().at("faults"), 2);
    send(collector.port(), TestUpload());
    send(collector.port(), TestUpload());
    EXPECT_EQ(send(collector.port(), TestUpload()).response().at("statusCode"), 200);
}

TEST(CollectorProcess, ClearingTheFaultsDropsThoseBefore) {
    CollectorProcess collector({"--fault", "http:500"});
    EXPECT_EQ(collector.post("/v1/faults", {{"clear", true}, {"faults", {{{"kind", "garbage"}}}}}).body.at("queued"),
              1);
    EXPECT_EQ(collector.post("/v1/faults", {{"clear", true}}).body.at("queued"), 0);
    EXPECT_EQ(send(collector.port(), TestUpload()).response().at("statusCode"), 200);
}

TEST(CollectorProcess, TakesALongListOfFaultsWhateverItsContentTypeSays) {
    CollectorProcess collector;
    const auto body = json{{"faults", {{{"kind", "answer"}, {"body", std::string(20000, 'x')}}}}}.dump();
    EXPECT_EQ(talk(collector.port(), "POST /v1/faults HTTP/1.1\r\nContent-Type: application/x-www-form-urlencoded\r\n"
                                     "Content-Length: "
                                         + std::to_string(body.size()) + "\r\n\r\n" + body)
                  .status,
              200);
    EXPECT_EQ(send(collector.port(), TestUpload()).body.size(), 20000U);
}

TEST(CollectorProcess, RefusesAFaultItDoesNotKnow) {
    CollectorProcess collector;
    EXPECT_EQ(collector.post("/v1/faults", {{"faults", {{{"kind", "fire"}}}}}).status, 400);
    EXPECT_EQ(collector.post("/v1/faults", {{"faults", {{{"kind", "reset"}, {"after", 1}}}}}).status, 400);
    EXPECT_EQ(collector.post("/v1/faults", {{"faults", 7}}).status, 400);
    EXPECT_EQ(collector.post("/v1/faults", {{"clear", "yes"}}).status, 400);
}

TEST(CollectorProcess, AFaultThatIsRefusedLeavesTheOthersAsTheyWere) {
    CollectorProcess collector({"--fault", "http:500"});
    EXPECT_EQ(collector.post("/v1/faults", {{"clear", true}, {"random", -1}}).status, 400);
    EXPECT_EQ(collector.post("/v1/faults", {{"clear", true}, {"faults", {{{"kind", "fire"}}}}}).status, 400);
    EXPECT_EQ(collector.summary().at("faults"), 1);
}

TEST(CollectorProcess, RefusesWhatNestsTooDeepAndLivesOn) {
    CollectorProcess collector;
    const auto deep = std::string(200000, '[') + std::string(200000, ']');
    for (const auto& [path, start] : {std::pair("/v1/faults", R"({"faults":)"), {"/v1/expect", R"({"match":{"a":)"}}) {
        const auto body = start + deep;
        const auto answer = talk(collector.port(), "POST " + std::string(path) + " HTTP/1.1\r\nContent-Length: "
                                                       + std::to_string(body.size()) + "\r\n\r\n" + body);
        EXPECT_EQ(answer.status, 400) << path;
    }
    EXPECT_EQ(collector.get("/healthz").status, 200);
}

TEST(CollectorProcess, AStatusCodeThatIsNoUTF8IsAnsweredAllTheSame) {
    CollectorProcess collector({"--fault", "status:\xFF"});
    EXPECT_EQ(send(collector.port(), TestUpload()).response().at("statusCode"), "\xEF\xBF\xBD");
    EXPECT_EQ(collector.confirmed().size(), 1U);
}

TEST(CollectorProcess, AnUnreadableBodyGetsAnAnswerThatKeepsTheClientsData) {
    CollectorProcess collector;
    TestUpload upload;
    upload.file = "this is no archive";
    const auto answer = send(collector.port(), upload);
    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.response().at("failure"), json::array({upload.filename}));
    EXPECT_EQ(answer.response().at("success"), json::array());
    EXPECT_EQ(collector.problems().at(0).at("kind"), "archive");
}

TEST(CollectorProcess, ABodyThatIsNoMultipartIsAProblemAndKeepsTheClientsData) {
    CollectorProcess collector;
    const auto answer = talk(collector.port(), "POST /upload HTTP/1.1\r\nContent-Length: 10\r\n\r\n0123456789");
    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.response().at("failure").size(), 1U);
    EXPECT_FALSE(collector.problems().empty());
}

TEST(CollectorProcess, ABodyThatStopsHalfWayIsAProblem) {
    CollectorProcess collector;
    const auto answer = talkHalf(collector.port(), "POST /upload HTTP/1.1\r\nContent-Length: 1000\r\n\r\n0123456789");
    EXPECT_NE(answer.end, Exchange::End::answered);
    ASSERT_EQ(collector.uploads().size(), 1U);
    EXPECT_EQ(collector.uploads().at(0).at("bodyBytes"), 10);
    const auto problems = collector.problems();
    EXPECT_EQ(problems.at(problems.size() - 1).at("kind"), "interrupted");
}

TEST(CollectorProcess, ExpectWaitsForEventsThatComeLater) {
    CollectorProcess collector;
    auto waiting = std::async(std::launch::async, [&] {
        return collector.expect({{"count", 2}, {"type", "screen"}, {"timeoutMilliseconds", 60000}});
    });
    send(collector.port(), TestUpload({{"a.log", log({record("1", "screen"), record("2", "action")})}}));
    send(collector.port(), TestUpload({{"b.log", log({record("3", "screen")})}}));
    const auto reply = waiting.get();
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(identifiers(reply.body.at("events")), (std::set<std::string>{"1", "3"}));
}

TEST(CollectorProcess, ExpectTellsTheNearestMisses) {
    CollectorProcess collector;
    send(collector.port(), TestUpload({{"a.log", log({record("1", "screen"), record("2", "action")})}}));
    const auto reply = collector.expect({{"count", 2},
                                         {"type", "action"},
                                         {"match", {{"pgName", "Home"}, {"evtId", "1"}}},
                                         {"timeoutMilliseconds", 20}});
    EXPECT_EQ(reply.status, 408);
    EXPECT_EQ(reply.body.at("count"), 0);
    ASSERT_EQ(reply.body.at("nearest").size(), 2U);
    const auto& nearest = reply.body.at("nearest").at(0);
    EXPECT_EQ(nearest.at("matched"), 2);
    EXPECT_EQ(nearest.at("differences").at("evtType"), (json{{"expected", "action"}, {"actual", "screen"}}));
}

TEST(CollectorProcess, ExpectIgnoresRefusedEventsUnlessAskedForAll) {
    CollectorProcess collector;
    collector.queueFaults({{{"kind", "refuse"}}});
    send(collector.port(), TestUpload());
    EXPECT_EQ(collector.expect({{"count", 1}, {"timeoutMilliseconds", 1}}).status, 408);
    EXPECT_EQ(collector.expect({{"count", 1}, {"all", true}, {"timeoutMilliseconds", 1}}).status, 200);
}

TEST(CollectorProcess, ExpectRefusesWhatItDoesNotUnderstand) {
    CollectorProcess collector;
    EXPECT_EQ(collector.expect({{"number", 1}}).status, 400);
    EXPECT_EQ(collector.expect({{"match", 1}}).status, 400);
    EXPECT_EQ(collector.expect({{"count", -1}}).status, 400);
    EXPECT_EQ(collector.expect({{"timeoutMilliseconds", -1}}).status, 400);
    EXPECT_EQ(collector.expect(json::array()).status, 400);
}

TEST(CollectorProcess, EventsCanBeFilteredAndContinued) {
    CollectorProcess collector;
    send(collector.port(),
         TestUpload({{"a.log", log({record("1", "screen"), record("2", "action"), record("3", "screen")})}}));
    EXPECT_EQ(identifiers(collector.events("type=screen")), (std::set<std::string>{"1", "3"}));
    const auto second = collector.events().at(1).at("id").get<int>();
    EXPECT_EQ(identifiers(collector.events("after=" + std::to_string(second))), std::set<std::string>{"3"});
    EXPECT_EQ(collector.get("/v1/events?after=x").status, 400);
    EXPECT_EQ(collector.get("/v1/events?after=99999999999999999999").status, 400);
}

TEST(CollectorProcess, ResetForgetsEverything) {
    CollectorProcess collector;
    collector.queueFaults({{{"kind", "accept"}}, {{"kind", "garbage"}}});
    send(collector.port(), TestUpload());
    collector.reset();
    EXPECT_EQ(collector.uploads(), json::array());
    EXPECT_EQ(collector.events(), json::array());
    EXPECT_EQ(send(collector.port(), TestUpload()).status, 200);
    EXPECT_EQ(collector.confirmed().size(), 1U);
}

TEST(CollectorProcess, APostWithoutALengthHasNoBodyAndIsAnsweredAtOnce) {
    CollectorProcess collector;
    const auto before = std::chrono::steady_clock::now();
    const auto reset = talk(collector.port(), "POST /v1/reset HTTP/1.1\r\nHost: x\r\n\r\n");
    EXPECT_EQ(reset.status, 200);
    EXPECT_EQ(reset.body, "{}");
    EXPECT_EQ(talk(collector.port(), "POST /upload HTTP/1.1\r\nHost: x\r\n\r\n").status, 400);
    EXPECT_EQ(collector.uploads().at(0).at("bodyBytes"), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(20));
}

TEST(CollectorProcess, IsHealthyAndEndsPolitely) {
    CollectorProcess collector;
    EXPECT_EQ(collector.get("/healthz").body, (json{{"status", "ok"}}));
    EXPECT_EQ(collector.terminate(), 0);
}

TEST(CollectorProcess, EndsEvenWhileSomebodyWaits) {
    CollectorProcess collector;
    auto waiting = std::async(std::launch::async, [&] {
        return commandline::CollectorClient(collector.port())
            .post("/v1/expect", {{"count", 1}, {"timeoutMilliseconds", 300000}});
    });
    // The request counts as waiting once the collector has taken its connection; ending it before that is fine too.
    EXPECT_EQ(collector.terminate(), 0);
    const auto reply = waiting.get();
    EXPECT_TRUE(!reply || reply.value().status == 408);
}

TEST(CollectorProcess, KeepsWhatWasAnsweredWhenItIsKilled) {
    TemporaryFolder folder;
    const auto database = folder / "collector.sqlite";
    {
        CollectorProcess collector({"--database", database});
        EXPECT_EQ(send(collector.port(), TestUpload()).status, 200);
        collector.kill();
    }
    CollectorProcess again({"--database", database});
    EXPECT_EQ(identifiers(again.confirmed()), std::set<std::string>{"id-1"});
}

TEST(CollectorProcess, TwoOfThemDoNotShareAPort) {
    CollectorProcess first;
    EXPECT_THROW(CollectorProcess({"--port", std::to_string(first.port())}), std::runtime_error);
}

TEST(CollectorProcess, TheSameSeedGivesTheSameFate) {
    CollectorProcess first({"--random-faults", "7"});
    CollectorProcess second({"--random-faults", "7"});
    std::vector<json> fates;
    for (auto* collector : {&first, &second}) {
        for (int i = 0; i < 40; ++i) send(collector->port(), twoLogs());
        json fate = json::array();
        for (const auto& upload : collector->uploads()) fate.push_back(upload.at("fault"));
        fates.push_back(fate);
    }
    EXPECT_EQ(fates[0], fates[1]);
    EXPECT_GT(std::set<json>(fates[0].begin(), fates[0].end()).size(), 4U);
}

TEST(CollectorProcess, TakesARequestThatComesByteByByte) {
    CollectorProcess collector;
    const TestUpload upload;
    const auto body = upload.body();
    EXPECT_EQ(talkInPieces(collector.port(), upload.head(body.size()) + body, 1).status, 200);
    EXPECT_EQ(collector.confirmed().size(), 1U);
    EXPECT_EQ(collector.problems(), json::array());
}

TEST(CollectorProcess, ClientsThatSayNothingKeepNobodyWaiting) {
    CollectorProcess collector;
    std::vector<std::unique_ptr<SilentClient>> clients;
    for (int client = 0; client < 100; ++client)
        clients.push_back(std::make_unique<SilentClient>(collector.port(), "POST /upload HTTP/1.1\r\n"));
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(send(collector.port(), TestUpload()).status, 200);
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(20));
}

TEST(CollectorProcess, DropsAClientWhoseHeadDoesNotEnd) {
    CollectorProcess collector;
    std::string head = "POST /upload HTTP/1.1\r\n";
    for (int line = 0; line < 10000; ++line)
        head += "X-" + std::to_string(line) + ": " + std::string(100, 'x') + "\r\n";
    const auto before = std::chrono::steady_clock::now();
    EXPECT_NE(talk(collector.port(), head).end, Exchange::End::answered);
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(20));
    EXPECT_EQ(collector.get("/healthz").status, 200);
}

TEST(CollectorProcess, RefusesABodyThatIsTooLarge) {
    CollectorProcess collector;
    const std::string body(std::size_t{65} << 20U, 'x');
    const auto head = "POST /upload HTTP/1.1\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n";
    EXPECT_EQ(talk(collector.port(), head + body).status, 413);
    EXPECT_EQ(collector.problems().back().at("kind"), "tooLarge");
}

TEST(CollectorProcess, DropsAClientWhoseBodyDoesNotEnd) {
    CollectorProcess collector;
    const std::string chunk = "400000\r\n" + std::string(std::size_t{4} << 20U, 'x') + "\r\n";
    std::string bytes = "POST /upload HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n";
    for (int piece = 0; piece < 20; ++piece) bytes += chunk;
    EXPECT_NE(talk(collector.port(), bytes + "0\r\n\r\n").end, Exchange::End::answered);
    EXPECT_EQ(collector.problems().back().at("kind"), "tooLarge");
    EXPECT_NE(talk(collector.port(), bytes.replace(5, 7, "/v1/faults")).end, Exchange::End::answered);
    EXPECT_EQ(collector.get("/healthz").status, 200);
}

TEST(CollectorProcess, TakesUploadsFromSeveralClientsAtOnce) {
    CollectorProcess collector;
    std::vector<std::future<void>> clients;
    for (int client = 0; client < 4; ++client) {
        clients.push_back(std::async(std::launch::async, [&, client] {
            for (int i = 0; i < 20; ++i) {
                const auto name = std::to_string(client) + "-" + std::to_string(i);
                EXPECT_EQ(send(collector.port(), TestUpload({{name + ".log", log({record(name)})}})).status, 200);
            }
        }));
    }
    for (auto& client : clients) client.get();
    EXPECT_EQ(collector.confirmed().size(), 80U);
    EXPECT_EQ(collector.problems(), json::array());
}

} // namespace
} // namespace tallyfoot::testing
