#include "PlatformData/PosixURLSessionTest.h"

#include <chrono>
#include <cstdlib>
#include <string>
#include <utility>

// What is taken for an answer, and what for a failure.
namespace tallyfoot::testing {
namespace {

using namespace std::string_literals;
using namespace std::chrono_literals;
using Ending = ScriptedServer::Ending;
using Reading = ScriptedServer::Reading;

// --- What is answered -----------------------------------------------------------------------------

TEST_F(PosixURLSessionTest, AnswersWithTheBodyWhateverTheStatus) {
    for (const char* status : {"200 OK", "404 Not Found", "500 Internal Server Error"}) {
        server.script({ScriptedServer::response(status, status), {}, {}, {}});
        expectBody(host.fetch(post(server.url())), status);
    }
}

TEST_F(PosixURLSessionTest, AnAnswerWithoutABodyIsEmpty) {
    server.script({"HTTP/1.1 204 No Content\r\n\r\n", {}, {}, {}});
    expectBody(host.fetch(post(server.url())), "");
}

TEST_F(PosixURLSessionTest, TakesAnAnswerThatEndsWithTheConnection) {
    server.script({"HTTP/1.1 200 OK\r\n\r\n{\"a\":1}", Ending::closes, {}, {}});
    expectBody(host.fetch(post(server.url())), "{\"a\":1}");
}

TEST_F(PosixURLSessionTest, TakesAnAnswerInChunks) {
    server.script(
        {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n2\r\nde\r\n0\r\n\r\n", {}, {}, {}});
    expectBody(host.fetch(post(server.url())), "abcde");
}

TEST_F(PosixURLSessionTest, TakesAnAnswerThatComesBeforeTheWholeBodyWasSent) {
    server.script({ScriptedServer::response("busy", "503 Busy", "Connection: close\r\n"),
                   Ending::fallsSilent,
                   Reading::headOnly,
                   {}});
    expectBody(host.fetch(post(server.url(), std::string(64u << 20, 'x'))), "busy");
}

TEST_F(PosixURLSessionTest, AnAnswerOfAMebibyteIsTakenAndALongerOneFails) {
    const std::string most(1u << 20, 'a');
    server.script({ScriptedServer::response(most), {}, {}, {}});
    expectBody(host.fetch(post(server.url())), most);
    server.script({ScriptedServer::response(most + "a"), {}, {}, {}});
    expectError(host.fetch(post(server.url())), "too long");
}

TEST_F(PosixURLSessionTest, AnAnswerWithEndlessHeadersFails) {
    std::string lines;
    while (lines.size() < 512u << 10) lines += "X-Filler: " + std::string(1000, 'x') + "\r\n";
    server.script({ScriptedServer::response("{}", "200 OK", lines), {}, {}, {}});
    expectError(host.fetch(post(server.url())), "too long");
}

TEST_F(PosixURLSessionTest, AnAnswerCutShortFails) {
    server.script({"HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc", Ending::closes, {}, {}});
    expectError(host.fetch(post(server.url())));
}

TEST_F(PosixURLSessionTest, AnAnswerThatIsNotHttpFails) {
    server.script({"abc\r\n\r\n", Ending::closes, {}, {}});
    expectError(host.fetch(post(server.url())));
}

TEST_F(PosixURLSessionTest, AnAnswerInBrokenChunksFails) {
    for (const auto* chunks : {"zz\r\nabc\r\n0\r\n\r\n", "-3\r\nabc\r\n0\r\n\r\n", "FFFFFFFFFFFFFFFFFF\r\nabc",
                               "3\r\nabcdefg\r\n0\r\n\r\n", "3\r\nab", "3\r\nabc\r\n", "\r\n\r\n"}) {
        server.script({"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"s + chunks, Ending::closes, {}, {}});
        SCOPED_TRACE(chunks);
        expectError(host.fetch(post(server.url())));
    }
}

TEST_F(PosixURLSessionTest, AnAnswerOfAnImpossibleLengthFails) {
    for (const auto* length : {"-1", "9223372036854775807", "ten"}) {
        server.script({"HTTP/1.1 200 OK\r\nContent-Length: "s + length + "\r\n\r\n{}", Ending::closes, {}, {}});
        SCOPED_TRACE(length);
        expectError(host.fetch(post(server.url())));
    }
}

TEST_F(PosixURLSessionTest, WhatFollowsTheAnswerIsNoPartOfIt) {
    server.script({ScriptedServer::response("{}") + "HTTP/1.1 200 OK\r\n and more", {}, {}, {}});
    expectBody(host.fetch(post(server.url())), "{}");
    server.script({ScriptedServer::response("next"), {}, {}, {}});
    expectBody(host.fetch(post(server.url())), "next");
}

// libcurl must not take it for more of the last answer's headers, which are gone.
TEST_F(PosixURLSessionTest, AnAnswerThatBeginsWithAFoldedHeaderLineFails) {
    const std::string folded = "HTTP/1.1 200 OK\r\n Folded: line\r\nContent-Length: 2\r\n\r\n{}";
    for (int task = 0; task < 10; ++task) {
        server.script({folded, {}, {}, {}});
        expectError(host.fetch(post(server.url())));
        server.script({ScriptedServer::response("", "307 Temporary Redirect", "Location: /again\r\n"), {}, {}, {}});
        server.script({folded, {}, {}, {}});
        expectError(host.fetch(post(server.url())));
        expectBody(host.fetch(post(server.url())), "{}");
    }
}

TEST_F(PosixURLSessionTest, AnswersInBetweenArePassedOver) {
    server.script({"HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 103 Early Hints\r\nLink: </a>\r\n\r\n"
                       + ScriptedServer::response("final"),
                   {},
                   {},
                   {}});
    expectBody(host.fetch(post(server.url())), "final");
}

TEST_F(PosixURLSessionTest, AnswersInBetweenWithoutEndFail) {
    std::string answers;
    while (answers.size() < 512u << 10) answers += "HTTP/1.1 100 Continue\r\n\r\n";
    server.script({answers, Ending::fallsSilent, {}, {}});
    expectError(host.fetch(post(server.url())), "too long");
}

TEST_F(PosixURLSessionTest, AServerThatHangsUpFails) {
    server.script({"", Ending::closes, {}, {}});
    expectError(host.fetch(post(server.url())));
}

// A broken pipe in the middle of the body would end this process, were the signal raised.
TEST_F(PosixURLSessionTest, AConnectionThatIsResetFailsWithoutASignal) {
    for (int round = 0; round < 5; ++round) {
        server.script({"", Ending::resets, Reading::headOnly, {}});
        expectError(host.fetch(post(server.url(), std::string(16u << 20, 'x'))));
    }
}

// No name server is asked: a label of 64 letters is none.
TEST_F(PosixURLSessionTest, AHostThatDoesNotResolveFails) {
    ::setenv("no_proxy", "*", 1);
    expectError(host.fetch(post("http://" + std::string(64, 'a') + ".invalid/upload")), "resolve");
}

TEST_F(PosixURLSessionTest, AServerThatIsNotThereFails) {
    std::string url;
    {
        const ScriptedServer gone;
        url = gone.url();
    }
    expectError(host.fetch(post(url)));
}

// --- Silence --------------------------------------------------------------------------------------

TEST_F(PosixURLSessionTest, AServerThatNeverAnswersFailsAfterTheTimeout) {
    server.script({"", Ending::fallsSilent, {}, {}});
    auto request = post(server.url());
    request.timeout = 1s;
    const auto start = std::chrono::steady_clock::now();
    expectError(host.fetch(std::move(request)), "silent for 1 seconds");
    EXPECT_GE(std::chrono::steady_clock::now() - start, 1s);
    server.waitForDisconnections(1);
}

TEST_F(PosixURLSessionTest, AServerThatStopsReadingFailsAfterTheTimeout) {
    server.script({"", Ending::fallsSilent, Reading::headOnly, {}});
    auto request = post(server.url(), std::string(64u << 20, 'x'));
    request.timeout = 1s;
    expectError(host.fetch(std::move(request)), "silent");
}

TEST_F(PosixURLSessionTest, AServerThatStopsInTheMiddleOfItsAnswerFailsAfterTheTimeout) {
    server.script({"HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc", Ending::fallsSilent, {}, {}});
    auto request = post(server.url());
    request.timeout = 1s;
    expectError(host.fetch(std::move(request)), "silent");
}

TEST_F(PosixURLSessionTest, AnyDataStartsTheTimeAnew) {
    const std::string body(100, 'x');
    server.script({ScriptedServer::response(body), {}, {}, 20ms});
    static_assert(100 * 20ms > 1900ms, "the whole answer must take longer than the timeout");
    auto request = post(server.url());
    request.timeout = 1s;
    expectBody(host.fetch(std::move(request)), body);
}

} // namespace
} // namespace tallyfoot::testing
