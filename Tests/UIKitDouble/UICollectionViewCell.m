#import <UIKit/UICollectionViewCell.h>

@implementation UICollectionViewCell
@synthesize contentView = _contentView, selected = _selected;

- (instancetype)initWithFrame:(CGRect)frame {
    if ((self = [super initWithFrame:frame])) {
        _contentView = [[UIView alloc] initWithFrame:CGRectMake(0, 0, frame.size.width, frame.size.height)];
        [self addSubview:_contentView];
    }
    return self;
}

- (void)dealloc {
    [_contentView release];
    [super dealloc];
}

- (void)prepareForReuse {
    _selected = NO;
}
@end
