#pragma once

// What each view, view controller, bar item and gesture recognizer can be told about automatic capture.
// The library adds these properties when UIKit's classes are loaded; it links no UIKit itself.
#import <UIKit/UIKit.h>

NS_ASSUME_NONNULL_BEGIN

// customName: what the object is called in the events about it, in the place of its own text, or before
// its value. Empty when never set. logEnabled: off excludes it from automatic capture. On when never set.

@interface UIView (Tallyfoot)
@property(nonatomic, copy, null_resettable) NSString* customName;
@property(nonatomic) BOOL logEnabled;
@end

@interface UIViewController (Tallyfoot)
@property(nonatomic, copy, null_resettable) NSString* customName;
@property(nonatomic) BOOL logEnabled;
@end

@interface UIBarItem (Tallyfoot)
@property(nonatomic, copy, null_resettable) NSString* customName;
@property(nonatomic) BOOL logEnabled;
@end

@interface UIGestureRecognizer (Tallyfoot)
@property(nonatomic, copy, null_resettable) NSString* customName;
@property(nonatomic) BOOL logEnabled;
@end

NS_ASSUME_NONNULL_END
