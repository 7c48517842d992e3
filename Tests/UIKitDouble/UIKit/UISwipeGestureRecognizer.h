#pragma once
#import "UIGestureRecognizer.h"

typedef NS_OPTIONS(NSUInteger, UISwipeGestureRecognizerDirection) {
    UISwipeGestureRecognizerDirectionRight = 1 << 0,
    UISwipeGestureRecognizerDirectionLeft = 1 << 1,
    UISwipeGestureRecognizerDirectionUp = 1 << 2,
    UISwipeGestureRecognizerDirectionDown = 1 << 3
};

@interface UISwipeGestureRecognizer : UIGestureRecognizer {
    UISwipeGestureRecognizerDirection _direction;
    CGPoint _start;
}
@property(nonatomic) UISwipeGestureRecognizerDirection direction;
@end
