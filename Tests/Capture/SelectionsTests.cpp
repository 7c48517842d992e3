#include "Capture/CaptureHost.h"

#include "Tallyfoot/Capture/IgnoreLists.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tallyfoot::testing {
namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;

class SelectionsTest : public ::testing::Test {
protected:
    SelectionsTest() { host_.capture.configureSwizzle(); }

    ObjectRef tableWith(ObjectRef cell, const char* className = "UITableView") {
        const auto table = host_.make(className);
        host_.runtime.answerWith(
            table, "cellForRowAtIndexPath:", [this, cell](const auto& call) { return cellAt(call, cell); });
        host_.setDelegate(table, delegate_);
        return table;
    }
    ObjectRef collectionWith(ObjectRef cell) {
        const auto collection = host_.make("UICollectionView");
        host_.runtime.answerWith(
            collection, "cellForItemAtIndexPath:", [this, cell](const auto& call) { return cellAt(call, cell); });
        host_.setDelegate(collection, delegate_, "setDataSource:");
        return collection;
    }
    MemoryRuntime::Value cellAt(const MemoryRuntime::Invocation& call, ObjectRef cell) {
        return call.object(0) == indexPath_ ? cell : ObjectRef{};
    }
    void tell(const char* callback, ObjectRef sender, ObjectRef item = {}) {
        host_.events.clear();
        host_.send(delegate_, callback, {sender, item});
    }
    void selectRow(ObjectRef table) { tell("tableView:didSelectRowAtIndexPath:", table, indexPath_); }
    void selectItem(ObjectRef collection) { tell("collectionView:didSelectItemAtIndexPath:", collection, indexPath_); }
    std::string label() { return host_.events.size() == 1 ? host_.events[0].label() : "(not one event)"; }
    ObjectRef cell(const char* text, const char* className = "UITableViewCell") {
        return host_.makeView(className, {host_.makeLabel(text)});
    }

    CaptureHost host_;
    const ObjectRef delegate_ = (host_.addClass("AnyDelegate", "NSObject"), host_.make("AnyDelegate"));
    const ObjectRef indexPath_ = host_.make("NSObject");
};

TEST_F(SelectionsTest, ARowGivesItsWholeRecord) {
    selectRow(tableWith(cell("Pears")));
    ASSERT_THAT(host_.events, SizeIs(1));
    EXPECT_EQ(host_.events[0].type, EventType::selection);
    EXPECT_EQ(host_.events[0].attributes, (Attributes{{LogAttribute::evtAction, "Cell Selected"},
                                                      {LogAttribute::evtCategory, "UITableView"},
                                                      {LogAttribute::evtLabel, "Pears"}}));
}

TEST_F(SelectionsTest, ARowIsCalledByItsNameElseItsTextLabelElseItsSubviews) {
    const auto row = cell("subview");
    const auto table = tableWith(row);
    host_.runtime.answer(row, "textLabel", host_.makeLabel("title"));
    selectRow(table);
    EXPECT_EQ(label(), "title");
    host_.name(row, "Row1");
    selectRow(table);
    EXPECT_EQ(label(), "Row1");
}

TEST_F(SelectionsTest, ARowThatIsNotLoadedHasAnEmptyLabel) {
    selectRow(tableWith({}));
    EXPECT_EQ(label(), "");
}

TEST_F(SelectionsTest, ADisabledTableOrCellIsNotRecorded) {
    const auto table = tableWith(cell("Pears"));
    host_.disable(table);
    selectRow(table);
    EXPECT_THAT(host_.events, IsEmpty());
    const auto row = cell("Pears");
    host_.disable(row);
    selectRow(tableWith(row));
    EXPECT_THAT(host_.events, IsEmpty());
}

TEST_F(SelectionsTest, APickersTableIsNeverHooked) {
    const auto before = host_.runtime.ownMethods();
    const auto table = tableWith(cell("12"), "UIPickerTableView");
    EXPECT_EQ(host_.runtime.ownMethods(), before);
    EXPECT_THAT(host_.journal, ::testing::ElementsAre("setDelegate:"));
    tableWith(cell("x")); // the same class of delegate, for a table that counts
    selectRow(table);
    EXPECT_THAT(host_.events, IsEmpty());
}

TEST_F(SelectionsTest, AnItemOfACollectionGivesItsWholeRecord) {
    const auto item = cell("Plums", "UICollectionViewCell");
    const auto collection = collectionWith(item);
    host_.runtime.answer(item, "textLabel", host_.makeLabel("of no collection"));
    selectItem(collection);
    ASSERT_THAT(host_.events, SizeIs(1));
    EXPECT_EQ(host_.events[0].type, EventType::selection);
    EXPECT_EQ(host_.events[0].attributes, (Attributes{{LogAttribute::evtAction, "Cell Selected"},
                                                      {LogAttribute::evtCategory, "UICollectionView"},
                                                      {LogAttribute::evtLabel, "Plums"}}));
    host_.name(item, "Item1");
    selectItem(collection);
    EXPECT_EQ(label(), "Item1");
    host_.disable(item);
    selectItem(collection);
    EXPECT_THAT(host_.events, IsEmpty());
    const auto other = collectionWith({});
    selectItem(other);
    EXPECT_EQ(label(), "");
    host_.disable(other);
    selectItem(other);
    EXPECT_THAT(host_.events, IsEmpty());
}

TEST_F(SelectionsTest, CellsOfTheKeyboardAndOfSheetsAreNotRecorded) {
    for (const auto name : IgnoreLists::collectionCells) {
        const std::string className(name);
        host_.addClass(className.c_str(), "UICollectionViewCell");
        selectItem(collectionWith(cell("x", className.c_str())));
        EXPECT_THAT(host_.events, IsEmpty()) << className;
        const auto longer = className + "2";
        host_.addClass(longer.c_str(), className.c_str());
        selectItem(collectionWith(cell("x", longer.c_str())));
        EXPECT_THAT(host_.events, SizeIs(1)) << longer;
    }
}

TEST_F(SelectionsTest, ACollectionIsHookedThroughItsDataSourceAlone) {
    const auto collection = host_.make("UICollectionView");
    host_.setDelegate(collection, delegate_);
    const auto selector = host_.runtime.sel_registerName("collectionView:didSelectItemAtIndexPath:");
    EXPECT_FALSE(host_.runtime.respondsToSelector(delegate_, selector));
    host_.setDelegate(collection, delegate_, "setDataSource:");
    EXPECT_TRUE(host_.runtime.respondsToSelector(delegate_, selector));
}

TEST_F(SelectionsTest, ATabGivesItsWholeRecord) {
    const auto tabBar = host_.make("UITabBar");
    const auto tab = host_.make("UITabBarItem", {{"title", std::string("Basket")}});
    host_.setDelegate(tabBar, delegate_);
    tell("tabBar:didSelectItem:", tabBar, tab);
    ASSERT_THAT(host_.events, SizeIs(1));
    EXPECT_EQ(host_.events[0].type, EventType::action);
    EXPECT_EQ(host_.events[0].attributes, (Attributes{{LogAttribute::evtAction, "Tap"},
                                                      {LogAttribute::evtCategory, "UITabBar"},
                                                      {LogAttribute::evtLabel, "Basket"}}));
    host_.name(tab, "Cart");
    tell("tabBar:didSelectItem:", tabBar, tab);
    EXPECT_EQ(label(), "Cart");
    tell("tabBar:didSelectItem:", tabBar, host_.make("UITabBarItem"));
    EXPECT_EQ(label(), "");
    host_.disable(tab);
    tell("tabBar:didSelectItem:", tabBar, tab);
    EXPECT_THAT(host_.events, IsEmpty());
    host_.disable(tabBar);
    tell("tabBar:didSelectItem:", tabBar, host_.make("UITabBarItem"));
    EXPECT_THAT(host_.events, IsEmpty());
}

TEST_F(SelectionsTest, EachButtonOfASearchBarGivesItsWholeRecord) {
    const auto searchBar = host_.make("UISearchBar", {{"text", std::string("pears")}});
    host_.setDelegate(searchBar, delegate_);
    const std::map<std::string, std::string> buttons{{"searchBarSearchButtonClicked:", "Search"},
                                                     {"searchBarBookmarkButtonClicked:", "Bookmark"},
                                                     {"searchBarCancelButtonClicked:", "Cancel"},
                                                     {"searchBarResultsListButtonClicked:", "ResultsList"}};
    for (const auto& [callback, action] : buttons) {
        tell(callback.c_str(), searchBar);
        ASSERT_THAT(host_.events, SizeIs(1)) << callback;
        EXPECT_EQ(host_.events[0].type, EventType::action);
        EXPECT_EQ(host_.events[0].attributes, (Attributes{{LogAttribute::evtAction, action.c_str()},
                                                          {LogAttribute::evtCategory, "UISearchBar"},
                                                          {LogAttribute::evtLabel, "pears"}}));
    }
    host_.name(searchBar, "Shop search");
    tell("searchBarSearchButtonClicked:", searchBar);
    EXPECT_EQ(label(), "Shop search");
    host_.disable(searchBar);
    for (const auto& [callback, action] : buttons) {
        tell(callback.c_str(), searchBar);
        EXPECT_THAT(host_.events, IsEmpty()) << callback;
    }
}

TEST_F(SelectionsTest, ASearchUpdateGivesItsWholeRecordWhileTheControllerIsActive) {
    const auto searchBar = host_.make("UISearchBar", {{"text", std::string("pea")}});
    const auto controller = host_.make("UISearchController", {{"searchBar", searchBar}, {"isActive", true}});
    host_.setDelegate(controller, delegate_, "setSearchResultsUpdater:");
    const auto* callback = "updateSearchResultsForSearchController:";
    tell(callback, controller);
    ASSERT_THAT(host_.events, SizeIs(1));
    EXPECT_EQ(host_.events[0].type, EventType::action);
    EXPECT_EQ(host_.events[0].attributes, (Attributes{{LogAttribute::evtAction, "Search Updated"},
                                                      {LogAttribute::evtCategory, "UISearchBar"},
                                                      {LogAttribute::evtLabel, "pea"}}));
    host_.runtime.answer(controller, "isActive", false);
    tell(callback, controller);
    EXPECT_THAT(host_.events, IsEmpty());
    host_.runtime.answer(controller, "isActive", true);
    host_.disable(searchBar);
    tell(callback, controller);
    EXPECT_THAT(host_.events, IsEmpty());
    host_.send(searchBar, "setLogEnabled:", {true});
    host_.disable(controller);
    tell(callback, controller);
    EXPECT_THAT(host_.events, IsEmpty());
}

TEST_F(SelectionsTest, TheEndOfAScrollGivesItsWholeRecord) {
    const auto scrollView = host_.make("UIScrollView");
    host_.setDelegate(scrollView, delegate_);
    tell("scrollViewDidEndDecelerating:", scrollView);
    ASSERT_THAT(host_.events, SizeIs(1));
    EXPECT_EQ(host_.events[0].type, EventType::scroll);
    EXPECT_EQ(host_.events[0].attributes,
              (Attributes{{LogAttribute::evtAction, "Scrolled"}, {LogAttribute::evtCategory, "UIScrollView"}}));
    host_.name(scrollView, "Offers");
    tell("scrollViewDidEndDecelerating:", scrollView);
    EXPECT_EQ(label(), "Offers");
    host_.disable(scrollView);
    tell("scrollViewDidEndDecelerating:", scrollView);
    EXPECT_THAT(host_.events, IsEmpty());
}

TEST_F(SelectionsTest, ATableScrollsAsAScrollView) {
    const auto table = tableWith({});
    tell("scrollViewDidEndDecelerating:", table);
    ASSERT_THAT(host_.events, SizeIs(1));
    EXPECT_EQ(host_.events[0].category(), "UIScrollView");
}

TEST_F(SelectionsTest, PickersAndWebPagesDoNotScroll) {
    host_.addClass("_UIWebViewScrollView", "UIScrollView");
    for (const auto* name : {"UIPickerTableView", "_UIWebViewScrollView"}) {
        host_.setDelegate(host_.make("UIScrollView"), delegate_);
        const auto view = host_.make(name);
        tell("scrollViewDidEndDecelerating:", view);
        EXPECT_THAT(host_.events, IsEmpty()) << name;
        tell("scrollViewDidEndDecelerating:", host_.make("UIScrollView", {{"superview", view}}));
        EXPECT_THAT(host_.events, IsEmpty()) << "inside " << name;
        tell("scrollViewDidEndDecelerating:", host_.make("UIScrollView", {{"superview", host_.make("UIView")}}));
        EXPECT_THAT(host_.events, SizeIs(1));
    }
}

TEST_F(SelectionsTest, ACustomTitleIsTheCategoryAndMayBeIgnored) {
    host_.facade.titles = {{ITFClass::tableView, "List"}, {ITFClass::scrollView, "Scroll"}};
    const auto table = tableWith(cell("Pears"));
    selectRow(table);
    EXPECT_EQ(host_.events.at(0).category(), "List");
    host_.facade.ignored = {"List"};
    selectRow(table);
    EXPECT_THAT(host_.events, IsEmpty());
    tell("scrollViewDidEndDecelerating:", table);
    EXPECT_EQ(host_.events.at(0).category(), "Scroll");
}

TEST_F(SelectionsTest, EachMemberIsIgnoredByItsOwnCategory) {
    const auto collection = collectionWith(cell("Plums", "UICollectionViewCell"));
    const auto tabBar = host_.make("UITabBar");
    const auto searchBar = host_.make("UISearchBar");
    const auto controller = host_.make("UISearchController", {{"searchBar", searchBar}, {"isActive", true}});
    host_.setDelegate(tabBar, delegate_);
    host_.setDelegate(searchBar, delegate_);
    host_.setDelegate(controller, delegate_, "setSearchResultsUpdater:");
    const std::vector<std::tuple<const char*, const char*, ObjectRef, ObjectRef>> members{
        {"UITableView", "tableView:didSelectRowAtIndexPath:", tableWith(cell("Pears")), indexPath_},
        {"UICollectionView", "collectionView:didSelectItemAtIndexPath:", collection, indexPath_},
        {"UITabBar", "tabBar:didSelectItem:", tabBar, host_.make("UITabBarItem")},
        {"UISearchBar", "searchBarSearchButtonClicked:", searchBar, {}},
        {"UISearchBar", "updateSearchResultsForSearchController:", controller, {}},
        {"UIScrollView", "scrollViewDidEndDecelerating:", collection, {}}};
    for (const auto& [category, callback, sender, item] : members) {
        host_.facade.ignored = {"UISearchController", "UIViewController"};
        tell(callback, sender, item);
        EXPECT_THAT(host_.events, SizeIs(1)) << callback;
        host_.facade.ignored = {category};
        tell(callback, sender, item);
        EXPECT_THAT(host_.events, IsEmpty()) << callback;
    }
}

} // namespace
} // namespace tallyfoot::testing
