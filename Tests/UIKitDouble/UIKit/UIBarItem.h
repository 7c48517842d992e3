#pragma once
#import "UIGeometry.h"

@interface UIBarItem : NSObject <NSCoding> {
    NSString* _title;
    id _image;
    NSInteger _tag;
    NSString* _accessibilityIdentifier;
    BOOL _enabled;
}
@property(nonatomic, copy) NSString* title;
@property(nonatomic, retain) id image;
@property(nonatomic) NSInteger tag;
@property(nonatomic, copy) NSString* accessibilityIdentifier;
@property(nonatomic, getter=isEnabled) BOOL enabled;
@end
