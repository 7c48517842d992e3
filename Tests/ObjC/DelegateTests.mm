#include "ObjC/CaptureFixture.h"

#include <string>

#if __has_feature(address_sanitizer)
#include <sanitizer/lsan_interface.h>
#endif

// Names another object for what it does not do itself.
@interface Naming : NSObject {
@public
    id behind;
}
@end

@implementation Naming

- (BOOL)respondsToSelector:(SEL)selector {
    return [super respondsToSelector:selector] || [behind respondsToSelector:selector];
}

- (id)forwardingTargetForSelector:(SEL)selector {
    return [behind respondsToSelector:selector] ? behind : [super forwardingTargetForSelector:selector];
}

@end

// Passes on what the other object understands, and takes the rest for a mistake.
@interface Choosing : Naming
@end

@implementation Choosing

- (id)forwardingTargetForSelector:(SEL)selector {
    (void)selector;
    return nil;
}

- (NSMethodSignature*)methodSignatureForSelector:(SEL)selector {
    NSMethodSignature* own = [super methodSignatureForSelector:selector];
    return own ? own : [behind methodSignatureForSelector:selector];
}

- (void)forwardInvocation:(NSInvocation*)invocation {
    if ([behind respondsToSelector:[invocation selector]])
        [invocation invokeWithTarget:behind];
    else
        [super forwardInvocation:invocation];
}

@end

// Passes on whatever it is sent.
@interface Trusting : Choosing
@end

@implementation Trusting

- (void)forwardInvocation:(NSInvocation*)invocation {
    [invocation invokeWithTarget:behind];
}

@end

@interface NamingUnasked : Naming
@end

@implementation NamingUnasked

- (id)forwardingTargetForSelector:(SEL)selector {
    (void)selector;
    return behind;
}

@end

// Of a root class of its own.
@interface Standing : NSProxy {
@public
    id behind;
}
@end

@implementation Standing

- (BOOL)respondsToSelector:(SEL)selector {
    return [behind respondsToSelector:selector];
}

- (NSMethodSignature*)methodSignatureForSelector:(SEL)selector {
    return [behind methodSignatureForSelector:selector];
}

- (void)forwardInvocation:(NSInvocation*)invocation {
    [invocation invokeWithTarget:behind];
}

@end

@interface Indifferent : NSObject
@end

@implementation Indifferent
@end

@interface Complaining : NSObject
@end

@implementation Complaining

- (void)tableView:(UITableView*)tableView didSelectRowAtIndexPath:(NSIndexPath*)indexPath {
    (void)indexPath;
    [NSException raise:NSInvalidArgumentException format:@"no such row in %@", tableView];
}

@end

// Does not like blanks at the end of a search, and takes them away one after the other.
@interface Trimming : NSObject <UISearchResultsUpdating> {
@public
    std::string heard;
}
@end

@implementation Trimming

- (void)updateSearchResultsForSearchController:(UISearchController*)controller {
    heard += std::string([controller.searchBar.text UTF8String]) + ";";
    if ([controller.searchBar.text hasSuffix:@" "]) [controller.searchBar.searchTextField deleteBackward];
}

@end

namespace {

using namespace tallyfoot::testing;

using ObjCDelegates = ObjCCapture;

const std::string selected = "selection UITableView Cell Selected Row 1";

// A proxy before that object.
template <class Proxy>
Proxy* before(Proxy* proxy, id behind) {
    proxy->behind = behind;
    return proxy;
}

void tapRow(id delegate, Probe* source) {
    UITableView* table = [[[UITableView alloc] initWithFrame:CGRectMake(0, 0, 320, 440)] autorelease];
    table.dataSource = source;
    table.delegate = delegate;
    [Finger tap:table at:CGPointMake(10, 54)];
}

TEST_F(ObjCDelegates, MayNameAnotherObject) {
    tapRow(before([[[Naming alloc] init] autorelease], probe_), probe_);
    EXPECT_EQ(heardBy(probe_), "row 1");
    EXPECT_EQ(recorded(), selected);
    tapRow(before([[[Naming alloc] init] autorelease], [[[Indifferent alloc] init] autorelease]), probe_);
    EXPECT_EQ(recorded(), selected);
}

TEST_F(ObjCDelegates, MayTakeWhatNobodyUnderstandsForAMistake) {
    tapRow(before([[[Choosing alloc] init] autorelease], probe_), probe_);
    EXPECT_EQ(heardBy(probe_), "row 1");
    EXPECT_EQ(recorded(), selected);
    tapRow(before([[[Choosing alloc] init] autorelease], [[[Indifferent alloc] init] autorelease]), probe_);
    EXPECT_EQ(recorded(), selected);
}

TEST_F(ObjCDelegates, MayPassOnEvenWhatTheOtherDoesNotUnderstand) {
    tapRow(before([[[Trusting alloc] init] autorelease], [[[Indifferent alloc] init] autorelease]), probe_);
    EXPECT_EQ(recorded(), selected);
    tapRow(before([[[NamingUnasked alloc] init] autorelease], [[[Indifferent alloc] init] autorelease]), probe_);
    EXPECT_EQ(recorded(), selected);
}

TEST_F(ObjCDelegates, MayComplainThroughAProxy) {
#if __has_feature(address_sanitizer)
    const __lsan::ScopedDisabler unseen; // what Foundation's forwarding holds stays where an exception passes it
#endif
    NSString* reason = nil;
    @try {
        tapRow(before([[[Choosing alloc] init] autorelease], [[[Complaining alloc] init] autorelease]), probe_);
    } @catch (NSException* exception) {
        reason = [exception reason];
    }
    EXPECT_TRUE([reason hasPrefix:@"no such row"]);
}

TEST_F(ObjCDelegates, MayHaveNoRootInCommonWithOthers) {
    Standing* proxy = before([Standing alloc], probe_);
    tapRow(proxy, probe_);
    EXPECT_EQ(heardBy(probe_), "row 1");
    EXPECT_EQ(recorded(), selected);
    proxy->behind = [[[Indifferent alloc] init] autorelease];
    tapRow(proxy, probe_);
    EXPECT_EQ(recorded(), selected);
    [proxy release];
}

// The platform's messages name no types: what a proxy passes on goes by its target's encoding then.
TEST_F(ObjCDelegates, MayPassOnByTheEncodingOfTheAddedMethod) {
    Indifferent* target = [[[Indifferent alloc] init] autorelease];
    Standing* proxy = before([Standing alloc], target);
    tapRow(proxy, probe_);
    EXPECT_EQ(recorded(), selected);
    const SEL selector = @selector(tableView:didSelectRowAtIndexPath:);
    NSMethodSignature* signature = [target methodSignatureForSelector:selector];
    EXPECT_STREQ([signature getArgumentTypeAtIndex:3], "i");
    UITableView* table = [[[UITableView alloc] initWithFrame:CGRectMake(0, 0, 320, 440)] autorelease];
    NSIndexPath* indexPath = [NSIndexPath indexPathForRow:1 inSection:0];
    NSInvocation* invocation = [NSInvocation invocationWithMethodSignature:signature];
    [invocation setSelector:selector];
    [invocation setArgument:&table atIndex:2];
    [invocation setArgument:&indexPath atIndex:3];
    [invocation invokeWithTarget:target];
    EXPECT_EQ(recorded(), "selection UITableView Cell Selected ");
    [proxy release];
}

TEST_F(ObjCDelegates, ThatPassOnToADelegateAreRecordedOnce) {
    tapRow(probe_, probe_);
    recorded();
    heardBy(probe_);
    tapRow(before([[[Choosing alloc] init] autorelease], probe_), probe_);
    EXPECT_EQ(heardBy(probe_), "row 1");
    EXPECT_EQ(recorded(), selected);
}

TEST_F(ObjCDelegates, MayHaveThemselvesToldAgain) {
    Trimming* updater = [[[Trimming alloc] init] autorelease];
    UISearchController* search = [[[UISearchController alloc] initWithSearchResultsController:nil] autorelease];
    search.searchResultsUpdater = updater;
    search.active = YES;
    recorded();
    updater->heard.clear();
    [search.searchBar.searchTextField insertText:@"te  "];
    EXPECT_EQ(updater->heard, "te  ;te ;te;");
    const std::string updated = "action UISearchBar Search Updated te";
    EXPECT_EQ(recorded(), updated + "; " + updated + "; " + updated);
}

} // namespace
