#pragma once
#import <UIKit/UIKit.h>

// Asks for what is nobody's business.
@interface PaymentPage : UIViewController
@end
