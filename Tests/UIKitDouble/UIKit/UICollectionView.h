#pragma once
#import "UICollectionViewCell.h"
#import "UIScrollView.h"

@class UICollectionView;

@protocol UICollectionViewDataSource <NSObject>
- (NSInteger)collectionView:(UICollectionView*)collectionView numberOfItemsInSection:(NSInteger)section;
- (UICollectionViewCell*)collectionView:(UICollectionView*)collectionView
                 cellForItemAtIndexPath:(NSIndexPath*)indexPath;
@end

@protocol UICollectionViewDelegate <UIScrollViewDelegate>
@optional
- (void)collectionView:(UICollectionView*)collectionView didSelectItemAtIndexPath:(NSIndexPath*)indexPath;
@end

@interface UICollectionViewFlowLayout : NSObject {
    CGSize _itemSize;
}
@property(nonatomic) CGSize itemSize;
@end

// One section in lines, as many items in a line as fit. Every item has a cell. A touch that ends on an
// item selects it.
@interface UICollectionView : UIScrollView {
    id<UICollectionViewDataSource> _dataSource;
    UICollectionViewFlowLayout* _collectionViewLayout;
    NSMutableDictionary* _cellClasses;
    NSMutableDictionary* _reusableCells; // identifier -> cells
    NSMutableArray* _identifiers;        // of the cells, in their order
    NSMutableArray* _cells;
    BOOL _isLoaded;
}
@property(nonatomic, assign) id<UICollectionViewDelegate> delegate;
@property(nonatomic, assign) id<UICollectionViewDataSource> dataSource;
@property(nonatomic, readonly) UICollectionViewFlowLayout* collectionViewLayout;
- (instancetype)initWithFrame:(CGRect)frame collectionViewLayout:(UICollectionViewFlowLayout*)layout;
- (void)reloadData;
- (NSInteger)numberOfItemsInSection:(NSInteger)section;
- (void)registerClass:(Class)cellClass forCellWithReuseIdentifier:(NSString*)identifier;
- (id)dequeueReusableCellWithReuseIdentifier:(NSString*)identifier forIndexPath:(NSIndexPath*)indexPath;
- (UICollectionViewCell*)cellForItemAtIndexPath:(NSIndexPath*)indexPath;
- (NSIndexPath*)indexPathForItemAtPoint:(CGPoint)point;
@end
