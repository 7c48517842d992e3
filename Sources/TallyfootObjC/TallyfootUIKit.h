#pragma once

// What each view, view controller, bar item and gesture recognizer can be told about automatic capture.
// The library adds these properties when UIKit's classes are loaded; it links no UIKit itself. What is set
// goes with its object. Any thread.
#import <UIKit/UIKit.h>

NS_ASSUME_NONNULL_BEGIN

@protocol CustomOptionProtocol <NSObject>

// What the object is called in the events about it, in the place of its own text, or before its value.
// Empty when never set; nil takes it back.
@property(nonatomic, copy, null_resettable) NSString* customName;

// Off excludes the object from automatic capture. On when never set.
@property(nonatomic) BOOL logEnabled;

@end

@interface UIView (Tallyfoot) <CustomOptionProtocol>
@end

@interface UIViewController (Tallyfoot) <CustomOptionProtocol>
@end

@interface UIBarItem (Tallyfoot) <CustomOptionProtocol>
@end

@interface UIGestureRecognizer (Tallyfoot) <CustomOptionProtocol>
@end

NS_ASSUME_NONNULL_END
