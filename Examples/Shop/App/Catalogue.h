#pragma once
#import <Foundation/Foundation.h>

@interface Product : NSObject {
    NSString* _name;
    NSInteger _price; // cents
}
@property(nonatomic, readonly) NSString* name;
@property(nonatomic, readonly) NSInteger price;
+ (Product*)productNamed:(NSString*)name price:(NSInteger)price;
@end

// What the shop sells.
@interface Catalogue : NSObject
+ (NSArray*)products;
+ (NSArray*)productsMatching:(NSString*)text; // all where there is none
@end
