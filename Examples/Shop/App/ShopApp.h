#pragma once
#import "Basket.h"

#import <UIKit/UIKit.h>

// A small shop: products, a basket, settings.
@interface ShopApp : NSObject <UIApplicationDelegate> {
    UIWindow* _window;
    Basket* _basket;
}
@property(nonatomic, readonly) UIWindow* window;
@end
