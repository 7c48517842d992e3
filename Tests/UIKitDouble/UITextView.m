#import <UIKit/UITextView.h>

@implementation UITextView
@synthesize text = _text;

- (void)dealloc {
    [_text release];
    [super dealloc];
}
@end
