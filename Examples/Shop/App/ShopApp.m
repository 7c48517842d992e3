#import "ShopApp.h"

#import "BasketPage.h"
#import "ProductListPage.h"
#import "SettingsPage.h"

@implementation ShopApp
@synthesize window = _window;

- (void)dealloc {
    [_window release];
    [_basket release];
    [super dealloc];
}

- (BOOL)application:(id)application didFinishLaunchingWithOptions:(NSDictionary*)options {
    (void)application;
    (void)options;
    _basket = [[Basket alloc] init];
    NSArray* pages = @[
        [[[ProductListPage alloc] initWithBasket:_basket] autorelease],
        [[[BasketPage alloc] initWithBasket:_basket] autorelease], [[[SettingsPage alloc] init] autorelease]
    ];
    NSMutableArray* stacks = [NSMutableArray array];
    for (UIViewController* page in pages) {
        [stacks addObject:[[[UINavigationController alloc] initWithRootViewController:page] autorelease]];
    }
    UITabBarController* tabs = [[[UITabBarController alloc] init] autorelease];
    tabs.viewControllers = stacks;
    _window = [[UIWindow alloc] initWithFrame:[UIScreen mainScreen].bounds];
    _window.rootViewController = tabs;
    [_window makeKeyAndVisible];
    return YES;
}
@end
