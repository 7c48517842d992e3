#import "ShopApp.h"
#import "ShopUser.h"
#import "Visitor.h"

#import <TallyfootObjC/TallyfootObjC.h>
#import <UIKit/UIKit.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

// A shop and somebody who walks through it. It is told what to do by lines of JSON on standard input,
// and tells what the walk must have given by lines on standard output:
//   {"log": 500, "pauseMicroseconds": 100}    {"logged": 500} after each touch, {"done": "log"} at the end
//   {"crash": true}           what was performed, as at the end; then {"crashing": "…"}, the reason, and it does
//   {"nextUser": "user-2"}    the next time the shop is asked who is logged on it says {"asked": true}
//   {"changeUser": true}      … and waits for this; {"userChanged": 500} says how much was logged by then
// At the end of its input it tells what was performed, kind by kind, and ends.
//
//   tallyfoot-shop --url U --events-count N --application A --output FILE [--user U] [--seed N]

static NSString* option(NSString* name, NSString* otherwise) {
    NSArray* arguments = [[NSProcessInfo processInfo] arguments];
    NSUInteger index = [arguments indexOfObject:name];
    BOOL isThere = index != NSNotFound && index + 1 < [arguments count];
    return isThere ? [arguments objectAtIndex:index + 1] : otherwise;
}

// The books go where standard output went; what the library shows there goes to a file.
static int takeStandardOutput(NSString* file) {
    int books = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
    int shown = open([file fileSystemRepresentation], O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (shown >= 0) {
        dup2(shown, STDOUT_FILENO);
        close(shown);
    }
    return books;
}

// As a mistake of the app's makes it: nobody catches the exception. What the system says of it is no error of the
// demo's.
static void crash(Ledger* ledger) {
    NSString* reason = @"The basket \"Weekend\" fell over";
    [ledger tell:@{@"crashing" : reason}];
    dup2(STDOUT_FILENO, STDERR_FILENO);
    [NSException raise:@"ShopException" format:@"%@", reason];
}

static void obey(NSDictionary* order, ShopUser* user, Visitor* visitor, Ledger* ledger) {
    if ([order objectForKey:@"log"]) {
        [user walkForRecords:[[order objectForKey:@"log"] integerValue]
            pauseMicroseconds:[[order objectForKey:@"pauseMicroseconds"] unsignedIntValue]];
        [ledger tell:@{@"done" : @"log"}];
    } else if ([order objectForKey:@"crash"]) {
        [ledger tellKindsAfter:[user secondsWalked]];
        crash(ledger);
    } else if ([order objectForKey:@"nextUser"]) {
        [visitor becomeNext:[order objectForKey:@"nextUser"]];
    } else if ([order objectForKey:@"changeUser"]) {
        [visitor change];
    }
}

int main(void) {
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    Ledger* ledger = [[Ledger alloc] initWithDescriptor:takeStandardOutput(option(@"--output", @"/dev/null"))];
    Visitor* visitor = [[Visitor alloc] initWithLedger:ledger name:option(@"--user", @"user-1")];
    NSInteger eventsCount = [option(@"--events-count", @"100") integerValue];

    Tallyfoot.environment.uploadPath = option(@"--url", @"");
    Tallyfoot.appInfo = [[[ApplicationInfo alloc] initWithAppName:option(@"--application", @"Shop")
                                                            appId:@"shop-1"
                                                          bizArea:@"Retail"
                                                        bizAreaId:@"R-7"] autorelease];
    [Tallyfoot configure:[[[UploadConfiguration alloc] initWithSeconds:3600 eventsCount:eventsCount] autorelease]
                ignoreClasses:@[ @"UIPageControl" ]
        authenticationClosure:^{
          return [[[Authentication alloc] initWithUserId:[visitor name]
                                     authenticationToken:[visitor nextToken]
                                           userLogOnTime:nil] autorelease];
        }];

    ShopApp* app = [[ShopApp alloc] init];
    [UIApplication sharedApplication].delegate = app;
    [app application:[UIApplication sharedApplication] didFinishLaunchingWithOptions:nil];
    ShopUser* user = [[ShopUser alloc] initWithWindow:app.window
                                               ledger:ledger
                                                 seed:(uint64_t)[option(@"--seed", @"1") longLongValue]];
    [ledger tell:@{@"done" : @"start"}];

    char* line = NULL;
    size_t room = 0;
    ssize_t length;
    while ((length = getline(&line, &room, stdin)) > 0) {
        @autoreleasepool {
            NSData* data = [NSData dataWithBytes:line length:(NSUInteger)length];
            obey([NSJSONSerialization JSONObjectWithData:data options:0 error:NULL], user, visitor, ledger);
        }
    }
    free(line);
    [ledger tellKindsAfter:[user secondsWalked]];
    [user release];
    [app release];
    [visitor release];
    [ledger release];
    [pool release];
    return 0;
}
