#include "ObjC/ObjCHost.h"
#include "TallyfootObjC/Support/Text.h"

#include <string>

namespace {

using namespace tallyfoot::testing;

using namespace std::string_literals;
using tallyfoot::objc::optionalString;
using tallyfoot::objc::optionalText;
using tallyfoot::objc::string;
using tallyfoot::objc::text;
using tallyfoot::objc::wellFormedText;

using ObjCText = ObjCHost;

TEST_F(ObjCText, TakesCharactersOfEveryLength) { EXPECT_EQ(text(@"aß€😀"), "a\xC3\x9F\xE2\x82\xAC\xF0\x9F\x98\x80"); }

TEST_F(ObjCText, KeepsAZeroCharacter) {
    const unichar units[] = {'a', 0, 'b'};
    EXPECT_EQ(text([NSString stringWithCharacters:units length:3]), "a\0b"s);
}

TEST_F(ObjCText, PutsAReplacementWhereHalfACharacterStands) {
    EXPECT_EQ(text(loneSurrogate()), "a\xEF\xBF\xBD"
                                     "b");
    EXPECT_EQ(wellFormedText(loneSurrogate()), std::nullopt);
}

TEST_F(ObjCText, KeepsAPairTogetherThatStandsAtTheEndOfAPiece) {
    NSMutableString* longText = [NSMutableString string];
    std::string expected;
    for (int i = 0; i < 255; ++i) [longText appendString:@"x"];
    expected.append(255, 'x');
    for (int i = 0; i < 300; ++i) {
        [longText appendString:@"😀"];
        expected += "\xF0\x9F\x98\x80";
    }
    EXPECT_EQ(text(longText), expected);
    EXPECT_EQ(wellFormedText(longText), expected);
}

TEST_F(ObjCText, IsEmptyForNilAndForWhatIsNoText) {
    EXPECT_EQ(text(nil), "");
    EXPECT_EQ(text(@7), "");
    EXPECT_EQ(optionalText(nil), std::nullopt);
    EXPECT_EQ(optionalText(@[]), std::nullopt);
    EXPECT_EQ(optionalText(@""), "");
}

TEST_F(ObjCText, IsEmptyWhereItRaises) {
    NSString* raising = [[[RaisingText alloc] init] autorelease];
    EXPECT_EQ(text(raising), "");
    EXPECT_EQ(optionalText(raising), std::nullopt);
}

TEST_F(ObjCText, GivesEveryByteSequenceAString) {
    EXPECT_TRUE([string("aß") isEqual:@"aß"]);
    EXPECT_TRUE([string("a\xFF") isEqual:@"a\uFFFD"]);
    EXPECT_EQ([string("a\0b"s) length], 3U);
    EXPECT_EQ(optionalString(std::nullopt), nil);
}

TEST_F(ObjCText, KeepsWhatLooksLikeAMarkOfTheBytesOrder) {
    for (const auto* marked : {"\uFEFF", "\uFEFFBuy", "\uFEFF\uFEFFBuy", "Buy\uFEFF"})
        EXPECT_EQ(text(string(marked)), marked);
    EXPECT_EQ(text(string("\uFEFFa\xFF")), "\uFEFFa\uFFFD");
}

} // namespace
