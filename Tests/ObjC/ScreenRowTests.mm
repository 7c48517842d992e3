// Every kind of screen, and every name that is none: one test each.
#include "ObjC/CaptureFixture.h"

#include <objc/runtime.h>

#include <ostream>

namespace {

using namespace tallyfoot::testing;

struct ScreenRow {
    const char* name;
    void (*prepare)(UIViewController*);
    const char* title;
    const char* label;
};

void PrintTo(const ScreenRow& row, std::ostream* stream) { *stream << row.name; }

class ObjCScreens : public ObjCCapture, public ::testing::WithParamInterface<ScreenRow> {
protected:
    UIViewController* page_ = [[[UIViewController alloc] init] autorelease];
};

TEST_P(ObjCScreens, AreCalled) {
    GetParam().prepare(page_);
    [page_ viewWillAppear:YES];
    [page_ viewWillDisappear:YES];
    const auto all = records();
    ASSERT_EQ(all.size(), 1U);
    EXPECT_EQ(all[0]["evtType"], "screen");
    EXPECT_EQ(all[0]["evtCategory"], "UIViewController");
    EXPECT_EQ(all[0]["pgName"], GetParam().title);
    EXPECT_EQ(all[0]["evtLabel"], GetParam().label);
    EXPECT_FALSE(all[0].contains("evtAction"));
}

INSTANTIATE_TEST_SUITE_P(
    All, ObjCScreens,
    ::testing::Values(ScreenRow{"ByTheirTitle", [](UIViewController* page) { page.title = @"Basket"; }, "Basket",
                                "Basket"},
                      ScreenRow{"ByTheirNavigationItem",
                                [](UIViewController* page) { page.navigationItem.title = @"Pay"; }, "Pay", "Pay"},
                      ScreenRow{"ByTheirTitleFirst",
                                [](UIViewController* page) {
                                    page.title = @"Basket";
                                    page.navigationItem.title = @"Pay";
                                },
                                "Basket", "Basket"},
                      ScreenRow{"ByAnEmptyTitle",
                                [](UIViewController* page) {
                                    page.title = @"";
                                    page.navigationItem.title = @"Pay";
                                },
                                "", ""},
                      ScreenRow{"ByTheirName",
                                [](UIViewController* page) {
                                    page.title = @"Basket";
                                    page.customName = @"Cart";
                                },
                                "Basket", "Cart"},
                      ScreenRow{"ByNothing", [](UIViewController*) {}, "", ""}),
    [](const auto& test) { return std::string(test.param.name); });

// --- Names

struct ScreenName {
    const char* className;
    bool isScreen = false;
};

void PrintTo(const ScreenName& row, std::ostream* stream) { *stream << row.className; }

class ObjCScreenNames : public ObjCCapture, public ::testing::WithParamInterface<ScreenName> {};

TEST_P(ObjCScreenNames, DecideExactly) {
    Class named = objc_lookUpClass(GetParam().className);
    if (named == Nil) {
        named = objc_allocateClassPair([UIViewController class], GetParam().className, 0);
        objc_registerClassPair(named);
    }
    UIViewController* page = [[[named alloc] init] autorelease];
    [page viewWillAppear:NO];
    [page viewWillDisappear:NO];
    EXPECT_EQ(recorded(), GetParam().isScreen ? "screen UIViewController " : "");
}

constexpr ScreenName names[]{{"UISplitViewController"},
                             {"UIAlertController"},
                             {"UINavigationController"},
                             {"UIInputWindowController"},
                             {"UICompatibilityInputViewController"},
                             {"UIPageViewController"},
                             {"_UIAlertShimPresentingViewController"},
                             {"UIKeyboardCandidateGridCollectionViewController"},
                             {"UIApplicationRotationFollowingControllerNoTouches"},
                             {"_UIActivityGroupListViewController"},
                             {"_UIDocumentActivityViewController"},
                             {"_UIRemoteInputViewController"},
                             {"MFMailComposeInternalViewController"},
                             {"MFMailComposeRemoteViewController"},
                             {"MFMailComposePlaceholderViewController"},
                             {"_UIAlertControllerTextFieldViewController"},
                             {"_UIShareExtensionRemoteViewController"},
                             {"UIActivityViewController"},
                             {"UISearchController"},
                             {"UISearchDisplayController"},
                             {"UITabBarController", true},
                             {"UINavigationControllerOfMine", true},
                             {"UINavigation", true},
                             {"uinavigationcontroller", true}};

INSTANTIATE_TEST_SUITE_P(All, ObjCScreenNames, ::testing::ValuesIn(names),
                         [](const auto& test) { return std::string(test.param.className); });

// --- Comings and goings

class ObjCVisits : public ObjCCapture {
protected:
    void appear() { [page_ viewWillAppear:NO]; }
    void disappear() { [page_ viewWillDisappear:NO]; }

    UIViewController* page_ = [[[UIViewController alloc] init] autorelease];
    const std::string event_ = "screen UIViewController ";
};

TEST_F(ObjCVisits, AreOneWhereItAppearsTwice) {
    appear();
    appear();
    disappear();
    EXPECT_EQ(recorded(), event_);
    disappear();
    EXPECT_EQ(recorded(), "");
}

TEST_F(ObjCVisits, AreNoneWhereItOnlyDisappears) {
    disappear();
    EXPECT_EQ(recorded(), "");
}

TEST_F(ObjCVisits, AreNoneOfAPageThatIsSwitchedOffAsItAppears) {
    page_.logEnabled = NO;
    appear();
    page_.logEnabled = YES;
    disappear();
    EXPECT_EQ(recorded(), "");
}

TEST_F(ObjCVisits, CountWhereAPageIsSwitchedOffAfterwards) {
    appear();
    page_.logEnabled = NO;
    disappear();
    EXPECT_EQ(recorded(), event_);
}

TEST_F(ObjCVisits, BearTheirCustomTitleAndAreIgnoredWithIt) {
    [Tallyfoot categoryCustomTitles:@{@"UIViewController" : @"Page"}];
    appear();
    disappear();
    EXPECT_EQ(recorded(), "screen Page ");
    [Tallyfoot configure:nil ignoreClasses:@[ @"UIViewController" ] authenticationClosure:nil];
    appear();
    disappear();
    EXPECT_EQ(recorded(), "");
}

TEST_F(ObjCVisits, AreToldOfEveryPageInAThousandContainers) {
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    UIViewController* inner = page_;
    for (int depth = 0; depth < 1000; ++depth) {
        UIViewController* outer = [[[UIViewController alloc] init] autorelease];
        [outer addChildViewController:inner];
        inner = outer;
    }
    [inner beginAppearanceTransition:YES animated:NO];
    [inner endAppearanceTransition];
    [inner beginAppearanceTransition:NO animated:NO];
    [inner endAppearanceTransition];
    EXPECT_EQ(records().size(), 1001U);
    [pool drain];
}

} // namespace
