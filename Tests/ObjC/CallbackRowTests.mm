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

void hear(id, SEL, id, id) { ++heard; }

void raise(id, SEL, id, id) { [NSException raise:@"Own" format:@"of the host"]; }

void goAway(id self, SEL, id, id) {
    ++heard;
    [self release];
}

void hearAfterSuper(id self, SEL selector, id sender, id item) {
    Class above = objc_lookUpClass("Above");
    objc_super super{self, above};
    reinterpret_cast<void (*)(id, SEL, id, id)>(objc_msg_lookup_super(&super, selector))(self, selector, sender, item);
    ++heard;
}

Class hiddenBehind(id self, SEL) { return class_getSuperclass(object_getClass(self)); }

class ObjCCallbacks : public ObjCCapture, public ::testing::WithParamInterface<Callback> {
protected:
    using Body = void (*)(id, SEL, id, id);

    Class delegateClass(const char* name, Body body, Class superclass = [NSObject class]) {
        Class made = objc_allocateClassPair(superclass, name, 0);
        if (body) class_addMethod(made, selector_, reinterpret_cast<IMP>(body), GetParam().hasItem ? "v@:@@" : "v@:@");
        objc_registerClassPair(made);
        return made;
    }

    id delegate(const char* name, Body body) { return [[[delegateClass(name, body) alloc] init] autorelease]; }

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
    setAndTell(delegate("Implementing", hear));
    EXPECT_EQ(heard, 1);
    EXPECT_EQ(recorded(), event_);
}

TEST_P(ObjCCallbacks, AreRecordedForADelegateThatLacksThem) {
    id lacking = delegate("Lacking", nullptr);
    EXPECT_FALSE([lacking respondsToSelector:selector_]);
    setAndTell(lacking);
    EXPECT_EQ(recorded(), event_);
}

TEST_P(ObjCCallbacks, ReachADelegateThatInheritsThem) {
    Class above = delegateClass("Above", hear);
    id inheriting = [[[delegateClass("Inheriting", nullptr, above) alloc] init] autorelease];
    setAndTell(inheriting);
    EXPECT_EQ(heard, 1);
    EXPECT_EQ(recorded(), event_);
    id other = [[[above alloc] init] autorelease];
    setAndTell(other);
    EXPECT_EQ(heard, 2);
    EXPECT_EQ(recorded(), event_);
}

TEST_P(ObjCCallbacks, AreRecordedOnceForAnOverrideThatCallsItsSuperclass) {
    Class above = delegateClass("Above", hear);
    id overriding = [[[delegateClass("Overriding", hearAfterSuper, above) alloc] init] autorelease];
    set(sender(), [[[above alloc] init] autorelease]);
    setAndTell(overriding);
    EXPECT_EQ(heard, 2);
    EXPECT_EQ(recorded(), event_);
}

TEST_P(ObjCCallbacks, ReachADelegateThatTwoShare) {
    id shared = delegate("Shared", hear);
    id second = sender();
    set(sender_, shared);
    set(second, shared);
    tell(shared, sender_);
    tell(shared, second);
    EXPECT_EQ(heard, 2);
    EXPECT_EQ(recorded(), event_ + "; " + event_);
}

TEST_P(ObjCCallbacks, ReachADelegateThatIsSetAThousandTimes) {
    id stubborn = delegate("Stubborn", hear);
    for (int number = 0; number < 1000; ++number) set(sender_, number % 3 ? stubborn : nil);
    setAndTell(stubborn);
    EXPECT_EQ(heard, 1);
    EXPECT_EQ(recorded(), event_);
}

TEST_P(ObjCCallbacks, ReachThousandsOfDelegates) {
    Class one = delegateClass("OneOfMany", hear);
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
    id former = delegate("Former", hear);
    set(sender_, former);
    setAndTell(delegate("Latter", nullptr));
    EXPECT_EQ(heard, 0);
    EXPECT_EQ(recorded(), event_);
}

TEST_P(ObjCCallbacks, NeedNoDelegate) {
    set(sender_, nil);
    set(sender_, delegate("Passing", hear));
    set(sender_, nil);
    EXPECT_EQ(heard, 0);
    EXPECT_EQ(recorded(), "");
}

TEST_P(ObjCCallbacks, ReachADelegateThatIsObserved) {
    id observed = delegate("Observed", hear);
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
    setAndTell(delegate("Implementing", hear));
    EXPECT_EQ(heard, 1);
    EXPECT_EQ(recorded(), "");
}

TEST_P(ObjCCallbacks, AreNotRecordedWhereTheirKindIsIgnored) {
    const std::string category =
        event_.substr(event_.find("UI"), event_.find(' ', event_.find("UI")) - event_.find("UI"));
    [Tallyfoot configure:nil
                ignoreClasses:@[ [NSString stringWithUTF8String:category.c_str()] ]
        authenticationClosure:nil];
    setAndTell(delegate("Implementing", hear));
    EXPECT_EQ(heard, 1);
    EXPECT_EQ(recorded(), "");
}

TEST_P(ObjCCallbacks, LetThroughWhatTheHostRaises) {
    id raising = delegate("Raising", raise);
    set(sender_, raising);
    NSString* name = nil;
    @try {
        tell(raising, sender_);
    } @catch (NSException* exception) {
        name = [exception name];
    }
    EXPECT_TRUE([name isEqual:@"Own"]);
    EXPECT_EQ(recorded(), "");
    setAndTell(delegate("Implementing", hear));
    EXPECT_EQ(recorded(), event_);
}

TEST_P(ObjCCallbacks, MayBeADelegatesLast) {
    id leaving = [[delegateClass("Leaving", goAway) alloc] init];
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    set(sender_, leaving);
    [pool drain];
    tell(leaving, sender_);
    set(sender_, nil);
    EXPECT_EQ(heard, 1);
    EXPECT_EQ(recorded(), event_);
}

using Watch = void (*)(id, SEL, id, id);
int seen = 0;
Watch behindWatch = nullptr;

void watch(id self, SEL selector, id sender, id item) {
    ++seen;
    behindWatch(self, selector, sender, item);
}

TEST_P(ObjCCallbacks, PassAnotherLibraryThatComesLater) {
    id watched = delegate("Watched", hear);
    set(sender_, watched);
    const Method method = class_getInstanceMethod([watched class], selector_);
    behindWatch = reinterpret_cast<Watch>(method_setImplementation(method, reinterpret_cast<IMP>(watch)));
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
