#import "Probe.h"

#include <gtest/gtest.h>

namespace {

class Scrolling : public ::testing::Test {
protected:
    ~Scrolling() override { [pool release]; }

    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    Probe* probe = [Probe probe];
    UITableView* table = [[[UITableView alloc] initWithFrame:CGRectMake(0, 0, 320, 440)] autorelease];

    void show(NSInteger rows) {
        probe->rows = rows;
        table.dataSource = probe;
        table.delegate = probe;
    }
};

TEST_F(Scrolling, ATouchOnARowSelectsIt) {
    show(3);
    [Finger tap:table at:CGPointMake(10, 50)];
    EXPECT_EQ(heardBy(probe), "row 1");
    EXPECT_EQ([table.indexPathForSelectedRow row], 1);
    [Finger tap:table at:CGPointMake(10, 400)]; // below the last
    EXPECT_EQ(heardBy(probe), "");
}

TEST_F(Scrolling, SelectingInCodeSaysNothing) {
    show(3);
    [table selectRowAtIndexPath:[NSIndexPath indexPathForRow:1 inSection:0] animated:NO scrollPosition:0];
    EXPECT_EQ(heardBy(probe), "");
}

TEST_F(Scrolling, OnlyVisibleRowsHaveCellsAndTheyAreUsedAgain) {
    show(1000);
    EXPECT_EQ([[table visibleCells] count], 10U);
    UITableViewCell* first = [table cellForRowAtIndexPath:[NSIndexPath indexPathForRow:0 inSection:0]];
    EXPECT_TRUE([first.textLabel.text isEqualToString:@"Row 0"]);
    table.contentOffset = CGPointMake(0, 440);
    EXPECT_EQ([table cellForRowAtIndexPath:[NSIndexPath indexPathForRow:0 inSection:0]], nil);
    EXPECT_NE([[table visibleCells] indexOfObjectIdenticalTo:first], static_cast<NSUInteger>(NSNotFound));
    [Finger tap:table at:CGPointMake(10, 450)];
    EXPECT_EQ(heardBy(probe), "row 10");
}

TEST_F(Scrolling, AFlickDeceleratesAndADragDoesNot) {
    show(100);
    [Finger flick:table by:CGSizeMake(0, -200)];
    EXPECT_EQ(heardBy(probe), "lifted moving, at rest");
    EXPECT_GT(table.contentOffset.y, 200);
    const CGFloat before = table.contentOffset.y;
    [Finger drag:table by:CGSizeMake(0, 100)];
    EXPECT_EQ(heardBy(probe), "lifted");
    EXPECT_LT(table.contentOffset.y, before);
}

TEST_F(Scrolling, ATableNeverScrollsSideways) {
    show(100);
    [Finger flick:table by:CGSizeMake(-100, 0)];
    EXPECT_EQ(heardBy(probe), "");
}

TEST_F(Scrolling, PullingATableDownRefreshesIt) {
    show(3);
    table.refreshControl = [[[UIRefreshControl alloc] init] autorelease];
    [table.refreshControl addTarget:probe action:@selector(action:) forControlEvents:UIControlEventValueChanged];
    [Finger drag:table by:CGSizeMake(0, 100)];
    EXPECT_EQ(heardBy(probe), "action from UIRefreshControl, lifted moving, at rest");
    EXPECT_TRUE(table.refreshControl.refreshing);
    EXPECT_EQ(table.contentOffset.y, 0);
}

TEST_F(Scrolling, OnePullRefreshesOnceHoweverSoonItIsDone) {
    show(3);
    table.refreshControl = [[[UIRefreshControl alloc] init] autorelease];
    [table.refreshControl addTarget:table.refreshControl
                             action:@selector(endRefreshing)
                   forControlEvents:UIControlEventValueChanged];
    [table.refreshControl addTarget:probe action:@selector(bareAction) forControlEvents:UIControlEventValueChanged];
    [Finger drag:table by:CGSizeMake(0, 120)];
    EXPECT_EQ(heardBy(probe), "bare action, lifted moving, at rest");
    [Finger drag:table by:CGSizeMake(0, 120)];
    EXPECT_EQ(heardBy(probe), "bare action, lifted moving, at rest");
}

TEST_F(Scrolling, AnAccessoryButtonTellsTheDelegateAndSelectsNothing) {
    show(3);
    UITableViewCell* cell = [table cellForRowAtIndexPath:[NSIndexPath indexPathForRow:2 inSection:0]];
    cell.accessoryType = UITableViewCellAccessoryDetailDisclosureButton;
    [Finger tap:table at:CGPointMake(310, 2 * 44 + 20)];
    EXPECT_EQ(heardBy(probe), "accessory 2");
}

TEST_F(Scrolling, ARowMovedToTheLeftShowsItsActions) {
    Probe* told = probe;
    UIContextualAction* remove =
        [UIContextualAction contextualActionWithStyle:UIContextualActionStyleDestructive
                                                title:@"Delete"
                                              handler:^(UIContextualAction* action, UIView*, void (^done)(BOOL)) {
                                                [told->heard addObject:action.title];
                                                done(YES);
                                              }];
    probe->swipeActions = [[UISwipeActionsConfiguration configurationWithActions:@[ remove ]] retain];
    show(3);
    [Finger flick:table from:CGPointMake(200, 60) by:CGSizeMake(-100, 0)];
    UIView* pull = [table.subviews lastObject];
    ASSERT_TRUE([NSStringFromClass([pull class]) isEqualToString:@"UISwipeActionPullView"]);
    UIButton* button = [pull.subviews firstObject];
    EXPECT_TRUE([NSStringFromClass([button class]) isEqualToString:@"UISwipeActionStandardButton"]);
    EXPECT_TRUE([button.currentTitle isEqualToString:@"Delete"]);
    [Finger tap:button];
    EXPECT_EQ(heardBy(probe), "Delete");
    EXPECT_EQ([pull superview], nil);
}

TEST_F(Scrolling, ATapBesideOpenActionsClosesThem) {
    UIContextualAction* remove = [UIContextualAction contextualActionWithStyle:UIContextualActionStyleNormal
                                                                         title:@"Later"
                                                                       handler:NULL];
    probe->swipeActions = [[UISwipeActionsConfiguration configurationWithActions:@[ remove ]] retain];
    show(3);
    [Finger flick:table from:CGPointMake(200, 60) by:CGSizeMake(-100, 0)];
    [Finger tap:table at:CGPointMake(10, 10)];
    EXPECT_EQ(heardBy(probe), "");
    [Finger tap:table at:CGPointMake(10, 10)];
    EXPECT_EQ(heardBy(probe), "row 0");
}

TEST_F(Scrolling, ATouchOnAnItemSelectsIt) {
    UICollectionViewFlowLayout* layout = [[[UICollectionViewFlowLayout alloc] init] autorelease];
    layout.itemSize = CGSizeMake(100, 100);
    UICollectionView* collection = [[[UICollectionView alloc] initWithFrame:CGRectMake(0, 0, 320, 400)
                                                       collectionViewLayout:layout] autorelease];
    [collection registerClass:[UICollectionViewCell class] forCellWithReuseIdentifier:@"Item"];
    probe->rows = 5;
    collection.dataSource = probe;
    collection.delegate = probe;
    [Finger tap:collection at:CGPointMake(150, 150)];
    EXPECT_EQ(heardBy(probe), "item 4");
    UICollectionViewCell* former = [collection cellForItemAtIndexPath:[NSIndexPath indexPathForItem:0 inSection:0]];
    [collection reloadData];
    EXPECT_EQ([collection numberOfItemsInSection:0], 5);
    [Finger tap:collection at:CGPointMake(250, 50)];
    EXPECT_EQ(heardBy(probe), "item 2");
    EXPECT_EQ([former superview], collection); // used again
}

TEST_F(Scrolling, APickersWheelsAreTablesOfItsOwn) {
    UIPickerView* picker = [[[UIPickerView alloc] initWithFrame:CGRectZero] autorelease];
    picker.dataSource = probe;
    picker.delegate = probe;
    UITableView* wheel = [picker.subviews lastObject];
    ASSERT_TRUE([NSStringFromClass([wheel class]) isEqualToString:@"UIPickerTableView"]);
    [Finger tap:wheel at:CGPointMake(10, 70)];
    EXPECT_EQ(heardBy(probe), "picked 2 in 1");
    [Finger flick:wheel by:CGSizeMake(0, -100)];
    EXPECT_EQ(heardBy(probe).substr(0, 7), "picked ");
    EXPECT_GT([picker selectedRowInComponent:1], 2);
    EXPECT_EQ([picker selectedRowInComponent:0], 0);
}

} // namespace
