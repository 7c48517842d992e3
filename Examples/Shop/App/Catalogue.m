#import "Catalogue.h"

@implementation Product
@synthesize name = _name, price = _price;

+ (Product*)productNamed:(NSString*)name price:(NSInteger)price {
    Product* product = [[[self alloc] init] autorelease];
    product->_name = [name copy];
    product->_price = price;
    return product;
}

- (void)dealloc {
    [_name release];
    [super dealloc];
}
@end

@implementation Catalogue
+ (NSArray*)products {
    static NSArray* products;
    if (products) return products;
    NSArray* kinds = @[ @"Tea", @"Coffee", @"Körbe", @"Cups", @"Spoons", @"\"Best\" honey" ];
    NSArray* sizes = @[ @"small", @"medium", @"large", @"for two", @"for the office" ];
    NSMutableArray* made = [NSMutableArray array];
    for (NSString* kind in kinds) {
        for (NSString* size in sizes) {
            NSString* name = [NSString stringWithFormat:@"%@, %@", kind, size];
            [made addObject:[Product productNamed:name price:199 + 150 * (NSInteger)[made count]]];
        }
    }
    products = [made copy];
    return products;
}

+ (NSArray*)productsMatching:(NSString*)text {
    if ([text length] == 0) return [self products];
    NSMutableArray* matching = [NSMutableArray array];
    for (Product* product in [self products]) {
        NSRange found = [product.name rangeOfString:text options:NSCaseInsensitiveSearch];
        if (found.location != NSNotFound) [matching addObject:product];
    }
    return matching;
}
@end
