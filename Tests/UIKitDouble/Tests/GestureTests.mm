#import "Probe.h"

#include <gtest/gtest.h>

namespace {

class Gestures : public ::testing::Test {
protected:
    ~Gestures() override { [pool release]; }

    template <class Recognizer>
    Recognizer* added() {
        Recognizer* recognizer = [[[Recognizer alloc] initWithTarget:probe action:@selector(recognized:)] autorelease];
        [view addGestureRecognizer:recognizer];
        return recognizer;
    }

    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    Probe* probe = [Probe probe];
    UIView* view = [[[UIView alloc] initWithFrame:CGRectMake(0, 0, 200, 200)] autorelease];
};

TEST_F(Gestures, ATapEndsAtOnce) {
    added<UITapGestureRecognizer>();
    [Finger tap:view];
    EXPECT_EQ(heardBy(probe), "3");
    [Finger drag:view by:CGSizeMake(50, 0)];
    EXPECT_EQ(heardBy(probe), "");
}

TEST_F(Gestures, APanBeginsChangesAndEnds) {
    added<UIPanGestureRecognizer>();
    [Finger drag:view from:CGPointMake(10, 10) to:CGPointMake(130, 10) steps:3];
    EXPECT_EQ(heardBy(probe), "1, 2, 2, 3");
    [Finger tap:view];
    EXPECT_EQ(heardBy(probe), "");
}

TEST_F(Gestures, ALongPressBeginsWhenItsTimeIsUp) {
    added<UILongPressGestureRecognizer>();
    [Finger press:view for:0.4];
    EXPECT_EQ(heardBy(probe), "");
    [Finger press:view for:0.6];
    EXPECT_EQ(heardBy(probe), "1, 3");
}

TEST_F(Gestures, APinchNeedsTwoFingersThatMoveApart) {
    UIPinchGestureRecognizer* pinch = added<UIPinchGestureRecognizer>();
    [Finger drag:view by:CGSizeMake(50, 0)];
    EXPECT_EQ(heardBy(probe), "");
    [Finger pinch:view from:40 to:120];
    EXPECT_EQ(heardBy(probe), "1, 2, 2, 2, 2, 2, 3");
    EXPECT_DOUBLE_EQ(pinch.scale, 3);
}

TEST_F(Gestures, ARotationIsNoPinch) {
    added<UIRotationGestureRecognizer>();
    [Finger turn:view by:1];
    EXPECT_EQ(heardBy(probe).substr(0, 1), "1");
    [Finger pinch:view from:40 to:120];
    EXPECT_EQ(heardBy(probe), "");
}

TEST_F(Gestures, ASwipeGoesItsOwnWayOnly) {
    UISwipeGestureRecognizer* swipe = added<UISwipeGestureRecognizer>();
    EXPECT_EQ(swipe.direction, 1U);
    [Finger flick:view by:CGSizeMake(80, 0)];
    EXPECT_EQ(heardBy(probe), "3");
    [Finger flick:view by:CGSizeMake(0, 80)];
    EXPECT_EQ(heardBy(probe), "");
    swipe.direction = UISwipeGestureRecognizerDirectionDown;
    [Finger flick:view by:CGSizeMake(0, 80)];
    EXPECT_EQ(heardBy(probe), "3");
}

TEST_F(Gestures, ATouchThatIsTakenAwayCancels) {
    UILongPressGestureRecognizer* press = added<UILongPressGestureRecognizer>();
    press.minimumPressDuration = 0;
    [Finger beginAndCancel:view];
    EXPECT_EQ(heardBy(probe), "1, 4");
}

TEST_F(Gestures, AfterwardsTheStateIsPossibleAgain) {
    UITapGestureRecognizer* tap = added<UITapGestureRecognizer>();
    [Finger tap:view];
    EXPECT_EQ(tap.state, UIGestureRecognizerStatePossible);
}

TEST_F(Gestures, TheDelegateMayRefuse) {
    added<UITapGestureRecognizer>().delegate = probe;
    probe->refusesGestures = YES;
    [Finger tap:view];
    EXPECT_EQ(heardBy(probe), "");
}

TEST_F(Gestures, ADisabledRecognizerSeesNothing) {
    added<UITapGestureRecognizer>().enabled = NO;
    [Finger tap:view];
    EXPECT_EQ(heardBy(probe), "");
}

TEST_F(Gestures, ARecognizerSeesTheTouchesOfTheViewsInside) {
    added<UITapGestureRecognizer>();
    UIView* inner = [[[UIView alloc] initWithFrame:CGRectMake(0, 0, 50, 50)] autorelease];
    [view addSubview:inner];
    [Finger tap:inner];
    EXPECT_EQ(heardBy(probe), "3");
}

TEST_F(Gestures, ATapThatIsRecognizedTakesTheTouchFromTheView) {
    UITableView* table = [[[UITableView alloc] initWithFrame:CGRectMake(0, 0, 200, 200)] autorelease];
    table.dataSource = probe;
    table.delegate = probe;
    [view addSubview:table];
    UITapGestureRecognizer* tap = added<UITapGestureRecognizer>();
    [Finger tap:table at:CGPointMake(10, 10)];
    EXPECT_EQ(heardBy(probe), "3");
    tap.cancelsTouchesInView = NO;
    [Finger tap:table at:CGPointMake(10, 10)];
    EXPECT_EQ(heardBy(probe), "3, row 0");
}

TEST_F(Gestures, AButtonKeepsATapToItself) {
    added<UITapGestureRecognizer>();
    UIButton* button = [UIButton buttonWithType:UIButtonTypeSystem];
    [button addTarget:probe action:@selector(bareAction) forControlEvents:UIControlEventTouchUpInside];
    [view addSubview:button];
    [Finger tap:button];
    EXPECT_EQ(heardBy(probe), "bare action");
}

TEST_F(Gestures, OfTwoTheInnerOneWins) {
    added<UITapGestureRecognizer>();
    UIView* inner = [[[UIView alloc] initWithFrame:CGRectMake(0, 0, 50, 50)] autorelease];
    Probe* other = [Probe probe];
    [inner addGestureRecognizer:[[[UITapGestureRecognizer alloc] initWithTarget:other
                                                                         action:@selector(bareAction)] autorelease]];
    [view addSubview:inner];
    [Finger tap:inner];
    EXPECT_EQ(heardBy(probe), "");
    EXPECT_EQ(heardBy(other), "bare action");
}

TEST_F(Gestures, ATargetIsAddedOnceAndCanBeRemoved) {
    UITapGestureRecognizer* tap = added<UITapGestureRecognizer>();
    [tap addTarget:probe action:@selector(recognized:)];
    [tap addTarget:probe action:@selector(bareAction)];
    [Finger tap:view];
    EXPECT_EQ(heardBy(probe), "3, bare action");
    [tap removeTarget:probe action:@selector(recognized:)];
    [Finger tap:view];
    EXPECT_EQ(heardBy(probe), "bare action");
}

TEST_F(Gestures, AStoryboardsRecognizerIsMadeWithoutATarget) {
    UITapGestureRecognizer* tap = [[[UITapGestureRecognizer alloc] initWithCoder:nil] autorelease];
    [view addGestureRecognizer:tap];
    [tap addTarget:probe action:@selector(recognized:)];
    [Finger tap:view];
    EXPECT_EQ(heardBy(probe), "3");
}

} // namespace
