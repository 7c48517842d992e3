#pragma once
#import "UILabel.h"

typedef NS_ENUM(NSInteger, UITableViewCellStyle) {
    UITableViewCellStyleDefault,
    UITableViewCellStyleValue1,
    UITableViewCellStyleValue2,
    UITableViewCellStyleSubtitle
};

typedef NS_ENUM(NSInteger, UITableViewCellAccessoryType) {
    UITableViewCellAccessoryNone,
    UITableViewCellAccessoryDisclosureIndicator,
    UITableViewCellAccessoryDetailDisclosureButton
};

@interface UITableViewCell : UIView {
    NSString* _reuseIdentifier;
    UIView* _contentView;
    UILabel* _textLabel;
    UILabel* _detailTextLabel;
    UIView* _accessoryView;
    UITableViewCellAccessoryType _accessoryType;
    BOOL _selected;
}
@property(nonatomic, readonly, copy) NSString* reuseIdentifier;
@property(nonatomic, readonly) UIView* contentView;
@property(nonatomic, readonly) UILabel* textLabel;       // made when first asked for
@property(nonatomic, readonly) UILabel* detailTextLabel; // nil in the default style
@property(nonatomic, retain) UIView* accessoryView;
@property(nonatomic) UITableViewCellAccessoryType accessoryType;
@property(nonatomic, getter=isSelected) BOOL selected;
- (instancetype)initWithStyle:(UITableViewCellStyle)style reuseIdentifier:(NSString*)reuseIdentifier;
- (void)prepareForReuse;
@end
