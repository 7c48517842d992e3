#include "ObjC/ObjCHost.h"
#include "TallyfootObjC/Support/Dictionaries.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

namespace {

using namespace tallyfoot::testing;

using tallyfoot::Attributes;
using tallyfoot::LogAttribute;
using tallyfoot::PropertyList;
using ::testing::ElementsAre;
using ::testing::Pair;
using ::testing::UnorderedElementsAre;
using tallyfoot::objc::attributes;
using tallyfoot::objc::customAttributes;
using tallyfoot::objc::dictionary;
using tallyfoot::objc::texts;

using ObjCDictionaries = ObjCHost;

std::optional<std::string> custom(NSDictionary* dictionary) { return customAttributes(dictionary).text(); }

TEST_F(ObjCDictionaries, TakeAttributesByRecordKey) {
    EXPECT_EQ(attributes(@{@"pgName" : @"Basket", @"evtLabel" : @"Buy"}),
              (Attributes{{LogAttribute::screenTitle, "Basket"}, {LogAttribute::evtLabel, "Buy"}}));
}

TEST_F(ObjCDictionaries, DropAttributesWithAnUnknownKeyOrWithoutAText) {
    EXPECT_EQ(attributes(@{@"screenTitle" : @"x", @"pgName" : @7, @3 : @"x", @"evtId" : [NSNull null]}), Attributes());
}

TEST_F(ObjCDictionaries, AreEmptyWhereThereIsNone) {
    EXPECT_EQ(attributes(nil), Attributes());
    EXPECT_EQ(attributes((NSDictionary*)@"pgName"), Attributes());
    EXPECT_EQ(custom(nil), std::nullopt);
    EXPECT_EQ(custom((NSDictionary*)@[ @1 ]), std::nullopt);
    EXPECT_EQ(custom(@{}), "{}");
}

TEST_F(ObjCDictionaries, WriteEveryKindOfJSONValue) {
    EXPECT_EQ(custom(
                  @{@"t" : @"x",
                    @"n" : [NSNull null],
                    @"a" : @[ @1, @[], @{} ]}),
              R"({"a":[1,[],{}],"n":null,"t":"x"})");
}

TEST_F(ObjCDictionaries, TellTruthValuesFromNumbers) {
    EXPECT_EQ(custom(
                  @{@"a" : @[ @(YES), @(NO), [NSNumber numberWithInt:1], [NSNumber numberWithChar:0] ]}),
              R"({"a":[true,false,1,0]})");
}

TEST_F(ObjCDictionaries, KeepTheDigitsOf64BitNumbers) {
    EXPECT_EQ(custom(@{
                  @"a" : @[
                      [NSNumber numberWithUnsignedLongLong:std::numeric_limits<unsigned long long>::max()],
                      [NSNumber numberWithLongLong:std::numeric_limits<long long>::min()], [NSNumber numberWithInt:-1]
                  ]
              }),
              R"({"a":[18446744073709551615,-9223372036854775808,-1]})");
}

TEST_F(ObjCDictionaries, WriteFractionsInTheirShortestForm) {
    EXPECT_EQ(custom(
                  @{@"a" : @[ @0.1, @2.0, [NSDecimalNumber decimalNumberWithMantissa:110 exponent:-2 isNegative:NO] ]}),
              R"({"a":[0.1,2,1.1]})");
}

TEST_F(ObjCDictionaries, KeepTheDigitsOfWholeDecimalNumbers) {
    const auto decimal = [](unsigned long long mantissa, short exponent, BOOL isNegative) {
        return [NSDecimalNumber decimalNumberWithMantissa:mantissa exponent:exponent isNegative:isNegative];
    };
    EXPECT_EQ(custom(@{
                  @"a" : @[
                      decimal(9007199254740993, 0, NO), decimal(18446744073709551615ULL, 0, NO), decimal(12, 3, YES),
                      decimal(0, 0, NO), decimal(1, 30, NO), decimal(15, -30, NO)
                  ]
              }),
              R"({"a":[9007199254740993,18446744073709551615,-12000,0,1e+30,1.5e-29]})");
}

TEST_F(ObjCDictionaries, MayBeOfTheHostsOwnClass) {
    NSArray* array = [[[PlainArray alloc] initWithElements:@[ @"x", @"y" ]] autorelease];
    NSDictionary* own = [[[PlainDictionary alloc] initWithEntries:@{@"pgName" : @"Basket", @"a" : array}] autorelease];
    EXPECT_EQ(attributes(own), (Attributes{{LogAttribute::screenTitle, "Basket"}}));
    EXPECT_EQ(custom(own), R"({"a":["x","y"],"pgName":"Basket"})");
    EXPECT_THAT(texts(own), ElementsAre(Pair("pgName", "Basket")));
    EXPECT_THAT(texts(array), ElementsAre("x", "y"));
}

TEST_F(ObjCDictionaries, AreNotSerialisedWithWhatJSONDoesNotKnow) {
    EXPECT_EQ(custom(@{@1 : @"x"}), std::nullopt);
    EXPECT_EQ(custom(@{@"at" : [NSDate date]}), std::nullopt);
    EXPECT_EQ(custom(@{@"a" : @[ @{@"b" : [NSData data]} ]}), std::nullopt);
    EXPECT_EQ(custom(@{@"x" : [NSNumber numberWithDouble:NAN]}), std::nullopt);
    EXPECT_EQ(custom(@{@"x" : [NSNumber numberWithDouble:INFINITY]}), std::nullopt);
    EXPECT_EQ(custom(@{@"x" : [NSDecimalNumber notANumber]}), std::nullopt);
    EXPECT_EQ(custom(@{@"x" : loneSurrogate()}), std::nullopt);
    EXPECT_EQ(custom(@{loneSurrogate() : @"x"}), std::nullopt);
}

TEST_F(ObjCDictionaries, AreNotSerialisedWhenTheyHoldThemselves) {
    NSMutableDictionary* dictionary = [NSMutableDictionary dictionary];
    NSMutableArray* array = [NSMutableArray arrayWithObjects:dictionary, dictionary, nil];
    [dictionary setObject:array forKey:@"again"];
    EXPECT_EQ(custom(dictionary), std::nullopt);
    [array removeAllObjects];
}

TEST_F(ObjCDictionaries, AreNotSerialisedWhenTheyRaise) {
    EXPECT_EQ(custom([[[RaisingDictionary alloc] init] autorelease]), std::nullopt);
    EXPECT_EQ(custom(@{@"x" : [[[RaisingText alloc] init] autorelease]}), std::nullopt);
}

TEST_F(ObjCDictionaries, LoseOnlyTheEntryThatRaises) {
    NSString* raising = [[[RaisingText alloc] init] autorelease];
    EXPECT_EQ(attributes(@{@"pgName" : raising, @"evtLabel" : @"Buy"}), (Attributes{{LogAttribute::evtLabel, "Buy"}}));
    EXPECT_THAT(texts(@[ raising, @"a" ]), ElementsAre("a"));
    EXPECT_THAT(texts(@{@"a" : raising, @"b" : @"B"}), ElementsAre(Pair("b", "B")));
    EXPECT_EQ(attributes([[[RaisingDictionary alloc] init] autorelease]), Attributes());
}

TEST_F(ObjCDictionaries, KeepTheTextsOfACollection) {
    EXPECT_THAT(texts(@[ @"a", @1, @"b" ]), ElementsAre("a", "b"));
    EXPECT_THAT(texts((NSArray*)nil), ElementsAre());
    EXPECT_THAT(texts(@{@"a" : @"A", @"b" : @2, @3 : @"C"}), UnorderedElementsAre(Pair("a", "A")));
}

TEST_F(ObjCDictionaries, GiveAPropertyListBack) {
    PropertyList::Dictionary list;
    list["text"] = {std::string("x")};
    list["truth"] = {true};
    list["number"] = {std::int64_t{7}};
    list["fraction"] = {0.5};
    list["data"] = {PropertyList::Data{"ab"}};
    list["array"] = {PropertyList::Array{{std::string("y")}}};
    list["dictionary"] = {PropertyList::Dictionary{{"z", {std::int64_t{1}}}}};
    NSDictionary* expected = @{
        @"text" : @"x",
        @"truth" : @(YES),
        @"number" : @7,
        @"fraction" : @0.5,
        @"data" : [NSData dataWithBytes:"ab" length:2],
        @"array" : @[ @"y" ],
        @"dictionary" : @{@"z" : @1}
    };
    EXPECT_TRUE([dictionary(list) isEqual:expected]);
}

} // namespace
