#import "PaymentPage.h"

#import "Storyboard.h"

@implementation PaymentPage

- (instancetype)init {
    if ((self = [super init])) self.title = @"Payment";
    return self;
}

- (void)viewDidLoad {
    [super viewDidLoad];
    UITextField* number = [[UITextField alloc] initWithFrame:CGRectMake(0, 0, 320, 40)];
    number.accessibilityIdentifier = @"card";
    [number addTarget:self action:@selector(typed:) forControlEvents:UIControlEventEditingChanged];
    [self.view addSubview:number];
    [number release];
    UIButton* pin = [[UIButton alloc] initWithFrame:CGRectMake(0, 50, 320, 40)];
    pin.accessibilityIdentifier = @"pin";
    [pin setTitle:@"7" forState:UIControlStateNormal];
    [pin addTarget:self action:@selector(typed:) forControlEvents:UIControlEventTouchUpInside];
    [self.view addSubview:pin];
    [pin release];
    UIButton* done = [[UIButton alloc] initWithFrame:CGRectMake(0, 100, 320, 40)];
    done.accessibilityIdentifier = @"done";
    [done setTitle:@"Done" forState:UIControlStateNormal];
    [done addTarget:self action:@selector(leave:) forControlEvents:UIControlEventTouchUpInside];
    [self.view addSubview:done];
    [done release];
    [Storyboard dress:self];
}

- (void)typed:(id)sender {
    (void)sender;
}

- (void)leave:(id)sender {
    (void)sender;
    [self dismissViewControllerAnimated:YES completion:NULL];
}
@end
