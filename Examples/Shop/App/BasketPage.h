#pragma once
#import "Basket.h"

#import <UIKit/UIKit.h>

// What is in the basket. A row is swiped to delete it.
@interface BasketPage : UIViewController <UITableViewDataSource, UITableViewDelegate> {
    Basket* _basket;
    UITableView* _table;
}
- (instancetype)initWithBasket:(Basket*)basket;
@end
