// What is chosen, in what, and what it is called: one test each.
#include "ObjC/CaptureFixture.h"

#include <objc/runtime.h>

#include <ostream>

namespace {

using namespace tallyfoot::testing;

constexpr auto nameOfRow = [](const auto& test) { return std::string(test.param.name); };

id ofClass(const char* name) { return [[[objc_lookUpClass(name) alloc] init] autorelease]; }

id ofAHostsClass(const char* name, const char* superclass) {
    objc_registerClassPair(objc_allocateClassPair(objc_lookUpClass(superclass), name, 0));
    return ofClass(name);
}

UILabel* label(NSString* text) {
    UILabel* made = [[[UILabel alloc] initWithFrame:CGRectMake(0, 0, 100, 20)] autorelease];
    made.text = text;
    return made;
}

UIView* around(UIView* inner) {
    UIView* outer = [[[UIView alloc] initWithFrame:CGRectMake(0, 0, 100, 100)] autorelease];
    [outer addSubview:inner];
    return outer;
}

// --- Cells

struct CellRow {
    const char* name;
    void (*prepare)(UIView* container, UIView* cell);
    const char* inTable;      // nullptr: nothing is recorded
    const char* inCollection; // a cell of a collection has no label of its own
};

void PrintTo(const CellRow& row, std::ostream* stream) { *stream << row.name; }

class ObjCCells : public ObjCCapture, public ::testing::WithParamInterface<CellRow> {
protected:
    static std::string event(const char* kind, const char* label) {
        return label ? std::string("selection ") + kind + " Cell Selected " + label : "";
    }
};

void text(UIView* cell, NSString* text) {
    if ([cell isKindOfClass:[UITableViewCell class]])
        [(UITableViewCell*)cell textLabel].text = text;
    else
        [cell addSubview:label(text)];
}

const CellRow cells[]{
    {"ByTheirName",
     [](UIView*, UIView* cell) {
         text(cell, @"Text");
         cell.customName = @"Row1";
     },
     "Row1", "Row1"},
    {"ByTheirText", [](UIView*, UIView* cell) { text(cell, @"Text"); }, "Text", "Text"},
    {"ByATextWithin",
     [](UIView*, UIView* cell) {
         text(cell, @"");
         [cell addSubview:around(around(label(@"Deep")))];
     },
     "Deep", "Deep"},
    {"ByTheFirstOfTheirTexts",
     [](UIView*, UIView* cell) {
         text(cell, @"");
         [cell addSubview:label(nil)];
         [cell addSubview:around(label(@"First"))];
         [cell addSubview:label(@"Second")];
     },
     "First", "First"},
    {"ByATextField",
     [](UIView*, UIView* cell) {
         text(cell, @"");
         UITextField* field = [[[UITextField alloc] initWithFrame:CGRectMake(0, 0, 100, 20)] autorelease];
         field.text = @"typed";
         [cell addSubview:field];
     },
     "typed", "typed"},
    {"WithoutAText", [](UIView*, UIView* cell) { text(cell, @""); }, "", ""},
    {"SwitchedOff", [](UIView*, UIView* cell) { cell.logEnabled = NO; }, nullptr, nullptr},
    {"InWhatIsSwitchedOff", [](UIView* container, UIView*) { container.logEnabled = NO; }, nullptr, nullptr},
};

TEST_P(ObjCCells, AreCalledInATable) {
    UITableView* table = [[[UITableView alloc] initWithFrame:CGRectMake(0, 0, 320, 440)] autorelease];
    table.dataSource = probe_;
    table.delegate = probe_;
    GetParam().prepare(table, [table cellForRowAtIndexPath:[NSIndexPath indexPathForRow:1 inSection:0]]);
    [Finger tap:table at:CGPointMake(300, 54)];
    EXPECT_EQ(heardBy(probe_), "row 1");
    EXPECT_EQ(recorded(), event("UITableView", GetParam().inTable));
}

UICollectionView* collection(Probe* probe, Class cellClass) {
    UICollectionViewFlowLayout* layout = [[[UICollectionViewFlowLayout alloc] init] autorelease];
    layout.itemSize = CGSizeMake(100, 100);
    UICollectionView* made = [[[UICollectionView alloc] initWithFrame:CGRectMake(0, 0, 320, 400)
                                                 collectionViewLayout:layout] autorelease];
    [made registerClass:cellClass forCellWithReuseIdentifier:@"Item"];
    made.dataSource = probe;
    made.delegate = probe;
    return made;
}

TEST_P(ObjCCells, AreCalledInACollection) {
    UICollectionView* view = collection(probe_, [UICollectionViewCell class]);
    GetParam().prepare(view, [view cellForItemAtIndexPath:[NSIndexPath indexPathForItem:1 inSection:0]]);
    [Finger tap:view at:CGPointMake(150, 90)];
    EXPECT_EQ(heardBy(probe_), "item 1");
    EXPECT_EQ(recorded(), event("UICollectionView", GetParam().inCollection));
}

INSTANTIATE_TEST_SUITE_P(All, ObjCCells, ::testing::ValuesIn(cells), nameOfRow);

struct SystemsCell {
    const char* className;
    bool isRecorded = false;
};

void PrintTo(const SystemsCell& row, std::ostream* stream) { *stream << row.className; }

class ObjCSystemsCells : public ObjCCapture, public ::testing::WithParamInterface<SystemsCell> {};

TEST_P(ObjCSystemsCells, AreRecordedByTheirExactName) {
    Class cellClass = objc_lookUpClass(GetParam().className);
    if (cellClass == Nil) {
        cellClass = objc_allocateClassPair([UICollectionViewCell class], GetParam().className, 0);
        objc_registerClassPair(cellClass);
    }
    [Finger tap:collection(probe_, cellClass) at:CGPointMake(150, 50)];
    EXPECT_EQ(heardBy(probe_), "item 1");
    EXPECT_EQ(recorded(), GetParam().isRecorded ? "selection UICollectionView Cell Selected " : "");
}

INSTANTIATE_TEST_SUITE_P(
    All, ObjCSystemsCells,
    ::testing::Values(SystemsCell{"UIKeyboardCandidateBarCell"}, SystemsCell{"UIKeyboardCandidateGridCell"},
                      SystemsCell{"UIKeyboardEmojiCollectionViewCell"}, SystemsCell{"UIKBHandwritingCandidateViewCell"},
                      SystemsCell{"_UIAlertControllerCollectionViewCell"}, SystemsCell{"_UIActivityGroupActivityCell"},
                      SystemsCell{"UIKeyboardCandidateBarCellOfMine", true}),
    [](const auto& test) { return std::string(test.param.className); });

// --- Bars, searches and scrolls, which are told to their delegate here

struct ToldRow {
    const char* name;
    id (*make)();
    const char* setter;
    const char* callback;
    const char* event;
    id (*makeItem)() = nullptr;
};

void PrintTo(const ToldRow& row, std::ostream* stream) { *stream << row.name; }

class ObjCTold : public ObjCCapture, public ::testing::WithParamInterface<ToldRow> {};

TEST_P(ObjCTold, IsRecorded) {
    const auto& row = GetParam();
    id sender = row.make();
    [sender performSelector:sel_registerName(row.setter) withObject:probe_];
    const SEL callback = sel_registerName(row.callback);
    if (row.makeItem)
        [probe_ performSelector:callback withObject:sender withObject:row.makeItem()];
    else
        [probe_ performSelector:callback withObject:sender];
    EXPECT_GE([probe_->heard count], 1U);
    EXPECT_EQ(recorded(), row.event);
}

id tab() { return [[[UITabBarItem alloc] initWithTitle:@"Shop" image:nil tag:0] autorelease]; }

id tabWithAName() {
    UITabBarItem* made = tab();
    made.customName = @"Start";
    return made;
}

id tabWithoutATitle() { return [[[UITabBarItem alloc] initWithTitle:nil image:@"bag" tag:0] autorelease]; }

id tabSwitchedOff() {
    UITabBarItem* made = tab();
    made.logEnabled = NO;
    return made;
}

id tabBar() { return ofClass("UITabBar"); }

id tabBarSwitchedOff() {
    UITabBar* made = tabBar();
    made.logEnabled = NO;
    return made;
}

#define TAB "setDelegate:", "tabBar:didSelectItem:"

const ToldRow tabs[]{
    {"TabByItsTitle", tabBar, TAB, "action UITabBar Tap Shop", tab},
    {"TabByItsName", tabBar, TAB, "action UITabBar Tap Start", tabWithAName},
    {"TabWithoutATitle", tabBar, TAB, "action UITabBar Tap ", tabWithoutATitle},
    {"TabSwitchedOff", tabBar, TAB, "", tabSwitchedOff},
    {"TabInABarThatIsSwitchedOff", tabBarSwitchedOff, TAB, "", tab},
};

INSTANTIATE_TEST_SUITE_P(Tabs, ObjCTold, ::testing::ValuesIn(tabs), nameOfRow);

UISearchBar* searchBar(NSString* text) {
    UISearchBar* made = ofClass("UISearchBar");
    made.text = text;
    return made;
}

id searchBarWithText() { return searchBar(@"tea"); }

id searchBarSwitchedOff() {
    UISearchBar* made = searchBar(@"tea");
    made.logEnabled = NO;
    return made;
}

UISearchController* search(BOOL isActive) {
    UISearchController* made = ofClass("UISearchController");
    made.searchBar.text = @"tea";
    made.active = isActive;
    if (isActive) made.searchBar.text = @"tea";
    return made;
}

id searchSwitchedOff() {
    UISearchController* made = search(YES);
    made.logEnabled = NO;
    return made;
}

#define UPDATE "setSearchResultsUpdater:", "updateSearchResultsForSearchController:"

const ToldRow searches[]{
    {"Search", searchBarWithText, "setDelegate:", "searchBarSearchButtonClicked:", "action UISearchBar Search tea"},
    {"SearchWithoutText", []() -> id { return searchBar(nil); },
     "setDelegate:", "searchBarSearchButtonClicked:", "action UISearchBar Search "},
    {"Bookmark", searchBarWithText,
     "setDelegate:", "searchBarBookmarkButtonClicked:", "action UISearchBar Bookmark tea"},
    {"Cancel", searchBarWithText, "setDelegate:", "searchBarCancelButtonClicked:", "action UISearchBar Cancel tea"},
    {"ResultsList", searchBarWithText,
     "setDelegate:", "searchBarResultsListButtonClicked:", "action UISearchBar ResultsList tea"},
    {"SearchSwitchedOff", searchBarSwitchedOff, "setDelegate:", "searchBarSearchButtonClicked:", ""},
    {"BookmarkSwitchedOff", searchBarSwitchedOff, "setDelegate:", "searchBarBookmarkButtonClicked:", ""},
    {"CancelSwitchedOff", searchBarSwitchedOff, "setDelegate:", "searchBarCancelButtonClicked:", ""},
    {"ResultsListSwitchedOff", searchBarSwitchedOff, "setDelegate:", "searchBarResultsListButtonClicked:", ""},
    {"Update", []() -> id { return search(YES); }, UPDATE, "action UISearchBar Search Updated tea"},
    {"UpdateWhileInactive", []() -> id { return search(NO); }, UPDATE, ""},
    {"UpdateSwitchedOff", searchSwitchedOff, UPDATE, ""},
};

INSTANTIATE_TEST_SUITE_P(Searches, ObjCTold, ::testing::ValuesIn(searches), nameOfRow);

id scrollIn(UIView* outer) {
    UIScrollView* made = ofClass("UIScrollView");
    [outer addSubview:made];
    return made;
}

#define SCROLL "setDelegate:", "scrollViewDidEndDecelerating:"

const ToldRow scrolls[]{
    {"ScrollView", []() -> id { return ofClass("UIScrollView"); }, SCROLL, "scroll UIScrollView Scrolled"},
    {"ScrollInAView", []() -> id { return scrollIn(ofClass("UIView")); }, SCROLL, "scroll UIScrollView Scrolled"},
    {"TableAsAScrollView", []() -> id { return ofClass("UITableView"); }, SCROLL, "scroll UIScrollView Scrolled"},
    {"ScrollSwitchedOff",
     []() -> id {
         UIScrollView* made = ofClass("UIScrollView");
         made.logEnabled = NO;
         return made;
     },
     SCROLL, ""},
    {"WebViewsScrollView", []() -> id { return ofClass("_UIWebViewScrollView"); }, SCROLL, ""},
    {"ScrollInAWebViews", []() -> id { return scrollIn(ofClass("_UIWebViewScrollView")); }, SCROLL, ""},
    {"ScrollInAPickersTable", []() -> id { return scrollIn(ofClass("UIPickerTableView")); }, SCROLL, ""},
    {"ScrollViewWithALongerName", []() -> id { return ofAHostsClass("_UIWebViewScrollViewOfMine", "UIScrollView"); },
     SCROLL, "scroll UIScrollView Scrolled"},
};

INSTANTIATE_TEST_SUITE_P(Scrolls, ObjCTold, ::testing::ValuesIn(scrolls), nameOfRow);

TEST_F(ObjCCapture, LeavesTheDelegateOfAPickersTableAsItIs) {
    UITableView* wheel = ofClass("UIPickerTableView");
    id delegate = [[[NSObject alloc] init] autorelease];
    wheel.delegate = delegate;
    EXPECT_FALSE([delegate respondsToSelector:@selector(tableView:didSelectRowAtIndexPath:)]);
    EXPECT_FALSE([delegate respondsToSelector:@selector(scrollViewDidEndDecelerating:)]);
}

} // namespace
