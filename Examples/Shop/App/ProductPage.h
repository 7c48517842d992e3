#pragma once
#import "Basket.h"

#import <UIKit/UIKit.h>

// One product: its pictures, its size and quantity, and what others bought with it.
@interface ProductPage : UIViewController <UICollectionViewDataSource, UICollectionViewDelegate> {
    Product* _product;
    Basket* _basket;
}
- (instancetype)initWithProduct:(Product*)product basket:(Basket*)basket;
@end
