#include "ObjC/CaptureFixture.h"

#include <stdexcept>

// Does not answer when it is asked for its title.
@interface UnwillingButton : UIButton {
@public
    int way;
    id title;
}
@end

@implementation UnwillingButton

- (NSString*)currentTitle {
    if (way == 1) [NSException raise:@"NotNow" format:@"no"];
    if (way == 2) @throw @"no exception";
    if (way == 3) throw std::runtime_error("C++");
    return title;
}

@end

// Hands out the very array that it holds.
@interface OpenView : UIView {
@public
    NSMutableArray* parts;
}
@end

@implementation OpenView

- (NSArray*)subviews {
    return parts;
}

@end

@interface DroppingLabel : UILabel {
@public
    OpenView* owner;
}
@end

@implementation DroppingLabel

- (NSString*)text {
    [owner->parts release];
    owner->parts = nil;
    return nil;
}

@end

namespace {

using namespace tallyfoot::testing;

class ObjCSenders : public ObjCCapture {
protected:
    // What is recorded of an action that this sends, which is taken all the same.
    std::string recordedFrom(id sender) {
        EXPECT_TRUE([[UIApplication sharedApplication] sendAction:@selector(action:)
                                                               to:probe_
                                                             from:sender
                                                         forEvent:nil]);
        return recorded();
    }
};

TEST_F(ObjCSenders, MayRaiseWhenTheyAreAsked) {
    UnwillingButton* button = [[[UnwillingButton alloc] initWithFrame:CGRectZero] autorelease];
    button->title = @"Add";
    EXPECT_EQ(recordedFrom(button), "action UIButton tap Add");
    for (button->way = 1; button->way <= 3; ++button->way)
        EXPECT_EQ(recordedFrom(button), "action UIButton tap ") << button->way;
}

TEST_F(ObjCSenders, MayAnswerWithWhatIsNoText) {
    UnwillingButton* button = [[[UnwillingButton alloc] initWithFrame:CGRectZero] autorelease];
    for (id title in @[ @7, [NSNull null], @[ @"Add" ] ]) {
        button->title = title;
        EXPECT_EQ(recordedFrom(button), "action UIButton tap ");
    }
    button->title = loneSurrogate();
    EXPECT_EQ(recordedFrom(button), "action UIButton tap a\xEF\xBF\xBD"
                                    "b");
}

TEST_F(ObjCSenders, MayBeAnyObject) {
    for (id sender in @[ @"text", @7, [NSNull null], @[] ]) EXPECT_EQ(recordedFrom(sender), "");
}

TEST_F(ObjCSenders, AreNotRecordedWhereTheyAreClasses) {
    for (id sender in @[ [UIButton class], [UISwitch class], [UISlider class], [UIBarButtonItem class] ])
        EXPECT_EQ(recordedFrom(sender), "");
}

TEST_F(ObjCSenders, MayTakeTheirPartsAwayWhenTheseAreAsked) {
    OpenView* view = [[[OpenView alloc] initWithFrame:CGRectZero] autorelease];
    DroppingLabel* first = [[[DroppingLabel alloc] init] autorelease];
    first->owner = view;
    UILabel* last = [[[UILabel alloc] init] autorelease];
    last.text = @"last";
    view->parts = [[NSMutableArray alloc] initWithObjects:first, last, nil];
    UITapGestureRecognizer* tap = [[[UITapGestureRecognizer alloc] initWithTarget:nil action:NULL] autorelease];
    [view addGestureRecognizer:tap];
    EXPECT_EQ(recordedFrom(tap), "action UITapGestureRecognizer Tap Gesture last");
}

} // namespace
