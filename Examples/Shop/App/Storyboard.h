#pragma once
#import <UIKit/UIKit.h>

// The part of a storyboard that no code has: the runtime attributes that were entered in the editor.
@interface Storyboard : NSObject
// Of the controller, the views below its view and their recognizers. Views go by their identifiers,
// recognizers by their view's identifier and their class.
+ (void)dress:(UIViewController*)controller;
@end
