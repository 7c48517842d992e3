// The calls of an Objective-C host.

#import <TallyfootObjC/TallyfootObjC.h>
#include <stdio.h>

static void switchOn(NSString* token) {
    UploadConfiguration* configuration = [[[UploadConfiguration alloc] initWithSeconds:60 eventsCount:20] autorelease];
    configuration.uploadPath = @"http://127.0.0.1:9090/upload";
    Tallyfoot.showOutput = NO;
    Tallyfoot.appInfo = [[[ApplicationInfo alloc] initWithAppName:@"Shop"
                                                            appId:@"shop-1"
                                                          bizArea:@"Retail"
                                                        bizAreaId:@"R-7"] autorelease];
    [Tallyfoot configure:configuration
                ignoreClasses:@[ @"UISlider" ]
        authenticationClosure:^{
          return [[[Authentication alloc] initWithUserId:@"user-1" authenticationToken:token
                                           userLogOnTime:nil] autorelease];
        }];
}

int main(void) {
    @autoreleasepool {
        switchOn([NSString stringWithFormat:@"token-%d", 1]);
        [Tallyfoot logEvent:EventTypeAction attributes:@{@"evtLabel" : @"Buy"} customAttributes:@{@"sku" : @"A-1"}];
        [Tallyfoot logEvent:EventTypeScreen attributes:@{@"pgName" : @"Basket"} customAttributes:nil];
        [Tallyfoot logEventWithType:@"purchase" attributes:@{} customAttributes:nil];
        [Tallyfoot logJSONEvent:EventTypeAction attributes:@{} customJSONAttributes:@"{\"a\":1}"];
        [Tallyfoot logJSONEventWithType:@"purchase" attributes:@{@"pgName" : @"Basket"} customJSONAttributes:@"[]"];
        [Tallyfoot categoryCustomTitles:@{@"UIButton" : @"Btn"}];
        Tallyfoot.pageParent = @"web";

        Environment* environment = [[[Environment alloc] init] autorelease];
        [environment setEndpoint:EndpointUat];
        Tallyfoot.environment = environment;
        printf("token %s, path %s\n", [Tallyfoot.shared.authenticationToken UTF8String],
               [Tallyfoot.environment.uploadPath UTF8String]);
    }
    return 0;
}
