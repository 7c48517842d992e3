// An app on a stand-in for UIKit of its own, as small as can be. Its user does four things.

#import <TallyfootObjC/TallyfootObjC.h>
#import <TallyfootObjC/TallyfootUIKit.h>
#import <UIKit/UIKit.h>
#include <stdio.h>

@interface BasketPage : UIViewController
@end

@implementation BasketPage
- (void)buy:(UIButton*)sender {
    printf("bought with %s\n", [sender.currentTitle UTF8String]);
}
@end

static void switchOn(void) {
    UploadConfiguration* configuration = [[[UploadConfiguration alloc] initWithSeconds:60 eventsCount:20] autorelease];
    configuration.uploadPath = @"http://127.0.0.1:9/upload";
    Tallyfoot.appInfo = [[[ApplicationInfo alloc] initWithAppName:@"Shop"
                                                            appId:@"shop-1"
                                                          bizArea:@"Retail"
                                                        bizAreaId:@"R-7"] autorelease];
    [Tallyfoot configure:configuration
                ignoreClasses:@[]
        authenticationClosure:^{
          return [[[Authentication alloc] initWithUserId:@"user-1" authenticationToken:@"token-1"
                                           userLogOnTime:nil] autorelease];
        }];
}

static void tap(UIButton* button, id target) {
    [[UIApplication sharedApplication] sendAction:@selector(buy:) to:target from:button forEvent:nil];
}

int main(void) {
    @autoreleasepool {
        switchOn();
        BasketPage* page = [[[BasketPage alloc] init] autorelease];
        UIButton* button = [[[UIButton alloc] init] autorelease];
        page.title = @"Basket";
        button.currentTitle = @"Buy";
        [page viewWillAppear:NO];
        tap(button, page);
        button.customName = @"Buy now";
        tap(button, page);
        button.logEnabled = NO;
        tap(button, page);
        [page viewWillDisappear:NO];
    }
    return 0;
}
