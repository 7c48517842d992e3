#pragma once
// What the user has done, and what records it must give. Told as lines of JSON on a pipe.
#import <Foundation/Foundation.h>

typedef NS_ENUM(NSInteger, Kind) {
    KindScreen,
    KindTab,
    KindRow,
    KindAccessory,
    KindItem,
    KindButton,
    KindSegment,
    KindStepper,
    KindSwitch,
    KindSlider,
    KindDate,
    KindBarButton,
    KindRefresh,
    KindScroll,
    KindSearchUpdate,
    KindSearch,
    KindBookmark,
    KindResultsList,
    KindCancel,
    KindTap,
    KindSwipe,
    KindPinch,
    KindLongPress,
    KindPan,
    KindCellSwipe,
    KindSwipeButton,
    KindAlert,
    // These give none.
    KindIgnoredClass,
    KindLogDisabled,
    KindLogDisabledScreen,
    KindSystemScreen,
    KindSliderMove,
    KindSystemButton,
    KindWheel,
    KindTyping,
    KindOtherGesture,
    KindCount
};

@interface Ledger : NSObject {
    int _descriptor;
    NSInteger _performed[KindCount];
    NSMutableDictionary* _labels[KindCount]; // label -> records due
    NSInteger _due;
}
@property(nonatomic, readonly) NSInteger due; // records of all kinds

- (instancetype)initWithDescriptor:(int)descriptor;
- (void)performed:(Kind)kind; // gives no record
- (void)performed:(Kind)kind label:(NSString*)label;
- (void)performed:(Kind)kind label:(NSString*)label records:(NSInteger)records;

// From any thread.
- (void)tell:(NSDictionary*)line;
// {"kinds": […]}, each with its name, how often it was performed, and either the records due by label with
// their type, category and action, or what no record may look like.
// "seconds" is how long it took, on the clock of the touches.
- (void)tellKindsAfter:(NSTimeInterval)seconds;
@end
