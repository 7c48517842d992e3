#include "MultipartParser.h"
#include "Support/RequestBody.h"
#include "Support/TemporaryFolder.h"

#include "Tallyfoot/Upload/MultipartRequest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <random>
#include <regex>
#include <string>
#include <thread>

namespace tallyfoot {

namespace {

using testing::bodyOf;
using testing::parseMultipart;
using testing::TemporaryFolder;

// Gives out the numbers it was made with, then counts on.
class CountedRandom final : public Random {
public:
    explicit CountedRandom(std::deque<std::uint32_t> numbers) : numbers_(std::move(numbers)) {}

    std::uint32_t number() override {
        if (numbers_.empty()) return ++last_;
        const auto first = numbers_.front();
        numbers_.pop_front();
        return first;
    }

    std::string uuidString() override { return {}; }

private:
    std::deque<std::uint32_t> numbers_;
    std::uint32_t last_ = 0;
};

URLRequest requestOf(const std::map<std::string, std::string>& parameters, std::string data,
                     std::string_view filename = "a.zip", std::string_view boundary = "B") {
    auto request = multipartRequest("http://127.0.0.1:9090/upload", parameters, boundary, std::move(data), "files",
                                    "*/*", filename);
    EXPECT_TRUE(request);
    return std::move(request).value_or(URLRequest{});
}

} // namespace

TEST(Boundary, IsThePrefixAndTwiceEightLowerCaseHexadecimalDigits) {
    CountedRandom random({0x0A1B2C3DU, 0x9F8E7D6CU, 0, 7, 0xFFFFFFFFU, 0x80000000U});
    EXPECT_EQ(randomBoundary(random), "tallyfoot.boundary.0a1b2c3d9f8e7d6c");
    EXPECT_EQ(randomBoundary(random), "tallyfoot.boundary.0000000000000007");
    EXPECT_EQ(randomBoundary(random), "tallyfoot.boundary.ffffffff80000000");
}

TEST(Boundary, IsMadeOnceAProcess) {
    CountedRandom random({1, 2});
    CountedRandom another({3, 4});
    std::array<std::string, 4> seen;
    {
        std::vector<std::jthread> threads;
        for (auto& text : seen) threads.emplace_back([&] { text = boundary(random); });
    }
    EXPECT_EQ(seen[0], "tallyfoot.boundary.0000000100000002");
    for (const auto& text : seen) EXPECT_EQ(text, seen[0]);
    EXPECT_EQ(boundary(another), seen[0]);
    EXPECT_NE(randomBoundary(another), seen[0]);
}

TEST(MultipartRequest, IsAPostWithItsContentTypeAndNothingElse) {
    const auto request = multipartRequest("https://uploads.example/a?b=c", {}, "tallyfoot.boundary.0a1b2c3d9f8e7d6c",
                                          "bytes", "files", "*/*", "a.zip");
    ASSERT_TRUE(request);
    EXPECT_EQ(request->url, "https://uploads.example/a?b=c");
    EXPECT_EQ(request->method, "POST");
    EXPECT_EQ(request->timeout, std::chrono::seconds(60));
    const std::vector<std::pair<std::string, std::string>> headers{
        {"Content-Type", "multipart/form-data; boundary=tallyfoot.boundary.0a1b2c3d9f8e7d6c"}};
    EXPECT_EQ(request->headers, headers);
}

TEST(MultipartRequest, BodyIsTheParametersInOrderThenTheFile) {
    EXPECT_EQ(bodyOf(requestOf({{"delimeter", "jsonsplit"}, {"appName", "Shop"}}, "PK\x03\x04")),
              "--B\r\n"
              "Content-Disposition: form-data; name=\"appName\"\r\n"
              "\r\n"
              "Shop\r\n"
              "--B\r\n"
              "Content-Disposition: form-data; name=\"delimeter\"\r\n"
              "\r\n"
              "jsonsplit\r\n"
              "--B\r\n"
              "Content-Disposition: form-data; name=\"files\"; filename=\"a.zip\"\r\n"
              "Content-Type: application/zip\r\n"
              "\r\n"
              "PK\x03\x04\r\n"
              "--B--");
}

TEST(MultipartRequest, WithoutParametersTheBodyStartsWithTheFilesDelimiter) {
    EXPECT_EQ(bodyOf(requestOf({}, "")), "--B\r\n"
                                         "Content-Disposition: form-data; name=\"files\"; filename=\"a.zip\"\r\n"
                                         "Content-Type: application/zip\r\n"
                                         "\r\n"
                                         "\r\n"
                                         "--B--");
}

TEST(MultipartRequest, EndsWithTheClosingDelimiterAndNoLineFeed) {
    const auto body = bodyOf(requestOf({{"a", "b"}}, "x\r\n"));
    EXPECT_TRUE(body.ends_with("x\r\n\r\n--B--")) << body;
}

TEST(MultipartRequest, EscapesNothing) {
    const auto request =
        multipartRequest("http://host/", {{"a\"b", "1\r\n2\r\n"}}, "B", "", "f\"f", "*/*", "n\"\r\nx.zip");
    ASSERT_TRUE(request);
    EXPECT_EQ(bodyOf(*request), "--B\r\n"
                                "Content-Disposition: form-data; name=\"a\"b\"\r\n"
                                "\r\n"
                                "1\r\n2\r\n\r\n"
                                "--B\r\n"
                                "Content-Disposition: form-data; name=\"f\"f\"; filename=\"n\"\r\nx.zip\"\r\n"
                                "Content-Type: application/zip\r\n"
                                "\r\n"
                                "\r\n"
                                "--B--");
}

TEST(MultipartRequest, KeepsTheFilesBytesAsTheyAre) {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) bytes += static_cast<char>(byte);
    const auto parts = parseMultipart(bodyOf(requestOf({}, bytes)), "B");
    ASSERT_TRUE(parts);
    ASSERT_EQ(parts->size(), 1U);
    EXPECT_EQ(parts->front().content, bytes);
}

TEST(MultipartRequest, LeavesOutTextsThatAreNotWellFormed) {
    const auto request = multipartRequest("http://host/",
                                          {{"\xFF"
                                            "key",
                                            "kept"},
                                           {"key", "\xC3"}},
                                          "B", "\xFF\xFE", "f\xED\xA0\x80", "*/*", "n\xF8.zip");
    ASSERT_TRUE(request);
    EXPECT_EQ(bodyOf(*request), "--B\r\n"
                                "Content-Disposition: form-data; name=\"key\"\r\n"
                                "\r\n"
                                "\r\n"
                                "--B\r\n"
                                "Content-Disposition: form-data; name=\"\"\r\n"
                                "\r\n"
                                "kept\r\n"
                                "--B\r\n"
                                "Content-Disposition: form-data; name=\"\"; filename=\"\"\r\n"
                                "Content-Type: application/zip\r\n"
                                "\r\n"
                                "\xFF\xFE\r\n"
                                "--B--");
}

TEST(MultipartRequest, AppendStringTakesTextsAndLeavesIllFormedOnes) {
    std::string data = "a";
    appendString(data, "\xC3\xA4");
    appendString(data, "\xC3");
    appendString(data, "b\xFF");
    appendString(data, std::string_view("\0", 1));
    EXPECT_EQ(data, std::string("a\xC3\xA4\0", 4));
}

TEST(MultipartRequest, TheFilesTypeComesFromItsNameWhateverTheCallerSays) {
    const auto typeOf = [](std::string_view mime, std::string_view filename) {
        const auto request = multipartRequest("http://host/", {}, "B", "", "files", mime, filename);
        return parseMultipart(bodyOf(*request), "B")->front().headers.at("Content-Type");
    };
    EXPECT_EQ(typeOf("*/*", "a.zip"), "application/zip");
    EXPECT_EQ(typeOf("text/plain", "a.ZIP"), "application/zip");
    EXPECT_EQ(typeOf("text/plain", "a"), "application/octet-stream");
}

TEST(MultipartRequest, AbsentWhenThePathIsNoURL) {
    for (const auto* path : {"", "no such path", "upload", "/upload", "ftp://host/", "http://", "https:///upload",
                             "http://ho st/", "file:///etc/passwd"})
        EXPECT_FALSE(multipartRequest(path, {}, "B", "", "files", "*/*", "a.zip")) << path;
}

TEST(MultipartRequest, TheFilesBytesAreNotCopied) {
    std::string data(3U << 20U, 'x');
    const auto* const bytes = data.data();
    const auto request = requestOf({{"appName", "Shop"}}, std::move(data));
    EXPECT_TRUE(std::ranges::any_of(request.body, [&](const auto& piece) { return piece.data() == bytes; }));
}

TEST(MultipartRequest, AnyFormReadsBackAsItWasMade) {
    std::mt19937 generator(20240307);
    const auto below = [&](std::uint32_t bound) { return static_cast<std::uint32_t>(generator() % bound); };
    const auto textOf = [&](std::string_view alphabet, std::uint32_t longest) {
        std::string text;
        for (auto length = below(longest + 1); length != 0; --length)
            text += alphabet[below(static_cast<std::uint32_t>(alphabet.size()))];
        return text;
    };
    for (int round = 0; round < 2000; ++round) {
        CountedRandom random({static_cast<std::uint32_t>(generator()), static_cast<std::uint32_t>(generator())});
        const auto boundary = randomBoundary(random);
        std::map<std::string, std::string> parameters;
        for (auto count = below(8); count != 0; --count)
            parameters[textOf("abcXYZ-_. /", 12)] = textOf("ab\r\n-\"\t: ;=", 60);
        std::string data;
        for (auto length = below(400); length != 0; --length)
            data += static_cast<char>(below(4) == 0 ? "\r\n--"[below(4)] : static_cast<char>(below(256)));
        if (below(3) == 0) data.insert(below(static_cast<std::uint32_t>(data.size()) + 1), "\r\n--tallyfoot.boundary.");

        const auto parts = parseMultipart(bodyOf(requestOf(parameters, data, "x.zip", boundary)), boundary);
        ASSERT_TRUE(parts) << "round " << round;
        ASSERT_EQ(parts->size(), parameters.size() + 1);
        auto parameter = parameters.begin();
        for (std::size_t place = 0; place < parameters.size(); ++place, ++parameter) {
            EXPECT_EQ((*parts)[place].name(), parameter->first);
            EXPECT_EQ((*parts)[place].content, parameter->second);
            EXPECT_EQ((*parts)[place].headers.size(), 1U);
        }
        EXPECT_EQ(parts->back().name(), "files");
        EXPECT_EQ(parts->back().fileName(), "x.zip");
        EXPECT_EQ(parts->back().content, data);
    }
}

TEST(MultipartRequest, PythonsEmailPackageReadsIt) {
    if (std::system("python3 -c 'import email' >/dev/null 2>&1") != 0) GTEST_SKIP() << "no python3";
    TemporaryFolder folder;
    const auto request =
        requestOf({{"appName", "Caf\xC3\xA9"}, {"delimeter", "jsonsplit"}, {"empty", ""}}, "PK\x03\x04\r\n\r\nend");
    testing::writeFile(folder / "body", request.headers.front().first + ": " + request.headers.front().second
                                            + "\r\n\r\n" + bodyOf(request));
    testing::writeFile(folder / "parse.py", R"(
import email, sys
message = email.message_from_bytes(open(sys.argv[1], 'rb').read())
assert message.is_multipart() and not message.defects, message.defects
for part in message.get_payload():
    name = part.get_param('name', header='content-disposition')
    print(name, part.get_content_type() if part.get_filename() else '-', part.get_filename(), part.get_payload(decode=True).hex())
)");
    std::string output;
    FILE* const pipe = ::popen(("python3 '" + (folder / "parse.py") + "' '" + (folder / "body") + "'").c_str(), "r");
    ASSERT_NE(pipe, nullptr);
    std::array<char, 512> buffer{};
    while (const auto count = std::fread(buffer.data(), 1, buffer.size(), pipe)) output.append(buffer.data(), count);
    EXPECT_EQ(::pclose(pipe), 0);
    EXPECT_EQ(output, "appName - None 436166c3a9\n"
                      "delimeter - None 6a736f6e73706c6974\n"
                      "empty - None \n"
                      "files application/zip a.zip 504b03040d0a0d0a656e64\n");
}

} // namespace tallyfoot
