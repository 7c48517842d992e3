// Classes of which only the name and the ancestry are known outside of UIKit.
#import "UIKitPrivate.h"

#define NAMED(Name, Ancestor)                                                                                          \
    @interface Name : Ancestor                                                                                         \
    @end                                                                                                               \
    @implementation Name                                                                                               \
    @end

NAMED(UISplitViewController, UIViewController)
NAMED(UIInputWindowController, UIViewController)
NAMED(UICompatibilityInputViewController, UIViewController)
NAMED(UIPageViewController, UIViewController)
NAMED(_UIAlertShimPresentingViewController, UIViewController)
NAMED(UIKeyboardCandidateGridCollectionViewController, UIViewController)
NAMED(UIApplicationRotationFollowingControllerNoTouches, UIViewController)
NAMED(_UIActivityGroupListViewController, UIViewController)
NAMED(_UIDocumentActivityViewController, UIViewController)
NAMED(_UIRemoteInputViewController, UIViewController)
NAMED(MFMailComposeInternalViewController, UIViewController)
NAMED(MFMailComposeRemoteViewController, UIViewController)
NAMED(MFMailComposePlaceholderViewController, UIViewController)
NAMED(_UIAlertControllerTextFieldViewController, UIViewController)
NAMED(_UIShareExtensionRemoteViewController, UIViewController)
NAMED(UIActivityViewController, UIViewController)
NAMED(UISearchDisplayController, UIViewController)

NAMED(UIWebTouchEventsGestureRecognizer, UIGestureRecognizer)
NAMED(_UISwitchInternalView, UIView)
NAMED(_UISwitchInternalViewNeueStyle1, UIView)
NAMED(UIWebBrowserView, UIView)
NAMED(_UIWebViewScrollView, UIScrollView)

NAMED(UIKeyboardCandidateBarCell, UICollectionViewCell)
NAMED(UIKeyboardCandidateGridCell, UICollectionViewCell)
NAMED(UIKeyboardEmojiCollectionViewCell, UICollectionViewCell)
NAMED(UIKBHandwritingCandidateViewCell, UICollectionViewCell)
NAMED(_UIAlertControllerCollectionViewCell, UICollectionViewCell)
NAMED(_UIActivityGroupActivityCell, UICollectionViewCell)
