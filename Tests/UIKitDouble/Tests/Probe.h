#pragma once
// An object that hears of everything, as target and as delegate, and writes it down.
#import "Finger.h"

@interface Probe : NSObject <UITableViewDataSource, UITableViewDelegate, UICollectionViewDataSource,
                             UICollectionViewDelegate, UIPickerViewDataSource, UIPickerViewDelegate, UITabBarDelegate,
                             UISearchBarDelegate, UISearchResultsUpdating, UIGestureRecognizerDelegate> {
@public
    NSMutableArray* heard;
    NSInteger rows;
    UISwipeActionsConfiguration* swipeActions;
    BOOL refusesGestures;
}
+ (Probe*)probe;
- (void)action:(id)sender;
- (void)action:(id)sender forEvent:(UIEvent*)event;
- (void)bareAction;
- (void)recognized:(UIGestureRecognizer*)recognizer;
@end

// What was heard, joined with ", ", as a C++ text; forgotten afterwards.
#include <string>
inline std::string heardBy(Probe* probe) {
    const std::string all = [[probe->heard componentsJoinedByString:@", "] UTF8String];
    [probe->heard removeAllObjects];
    return all;
}
