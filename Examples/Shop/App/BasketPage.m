#import "BasketPage.h"

#import "PaymentPage.h"
#import "Storyboard.h"

@implementation BasketPage

- (instancetype)initWithBasket:(Basket*)basket {
    if ((self = [super init])) {
        self.navigationItem.title = @"Basket";
        self.tabBarItem.title = @"Basket";
        _basket = [basket retain];
    }
    return self;
}

- (void)dealloc {
    [_basket release];
    [_table release];
    [super dealloc];
}

- (void)viewDidLoad {
    [super viewDidLoad];
    self.navigationItem.leftBarButtonItem =
        [[[UIBarButtonItem alloc] initWithBarButtonSystemItem:UIBarButtonSystemItemTrash
                                                       target:self
                                                       action:@selector(askToEmpty:)] autorelease];
    self.navigationItem.rightBarButtonItem = [[[UIBarButtonItem alloc] initWithTitle:@"Pay"
                                                                               style:UIBarButtonItemStyleDone
                                                                              target:self
                                                                              action:@selector(pay:)] autorelease];
    _table = [[UITableView alloc] initWithFrame:CGRectMake(0, 0, 320, 440)];
    _table.accessibilityIdentifier = @"basket";
    _table.dataSource = self;
    _table.delegate = self;
    [self.view addSubview:_table];
    [Storyboard dress:self];
}

- (void)viewWillAppear:(BOOL)animated {
    [super viewWillAppear:animated];
    [_table reloadData];
}

- (NSInteger)tableView:(UITableView*)tableView numberOfRowsInSection:(NSInteger)section {
    (void)tableView;
    (void)section;
    return (NSInteger)[_basket.lines count];
}

- (UITableViewCell*)tableView:(UITableView*)tableView cellForRowAtIndexPath:(NSIndexPath*)indexPath {
    UITableViewCell* cell = [tableView dequeueReusableCellWithIdentifier:@"Line"];
    if (!cell) {
        cell = [[[UITableViewCell alloc] initWithStyle:UITableViewCellStyleDefault
                                       reuseIdentifier:@"Line"] autorelease];
    }
    cell.textLabel.text = [[_basket.lines objectAtIndex:(NSUInteger)[indexPath row]] name];
    return cell;
}

- (UISwipeActionsConfiguration*)tableView:(UITableView*)tableView
    trailingSwipeActionsConfigurationForRowAtIndexPath:(NSIndexPath*)indexPath {
    Basket* basket = _basket;
    UIContextualActionHandler remove = ^(UIContextualAction* action, UIView* view, void (^done)(BOOL)) {
      (void)action;
      (void)view;
      [basket removeLineAtIndex:(NSUInteger)[indexPath row]];
      [tableView deleteRowsAtIndexPaths:@[ indexPath ] withRowAnimation:0];
      done(YES);
    };
    return [UISwipeActionsConfiguration
        configurationWithActions:@[ [UIContextualAction contextualActionWithStyle:UIContextualActionStyleDestructive
                                                                            title:@"Delete"
                                                                          handler:remove] ]];
}

- (void)askToEmpty:(id)sender {
    (void)sender;
    Basket* basket = _basket;
    UITableView* table = _table;
    UIAlertController* alert = [UIAlertController alertControllerWithTitle:@"Empty the basket?"
                                                                   message:nil
                                                            preferredStyle:UIAlertControllerStyleAlert];
    [alert addAction:[UIAlertAction actionWithTitle:@"Keep" style:UIAlertActionStyleCancel handler:NULL]];
    [alert addAction:[UIAlertAction actionWithTitle:@"Empty"
                                              style:UIAlertActionStyleDestructive
                                            handler:^(UIAlertAction* action) {
                                              (void)action;
                                              [basket empty];
                                              [table reloadData];
                                            }]];
    [self presentViewController:alert animated:YES completion:NULL];
}

- (void)pay:(id)sender {
    (void)sender;
    [self presentViewController:[[[PaymentPage alloc] init] autorelease] animated:YES completion:NULL];
}
@end
