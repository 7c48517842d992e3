#include "Tallyfoot/Upload/MIMEType.h"

#include <gtest/gtest.h>

namespace tallyfoot {

TEST(MIMEType, AnArchiveIsAZip) { EXPECT_EQ(mimeType("07-03-2024T14-05-09-123.zip"), "application/zip"); }

TEST(MIMEType, CommonExtensionsHaveTheirTypes) {
    EXPECT_EQ(mimeType("a.7z"), "application/x-7z-compressed"); // the first of the table
    EXPECT_EQ(mimeType("a.json"), "application/json");
    EXPECT_EQ(mimeType("a.txt"), "text/plain");
    EXPECT_EQ(mimeType("a.html"), "text/html");
    EXPECT_EQ(mimeType("a.htm"), "text/html");
    EXPECT_EQ(mimeType("a.jpeg"), "image/jpeg");
    EXPECT_EQ(mimeType("a.png"), "image/png");
}

TEST(MIMEType, TheExtensionCountsInEitherCase) {
    EXPECT_EQ(mimeType("A.ZIP"), "application/zip");
    EXPECT_EQ(mimeType("a.ZiP"), "application/zip");
}

TEST(MIMEType, OnlyTheLastExtensionCounts) {
    EXPECT_EQ(mimeType("a.json.zip"), "application/zip");
    EXPECT_EQ(mimeType("a.zip.nothing"), "application/octet-stream");
}

TEST(MIMEType, WhatNobodyKnowsIsAnOctetStream) {
    EXPECT_EQ(mimeType(""), "application/octet-stream");
    EXPECT_EQ(mimeType("zip"), "application/octet-stream");
    EXPECT_EQ(mimeType("a."), "application/octet-stream");
    EXPECT_EQ(mimeType(".zip"), "application/octet-stream");
    EXPECT_EQ(mimeType("a.zi"), "application/octet-stream");
    EXPECT_EQ(mimeType("a.zipp"), "application/octet-stream");
    EXPECT_EQ(mimeType("a.zzz"), "application/octet-stream");
    EXPECT_EQ(mimeType("a.0"), "application/octet-stream");
    EXPECT_EQ(mimeType("a.z\xC3\xA4"), "application/octet-stream");
}

} // namespace tallyfoot
