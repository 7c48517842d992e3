#include "Collector/MultipartChecker.h"
#include "TestUpload.h"

#include <gtest/gtest.h>

namespace tallyfoot::collector {
namespace {

using testing::TestUpload;

struct Checked {
    MultipartContent content;
    Problems problems;

    std::vector<std::string> kinds() const {
        std::vector<std::string> all;
        for (const auto& problem : problems) all.push_back(problem.kind);
        return all;
    }
};

Checked check(const TestUpload& upload, const std::string& body) {
    Checked checked;
    const auto type =
        upload.contentType.empty() ? "multipart/form-data; boundary=" + upload.boundary : upload.contentType;
    checked.content = checkMultipart(type, body, checked.problems);
    return checked;
}

Checked check(const TestUpload& upload) {
    static std::string body; // the content points into it
    body = upload.body();
    return check(upload, body);
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    const auto position = text.find(from);
    EXPECT_NE(position, std::string::npos) << from;
    return text.replace(position, from.size(), to);
}

using List = std::vector<std::string>;

TEST(MultipartChecker, ReadsFieldsAndFile) {
    TestUpload upload;
    upload.file = "bytes\r\nof the\0file";
    const auto checked = check(upload);
    EXPECT_EQ(checked.kinds(), List{});
    EXPECT_TRUE(checked.content.readable);
    EXPECT_EQ(checked.content.fields, upload.fields);
    EXPECT_EQ(checked.content.filename, upload.filename);
    EXPECT_EQ(checked.content.file, upload.file);
    EXPECT_EQ(checked.content.field("bizareaid"), "R-7");
}

TEST(MultipartChecker, AValueMayHoldLineEndsAndAlmostADelimiter) {
    TestUpload upload;
    upload.setField("appName", "a\r\nb\r\n--tallyfoot.boundary.012345");
    const auto checked = check(upload);
    EXPECT_EQ(checked.kinds(), List{});
    EXPECT_EQ(checked.content.field("appName"), "a\r\nb\r\n--tallyfoot.boundary.012345");
}

TEST(MultipartChecker, TheBoundaryHasItsForm) {
    for (const std::string boundary : {"tallyfoot.boundary.0123456789ABCDEF", "tallyfoot.boundary.0123456789abcde",
                                       "tallyfoot.boundary.0123456789abcdef0", "boundary.0123456789abcdef"}) {
        TestUpload upload;
        upload.boundary = boundary;
        EXPECT_EQ(check(upload).kinds(), List{"boundary"}) << boundary;
        EXPECT_TRUE(check(upload).content.readable);
    }
}

TEST(MultipartChecker, TheContentTypeIsMultipartWithTheBoundaryAlone) {
    TestUpload upload;
    upload.contentType = "application/zip";
    EXPECT_EQ(check(upload).kinds(), List{"contentType"});
    EXPECT_FALSE(check(upload).content.readable);
    upload.contentType = "multipart/form-data; boundary=\"" + upload.boundary + "\"";
    EXPECT_FALSE(check(upload).content.readable);
}

TEST(MultipartChecker, ABodyMustBeginWithItsDelimiter) {
    const TestUpload upload;
    EXPECT_FALSE(check(upload, "\r\n" + upload.body()).content.readable);
    EXPECT_FALSE(check(upload, "").content.readable);
}

TEST(MultipartChecker, NothingFollowsTheClosingDelimiter) {
    const TestUpload upload;
    const auto checked = check(upload, upload.body() + "\r\n");
    EXPECT_EQ(checked.kinds(), List{"closing"});
    EXPECT_TRUE(checked.content.readable);
}

TEST(MultipartChecker, TheClosingDelimiterIsNeeded) {
    const TestUpload upload;
    const auto body = upload.body();
    EXPECT_FALSE(check(upload, body.substr(0, body.size() - 2)).content.readable);
}

TEST(MultipartChecker, LineEndsAreCRLF) {
    const TestUpload upload;
    const auto body = replaced(upload.body(), upload.boundary + "\r\n", upload.boundary + "\n");
    EXPECT_FALSE(check(upload, body).content.readable);
}

TEST(MultipartChecker, EveryFieldComesOnce) {
    TestUpload without;
    without.removeField("bizareaid");
    EXPECT_EQ(check(without).kinds(), List{"field"});
    TestUpload twice;
    twice.fields.emplace_back("appid", "again");
    EXPECT_EQ(check(twice).kinds(), List{"field"});
    TestUpload unknown;
    unknown.fields.emplace_back("delimiter", "jsonsplit");
    EXPECT_EQ(check(unknown).kinds(), List{"field"});
}

TEST(MultipartChecker, TheSeparatorFieldNamesTheSeparator) {
    TestUpload upload;
    upload.setField("delimeter", "\n");
    EXPECT_EQ(check(upload).kinds(), List{"field"});
}

TEST(MultipartChecker, AFieldHasOneHeaderLine) {
    const TestUpload upload;
    const auto body = replaced(upload.body(), "name=\"appid\"\r\n", "name=\"appid\"\r\nContent-Type: text/plain\r\n");
    EXPECT_EQ(check(upload, body).kinds(), (List{"field", "field"})); // the line, and so no field appid
}

TEST(MultipartChecker, FieldsAreUTF8) {
    TestUpload upload;
    upload.setField("appName", "\xC3(");
    EXPECT_EQ(check(upload).kinds(), List{"utf8"});
}

TEST(MultipartChecker, TheFilesHeadersComeInEitherOrder) {
    TestUpload upload;
    upload.fileHeaders =
        "Content-Type: application/zip\r\nContent-Disposition: form-data; name=\"files\"; filename=\"a.zip\"\r\n";
    EXPECT_EQ(check(upload).kinds(), List{});
    EXPECT_EQ(check(upload).content.filename, "a.zip");
}

TEST(MultipartChecker, TheFilesTypeAndNameAreChecked) {
    TestUpload type;
    type.fileHeaders = "Content-Type: */*\r\nContent-Disposition: form-data; name=\"files\"; filename=\"a.zip\"\r\n";
    EXPECT_EQ(check(type).kinds(), (List{"file", "file"})); // an unexpected line, and the right one missing
    TestUpload name;
    name.filename = "../a.zip";
    EXPECT_EQ(check(name).kinds(), List{"file"});
    TestUpload field;
    field.fileHeaders =
        "Content-Disposition: form-data; name=\"file\"; filename=\"a.zip\"\r\nContent-Type: application/zip\r\n";
    EXPECT_FALSE(check(field).kinds().empty());
}

TEST(MultipartChecker, AFileIsNeeded) {
    const TestUpload upload;
    std::string body = upload.body();
    body = body.substr(0, body.find("--" + upload.boundary + "\r\nContent-Disposition: form-data; name=\"files\""))
           + "--" + upload.boundary + "--";
    EXPECT_EQ(check(upload, body).kinds(), List{"file"});
}

} // namespace
} // namespace tallyfoot::collector
