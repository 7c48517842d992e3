#import "Ledger.h"

#include <errno.h>
#include <stdlib.h>
#include <unistd.h>

typedef struct {
    NSString* name;
    NSString* type; // nil: it gives no record
    NSString* category;
    NSString* action; // nil: any
    NSString* label;  // of records that must not be, nil: any
} KindFacts;

static const KindFacts rows[KindCount] = {
    [KindScreen] = {@"screens left", @"screen", @"UIViewController", @"", nil},
    [KindTab] = {@"tabs", @"action", @"UITabBar", @"Tap", nil},
    [KindRow] = {@"table rows", @"selection", @"UITableView", @"Cell Selected", nil},
    [KindAccessory] = {@"row accessories", @"action", @"UIButton", @"Accessory Button Tap", nil},
    [KindItem] = {@"collection items", @"selection", @"UICollectionView", @"Cell Selected", nil},
    [KindButton] = {@"buttons", @"action", @"UIButton", @"tap", nil},
    [KindSegment] = {@"segments", @"action", @"UISegmentedControl", @"tap", nil},
    [KindStepper] = {@"steppers", @"action", @"UIStepper", @"tap", nil},
    [KindSwitch] = {@"switches", @"action", @"UISwitch", @"tap", nil},
    [KindSlider] = {@"sliders let go", @"action", @"UISlider", @"Slide", nil},
    [KindDate] = {@"date pickers", @"action", @"UIDatePicker", @"", nil},
    [KindBarButton] = {@"bar buttons", @"action", @"UIBarButtonItem", @"tap", nil},
    [KindRefresh] = {@"pulled to refresh", @"action", @"UIRefreshControl", @"Refreshed", nil},
    [KindScroll] = {@"scrolls come to rest", @"scroll", @"UIScrollView", @"Scrolled", nil},
    [KindSearchUpdate] = {@"search texts changed", @"action", @"UISearchBar", @"Search Updated", nil},
    [KindSearch] = {@"search keys", @"action", @"UISearchBar", @"Search", nil},
    [KindBookmark] = {@"search bookmarks", @"action", @"UISearchBar", @"Bookmark", nil},
    [KindResultsList] = {@"search results lists", @"action", @"UISearchBar", @"ResultsList", nil},
    [KindCancel] = {@"searches cancelled", @"action", @"UISearchBar", @"Cancel", nil},
    [KindTap] = {@"taps on a view", @"gesture", @"UITapGestureRecognizer", @"Tap Gesture", nil},
    [KindSwipe] = {@"swipes", @"gesture", @"UISwipeGestureRecognizer", @"Swipe Gesture Right", nil},
    [KindPinch] = {@"pinches", @"gesture", @"UIPinchGestureRecognizer", @"Pinch Gesture", nil},
    [KindLongPress] = {@"long presses", @"gesture", @"UILongPressGestureRecognizer", @"Long Press Gesture", nil},
    [KindPan] = {@"pans", @"gesture", @"UIPanGestureRecognizer", @"Pan Gesture", nil},
    [KindCellSwipe] = {@"rows swiped", @"gesture", @"UIPanGestureRecognizer", @"Cell Swipe", nil},
    [KindSwipeButton] = {@"swipe actions", @"action", @"UISwipeActionStandardButton", @"Cell Swipe Button Tap", nil},
    [KindAlert] = {@"alert actions", @"alert", @"UILongPressGestureRecognizer", @"Long Press Gesture", nil},
    [KindIgnoredClass] = {@"page controls (ignored class)", nil, @"UIPageControl", nil, nil},
    [KindLogDisabled] = {@"PIN keys (logEnabled off)", nil, @"UIButton", nil, @"7"},
    [KindLogDisabledScreen] = {@"payment screen (logEnabled off)", nil, @"UIViewController", nil, @"Payment"},
    [KindSystemScreen] = {@"alerts and searches (system screens)", nil, @"UIViewController", nil, @"Empty the basket?"},
    [KindSliderMove] = {@"sliders under the finger", nil, nil, nil, nil},
    [KindSystemButton] = {@"back and clear buttons (internal)", nil, nil, nil, nil},
    [KindWheel] = {@"picker wheels (internal table)", nil, nil, nil, nil},
    [KindTyping] = {@"keys typed", nil, nil, nil, nil},
    [KindOtherGesture] = {@"rotations (another recognizer)", nil, @"UIRotationGestureRecognizer", nil, nil},
};

@implementation Ledger
@synthesize due = _due;

- (instancetype)initWithDescriptor:(int)descriptor {
    if ((self = [super init])) {
        _descriptor = descriptor;
        for (Kind kind = 0; kind < KindCount; ++kind) _labels[kind] = [[NSMutableDictionary alloc] init];
    }
    return self;
}

- (void)dealloc {
    for (Kind kind = 0; kind < KindCount; ++kind) [_labels[kind] release];
    [super dealloc];
}

- (void)performed:(Kind)kind {
    ++_performed[kind];
}

- (void)performed:(Kind)kind label:(NSString*)label {
    [self performed:kind label:label records:1];
}

- (void)performed:(Kind)kind label:(NSString*)label records:(NSInteger)records {
    ++_performed[kind];
    NSInteger former = [[_labels[kind] objectForKey:label] integerValue];
    [_labels[kind] setObject:[NSNumber numberWithInteger:former + records] forKey:label];
    _due += records;
}

// Nobody to tell means nobody to work for.
- (void)tell:(NSDictionary*)line {
    NSMutableData* data = [[[NSJSONSerialization dataWithJSONObject:line options:0
                                                              error:NULL] mutableCopy] autorelease];
    [data appendBytes:"\n" length:1];
    @synchronized(self) {
        const char* rest = [data bytes];
        size_t left = [data length];
        while (left > 0) {
            ssize_t count = write(_descriptor, rest, left);
            if (count < 0 && errno != EINTR) _exit(1);
            if (count < 0) continue;
            rest += count;
            left -= (size_t)count;
        }
    }
}

- (NSDictionary*)_kind:(Kind)kind {
    KindFacts row = rows[kind];
    NSMutableDictionary* told = [NSMutableDictionary dictionary];
    [told setObject:row.name forKey:@"kind"];
    [told setObject:[NSNumber numberWithInteger:_performed[kind]] forKey:@"performed"];
    if (row.type) {
        [told setObject:row.type forKey:@"type"];
        [told setObject:row.action forKey:@"action"];
        [told setObject:_labels[kind] forKey:@"labels"];
    }
    if (row.category) [told setObject:row.category forKey:@"category"];
    if (row.label) [told setObject:row.label forKey:@"label"];
    return told;
}

- (void)tellKindsAfter:(NSTimeInterval)seconds {
    NSMutableArray* kinds = [NSMutableArray array];
    for (Kind kind = 0; kind < KindCount; ++kind) [kinds addObject:[self _kind:kind]];
    [self tell:@{@"kinds" : kinds, @"seconds" : [NSNumber numberWithDouble:seconds]}];
}
@end
