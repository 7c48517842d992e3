// What capture costs where it runs: interactions with live objects on a real runtime, recorded and not,
// each beside the same one with nobody in between, and beside its event logged by hand. "With nobody in
// between" is what the exchange has left under the library's own selector: the platform's method.
#include "Support/Workload.h"
#import "TallyfootObjC/TallyfootObjC.h"
#import "TallyfootObjC/TallyfootUIKit.h"
#import "UIKitPrivate.h"
#import "UISwipeActionPullView.h"

#include "Tallyfoot/Tallyfoot.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <string>

@interface UIApplication (Exchanged)
- (BOOL)swizzledSendAction:(SEL)action to:(id)target from:(id)sender for:(UIEvent*)event;
@end

@interface UIGestureRecognizer (Added)
- (void)swizzleGestureAction:(id)sender;
@end

@interface NSObject (Exchanged)
- (void)orig_tableView:(UITableView*)tableView didSelectRowAt:(NSIndexPath*)indexPath;
@end

@interface UIViewController (Exchanged)
- (void)swizzledViewWillAppear:(BOOL)animated;
- (void)swizzledViewWillDisappear:(BOOL)animated;
@end

// Its actions pass the library by.
@interface UnwatchedSlider : UISlider
@end

@implementation UnwatchedSlider
- (void)sendAction:(SEL)action to:(id)target forEvent:(UIEvent*)event {
    [[UIApplication sharedApplication] swizzledSendAction:action to:target from:self for:event];
}
@end

// Takes the actions, and has two rows of its own.
@interface Page : UIViewController <UITableViewDataSource, UITableViewDelegate>
@end

@implementation Page
- (void)act:(id)sender {
    benchmark::DoNotOptimize(sender);
}
- (NSInteger)tableView:(UITableView*)tableView numberOfRowsInSection:(NSInteger)section {
    benchmark::DoNotOptimize(tableView);
    benchmark::DoNotOptimize(section);
    return 2;
}
- (UITableViewCell*)tableView:(UITableView*)tableView cellForRowAtIndexPath:(NSIndexPath*)indexPath {
    benchmark::DoNotOptimize(tableView);
    UITableViewCell* cell = [[[UITableViewCell alloc] initWithStyle:UITableViewCellStyleDefault
                                                    reuseIdentifier:nil] autorelease];
    [[cell textLabel] setText:[indexPath row] == 0 ? @"Espresso" : @"Filter"];
    return cell;
}
- (void)tableView:(UITableView*)tableView didSelectRowAtIndexPath:(NSIndexPath*)indexPath {
    benchmark::DoNotOptimize(tableView);
    benchmark::DoNotOptimize(indexPath);
}
@end

namespace {

using namespace tallyfoot::benchmarks;
using tallyfoot::LogAttribute;

constexpr int events = 16000; // few enough that no log file fills up
const CGRect frame = CGRectMake(0, 0, 320, 480);

template <class Class>
Class* make() {
    return [[Class alloc] initWithFrame:frame];
}

// Never released: a benchmark's steps outlive what sets them up.
struct Things {
    UIApplication* application = [UIApplication sharedApplication];
    Page* page = [[Page alloc] init];
    UINavigationController* container = [[UINavigationController alloc] init];
    UIButton* button = make<UIButton>();
    UIButton* quietButton = make<UIButton>();
    UISwitch* ignored = make<UISwitch>();
    UITextField* untracked = make<UITextField>();
    UISwipeActionStandardButton* swipeButton = make<UISwipeActionStandardButton>();
    UISlider* slider = make<UISlider>();
    UnwatchedSlider* unwatched = make<UnwatchedSlider>();
    UIView* view = make<UIView>();
    UITableView* table = [[UITableView alloc] initWithFrame:frame style:UITableViewStylePlain];
    UITableView* quietTable = [[UITableView alloc] initWithFrame:frame style:UITableViewStylePlain];
    NSIndexPath* first = [[NSIndexPath indexPathForRow:0 inSection:0] retain];
    UITapGestureRecognizer* tap = [[UITapGestureRecognizer alloc] initWithTarget:page action:@selector(act:)];
    UIPanGestureRecognizer* pan = [[UIPanGestureRecognizer alloc] initWithTarget:page action:@selector(act:)];
    UIScrollView* scrollView = make<UIScrollView>();

    Things() {
        [button setTitle:@"Add to basket" forState:UIControlStateNormal];
        [quietButton setTitle:@"Add to basket" forState:UIControlStateNormal];
        [quietButton setLogEnabled:NO];
        [swipeButton setTitle:@"Delete" forState:UIControlStateNormal];
        [page setTitle:@"Basket"];
        [view addGestureRecognizer:tap];
        [view addGestureRecognizer:pan];
        [pan setState:UIGestureRecognizerStateChanged];
        for (UITableView* one in @[ table, quietTable ]) {
            [one setDataSource:page];
            [one setDelegate:page];
            [one reloadData];
        }
        [quietTable setLogEnabled:NO];
        for (UISlider* one in @[ slider, unwatched ])
            [one addTarget:page action:@selector(act:) forControlEvents:UIControlEventValueChanged];
    }
};

Things& things() {
    static auto& all = *new Things;
    return all;
}

void send(UIControl* sender) {
    [things().application sendAction:@selector(act:) to:things().page from:sender forEvent:nil];
}
void sendUnwatched(UIControl* sender) {
    [things().application swizzledSendAction:@selector(act:) to:things().page from:sender for:nil];
}

UITouch* touchOn(UIView* view) { return [[UITouch alloc] _initInView:view at:CGPointMake(10, 10) time:0]; }

// To and fro, so that each step has a value to send.
void drag(UISlider* slider, UITouch* touch) {
    const CGFloat place = [touch _location].x > 100 ? 10 : 200;
    [touch _moveTo:CGPointMake(place, 10) inView:slider phase:UITouchPhaseMoved time:0];
    [slider continueTrackingWithTouch:touch withEvent:nil];
}

// A step as an event loop takes it, in a pool of its own.
template <class Step>
auto timed(Step step) {
    return [step](benchmark::State& state) {
        for (auto _ : state) {
            @autoreleasepool {
                step();
            }
        }
    };
}

template <class Step>
benchmark::internal::Benchmark* add(const std::string& name, Step step) {
    return benchmark::RegisterBenchmark(name.c_str(), timed(step))->UseRealTime();
}

template <class Step>
void recorded(const std::string& name, Step step) {
    add(name, step)->Setup([](const benchmark::State&) { forgetLogs(); })->Iterations(events);
}

template <class Watched, class Unwatched>
void notRecorded(const std::string& name, Watched watched, Unwatched unwatched) {
    add("notRecorded/" + name + "/watched", watched);
    add("notRecorded/" + name + "/unwatched", unwatched);
}

void addRecorded() {
    recorded("live/logOfATap", [] {
        tallyfoot::Tallyfoot::log(tallyfoot::EventType::action, {{LogAttribute::evtCategory, "UIButton"},
                                                                 {LogAttribute::evtAction, "tap"},
                                                                 {LogAttribute::evtLabel, "Add to basket"}});
    });
    recorded("live/tap", [] { send(things().button); });
    recorded("live/slide", [] { send(things().slider); });
    recorded("live/tapGesture", [] { [things().tap swizzleGestureAction:things().tap]; });
    recorded("live/rowSelection",
             [] { [things().page tableView:things().table didSelectRowAtIndexPath:things().first]; });
    recorded("live/screen", [] {
        [things().page viewWillAppear:NO];
        [things().page viewWillDisappear:NO];
    });
    add("live/tapUnwatched", [] { sendUnwatched(things().button); });
}

void addNotRecorded() {
    notRecorded(
        "disabledButton", [] { send(things().quietButton); }, [] { sendUnwatched(things().quietButton); });
    notRecorded(
        "ignoredSwitch", [] { send(things().ignored); }, [] { sendUnwatched(things().ignored); });
    notRecorded(
        "untrackedTextField", [] { send(things().untracked); }, [] { sendUnwatched(things().untracked); });
    notRecorded(
        "swipeButtonUntouched", [] { send(things().swipeButton); }, [] { sendUnwatched(things().swipeButton); });
    UITouch* const touch = touchOn(things().slider);
    UITouch* const other = touchOn(things().unwatched);
    notRecorded(
        "sliderBeingDragged", [touch] { drag(things().slider, touch); }, [other] { drag(things().unwatched, other); });
    const auto nothing = [] {};
    notRecorded(
        "panUnderWay", [] { [things().pan swizzleGestureAction:things().pan]; }, nothing);
    UIGestureRecognizer* const own = [things().scrollView panGestureRecognizer];
    notRecorded(
        "scrollViewsOwnPan", [own] { [own swizzleGestureAction:own]; }, nothing);
    notRecorded(
        "disabledTable", [] { [things().page tableView:things().quietTable didSelectRowAtIndexPath:things().first]; },
        [] { [things().page orig_tableView:things().quietTable didSelectRowAt:things().first]; });
    notRecorded(
        "systemScreen",
        [] {
            [things().container viewWillAppear:NO];
            [things().container viewWillDisappear:NO];
        },
        [] {
            [things().container swizzledViewWillAppear:NO];
            [things().container swizzledViewWillDisappear:NO];
        });
}

} // namespace

int main(int argc, char** argv) {
    @autoreleasepool {
        startRecording("http://127.0.0.1:9/upload"); // nothing listens, nothing is sent
        tallyfoot::Tallyfoot::configure(tallyfoot::UploadConfiguration::defaultConfiguration(), {"UISwitch"}, nullptr);
        things();
        addRecorded();
        addNotRecorded();
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
