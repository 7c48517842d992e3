#include "ObjC/CaptureFixture.h"

#include <objc/runtime.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

// Passes everything on to another object, as proxies between a view and its delegate do.
@interface Passing : NSObject {
@public
    id behind;
}
@end

@implementation Passing

- (BOOL)respondsToSelector:(SEL)selector {
    return [super respondsToSelector:selector] || [behind respondsToSelector:selector];
}

- (NSMethodSignature*)methodSignatureForSelector:(SEL)selector {
    NSMethodSignature* own = [super methodSignatureForSelector:selector];
    return own ? own : [behind methodSignatureForSelector:selector];
}

- (void)forwardInvocation:(NSInvocation*)invocation {
    [invocation invokeWithTarget:behind];
}

@end

@interface DerivedProbe : Probe
@end

@implementation DerivedProbe

- (void)tableView:(UITableView*)tableView didSelectRowAtIndexPath:(NSIndexPath*)indexPath {
    [super tableView:tableView didSelectRowAtIndexPath:indexPath];
    [heard addObject:@"derived"];
}

@end

// Takes its button out of the world while the button is tapped.
@interface Remover : NSObject {
@public
    UIButton* button;
}
- (void)remove:(id)sender;
@end

@implementation Remover

- (void)remove:(id)sender {
    (void)sender;
    [button release];
    button = nil;
}

@end

namespace {

using namespace tallyfoot::testing;

using ObjCHosts = ObjCCapture;

UITableView* table(id delegate, Probe* source) {
    UITableView* made = [[[UITableView alloc] initWithFrame:CGRectMake(0, 0, 320, 440)] autorelease];
    made.dataSource = source;
    made.delegate = delegate;
    return made;
}

void tapRow(UITableView* table, int row) { [Finger tap:table at:CGPointMake(10, row * 44 + 10)]; }

TEST_F(ObjCHosts, MayShareADelegateBetweenTables) {
    UITableView* first = table(probe_, probe_);
    UITableView* second = table(probe_, probe_);
    tapRow(first, 0);
    tapRow(second, 1);
    EXPECT_EQ(heardBy(probe_), "row 0, row 1");
    EXPECT_EQ(recorded(), "selection UITableView Cell Selected Row 0; selection UITableView Cell Selected Row 1");
}

TEST_F(ObjCHosts, MaySetTheirDelegateThousandsOfTimes) {
    UITableView* one = table(nil, probe_);
    for (int i = 0; i < 5000; ++i) one.delegate = i % 2 ? nil : probe_;
    one.delegate = probe_;
    tapRow(one, 2);
    EXPECT_EQ(heardBy(probe_), "row 2");
    EXPECT_EQ(recorded(), "selection UITableView Cell Selected Row 2");
}

TEST_F(ObjCHosts, MayHaveNoDelegate) {
    UITableView* one = table(nil, probe_);
    tapRow(one, 1);
    EXPECT_EQ(recorded(), "");
}

TEST_F(ObjCHosts, NeedNotImplementACallback) {
    NSObject* plain = [[[Remover alloc] init] autorelease];
    UITableView* one = table(plain, probe_);
    tapRow(one, 1);
    EXPECT_EQ(recorded(), "selection UITableView Cell Selected Row 1");
}

TEST_F(ObjCHosts, MayHaveASubclassAsDelegateBesideItsSuperclass) {
    DerivedProbe* derived = (DerivedProbe*)[DerivedProbe probe];
    UITableView* first = table(probe_, probe_);
    UITableView* second = table(derived, probe_);
    tapRow(second, 1);
    EXPECT_EQ(heardBy(derived), "row 1, derived");
    EXPECT_EQ(recorded(), "selection UITableView Cell Selected Row 1");
    tapRow(first, 0);
    EXPECT_EQ(heardBy(probe_), "row 0");
    EXPECT_EQ(recorded(), "selection UITableView Cell Selected Row 0");
}

TEST_F(ObjCHosts, MayHaveAProxyAsDelegate) {
    Passing* proxy = [[[Passing alloc] init] autorelease];
    proxy->behind = probe_;
    UITableView* one = table(proxy, probe_);
    EXPECT_EQ((id)one.delegate, (id)proxy);
    tapRow(one, 1);
    EXPECT_EQ(heardBy(probe_), "row 1");
    EXPECT_EQ(recorded(), "selection UITableView Cell Selected Row 1");
}

TEST_F(ObjCHosts, MayHaveAClassMadeAtRunTimeAsDelegate) {
    UITableView* first = table(probe_, probe_);
    Class made = objc_allocateClassPair([Probe class], "NSKVONotifying_Probe", 0);
    objc_registerClassPair(made);
    object_setClass(probe_, made);
    UITableView* second = table(probe_, probe_);
    tapRow(first, 0);
    tapRow(second, 1);
    EXPECT_EQ(heardBy(probe_), "row 0, row 1");
    EXPECT_EQ(recorded(), "selection UITableView Cell Selected Row 0; selection UITableView Cell Selected Row 1");
    object_setClass(probe_, [Probe class]);
}

TEST_F(ObjCHosts, MayReleaseTheSenderDuringItsAction) {
    Remover* remover = [[[Remover alloc] init] autorelease];
    remover->button = [[UIButton alloc] initWithFrame:CGRectMake(0, 0, 100, 44)];
    [remover->button setTitle:@"Close" forState:UIControlStateNormal];
    remover->button.customName = @"Closing";
    [remover->button addTarget:remover action:@selector(remove:) forControlEvents:UIControlEventTouchUpInside];
    [Finger tap:remover->button];
    EXPECT_EQ(recorded(), "action UIButton tap Closing");
}

TEST_F(ObjCHosts, MaySeeTheirOwnExceptions) {
    NSString* name = nil;
    @try {
        [[UIApplication sharedApplication] sendAction:@selector(raise)
                                                   to:[NSException exceptionWithName:@"Own" reason:@"r" userInfo:nil]
                                                 from:[UIButton buttonWithType:UIButtonTypeSystem]
                                             forEvent:nil];
    } @catch (NSException* exception) {
        name = [exception name];
    }
    EXPECT_TRUE([name isEqual:@"Own"]);
}

// --- Other libraries

int seen = 0;
BOOL (*forwarded)(id, SEL, SEL, id, id, id) = nullptr;

BOOL watch(id self, SEL selector, SEL action, id target, id sender, id event) {
    ++seen;
    return forwarded(self, selector, action, target, sender, event);
}

// As another library may do it, whenever it likes.
void exchangeSendAction() {
    const Method method = class_getInstanceMethod([UIApplication class], @selector(sendAction:to:from:forEvent:));
    forwarded = reinterpret_cast<decltype(forwarded)>(method_setImplementation(method, reinterpret_cast<IMP>(watch)));
}

void tapAButton(Probe* probe) {
    UIButton* button = [UIButton buttonWithType:UIButtonTypeSystem];
    button.frame = CGRectMake(0, 0, 100, 44);
    [button setTitle:@"Buy" forState:UIControlStateNormal];
    [button addTarget:probe action:@selector(action:) forControlEvents:UIControlEventTouchUpInside];
    [Finger tap:button];
}

TEST_F(ObjCHosts, MayExchangeTheSameMethodAfterwards) {
    exchangeSendAction();
    tapAButton(probe_);
    EXPECT_EQ(seen, 1);
    EXPECT_EQ(heardBy(probe_), "action from UIButton");
    EXPECT_EQ(recorded(), "action UIButton tap Buy");
}

class ObjCLateCapture : public ObjCHost {
protected:
    Probe* probe_ = [Probe probe];
};

TEST_F(ObjCLateCapture, WorksBehindAnotherLibraryThatCameFirst) {
    exchangeSendAction();
    start();
    tapAButton(probe_);
    EXPECT_EQ(seen, 1);
    EXPECT_EQ(heardBy(probe_), "action from UIButton");
    EXPECT_EQ(records().size(), 1U);
}

// --- What is changed

using Methods = std::map<std::string, IMP>;

std::map<std::string, Methods> allMethods() {
    std::vector<Class> classes(static_cast<std::size_t>(objc_getClassList(nullptr, 0)));
    objc_getClassList(classes.data(), static_cast<int>(classes.size()));
    std::map<std::string, Methods> all;
    for (Class one : classes) {
        unsigned count = 0;
        Method* const methods = class_copyMethodList(one, &count);
        for (unsigned i = 0; i < count; ++i)
            all[class_getName(one)].try_emplace(sel_getName(method_getName(methods[i])),
                                                method_getImplementation(methods[i]));
        std::free(methods);
    }
    return all;
}

TEST_F(ObjCLateCapture, ChangesExactlyTheListedMethods) {
    auto before = allMethods();
    [Tallyfoot configureSwizzle];
    const auto after = allMethods();
    std::vector<std::string> changed;
    for (const auto& [name, methods] : after)
        for (const auto& [selector, implementation] : methods) {
            const auto& former = before[name];
            const auto place = former.find(selector);
            if (place == former.end())
                changed.push_back("+" + name + " " + selector);
            else if (place->second != implementation)
                changed.push_back(name + " " + selector);
        }
    const std::vector<std::string> expected{"UIApplication sendAction:to:from:forEvent:",
                                            "UIApplication swizzledSendAction:to:from:for:",
                                            "UICollectionView setDataSource:",
                                            "UICollectionView setDataSourceSwizzled:",
                                            "UIGestureRecognizer initWithTarget:action:",
                                            "UIGestureRecognizer swizzle_initWithTarget:action:",
                                            "UIScrollView setDelegate:",
                                            "UIScrollView setDelegateSwizzled:",
                                            "UISearchBar setDelegate:",
                                            "UISearchBar setDelegateSwizzled:",
                                            "UISearchController searchResultsUpdaterSwizzled:",
                                            "UISearchController setSearchResultsUpdater:",
                                            "UITabBar setDelegate:",
                                            "UITabBar setDelegateSwizzled:",
                                            "UITableView setDelegateSwizzled_:",
                                            "UIViewController swizzledViewWillAppear:",
                                            "UIViewController swizzledViewWillDisappear:",
                                            "UIViewController viewWillAppear:",
                                            "UIViewController viewWillDisappear:"};
    std::vector<std::string> withoutTable = changed;
    // A table has a setter of its own, or gets one: its superclass's must not be exchanged twice.
    std::erase_if(withoutTable, [](const auto& one) { return one.ends_with("UITableView setDelegate:"); });
    EXPECT_EQ(changed.size(), withoutTable.size() + 1);
    EXPECT_EQ(withoutTable, expected);

    Tallyfoot.isSwizzled = NO;
    [Tallyfoot configureSwizzle];
    EXPECT_EQ(allMethods(), after);
}

} // namespace
