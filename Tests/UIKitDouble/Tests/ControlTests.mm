#import "Probe.h"

#import <UIKit/UIKit.h>
#include <gtest/gtest.h>

// Keeps the names of the frames that an action comes through.
@interface StackProbe : NSObject {
@public
    std::string symbols;
}
- (void)look;
@end

@implementation StackProbe
- (void)look {
    symbols = [[[NSThread callStackSymbols] componentsJoinedByString:@"\n"] UTF8String];
}
@end

@interface TakerView : UIView {
@public
    BOOL hasTaken;
}
- (void)bareAction;
@end

@implementation TakerView
- (void)bareAction {
    hasTaken = YES;
}
@end

namespace {

class Controls : public ::testing::Test {
protected:
    ~Controls() override { [pool release]; }

    template <class Control>
    Control* listened(Control* control, UIControlEvents events) {
        [control addTarget:probe action:@selector(action:) forControlEvents:events];
        return [control autorelease];
    }

    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    Probe* probe = [Probe probe];
};

TEST_F(Controls, ATapOnAButtonSendsItsActionOnce) {
    UIButton* button = [UIButton buttonWithType:UIButtonTypeSystem];
    [button addTarget:probe action:@selector(action:forEvent:) forControlEvents:UIControlEventTouchUpInside];
    [Finger tap:button];
    EXPECT_EQ(heardBy(probe), "action from UIButton with an event");
}

TEST_F(Controls, AButtonIsSilentWhenTheFingerSlipsFarAway) {
    UIButton* button = [UIButton buttonWithType:UIButtonTypeSystem];
    [button addTarget:probe action:@selector(action:) forControlEvents:UIControlEventTouchUpInside];
    [Finger drag:button by:CGSizeMake(0, 300)];
    EXPECT_EQ(heardBy(probe), "");
    [button addTarget:probe action:@selector(bareAction) forControlEvents:UIControlEventTouchUpOutside];
    [Finger drag:button by:CGSizeMake(0, 300)];
    EXPECT_EQ(heardBy(probe), "bare action");
}

TEST_F(Controls, ADisabledOrHiddenButtonIsSilent) {
    UIButton* button = [UIButton buttonWithType:UIButtonTypeSystem];
    [button addTarget:probe action:@selector(action:) forControlEvents:UIControlEventTouchUpInside];
    button.enabled = NO;
    [Finger tap:button];
    button.enabled = YES;
    button.hidden = YES;
    [Finger tap:button];
    EXPECT_EQ(heardBy(probe), "");
}

TEST_F(Controls, ACancelledTouchSendsNoActionButTouchCancel) {
    UIButton* button = [UIButton buttonWithType:UIButtonTypeSystem];
    [button addTarget:probe action:@selector(action:) forControlEvents:UIControlEventTouchUpInside];
    [button addTarget:probe action:@selector(bareAction) forControlEvents:UIControlEventTouchCancel];
    [Finger beginAndCancel:button];
    EXPECT_EQ(heardBy(probe), "bare action");
}

TEST_F(Controls, AnActionWithoutATargetGoesAlongTheResponders) {
    UIView* view = [[[UIView alloc] initWithFrame:CGRectMake(0, 0, 100, 100)] autorelease];
    TakerView* taker = [[[TakerView alloc] initWithFrame:CGRectMake(0, 0, 100, 100)] autorelease];
    UIButton* button = [UIButton buttonWithType:UIButtonTypeSystem];
    [view addSubview:button];
    EXPECT_FALSE([[UIApplication sharedApplication] sendAction:@selector(bareAction) to:nil from:button forEvent:nil]);
    [taker addSubview:view];
    EXPECT_TRUE([[UIApplication sharedApplication] sendAction:@selector(bareAction) to:nil from:button forEvent:nil]);
    EXPECT_TRUE(taker->hasTaken);
}

TEST_F(Controls, TheCurrentTitleFollowsTheState) {
    UIButton* button = [UIButton buttonWithType:UIButtonTypeSystem];
    EXPECT_EQ(button.currentTitle, nil);
    [button setTitle:@"Buy" forState:UIControlStateNormal];
    [button setTitle:@"Sold out" forState:UIControlStateDisabled];
    EXPECT_TRUE([button.currentTitle isEqualToString:@"Buy"]);
    button.enabled = NO;
    EXPECT_TRUE([button.currentTitle isEqualToString:@"Sold out"]);
}

TEST_F(Controls, ATouchSelectsTheSegmentUnderIt) {
    UISegmentedControl* control = [[UISegmentedControl alloc] initWithItems:@[ @"S", @"M", @"L" ]];
    listened(control, UIControlEventValueChanged);
    [Finger tap:control at:CGPointMake(200, 10)];
    EXPECT_EQ(control.selectedSegmentIndex, 2);
    EXPECT_TRUE([[control titleForSegmentAtIndex:2] isEqualToString:@"L"]);
    [Finger tap:control at:CGPointMake(200, 10)]; // it is selected already
    EXPECT_EQ(heardBy(probe), "action from UISegmentedControl");
}

TEST_F(Controls, AStepperStepsWithinItsLimits) {
    UIStepper* stepper = listened([[UIStepper alloc] init], UIControlEventValueChanged);
    stepper.maximumValue = 1;
    [Finger tap:stepper at:CGPointMake(80, 10)];
    [Finger tap:stepper at:CGPointMake(80, 10)];
    EXPECT_EQ(stepper.value, 1);
    EXPECT_EQ(heardBy(probe), "action from UIStepper");
    [Finger tap:stepper at:CGPointMake(10, 10)];
    EXPECT_EQ(stepper.value, 0);
}

TEST_F(Controls, AContinuousSliderSendsAtEachMoveAndOnceWhenLifted) {
    UISlider* slider = listened([[UISlider alloc] init], UIControlEventValueChanged);
    [Finger drag:slider from:CGPointMake(0, 15) to:CGPointMake(150, 15) steps:3];
    EXPECT_FLOAT_EQ(slider.value, 0.75F);
    EXPECT_EQ([probe->heard count], 4U);
}

TEST_F(Controls, AnotherSliderSendsOnlyWhenLifted) {
    UISlider* slider = listened([[UISlider alloc] init], UIControlEventValueChanged);
    slider.continuous = NO;
    [Finger drag:slider from:CGPointMake(0, 15) to:CGPointMake(150, 15) steps:3];
    EXPECT_FLOAT_EQ(slider.value, 0.75F);
    EXPECT_EQ([probe->heard count], 1U);
}

TEST_F(Controls, TheCallStackNamesTheTouchThatAButtonsActionComesFrom) {
    StackProbe* stack = [[[StackProbe alloc] init] autorelease];
    UIButton* button = [UIButton buttonWithType:UIButtonTypeSystem];
    [button addTarget:stack action:@selector(look) forControlEvents:UIControlEventTouchUpInside];
    [Finger tap:button];
    EXPECT_NE(stack->symbols.find("UIControl touchesEnded"), std::string::npos) << stack->symbols;
    [button sendActionsForControlEvents:UIControlEventTouchUpInside];
    EXPECT_NE(stack->symbols, "");
    EXPECT_EQ(stack->symbols.find("UIControl touchesEnded"), std::string::npos) << stack->symbols;
}

TEST_F(Controls, TheCallStackNamesTheTrackingThatASlidersActionComesFrom) {
    StackProbe* stack = [[[StackProbe alloc] init] autorelease];
    UISlider* slider = [[[UISlider alloc] init] autorelease];
    [slider addTarget:stack action:@selector(look) forControlEvents:UIControlEventValueChanged];
    [Finger drag:slider from:CGPointMake(0, 15) to:CGPointMake(150, 15) steps:1]; // the last one is the lifted finger's
    EXPECT_EQ(stack->symbols.find("UISlider continueTrackingWithTouch"), std::string::npos) << stack->symbols;
    slider.value = 0;
    UITouch* touch = nil;
    [slider continueTrackingWithTouch:touch withEvent:nil];
    slider.value = 1;
    [slider continueTrackingWithTouch:touch withEvent:nil];
    EXPECT_NE(stack->symbols.find("UISlider continueTrackingWithTouch"), std::string::npos) << stack->symbols;
}

TEST_F(Controls, ASwitchIsToggledByItsInnerViewsRecognizers) {
    UISwitch* control = listened([[UISwitch alloc] initWithFrame:CGRectZero], UIControlEventValueChanged);
    [Finger tap:control];
    EXPECT_TRUE(control.on);
    [Finger drag:control by:CGSizeMake(-30, 0)];
    EXPECT_FALSE(control.on);
    EXPECT_EQ(heardBy(probe), "action from UISwitch, action from UISwitch");
    UIView* inner = [control.subviews firstObject];
    EXPECT_TRUE([NSStringFromClass([inner class]) isEqualToString:@"UISwitchModernVisualElement"]);
    EXPECT_EQ([inner.gestureRecognizers count], 2U);
}

TEST_F(Controls, ADatePickerTurnsByWholeDays) {
    UIDatePicker* picker = listened([[UIDatePicker alloc] initWithFrame:CGRectZero], UIControlEventValueChanged);
    picker.date = [NSDate dateWithTimeIntervalSince1970:0];
    [Finger drag:picker by:CGSizeMake(0, -64)];
    EXPECT_EQ([picker.date timeIntervalSince1970], 2 * 86400);
    EXPECT_EQ(heardBy(probe), "action from UIDatePicker");
}

TEST_F(Controls, APageControlTurnsPages) {
    UIPageControl* control =
        listened([[UIPageControl alloc] initWithFrame:CGRectMake(0, 0, 100, 30)], UIControlEventValueChanged);
    control.numberOfPages = 2;
    [Finger tap:control at:CGPointMake(80, 10)];
    [Finger tap:control at:CGPointMake(80, 10)];
    EXPECT_EQ(control.currentPage, 1);
    EXPECT_EQ(heardBy(probe), "action from UIPageControl");
}

TEST_F(Controls, ATextFieldIsEditedByATouchAndTheKeyboard) {
    UITextField* field =
        listened([[UITextField alloc] initWithFrame:CGRectMake(0, 0, 100, 30)], UIControlEventEditingChanged);
    [Finger tap:field];
    EXPECT_TRUE([field isFirstResponder]);
    [field insertText:@"ab"];
    [field deleteBackward];
    EXPECT_TRUE([field.text isEqualToString:@"a"]);
    EXPECT_EQ(heardBy(probe), "action from UITextField, action from UITextField");
}

TEST_F(Controls, AButtonMayGoDuringItsOwnAction) {
    UIView* parent = [[[UIView alloc] initWithFrame:CGRectMake(0, 0, 100, 100)] autorelease];
    @autoreleasepool {
        UIButton* button = [[UIButton alloc] initWithFrame:CGRectMake(0, 0, 50, 50)];
        [button addTarget:button action:@selector(removeFromSuperview) forControlEvents:UIControlEventTouchUpInside];
        [parent addSubview:button];
        [button release];
        [Finger tap:button];
    }
    EXPECT_EQ([parent.subviews count], 0U);
}

} // namespace
