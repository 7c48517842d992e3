#pragma once
#import <UIKit/UIKit.h>

@interface UISwipeActionStandardButton : UIButton
@end

// The buttons beside a row that was swiped.
@interface UISwipeActionPullView : UIView {
    NSArray* _actions;
    UITableView* _tableView; // not retained
}
- (instancetype)initWithActions:(NSArray*)actions tableView:(UITableView*)tableView;
@end
