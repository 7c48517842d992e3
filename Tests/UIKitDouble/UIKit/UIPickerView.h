#pragma once
#import "UIView.h"

@class UIPickerView;

@protocol UIPickerViewDataSource <NSObject>
- (NSInteger)numberOfComponentsInPickerView:(UIPickerView*)pickerView;
- (NSInteger)pickerView:(UIPickerView*)pickerView numberOfRowsInComponent:(NSInteger)component;
@end

@protocol UIPickerViewDelegate <NSObject>
@optional
- (NSString*)pickerView:(UIPickerView*)pickerView titleForRow:(NSInteger)row forComponent:(NSInteger)component;
- (void)pickerView:(UIPickerView*)pickerView didSelectRow:(NSInteger)row inComponent:(NSInteger)component;
@end

// Each wheel is a table of the picker's own (UIPickerTableView), which the picker is the delegate of.
@interface UIPickerView : UIView {
    id<UIPickerViewDelegate> _delegate;
    id<UIPickerViewDataSource> _dataSource;
    NSMutableArray* _tables;
    NSMutableArray* _selectedRows;
}
@property(nonatomic, assign) id<UIPickerViewDelegate> delegate;
@property(nonatomic, assign) id<UIPickerViewDataSource> dataSource;
- (void)reloadAllComponents;
- (NSInteger)numberOfComponents;
- (NSInteger)selectedRowInComponent:(NSInteger)component; // -1 for none
- (void)selectRow:(NSInteger)row inComponent:(NSInteger)component animated:(BOOL)animated;
@end
