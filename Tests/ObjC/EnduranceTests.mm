// Thousands of interactions with objects that come and go: nothing of the library's own may stay behind.
#include "ObjC/CaptureFixture.h"

#include <malloc.h>

#include <cstdio>

extern "C" std::size_t __sanitizer_get_current_allocated_bytes() __attribute__((weak));

// Answers like a delegate of every kind, and takes its own button away.
@interface Passerby : Probe
- (void)leave:(UIButton*)sender;
@end

@implementation Passerby

- (void)leave:(UIButton*)sender {
    [sender removeFromSuperview];
}

@end

namespace {

using namespace tallyfoot::testing;

std::size_t bytesInUse() {
    return __sanitizer_get_current_allocated_bytes ? __sanitizer_get_current_allocated_bytes() : ::mallinfo2().uordblks;
}

// One after the other; each gives how many events it must leave.
class ObjCEndurance : public ObjCCapture {
protected:
    using Interaction = int (*)(Passerby*);

    static int tapAButtonThatGoes(Passerby* user) {
        UIView* page = [[[UIView alloc] initWithFrame:CGRectMake(0, 0, 320, 480)] autorelease];
        UIButton* button = [[UIButton alloc] initWithFrame:CGRectMake(0, 0, 100, 44)];
        [button setTitle:@"Close" forState:UIControlStateNormal];
        button.customName = @"Closing";
        [button addTarget:user action:@selector(leave:) forControlEvents:UIControlEventTouchUpInside];
        [page addSubview:button];
        [button release];
        [Finger tap:button];
        return 1;
    }

    static int dragASlider(Passerby* user) {
        UISlider* slider = [[[UISlider alloc] initWithFrame:CGRectMake(0, 0, 200, 40)] autorelease];
        [slider addTarget:user action:@selector(action:) forControlEvents:UIControlEventValueChanged];
        [Finger drag:slider by:CGSizeMake(60, 0)];
        return 1;
    }

    static int switchOptedOut(Passerby* user) {
        UISwitch* light = [[[UISwitch alloc] initWithFrame:CGRectZero] autorelease];
        light.logEnabled = NO;
        [light addTarget:user action:@selector(action:) forControlEvents:UIControlEventValueChanged];
        [light sendActionsForControlEvents:UIControlEventValueChanged];
        return 0;
    }

    static int chooseARow(Passerby* user) {
        UITableView* table = [[[UITableView alloc] initWithFrame:CGRectMake(0, 0, 320, 440)] autorelease];
        table.dataSource = user;
        table.delegate = user;
        [table cellForRowAtIndexPath:[NSIndexPath indexPathForRow:1 inSection:0]].customName = @"Chosen";
        [Finger tap:table at:CGPointMake(10, 50)];
        table.delegate = nil;
        return 1;
    }

    static int tapALabel(Passerby* user) {
        UILabel* label = [[[UILabel alloc] initWithFrame:CGRectMake(0, 0, 100, 100)] autorelease];
        label.text = @"Offer";
        label.userInteractionEnabled = YES;
        UITapGestureRecognizer* tap =
            [[[UITapGestureRecognizer alloc] initWithTarget:user action:@selector(recognized:)] autorelease];
        tap.customName = @"Offer tapped";
        [label addGestureRecognizer:tap];
        [Finger tap:label];
        return 1;
    }

    static int chooseATab(Passerby* user) {
        UITabBar* bar = [[[UITabBar alloc] initWithFrame:CGRectMake(0, 0, 320, 49)] autorelease];
        bar.items = @[ [[[UITabBarItem alloc] initWithTitle:@"Shop" image:nil tag:0] autorelease] ];
        bar.delegate = user;
        [Finger tap:bar at:CGPointMake(100, 20)];
        return 1;
    }

    static int search(Passerby* user) {
        UISearchController* search = [[[UISearchController alloc] initWithSearchResultsController:nil] autorelease];
        search.searchResultsUpdater = user;
        search.searchBar.delegate = user;
        [search.searchBar.searchTextField insertText:@"t"];
        search.searchResultsUpdater = nil;
        return 0; // it is not active
    }

    static int visitAScreen(Passerby*) {
        UIViewController* page = [[[UIViewController alloc] init] autorelease];
        page.customName = @"Page";
        [page viewWillAppear:NO];
        [page viewWillDisappear:NO];
        return 1;
    }

    static int scroll(Passerby* user) {
        UIScrollView* scroll = [[[UIScrollView alloc] initWithFrame:CGRectMake(0, 0, 100, 100)] autorelease];
        scroll.contentSize = CGSizeMake(100, 1000);
        scroll.delegate = user;
        [Finger flick:scroll by:CGSizeMake(0, -60)];
        return 1;
    }

    // Each in a pool of its own, as the events of an app are.
    std::size_t interact(int from, int to) {
        static constexpr Interaction all[]{tapAButtonThatGoes, dragASlider,  switchOptedOut, chooseARow, tapALabel,
                                           chooseATab,         visitAScreen, search,         scroll};
        std::size_t events = 0;
        for (int number = from; number < to; ++number) {
            NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
            const auto interaction = all[static_cast<std::size_t>(number) % std::size(all)];
            events += static_cast<std::size_t>(interaction((Passerby*)[Passerby probe]));
            [pool drain];
        }
        return events;
    }
};

TEST_F(ObjCEndurance, TenThousandInteractionsLeaveNothingBehind) {
    auto events = interact(0, 1000);
    const auto afterThousand = bytesInUse();
    events += interact(1000, 10000);
    const auto afterAll = bytesInUse();
    std::printf("%zu bytes in use after 1000 interactions, %zu after 10000\n", afterThousand, afterAll);
    EXPECT_LT(afterAll, afterThousand + 4096) << "less than half a byte for each";
    EXPECT_EQ(records().size(), events);
}

} // namespace
