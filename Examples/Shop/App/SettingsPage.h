#pragma once
#import <UIKit/UIKit.h>

@interface SettingsPage : UIViewController <UIPickerViewDataSource, UIPickerViewDelegate> {
    UIPickerView* _country;
}
@end
