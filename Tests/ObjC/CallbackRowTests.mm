// Every callback of a delegate, with every kind of delegate, one test each. The delegates' classes are
// made at run time, so that each test has its own.
#include "ObjC/CaptureFixture.h"

#include <objc/message.h>
#include <objc/runtime.h>

#include <ostream>

namespace {

using namespace tallyfoot::testing;

struct Callback {
    const char* name;
    const char* className; // of whom the delegate is told about
    const char* setter;
    const char* selector;
    bool hasItem;
    const char* event;
};

void PrintTo(const Callback& row, std::ostream* stream) { *stream << row.name; }

int heard = 0;

// With and without an item.
template <class... Item>
void hear(id, SEL, id, Item...) {
    ++heard;
}

template <class... Item>
void raise(id, SEL, id, Item...) {
    [NSException raise:@"Own" format:@"of the host"];
}

template <class... Item>
void goAway(id self, SEL, id, Item...) {
    ++heard;
    [self release];
}

template <class... Item>
void hearAfterSuper(id self, SEL selector, id sender, Item... item) {
    objc_super super{self, objc_lookUpClass("Above")};
    const IMP above = objc_msg_lookup_super(&super, selector);
    reinterpret_cast<void (*)(id, SEL, id, Item...)>(above)(self, selector, sender, item...);
    ++heard;
}

int seen = 0;
IMP behindWatch = nullptr;

template <class... Item>
void watch(id self, SEL selector, id sender, Item... item) {
    ++seen;
    reinterpret_cast<void (*)(id, SEL, id, Item...)>(behindWatch)(self, selector, sender, item...);
}

struct Body {
    void (*withoutItem)(id, SEL, id);
    void (*withItem)(id, SEL, id, id);

    IMP of(const Callback& row) const {
        return row.hasItem ? reinterpret_cast<IMP>(withItem) : reinterpret_cast<IMP>(withoutItem);
    }
};

constexpr Body none{nullptr, nullptr};
constexpr Body hearing{hear<>, hear<id>};
constexpr Body raising{raise<>, raise<id>};
constexpr Body leaving{goAway<>, goAway<id>};
constexpr Body hearingAfterSuper{hearAfterSuper<>, hearAfterSuper<id>};
constexpr Body watching{watch<>, watch<id>};

Class hiddenBehind(id self, SEL) { return class_getSuperclass(object_getClass(self)); }

class ObjCCallbacks : public ObjCCapture, public ::testing::WithParamInterface<Callback> {
protected:
    Class delegateClass(const char* name, const Body& body, Class superclass = [NSObject class]) {
        Class made = objc_allocateClassPair(superclass, name, 0);
        if (const IMP code = body.of(GetParam()))
            class_addMethod(made, selector_, code, GetParam().hasItem ? "v@:@@" : "v@:@");
        objc_registerClassPair(made);
        return made;
    }

    id delegate(const char* name, const Body& body) { return [[[delegateClass(name, body) alloc] init] autorelease]; }

    id sender() {
        id made = [[[objc_lookUpClass(GetParam().className) alloc] init] autorelease];
        if ([made isKindOfClass:[UISearchBar class]]) [made setText:@"tea"];
        if ([made isKindOfClass:[UISearchController class]]) {
            [made searchBar].text = @"tea";
            [made setActive:YES];
        }
        return made;
    }

    void set(id toSender, id delegate) {
        [toSender performSelector:sel_registerName(GetParam().setter) withObject:delegate];
    }

    id item() {
        if ([sender_ isKindOfClass:[UITabBar class]])
            return [[[UITabBarItem alloc] initWithTitle:@"Shop" image:nil tag:0] autorelease];
        return [NSIndexPath indexPathForRow:0 inSection:0];
    }

    void tell(id delegate, id aboutSender) {
        if (GetParam().hasItem)
            [delegate performSelector:selector_ withObject:aboutSender withObject:item()];
        else
            [delegate performSelector:selector_ withObject:aboutSender];
    }

    void setAndTell(id delegate) {
        set(sender_, delegate);
        tell(delegate, sender_);
    }

    SEL selector_ = sel_registerName(GetParam().selector);
    const std::string event_ = GetParam().event;
    id sender_ = sender();
};

TEST_P(ObjCCallbacks, ReachADelegateThatImplementsThem) {
    setAndTell(delegate("Implementing", hearing));
    EXPECT_EQ(heard, 1);
    EXPECT_EQ(recorded(), event_);
}

TEST_P(ObjCCallbacks, AreRecordedForADelegateThatLacksThem) {
    id lacking = delegate("Lacking", none);
    EXPECT_FALSE([lacking respondsToSelector:selector_]);
    setAndTell(lacking);
    EXPECT_EQ(recorded(), event_);
}

TEST_P(ObjCCallbacks, ReachADelegateThatInheritsThem) {
    Class above = delegateClass("Above", hearing);
    id inheriting = [[[delegateClass("Inheriting", none, above) alloc] init] autorelease];
    setAndTell(inheriting);
    EXPECT_EQ(heard, 1);
    EXPECT_EQ(recorded(), event_);
    id other = [[[above alloc] init] autorelease];
    setAndTell(other);
    EXPECT_EQ(heard, 2);
    EXPECT_EQ(recorded(), event_);
}

TEST_P(ObjCCallbacks, AreRecordedOnceForAnOverrideThatCallsItsSuperclass) {
    Class above = delegateClass("Above", hearing);
    id overriding = [[[delegateClass("Overriding", hearingAfterSuper, above) alloc] init] autorelease];
    set(sender(), [[[above alloc] init] autorelease]);
    setAndTell(overriding);
    EXPECT_EQ(heard, 2);
    EXPECT_EQ(recorded(), event_);
}

TEST_P(ObjCCallbacks, ReachADelegateThatTwoShare) {
    id shared = delegate("Shared", hearing);
    id second = sender();
    set(sender_, shared);
    set(second, shared);
    tell(shared, sender_);
    tell(shared, second);
    EXPECT_EQ(heard, 2);
    EXPECT_EQ(recorded(), event_ + "; " + event_);
}

TEST_P(ObjCCallbacks, ReachADelegateThatIsSetAThousandTimes) {
    id stubborn = delegate("Stubborn", hearing);
    for (int number = 0; number < 1000; ++number) set(sender_, number % 3 ? stubborn : nil);
    setAndTell(stubborn);
    EXPECT_EQ(heard, 1);
    EXPECT_EQ(recorded(), event_);
}

TEST_P(ObjCCallbacks, ReachThousandsOfDelegates) {
    Class one = delegateClass("OneOfMany", hearing);
    for (int number = 0; number < 2000; ++number) {
        id many = [[one alloc] init];
        set(sender_, many);
        set(sender_, nil);
        [many release];
    }
    setAndTell([[[one alloc] init] autorelease]);
    EXPECT_EQ(heard, 1);
    EXPECT_EQ(recorded(), event_);
}

TEST_P(ObjCCallbacks, ReachTheDelegateThatReplacesAnother) {
    id former = delegate("Former", hearing);
    set(sender_, former);
    setAndTell(delegate("Latter", none));
    EXPECT_EQ(heard, 0);
    EXPECT_EQ(recorded(), event_);
}

TEST_P(ObjCCallbacks, NeedNoDelegate) {
    set(sender_, nil);
    set(sender_, delegate("Passing", hearing));
    set(sender_, nil);
    EXPECT_EQ(heard, 0);
    EXPECT_EQ(recorded(), "");
}

TEST_P(ObjCCallbacks, ReachADelegateThatIsObserved) {
    id observed = delegate("Observed", hearing);
    Class made = objc_allocateClassPair([observed class], "NSKVONotifying_Observed", 0);
    for (const char* hiding : {"class", "classForCoder"})
        class_addMethod(made, sel_registerName(hiding), reinterpret_cast<IMP>(hiddenBehind), "#@:");
    objc_registerClassPair(made);
    object_setClass(observed, made);
    setAndTell(observed);
    EXPECT_EQ(heard, 1);
    EXPECT_EQ(recorded(), event_);
    object_setClass(observed, objc_lookUpClass("Observed"));
    tell(observed, sender_);
    EXPECT_EQ(heard, 2);
    EXPECT_EQ(recorded(), event_);
}

TEST_P(ObjCCallbacks, AreNotRecordedOfWhatIsSwitchedOff) {
    if ([sender_ respondsToSelector:@selector(setLogEnabled:)]) [sender_ setLogEnabled:NO];
    setAndTell(delegate("Implementing", hearing));
    EXPECT_EQ(heard, 1);
    EXPECT_EQ(recorded(), "");
}

TEST_P(ObjCCallbacks, AreNotRecordedWhereTheirKindIsIgnored) {
    const std::string category =
        event_.substr(event_.find("UI"), event_.find(' ', event_.find("UI")) - event_.find("UI"));
    [Tallyfoot configure:nil
                ignoreClasses:@[ [NSString stringWithUTF8String:category.c_str()] ]
        authenticationClosure:nil];
    setAndTell(delegate("Implementing", hearing));
    EXPECT_EQ(heard, 1);
    EXPECT_EQ(recorded(), "");
}

TEST_P(ObjCCallbacks, LetThroughWhatTheHostRaises) {
    id complaining = delegate("Raising", raising);
    set(sender_, complaining);
    NSString* name = nil;
    @try {
        tell(complaining, sender_);
    } @catch (NSException* exception) {
        name = [exception name];
    }
    EXPECT_TRUE([name isEqual:@"Own"]);
    EXPECT_EQ(recorded(), "");
    setAndTell(delegate("Implementing", hearing));
    EXPECT_EQ(recorded(), event_);
}

TEST_P(ObjCCallbacks, MayBeADelegatesLast) {
    id last = [[delegateClass("Leaving", leaving) alloc] init];
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    set(sender_, last);
    [pool drain];
    tell(last, sender_);
    set(sender_, nil);
    EXPECT_EQ(heard, 1);
    EXPECT_EQ(recorded(), event_);
}

TEST_P(ObjCCallbacks, PassAnotherLibraryThatComesLater) {
    id watched = delegate("Watched", hearing);
    set(sender_, watched);
    const Method method = class_getInstanceMethod([watched class], selector_);
    behindWatch = method_setImplementation(method, watching.of(GetParam()));
    setAndTell(watched);
    EXPECT_EQ(seen, 1);
    EXPECT_EQ(heard, 1);
    EXPECT_EQ(recorded(), event_);
}

const Callback callbacks[]{
    {"TableViewSelection", "UITableView", "setDelegate:", "tableView:didSelectRowAtIndexPath:", true,
     "selection UITableView Cell Selected "},
    {"CollectionViewSelection", "UICollectionView", "setDataSource:", "collectionView:didSelectItemAtIndexPath:", true,
     "selection UICollectionView Cell Selected "},
    {"TabBarSelection", "UITabBar", "setDelegate:", "tabBar:didSelectItem:", true, "action UITabBar Tap Shop"},
    {"SearchBarSearch", "UISearchBar", "setDelegate:", "searchBarSearchButtonClicked:", false,
     "action UISearchBar Search tea"},
    {"SearchBarBookmark", "UISearchBar", "setDelegate:", "searchBarBookmarkButtonClicked:", false,
     "action UISearchBar Bookmark tea"},
    {"SearchBarCancel", "UISearchBar", "setDelegate:", "searchBarCancelButtonClicked:", false,
     "action UISearchBar Cancel tea"},
    {"SearchBarResultsList", "UISearchBar", "setDelegate:", "searchBarResultsListButtonClicked:", false,
     "action UISearchBar ResultsList tea"},
    {"SearchResultsUpdate", "UISearchController", "setSearchResultsUpdater:", "updateSearchResultsForSearchController:",
     false, "action UISearchBar Search Updated tea"},
    {"EndOfDeceleration", "UIScrollView", "setDelegate:", "scrollViewDidEndDecelerating:", false,
     "scroll UIScrollView Scrolled"},
};

INSTANTIATE_TEST_SUITE_P(All, ObjCCallbacks, ::testing::ValuesIn(callbacks),
                         [](const auto& test) { return std::string(test.param.name); });

} // namespace
