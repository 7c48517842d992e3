#import "SettingsPage.h"

#import "Storyboard.h"

@implementation SettingsPage

- (instancetype)init {
    if ((self = [super init])) self.title = @"Settings";
    return self;
}

- (void)dealloc {
    _country.delegate = nil;
    _country.dataSource = nil;
    [_country release];
    [super dealloc];
}

- (void)viewDidLoad {
    [super viewDidLoad];
    [self _add:[[UISwitch alloc] initWithFrame:CGRectMake(0, 0, 51, 31)] as:@"notifications"];
    [self _add:[[UISwitch alloc] initWithFrame:CGRectMake(100, 0, 51, 31)] as:@"dark"];
    [self _add:[[UISlider alloc] initWithFrame:CGRectMake(0, 40, 200, 31)] as:@"volume"];
    UISlider* contrast = [[UISlider alloc] initWithFrame:CGRectMake(0, 80, 200, 31)];
    contrast.continuous = NO;
    contrast.maximumValue = 8;
    [self _add:contrast as:@"contrast"];
    UIDatePicker* delivery = [[UIDatePicker alloc] initWithFrame:CGRectMake(0, 120, 320, 150)];
    delivery.date = [NSDate dateWithTimeIntervalSince1970:1700000000];
    [self _add:delivery as:@"delivery"];
    _country = [[UIPickerView alloc] initWithFrame:CGRectMake(0, 280, 320, 160)];
    _country.accessibilityIdentifier = @"country";
    _country.dataSource = self;
    _country.delegate = self;
    [self.view addSubview:_country];
    UIView* about = [[UIView alloc] initWithFrame:CGRectMake(210, 0, 110, 110)];
    about.accessibilityIdentifier = @"about";
    UIGestureRecognizer* pan = [[UIPanGestureRecognizer alloc] initWithTarget:self action:@selector(changed:)];
    [about addGestureRecognizer:pan];
    UILabel* version = [[UILabel alloc] initWithFrame:CGRectMake(0, 0, 110, 20)];
    version.text = @"Version 1.0";
    [about addSubview:version];
    [self.view addSubview:about];
    [version release];
    [pan release];
    [about release];
    [Storyboard dress:self];
}

- (void)_add:(UIControl*)control as:(NSString*)identifier {
    control.accessibilityIdentifier = identifier;
    [control addTarget:self action:@selector(changed:) forControlEvents:UIControlEventValueChanged];
    [self.view addSubview:control];
    [control release];
}

- (void)changed:(id)sender {
    (void)sender;
}

- (NSInteger)numberOfComponentsInPickerView:(UIPickerView*)pickerView {
    (void)pickerView;
    return 1;
}

- (NSInteger)pickerView:(UIPickerView*)pickerView numberOfRowsInComponent:(NSInteger)component {
    (void)pickerView;
    (void)component;
    return 30;
}

- (NSString*)pickerView:(UIPickerView*)pickerView titleForRow:(NSInteger)row forComponent:(NSInteger)component {
    (void)pickerView;
    (void)component;
    return [NSString stringWithFormat:@"Country %ld", (long)row];
}

- (void)pickerView:(UIPickerView*)pickerView didSelectRow:(NSInteger)row inComponent:(NSInteger)component {
    (void)pickerView;
    (void)row;
    (void)component;
}
@end
