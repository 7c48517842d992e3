#import "ShopUser.h"

#import "Finger.h"

#include <time.h>
#include <unistd.h>

static const NSInteger mostRecordsOfAStep = 12;
static NSString* const tabTitles[] = {@"Shop", @"Basket", @"Settings"};

@implementation ShopUser

- (instancetype)initWithWindow:(UIWindow*)window ledger:(Ledger*)ledger seed:(uint64_t)seed {
    if ((self = [super init])) {
        _window = [window retain];
        _ledger = [ledger retain];
        _random = seed;
        _start = [Finger now];
    }
    return self;
}

- (NSTimeInterval)secondsWalked {
    return [Finger now] - _start;
}

- (void)dealloc {
    [_window release];
    [_ledger release];
    [_product release];
    [super dealloc];
}

- (void)walkForRecords:(NSInteger)records pauseMicroseconds:(unsigned int)pause {
    NSInteger end = _ledger.due + records;
    while (_ledger.due < end) {
        @autoreleasepool {
            if (end - _ledger.due > mostRecordsOfAStep) {
                [self _step];
            } else {
                [self _giveOneRecord];
            }
            [_ledger tell:@{@"logged" : [NSNumber numberWithInteger:_ledger.due]}];
        }
        if (pause) usleep(pause);
    }
}

// --- Chance

- (NSUInteger)_below:(NSUInteger)bound {
    _random += 0x9E3779B97F4A7C15U;
    uint64_t mixed = _random;
    mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9U;
    mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBU;
    return (NSUInteger)((mixed ^ (mixed >> 31)) % bound);
}

// --- What is on the screen

- (id)_view:(NSString*)name in:(UIView*)view byClass:(BOOL)byClass {
    NSString* own = byClass ? NSStringFromClass([view class]) : view.accessibilityIdentifier;
    if ([own isEqualToString:name]) return view;
    for (UIView* subview in view.subviews) {
        id found = [self _view:name in:subview byClass:byClass];
        if (found) return found;
    }
    return nil;
}

- (id)_view:(NSString*)identifier {
    return [self _view:identifier in:_window byClass:NO];
}

- (id)_viewOfClass:(NSString*)className {
    return [self _view:className in:_window byClass:YES];
}

- (UIView*)_barView:(BOOL)last {
    NSArray* views = [[self _viewOfClass:@"UINavigationBar"] subviews];
    return last ? [views lastObject] : [views firstObject];
}

- (NSIndexPath*)_anyRowOf:(UITableView*)table {
    NSMutableArray* whole = [NSMutableArray array]; // not cut off
    for (NSIndexPath* path in [table indexPathsForVisibleRows]) {
        if (NSContainsRect(table.bounds, [table rectForRowAtIndexPath:path])) [whole addObject:path];
    }
    return [whole count] ? [whole objectAtIndex:[self _below:[whole count]]] : nil;
}

- (CGPoint)_pointOn:(NSIndexPath*)path of:(UITableView*)table at:(CGFloat)x {
    return CGPointMake(x, NSMidY([table rectForRowAtIndexPath:path]));
}

// --- Steps

- (void)_giveOneRecord {
    if (_product) {
        [self _tapButton:@"wish" label:@"Wish"];
    } else {
        [self _tapTab:_tab];
    }
}

- (void)_step {
    if ([self _below:12] == 0) {
        [self _tapTab:[self _below:3]];
    } else if (_product) {
        [self _stepOnProduct];
    } else if (_tab == 0) {
        [self _stepOnList];
    } else if (_tab == 1) {
        [self _stepOnBasket];
    } else {
        [self _stepOnSettings];
    }
}

- (NSString*)_page {
    return _product ? _product : tabTitles[_tab];
}

- (void)_open:(NSString*)product {
    [_product autorelease];
    _product = [product copy];
}

// Another tab hides this one's page; the same one again goes back to its first.
- (void)_tapTab:(NSUInteger)tab {
    UITabBar* bar = [self _viewOfClass:@"UITabBar"];
    if (tab != _tab && _product) [self _goBack]; // so that each tab is found at its first page
    NSString* page = [self _page];
    BOOL leaves = tab != _tab || _product;
    CGFloat width = bar.bounds.size.width / 3;
    [Finger tap:bar at:CGPointMake(width * ((CGFloat)tab + 0.5), 20)];
    if (leaves) [_ledger performed:KindScreen label:page];
    [_ledger performed:KindTab label:tabTitles[tab]];
    [self _open:nil];
    _tab = tab;
}

- (void)_goBack {
    [Finger tap:[self _barView:NO]];
    [_ledger performed:KindSystemButton];
    [_ledger performed:KindScreen label:_product];
    [self _open:nil];
}

- (void)_tapButton:(NSString*)identifier label:(NSString*)label {
    [Finger tap:[self _view:identifier]];
    [_ledger performed:KindButton label:label];
}

// --- The list

- (void)_stepOnList {
    UITableView* table = [self _view:@"products"];
    NSIndexPath* row = [self _anyRowOf:table];
    switch ([self _below:8]) {
    case 0: [self _scroll:table]; return;
    case 1: [self _refresh:table]; return;
    case 2: [self _search]; return;
    case 3: [self _tapSearchButtons]; return;
    default: break;
    }
    if (!row) return;
    NSString* name = [table cellForRowAtIndexPath:row].textLabel.text;
    switch ([self _below:4]) {
    case 0:
        [Finger press:table at:[self _pointOn:row of:table at:40] for:0.8];
        [_ledger performed:KindLongPress label:name records:2];
        break;
    case 1:
        [Finger tap:table at:[self _pointOn:row of:table at:300]];
        [_ledger performed:KindAccessory label:@""];
        break;
    default:
        [_ledger performed:KindRow label:name];
        [_ledger performed:KindScreen label:[self _page]];
        name = [[name copy] autorelease];
        [Finger tap:table at:[self _pointOn:row of:table at:40]];
        [self _open:name];
    }
}

- (void)_scroll:(UITableView*)table {
    BOOL down = table.contentOffset.y < 250;
    CGFloat y = table.contentOffset.y + 200;
    [Finger flick:table from:CGPointMake(100, y) by:CGSizeMake(0, down ? -150 : 150)];
    [_ledger performed:KindScroll label:@""];
}

- (void)_refresh:(UITableView*)table {
    if (table.contentOffset.y > 0) {
        [self _scroll:table];
        return;
    }
    [Finger drag:table from:CGPointMake(100, 100) to:CGPointMake(100, 220) steps:6];
    [_ledger performed:KindRefresh label:@""];
    [_ledger performed:KindScroll label:@""];
}

- (void)_tapSearchButtons {
    UISearchBar* bar = [self _view:@"search"];
    if ([self _below:2] == 0) {
        [Finger tap:[self _viewOfClass:@"UISearchBarBookmarkView"]];
        [_ledger performed:KindBookmark label:bar.text];
    } else {
        [Finger tap:bar at:CGPointMake(320 - 80, 20)];
        [_ledger performed:KindResultsList label:bar.text];
    }
}

- (void)_search {
    UISearchBar* bar = [self _view:@"search"];
    NSString* words[] = {@"te", @"cup", @"k"};
    NSString* word = words[[self _below:3]];
    [Finger tap:bar at:CGPointMake(30, 20)];
    [_ledger performed:KindSearchUpdate label:@""];
    for (NSUInteger i = 0; i < [word length]; ++i) {
        [bar.searchTextField insertText:[word substringWithRange:NSMakeRange(i, 1)]];
        [_ledger performed:KindTyping];
        [_ledger performed:KindSearchUpdate label:bar.text];
    }
    if ([self _below:2] == 0) {
        [bar.searchTextField insertText:@"\n"];
        [_ledger performed:KindSearch label:bar.text];
    }
    if ([self _below:2] == 0) {
        [Finger tap:bar at:CGPointMake(320 - 170, 20)];
        [_ledger performed:KindSystemButton];
        [_ledger performed:KindSearchUpdate label:@""];
    }
    [_ledger performed:KindCancel label:bar.text];
    [Finger tap:[self _viewOfClass:@"UINavigationButton"]];
    [_ledger performed:KindSystemScreen];
}

// --- A product

- (void)_stepOnProduct {
    UIView* picture = [self _view:@"picture"];
    switch ([self _below:13]) {
    case 0: [self _chooseSize]; break;
    case 1: [self _chooseQuantity]; break;
    case 2: [self _turnPage]; break;
    case 3: [self _chooseRelated]; break;
    case 4: [self _goBack]; break;
    case 5:
        [Finger tap:picture];
        [_ledger performed:KindTap label:_product];
        break;
    case 6:
        [Finger flick:picture by:CGSizeMake(80, 0)];
        [_ledger performed:KindSwipe label:@"Gallery"];
        break;
    case 7: // it tells of each change
        [Finger pinch:picture from:40 to:120];
        [_ledger performed:KindPinch label:@"" records:7];
        break;
    case 8:
        [Finger turn:picture by:1];
        [_ledger performed:KindOtherGesture];
        break;
    case 9:
        [Finger tap:[self _barView:YES]];
        [_ledger performed:KindBarButton label:@"Action"];
        break;
    case 10: [self _tapButton:@"wish" label:@"Wish"]; break;
    default: [self _tapButton:@"buy" label:@"Buy now"]; break;
    }
}

- (void)_chooseSize {
    UISegmentedControl* size = [self _view:@"size"];
    NSUInteger index = [self _below:3];
    if ((NSInteger)index == size.selectedSegmentIndex) return;
    [Finger tap:size at:CGPointMake(100 * ((CGFloat)index + 0.5), 10)];
    [_ledger performed:KindSegment label:[size titleForSegmentAtIndex:index]];
}

- (void)_chooseQuantity {
    UIStepper* quantity = [self _view:@"quantity"];
    BOOL more = quantity.value < 1 || [self _below:3] > 0;
    [Finger tap:quantity at:CGPointMake(more ? 80 : 10, 10)];
    [_ledger performed:KindStepper label:[NSString stringWithFormat:@"Qty-%.1f", quantity.value]];
}

- (void)_turnPage {
    UIPageControl* pages = [self _view:@"pages"];
    BOOL next = pages.currentPage == 0 || (pages.currentPage < 3 && [self _below:2] == 0);
    [Finger tap:pages at:CGPointMake(next ? 300 : 20, 10)];
    [_ledger performed:KindIgnoredClass];
}

- (void)_chooseRelated {
    UICollectionView* related = [self _view:@"related"];
    NSUInteger item = [self _below:6];
    UICollectionViewCell* cell = [related cellForItemAtIndexPath:[NSIndexPath indexPathForItem:(NSInteger)item
                                                                                     inSection:0]];
    [Finger tap:related at:CGPointMake(NSMidX(cell.frame), NSMidY(cell.frame))];
    [_ledger performed:KindItem label:[(UILabel*)[cell viewWithTag:1] text]];
}

// --- The basket

- (void)_stepOnBasket {
    UITableView* table = [self _view:@"basket"];
    NSIndexPath* row = [self _anyRowOf:table];
    NSUInteger chance = [self _below:8];
    if (chance == 0) {
        [self _answerAlert];
    } else if (chance == 1) {
        [self _pay];
    } else if (!row || chance == 2) {
        [self _tapTab:0];
    } else if (chance == 3) {
        [Finger tap:table at:[self _pointOn:row of:table at:40]];
        [_ledger performed:KindRow label:[table cellForRowAtIndexPath:row].textLabel.text];
    } else {
        [self _delete:row of:table];
    }
}

- (void)_delete:(NSIndexPath*)row of:(UITableView*)table {
    NSString* name = [[[table cellForRowAtIndexPath:row].textLabel.text copy] autorelease];
    [Finger flick:table from:[self _pointOn:row of:table at:200] by:CGSizeMake(-100, 0)];
    [_ledger performed:KindCellSwipe label:name];
    [Finger tap:[self _viewOfClass:@"UISwipeActionStandardButton"]];
    [_ledger performed:KindSwipeButton label:@"Delete"];
}

- (void)_answerAlert {
    [Finger tap:[self _barView:NO]];
    [_ledger performed:KindBarButton label:@"Trash"];
    UIView* group = [self _viewOfClass:@"_UIAlertControllerInterfaceActionGroupView"];
    [Finger tap:group at:CGPointMake(100, [self _below:3] ? 20 : 60)];
    [_ledger performed:KindAlert label:@"Keep" records:2]; // down and up; the first text of both actions
    [_ledger performed:KindSystemScreen];
}

- (void)_pay {
    [Finger tap:[self _barView:YES]];
    [_ledger performed:KindBarButton label:@"Pay"];
    UITextField* card = [self _view:@"card"];
    [Finger tap:card];
    [card insertText:@"4"];
    [_ledger performed:KindTyping];
    [Finger tap:[self _view:@"pin"]];
    [_ledger performed:KindLogDisabled];
    [self _tapButton:@"done" label:@"Done"];
    [_ledger performed:KindLogDisabledScreen];
}

// --- Settings

- (void)_stepOnSettings {
    switch ([self _below:8]) {
    case 0: [self _toggle:@"notifications" prefix:@"Push-"]; break;
    case 1: [self _toggle:@"dark" prefix:@""]; break;
    case 2: [self _slide:@"volume" prefix:@"Volume-"]; break;
    case 3: [self _slide:@"contrast" prefix:@""]; break;
    case 4: [self _turnDate]; break;
    case 5:
        [Finger flick:[self _viewOfClass:@"UIPickerTableView"] by:CGSizeMake(0, [self _below:2] ? 60 : -60)];
        [_ledger performed:KindWheel];
        break;
    case 6:
        [Finger drag:[self _view:@"about"] by:CGSizeMake(0, 50)];
        [_ledger performed:KindPan label:@"Version 1.0"];
        break;
    default: [self _tapTab:[self _below:3]]; break;
    }
}

- (void)_toggle:(NSString*)identifier prefix:(NSString*)prefix {
    UISwitch* control = [self _view:identifier];
    [Finger tap:control];
    [_ledger performed:KindSwitch label:[prefix stringByAppendingString:control.on ? @"true" : @"false"]];
}

// To a quarter of the way, so that its text is known; on the way there a continuous slider moves.
- (void)_slide:(NSString*)identifier prefix:(NSString*)prefix {
    UISlider* slider = [self _view:identifier];
    NSUInteger quarters = 1 + [self _below:3];
    [Finger drag:slider from:CGPointMake(0, 15) to:CGPointMake(50 * (CGFloat)quarters, 15) steps:4];
    float value = slider.maximumValue * (float)quarters / 4;
    NSString* texts[] = {@"0.25", @"0.5", @"0.75"};
    NSString* text = slider.continuous ? texts[quarters - 1] : [NSString stringWithFormat:@"%.1f", (double)value];
    [_ledger performed:KindSlider label:[prefix stringByAppendingString:text]];
    for (int move = 0; slider.continuous && move < 4; ++move) [_ledger performed:KindSliderMove];
}

- (void)_turnDate {
    UIDatePicker* picker = [self _view:@"delivery"];
    [Finger drag:picker by:CGSizeMake(0, [self _below:2] ? 64 : -32)];
    time_t seconds = (time_t)[picker.date timeIntervalSince1970];
    struct tm parts;
    char text[32];
    gmtime_r(&seconds, &parts);
    strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S +0000", &parts);
    [_ledger performed:KindDate label:[NSString stringWithUTF8String:text]];
}
@end
