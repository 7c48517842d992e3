#include "ObjC/CaptureFixture.h"

#include <regex>

// A page that hears of its appearances, and one that keeps them from its superclass.
@interface HostPage : UIViewController {
@public
    int appearances;
}
@end

@implementation HostPage

- (void)viewWillAppear:(BOOL)animated {
    [super viewWillAppear:animated];
    ++appearances;
}

@end

@interface SilentPage : UIViewController
@end

@implementation SilentPage

- (void)viewWillAppear:(BOOL)animated {
    (void)animated;
}

@end

// Fails at what it is asked, in one way or the other.
@interface OddPage : UIViewController {
@public
    BOOL raises;
}
@end

@implementation OddPage

- (NSString*)title {
    if (raises) [NSException raise:@"NotNow" format:@"no title"];
    return (NSString*)@7;
}

- (UINavigationItem*)navigationItem {
    if (raises) [NSException raise:@"NotNow" format:@"no item"];
    return (UINavigationItem*)@"item";
}

@end

namespace {

using namespace tallyfoot::testing;

// --- Controls

TEST_F(ObjCCapture, RecordsATapOnAButton) {
    UIButton* button = [UIButton buttonWithType:UIButtonTypeSystem];
    button.frame = CGRectMake(0, 0, 100, 44);
    [button setTitle:@"Buy" forState:UIControlStateNormal];
    [button addTarget:probe_ action:@selector(action:) forControlEvents:UIControlEventTouchUpInside];
    [Finger tap:button];
    EXPECT_EQ(heardBy(probe_), "action from UIButton");
    EXPECT_EQ(recorded(), "action UIButton tap Buy");
    button.customName = @"Pay";
    [Finger tap:button];
    EXPECT_EQ(recorded(), "action UIButton tap Pay");
    button.logEnabled = NO;
    [Finger tap:button];
    EXPECT_EQ(recorded(), "");
}

TEST_F(ObjCCapture, DeliversAnActionWithoutASender) {
    EXPECT_TRUE([[UIApplication sharedApplication] sendAction:@selector(bareAction) to:probe_ from:nil forEvent:nil]);
    EXPECT_EQ(heardBy(probe_), "bare action");
    EXPECT_EQ(recorded(), "");
}

TEST_F(ObjCCapture, SaysWhetherAnActionWasTaken) {
    UIButton* button = [UIButton buttonWithType:UIButtonTypeSystem];
    EXPECT_FALSE([[UIApplication sharedApplication] sendAction:@selector(length) to:nil from:button forEvent:nil]);
}

template <class Control>
Control* sending(Control* control, Probe* probe) {
    [control addTarget:probe action:@selector(action:) forControlEvents:UIControlEventValueChanged];
    [control sendActionsForControlEvents:UIControlEventValueChanged];
    return control;
}

TEST_F(ObjCCapture, RecordsTheValuesOfControls) {
    UISegmentedControl* segments = [[[UISegmentedControl alloc] initWithItems:@[ @"Day", @"Night" ]] autorelease];
    segments.selectedSegmentIndex = 1;
    sending(segments, probe_);
    EXPECT_EQ(recorded(), "action UISegmentedControl tap Night");

    UIStepper* stepper = [[[UIStepper alloc] initWithFrame:CGRectZero] autorelease];
    stepper.value = 3;
    stepper.customName = @"Qty";
    sending(stepper, probe_);
    EXPECT_EQ(recorded(), "action UIStepper tap Qty-3.0");

    UISwitch* light = [[[UISwitch alloc] initWithFrame:CGRectZero] autorelease];
    light.on = YES;
    light.customName = @" ";
    sending(light, probe_);
    EXPECT_EQ(recorded(), "action UISwitch tap true");

    UIPageControl* pages = [[[UIPageControl alloc] initWithFrame:CGRectZero] autorelease];
    pages.numberOfPages = 5;
    pages.currentPage = 2;
    sending(pages, probe_);
    EXPECT_EQ(recorded(), "action UIPageControl 2");

    UIDatePicker* picker = [[[UIDatePicker alloc] initWithFrame:CGRectZero] autorelease];
    picker.date = [NSDate dateWithTimeIntervalSince1970:0];
    sending(picker, probe_);
    EXPECT_EQ(recorded(), "action UIDatePicker 1970-01-01 00:00:00 +0000");

    UIRefreshControl* refresh = [[[UIRefreshControl alloc] init] autorelease];
    refresh.customName = @"Orders";
    sending(refresh, probe_);
    EXPECT_EQ(recorded(), "action UIRefreshControl Refreshed Orders");
}

TEST_F(ObjCCapture, RecordsASliderWhereItIsLetGoAndNotWhileItIsDragged) {
    UISlider* slider = [[[UISlider alloc] initWithFrame:CGRectMake(0, 0, 200, 40)] autorelease];
    slider.value = 0.5F;
    sending(slider, probe_);
    EXPECT_EQ(recorded(), "action UISlider Slide 0.5");
    [probe_->heard removeAllObjects];
    [Finger drag:slider by:CGSizeMake(60, 0)];
    EXPECT_GT([probe_->heard count], 1U);
    const std::string events = recorded();
    EXPECT_TRUE(std::regex_match(events, std::regex("action UISlider Slide 0\\.\\d+"))) << events;
}

TEST_F(ObjCCapture, RecordsBarItemsByTheirTitleOrTheirSystemItem) {
    UIBarButtonItem* done = [[[UIBarButtonItem alloc] initWithBarButtonSystemItem:UIBarButtonSystemItemDone
                                                                           target:probe_
                                                                           action:@selector(action:)] autorelease];
    [[UIApplication sharedApplication] sendAction:@selector(action:) to:probe_ from:done forEvent:nil];
    EXPECT_EQ(recorded(), "action UIBarButtonItem tap Done");
    done.title = @"Pay";
    [[UIApplication sharedApplication] sendAction:@selector(action:) to:probe_ from:done forEvent:nil];
    EXPECT_EQ(recorded(), "action UIBarButtonItem tap Pay");
}

TEST_F(ObjCCapture, DropsIgnoredCategoriesByTheirCustomTitles) {
    [Tallyfoot categoryCustomTitles:@{@"UISwitch" : @"Swi"}];
    UISwitch* light = [[[UISwitch alloc] initWithFrame:CGRectZero] autorelease];
    sending(light, probe_);
    EXPECT_EQ(recorded(), "action Swi tap false");
    [Tallyfoot configure:nil ignoreClasses:@[ @"UISwitch" ] authenticationClosure:nil];
    sending(light, probe_);
    EXPECT_EQ(recorded(), "");
}

// --- Gestures

TEST_F(ObjCCapture, RecordsTheFiveKindsOfGestures) {
    UILabel* label = [[[UILabel alloc] initWithFrame:CGRectMake(0, 0, 300, 300)] autorelease];
    label.text = @"Offer";
    label.userInteractionEnabled = YES;
    for (Class kind in @[
             [UITapGestureRecognizer class], [UIPinchGestureRecognizer class], [UILongPressGestureRecognizer class],
             [UIPanGestureRecognizer class]
         ])
        [label addGestureRecognizer:[[[kind alloc] initWithTarget:probe_ action:@selector(recognized:)] autorelease]];
    [Finger tap:label];
    EXPECT_EQ(recorded(), "gesture UITapGestureRecognizer Tap Gesture Offer");
    [Finger press:label for:0.6];
    EXPECT_EQ(recorded(), "gesture UILongPressGestureRecognizer Long Press Gesture ; "
                          "gesture UILongPressGestureRecognizer Long Press Gesture ");
    [Finger drag:label by:CGSizeMake(60, 0)];
    EXPECT_EQ(recorded(), "gesture UIPanGestureRecognizer Pan Gesture Offer");
    [Finger pinch:label from:40 to:120];
    EXPECT_NE(recorded().find("gesture UIPinchGestureRecognizer Pinch Gesture "), std::string::npos);
}

TEST_F(ObjCCapture, RecordsASwipeWithItsDirection) {
    UISwipeGestureRecognizer* swipe =
        [[[UISwipeGestureRecognizer alloc] initWithTarget:probe_ action:@selector(recognized:)] autorelease];
    swipe.direction = UISwipeGestureRecognizerDirectionLeft;
    swipe.customName = @"Next";
    [view_ addGestureRecognizer:swipe];
    [Finger flick:view_ by:CGSizeMake(-150, 0)];
    EXPECT_EQ(recorded(), "gesture UISwipeGestureRecognizer Swipe Gesture Left Next");
}

TEST_F(ObjCCapture, AddsNoTargetToOtherRecognizersAndNotToThoseFromAStoryboard) {
    UIRotationGestureRecognizer* rotation =
        [[[UIRotationGestureRecognizer alloc] initWithTarget:probe_ action:@selector(recognized:)] autorelease];
    [view_ addGestureRecognizer:rotation];
    [Finger turn:view_ by:1];
    NSMutableData* data = [NSMutableData data];
    NSKeyedArchiver* archiver = [[[NSKeyedArchiver alloc] initForWritingWithMutableData:data] autorelease];
    [archiver finishEncoding];
    NSKeyedUnarchiver* coder = [[[NSKeyedUnarchiver alloc] initForReadingWithData:data] autorelease];
    UITapGestureRecognizer* tap = [[[UITapGestureRecognizer alloc] initWithCoder:coder] autorelease];
    [view_ addGestureRecognizer:tap];
    [Finger tap:view_];
    EXPECT_EQ(recorded(), "");
}

TEST_F(ObjCCapture, RecordsNoScrollViewsOwnPan) {
    UIScrollView* scroll = [[[UIScrollView alloc] initWithFrame:CGRectMake(0, 0, 100, 100)] autorelease];
    scroll.contentSize = CGSizeMake(100, 1000);
    [Finger drag:scroll by:CGSizeMake(0, -50)];
    EXPECT_EQ(recorded(), "");
}

// --- Tables

TEST_F(ObjCCapture, RecordsWhatATableTellsItsDelegate) {
    UITableView* table = [[[UITableView alloc] initWithFrame:CGRectMake(0, 0, 320, 440)] autorelease];
    probe_->rows = 100;
    table.dataSource = probe_;
    table.delegate = probe_;
    [Finger tap:table at:CGPointMake(10, 50)];
    EXPECT_EQ(heardBy(probe_), "row 1");
    EXPECT_EQ(recorded(), "selection UITableView Cell Selected Row 1");
    [table cellForRowAtIndexPath:[NSIndexPath indexPathForRow:2 inSection:0]].customName = @"Row1";
    [Finger tap:table at:CGPointMake(10, 100)];
    EXPECT_EQ(recorded(), "selection UITableView Cell Selected Row1");
    [Finger flick:table by:CGSizeMake(0, -200)];
    EXPECT_EQ(recorded(), "scroll UIScrollView Scrolled");
    table.logEnabled = NO;
    [Finger tap:table at:CGPointMake(10, 50)];
    [Finger flick:table by:CGSizeMake(0, -200)];
    EXPECT_EQ(recorded(), "");
}

TEST_F(ObjCCapture, RecordsAccessoryButtonsAndSwipeActions) {
    UITableView* table = [[[UITableView alloc] initWithFrame:CGRectMake(0, 0, 320, 440)] autorelease];
    UIContextualAction* remove = [UIContextualAction contextualActionWithStyle:UIContextualActionStyleNormal
                                                                         title:@"Delete"
                                                                       handler:NULL];
    probe_->swipeActions = [[UISwipeActionsConfiguration configurationWithActions:@[ remove ]] retain];
    table.dataSource = probe_;
    table.delegate = probe_;
    [table cellForRowAtIndexPath:[NSIndexPath indexPathForRow:2 inSection:0]].accessoryType =
        UITableViewCellAccessoryDetailDisclosureButton;
    [Finger tap:table at:CGPointMake(310, 2 * 44 + 20)];
    EXPECT_EQ(recorded(), "action UIButton Accessory Button Tap");
    [Finger flick:table from:CGPointMake(200, 60) by:CGSizeMake(-100, 0)];
    recorded();
    UIButton* button = [[(UIView*)[table.subviews lastObject] subviews] firstObject];
    [button sendActionsForControlEvents:UIControlEventTouchUpInside]; // nobody has touched it
    EXPECT_EQ(recorded().find("Cell Swipe Button Tap"), std::string::npos);
    [Finger flick:table from:CGPointMake(200, 60) by:CGSizeMake(-100, 0)];
    recorded();
    button = [[(UIView*)[table.subviews lastObject] subviews] firstObject];
    [Finger tap:button];
    EXPECT_EQ(recorded(), "action UISwipeActionStandardButton Cell Swipe Button Tap Delete");
}

TEST_F(ObjCCapture, RecordsAnItemOfACollection) {
    UICollectionViewFlowLayout* layout = [[[UICollectionViewFlowLayout alloc] init] autorelease];
    layout.itemSize = CGSizeMake(100, 100);
    UICollectionView* collection = [[[UICollectionView alloc] initWithFrame:CGRectMake(0, 0, 320, 400)
                                                       collectionViewLayout:layout] autorelease];
    [collection registerClass:[UICollectionViewCell class] forCellWithReuseIdentifier:@"Item"];
    collection.dataSource = probe_;
    collection.delegate = probe_;
    [collection cellForItemAtIndexPath:[NSIndexPath indexPathForItem:1 inSection:0]].customName = @"Tea";
    [Finger tap:collection at:CGPointMake(150, 50)];
    EXPECT_EQ(heardBy(probe_), "item 1");
    EXPECT_EQ(recorded(), "selection UICollectionView Cell Selected Tea");
}

TEST_F(ObjCCapture, RecordsNothingOfAPickersWheels) {
    UIPickerView* picker = [[[UIPickerView alloc] initWithFrame:CGRectZero] autorelease];
    picker.dataSource = probe_;
    picker.delegate = probe_;
    [Finger tap:[picker.subviews lastObject] at:CGPointMake(10, 70)];
    EXPECT_EQ(heardBy(probe_), "picked 2 in 1");
    EXPECT_EQ(recorded(), "");
}

// --- Bars

TEST_F(ObjCCapture, RecordsATab) {
    UITabBar* bar = [[[UITabBar alloc] initWithFrame:CGRectMake(0, 0, 320, 49)] autorelease];
    bar.items = @[
        [[[UITabBarItem alloc] initWithTitle:@"Shop" image:nil tag:0] autorelease],
        [[[UITabBarItem alloc] initWithTitle:@"Basket" image:nil tag:1] autorelease]
    ];
    bar.delegate = probe_;
    [Finger tap:bar at:CGPointMake(300, 20)];
    EXPECT_EQ(heardBy(probe_), "tab Basket");
    EXPECT_EQ(recorded(), "action UITabBar Tap Basket");
}

TEST_F(ObjCCapture, RecordsTheButtonsOfASearchBarOnce) {
    UISearchBar* bar = [[[UISearchBar alloc] initWithFrame:CGRectZero] autorelease];
    bar.delegate = probe_;
    bar.showsCancelButton = bar.showsBookmarkButton = bar.showsSearchResultsButton = YES;
    [bar.searchTextField insertText:@"tea"];
    [bar.searchTextField insertText:@"\n"];
    EXPECT_EQ(recorded(), "action UISearchBar Search tea");
    for (UIView* part in bar.subviews)
        if (part != (UIView*)bar.searchTextField) [Finger tap:part];
    const std::string events = recorded();
    EXPECT_NE(events.find("action UISearchBar Bookmark"), std::string::npos) << events;
    EXPECT_NE(events.find("action UISearchBar ResultsList"), std::string::npos) << events;
    EXPECT_NE(events.find("action UISearchBar Cancel"), std::string::npos) << events;
    EXPECT_EQ(events.find("UIButton"), std::string::npos) << events;
}

TEST_F(ObjCCapture, RecordsASearchThatIsUpdated) {
    UISearchController* search = [[[UISearchController alloc] initWithSearchResultsController:nil] autorelease];
    search.searchResultsUpdater = probe_;
    search.active = YES;
    recorded();
    [search.searchBar.searchTextField insertText:@"te"];
    EXPECT_EQ(recorded(), "action UISearchBar Search Updated te");
}

// --- Screens

TEST_F(ObjCCapture, RecordsAScreenWhenItDisappears) {
    HostPage* page = [[[HostPage alloc] init] autorelease];
    page.title = @"Basket";
    [page beginAppearanceTransition:YES animated:NO];
    [page endAppearanceTransition];
    EXPECT_EQ(page->appearances, 1);
    EXPECT_EQ(recorded(), "");
    [Tallyfoot logEvent:EventTypeAction attributes:@{@"evtLabel" : @"on it"} customAttributes:nil];
    EXPECT_EQ(records().back()["pgName"], "Basket");
    recorded();
    [page beginAppearanceTransition:NO animated:NO];
    EXPECT_EQ(recorded(), "screen UIViewController Basket");
    EXPECT_TRUE(std::regex_match(records().back()["tmspent"].get<std::string>(), std::regex("\\d+\\.\\d\\d")));
}

TEST_F(ObjCCapture, KnowsNothingOfAPageThatKeepsItFromItsSuperclass) {
    SilentPage* page = [[[SilentPage alloc] init] autorelease];
    [page viewWillAppear:NO];
    [page viewWillDisappear:NO];
    EXPECT_EQ(recorded(), "");
}

TEST_F(ObjCCapture, RecordsAScreenThatFailsToTellItsTitle) {
    OddPage* page = [[[OddPage alloc] init] autorelease];
    for (const BOOL raises : {YES, NO}) {
        page->raises = raises;
        [page viewWillAppear:NO];
        [page viewWillDisappear:NO];
        EXPECT_EQ(recorded(), "screen UIViewController ");
    }
}

TEST_F(ObjCCapture, TracksAnObservedControllerAsItself) {
    UINavigationController* stack = [[[UINavigationController alloc] init] autorelease];
    UIViewController* page = [[[UIViewController alloc] init] autorelease];
    page.customName = @"Basket";
    for (UIViewController* controller in @[ stack, page ]) {
        [controller addObserver:probe_ forKeyPath:@"title" options:0 context:NULL];
        [controller viewWillAppear:NO];
        [controller viewWillDisappear:NO];
        [controller removeObserver:probe_ forKeyPath:@"title"];
    }
    EXPECT_EQ(recorded(), "screen UIViewController Basket");
}

TEST_F(ObjCCapture, TracksNoContainerOfTheSystem) {
    HostPage* page = [[[HostPage alloc] init] autorelease];
    page.title = @"Page";
    UINavigationController* stack = [[[UINavigationController alloc] initWithRootViewController:page] autorelease];
    UIWindow* window = [[[UIWindow alloc] initWithFrame:CGRectMake(0, 0, 320, 568)] autorelease];
    window.rootViewController = stack;
    [window makeKeyAndVisible];
    window.rootViewController = [[[UIViewController alloc] init] autorelease];
    EXPECT_EQ(recorded(), "screen UIViewController Page");
}

} // namespace
