#import "ProductPage.h"

#import "Storyboard.h"

static const NSInteger related = 6;

@implementation ProductPage

- (instancetype)initWithProduct:(Product*)product basket:(Basket*)basket {
    if ((self = [super init])) {
        self.title = product.name;
        _product = [product retain];
        _basket = [basket retain];
    }
    return self;
}

- (void)dealloc {
    [_product release];
    [_basket release];
    [super dealloc];
}

- (void)viewDidLoad {
    [super viewDidLoad];
    UIBarButtonItem* share = [[UIBarButtonItem alloc] initWithBarButtonSystemItem:UIBarButtonSystemItemAction
                                                                           target:self
                                                                           action:@selector(share:)];
    self.navigationItem.rightBarButtonItem = share;
    [share release];
    [self _addPicture];
    [self _addChoices];
    [self _addRelated];
    [Storyboard dress:self];
}

- (void)_addPicture {
    UIView* picture = [[UIView alloc] initWithFrame:CGRectMake(0, 0, 320, 140)];
    UILabel* caption = [[UILabel alloc] initWithFrame:CGRectMake(0, 120, 320, 20)];
    picture.accessibilityIdentifier = @"picture";
    caption.text = _product.name;
    [picture addSubview:caption];
    NSArray* kinds = @[
        [UITapGestureRecognizer class], [UIPinchGestureRecognizer class], [UISwipeGestureRecognizer class],
        [UIRotationGestureRecognizer class]
    ];
    for (Class kind in kinds) {
        UIGestureRecognizer* recognizer = [[kind alloc] initWithTarget:self action:@selector(look:)];
        [picture addGestureRecognizer:recognizer];
        [recognizer release];
    }
    [self.view addSubview:picture];
    [caption release];
    [picture release];
    UIPageControl* pages = [[UIPageControl alloc] initWithFrame:CGRectMake(0, 140, 320, 30)];
    pages.accessibilityIdentifier = @"pages";
    pages.numberOfPages = 4;
    [self _add:pages];
}

- (void)_addChoices {
    UISegmentedControl* size = [[UISegmentedControl alloc] initWithItems:@[ @"100 g", @"250 g", @"1 kg" ]];
    size.frame = CGRectMake(0, 170, 300, 32);
    size.accessibilityIdentifier = @"size";
    [self _add:size];
    UIStepper* quantity = [[UIStepper alloc] initWithFrame:CGRectMake(0, 210, 94, 32)];
    quantity.accessibilityIdentifier = @"quantity";
    quantity.value = 1;
    [self _add:quantity];
    UIButton* buy = [[UIButton alloc] initWithFrame:CGRectMake(120, 210, 100, 32)];
    buy.accessibilityIdentifier = @"buy";
    [buy setTitle:@"Buy" forState:UIControlStateNormal];
    [buy addTarget:self action:@selector(buy:) forControlEvents:UIControlEventTouchUpInside];
    [self.view addSubview:buy];
    [buy release];
    UIButton* wish = [[UIButton alloc] initWithFrame:CGRectMake(220, 210, 100, 32)];
    wish.accessibilityIdentifier = @"wish";
    [wish setTitle:@"Wish" forState:UIControlStateNormal];
    [wish addTarget:self action:@selector(choose:) forControlEvents:UIControlEventTouchUpInside];
    [self.view addSubview:wish];
    [wish release];
}

- (void)_addRelated {
    UICollectionViewFlowLayout* layout = [[UICollectionViewFlowLayout alloc] init];
    layout.itemSize = CGSizeMake(100, 90);
    UICollectionView* collection = [[UICollectionView alloc] initWithFrame:CGRectMake(0, 250, 320, 200)
                                                      collectionViewLayout:layout];
    collection.accessibilityIdentifier = @"related";
    [collection registerClass:[UICollectionViewCell class] forCellWithReuseIdentifier:@"Related"];
    collection.dataSource = self;
    collection.delegate = self;
    [self.view addSubview:collection];
    [collection release];
    [layout release];
}

- (void)_add:(UIControl*)control {
    [control addTarget:self action:@selector(choose:) forControlEvents:UIControlEventValueChanged];
    [self.view addSubview:control];
    [control release];
}

- (void)choose:(id)sender {
    (void)sender;
}
- (void)share:(id)sender {
    (void)sender;
}
- (void)look:(id)sender {
    (void)sender;
}

- (void)buy:(id)sender {
    (void)sender;
    [_basket add:_product];
}

- (NSInteger)collectionView:(UICollectionView*)collectionView numberOfItemsInSection:(NSInteger)section {
    (void)collectionView;
    (void)section;
    return related;
}

- (UICollectionViewCell*)collectionView:(UICollectionView*)collectionView
                 cellForItemAtIndexPath:(NSIndexPath*)indexPath {
    UICollectionViewCell* cell = [collectionView dequeueReusableCellWithReuseIdentifier:@"Related"
                                                                           forIndexPath:indexPath];
    UILabel* label = (UILabel*)[cell.contentView viewWithTag:1];
    if (!label) {
        label = [[[UILabel alloc] initWithFrame:CGRectMake(0, 70, 100, 20)] autorelease];
        label.tag = 1;
        [cell.contentView addSubview:label];
    }
    label.text = [[[Catalogue products] objectAtIndex:(NSUInteger)[indexPath item]] name];
    return cell;
}
@end
