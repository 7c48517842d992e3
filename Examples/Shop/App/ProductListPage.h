#pragma once
#import "Basket.h"

#import <UIKit/UIKit.h>

// All products, with a search.
@interface ProductListPage
    : UIViewController <UITableViewDataSource, UITableViewDelegate, UISearchBarDelegate, UISearchResultsUpdating> {
    Basket* _basket;
    NSArray* _products;
    UITableView* _table;
    UISearchController* _search;
}
- (instancetype)initWithBasket:(Basket*)basket;
@end
