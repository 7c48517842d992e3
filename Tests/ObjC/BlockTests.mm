#include "ObjC/ObjCHost.h"
#include "TallyfootObjC/Support/Blocks.h"

#include <string>

static int lives = 0;

@interface Counted : NSObject
@end

@implementation Counted

- (instancetype)init {
    if ((self = [super init]) != nil) ++lives;
    return self;
}

- (void)dealloc {
    --lives;
    [super dealloc];
}

- (int)seven {
    return 7;
}

@end

namespace {

using namespace tallyfoot::testing;

using tallyfoot::objc::copyBlock;
using Number = int (^)(void);

using ObjCBlock = ObjCHost;

int call(const std::shared_ptr<void>& block) { return ((Number)block.get())(); }

std::shared_ptr<void> blockAroundAnObject() {
    @autoreleasepool {
        Counted* counted = [[[Counted alloc] init] autorelease];
        Number block = ^{
          return [counted seven];
        };
        return copyBlock((const void*)block);
    }
}

TEST_F(ObjCBlock, KeepsTheObjectsItCaptured) {
    auto block = blockAroundAnObject();
    EXPECT_EQ(lives, 1);
    EXPECT_EQ(call(block), 7);
    block.reset();
    EXPECT_EQ(lives, 0);
}

TEST_F(ObjCBlock, KeepsTheNumbersItCaptured) {
    std::shared_ptr<void> block;
    {
        const int captured = 5 + lives;
        Number number = ^{
          return captured;
        };
        block = copyBlock((const void*)number);
    }
    EXPECT_EQ(call(block), 5);
}

TEST_F(ObjCBlock, KeepsTheBlocksItCaptured) {
    std::shared_ptr<void> outer;
    @autoreleasepool {
        Counted* counted = [[[Counted alloc] init] autorelease];
        Number inner = ^{
          return [counted seven];
        };
        Number block = ^{
          return inner() + 1;
        };
        outer = copyBlock((const void*)block);
    }
    EXPECT_EQ(call(outer), 8);
    outer.reset();
    EXPECT_EQ(lives, 0);
}

TEST_F(ObjCBlock, SharesItsVariablesWithTheirScope) {
    __block int count = 0;
    Number block = ^{
      return ++count;
    };
    const auto first = copyBlock((const void*)block);
    const auto second = copyBlock((const void*)block);
    EXPECT_EQ(call(first), 1);
    EXPECT_EQ(call(second), 2);
    EXPECT_EQ(count, 2);
    count = 10;
    EXPECT_EQ(call(first), 11);
}

TEST_F(ObjCBlock, SharesAVariableBeyondItsScope) {
    std::shared_ptr<void> first;
    std::shared_ptr<void> second;
    {
        __block int count = lives;
        Number block = ^{
          return ++count;
        };
        first = copyBlock((const void*)block);
        second = copyBlock((const void*)block);
    }
    EXPECT_EQ(call(first), 1);
    first.reset();
    EXPECT_EQ(call(second), 2);
}

TEST_F(ObjCBlock, CopiesAndDestroysWhatBelongsToCPlusPlus) {
    const auto captured = std::make_shared<std::string>("captured");
    {
        Number block = ^{
          return static_cast<int>(captured->size());
        };
        const auto copy = copyBlock((const void*)block);
        EXPECT_EQ(call(copy), 8);
        EXPECT_EQ(captured.use_count(), 3);
    }
    EXPECT_EQ(captured.use_count(), 1);
}

TEST_F(ObjCBlock, DoesNotRetainWhatAVariableRefersTo) {
    Counted* counted = [[Counted alloc] init];
    __block Counted* unretained = counted;
    Number block = ^{
      return [unretained seven];
    };
    const auto copy = copyBlock((const void*)block);
    EXPECT_EQ([counted retainCount], 1U);
    EXPECT_EQ(call(copy), 7);
    [counted release];
    EXPECT_EQ(lives, 0);
}

TEST_F(ObjCBlock, ThatCapturesNothingNeedsNoCopy) {
    Number block = ^{
      return 3;
    };
    EXPECT_EQ(copyBlock((const void*)block).get(), (void*)block);
    EXPECT_EQ(call(copyBlock((const void*)block)), 3);
    EXPECT_EQ(copyBlock(nullptr).get(), nullptr);
}

} // namespace
