// Every exchanged method, with another library that exchanges it, too, before us or after us.
#include "ObjC/CaptureFixture.h"

#include <objc/runtime.h>

#include <ostream>

namespace {

using namespace tallyfoot::testing;

struct Exchanged {
    const char* name;
    const char* className;
    const char* selector;
    IMP theirs; // sends "theirs" for what was there before
    const char* types;
    void (*use)(Probe*);
    const char* event;
    bool isPassedOn = true; // to what was there before us
};

void PrintTo(const Exchanged& row, std::ostream* stream) { *stream << row.name; }

int seen = 0;

template <class Result, class... Arguments>
Result theirs(id self, SEL, Arguments... arguments) {
    ++seen;
    const SEL former = sel_registerName("theirs:");
    return reinterpret_cast<Result (*)(id, SEL, Arguments...)>([self methodForSelector:former])(self, former,
                                                                                                arguments...);
}

class ObjCExchanges : public ObjCHost, public ::testing::WithParamInterface<Exchanged> {
protected:
    // As libraries do it, those that know of inherited methods.
    static void theyExchange() {
        const Class inClass = objc_lookUpClass(GetParam().className);
        const SEL selector = sel_registerName(GetParam().selector);
        const SEL own = sel_registerName("theirs:");
        class_addMethod(inClass, own, GetParam().theirs, GetParam().types);
        const Method original = class_getInstanceMethod(inClass, selector);
        if (class_addMethod(inClass, selector, GetParam().theirs, GetParam().types))
            method_setImplementation(class_getInstanceMethod(inClass, own), method_getImplementation(original));
        else
            method_exchangeImplementations(original, class_getInstanceMethod(inClass, own));
    }

    void use() {
        NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
        GetParam().use([Probe probe]);
        [pool drain];
        EXPECT_EQ(recorded(), GetParam().event);
    }
};

TEST_P(ObjCExchanges, AreMadeBehindALibraryThatCameFirst) {
    theyExchange();
    start();
    use();
    EXPECT_EQ(seen, GetParam().isPassedOn ? 1 : 0);
}

TEST_P(ObjCExchanges, BearALibraryThatComesLater) {
    start();
    theyExchange();
    use();
    EXPECT_EQ(seen, 1);
}

CGRect room(CGFloat height) { return CGRectMake(0, 0, 320, height); }

void tapALabel(Probe* probe) {
    UILabel* label = [[[UILabel alloc] initWithFrame:room(100)] autorelease];
    label.text = @"Offer";
    label.userInteractionEnabled = YES;
    [label addGestureRecognizer:[[[UITapGestureRecognizer alloc] initWithTarget:probe
                                                                         action:@selector(recognized:)] autorelease]];
    [Finger tap:label];
}

void tapAButton(Probe* probe) {
    UIButton* button = [UIButton buttonWithType:UIButtonTypeSystem];
    [button setTitle:@"Buy" forState:UIControlStateNormal];
    [button addTarget:probe action:@selector(action:) forControlEvents:UIControlEventTouchUpInside];
    [Finger tap:button];
}

void visitAPage(Probe*) {
    UIViewController* page = [[[UIViewController alloc] init] autorelease];
    page.title = @"Page";
    [page viewWillAppear:NO];
    [page viewWillDisappear:NO];
}

void scroll(Probe* probe) {
    UIScrollView* view = [[[UIScrollView alloc] initWithFrame:room(100)] autorelease];
    view.contentSize = CGSizeMake(320, 1000);
    view.delegate = (id)probe;
    [Finger flick:view by:CGSizeMake(0, -60)];
}

void chooseARow(Probe* probe) {
    UITableView* table = [[[UITableView alloc] initWithFrame:room(440)] autorelease];
    table.dataSource = probe;
    table.delegate = probe;
    [Finger tap:table at:CGPointMake(10, 50)];
}

void chooseATab(Probe* probe) {
    UITabBar* bar = [[[UITabBar alloc] initWithFrame:room(49)] autorelease];
    bar.items = @[ [[[UITabBarItem alloc] initWithTitle:@"Shop" image:nil tag:0] autorelease] ];
    bar.delegate = probe;
    [Finger tap:bar at:CGPointMake(100, 20)];
}

void chooseAnItem(Probe* probe) {
    UICollectionViewFlowLayout* layout = [[[UICollectionViewFlowLayout alloc] init] autorelease];
    layout.itemSize = CGSizeMake(100, 100);
    UICollectionView* collection = [[[UICollectionView alloc] initWithFrame:room(400)
                                                       collectionViewLayout:layout] autorelease];
    [collection registerClass:[UICollectionViewCell class] forCellWithReuseIdentifier:@"Item"];
    collection.dataSource = probe;
    collection.delegate = probe;
    [Finger tap:collection at:CGPointMake(150, 50)];
}

void search(Probe* probe) {
    UISearchBar* bar = [[[UISearchBar alloc] initWithFrame:CGRectZero] autorelease];
    bar.delegate = probe;
    [bar.searchTextField insertText:@"tea"];
    [bar.searchTextField insertText:@"\n"];
}

void updateASearch(Probe* probe) {
    UISearchController* search = [[[UISearchController alloc] initWithSearchResultsController:nil] autorelease];
    search.active = YES;
    search.searchResultsUpdater = probe;
    [search.searchBar.searchTextField insertText:@"t"];
}

const IMP setter = reinterpret_cast<IMP>(theirs<void, id>);
const IMP appearance = reinterpret_cast<IMP>(theirs<void, BOOL>);
const IMP initialiser = reinterpret_cast<IMP>(theirs<id, id, SEL>);
const IMP sender = reinterpret_cast<IMP>(theirs<BOOL, SEL, id, id, id>);

const Exchanged exchanges[]{
    {"InitWithTarget", "UIGestureRecognizer", "initWithTarget:action:", initialiser, "@@:@:", tapALabel,
     "gesture UITapGestureRecognizer Tap Gesture Offer"},
    {"SendAction", "UIApplication", "sendAction:to:from:forEvent:", sender, "C@::@@@", tapAButton,
     "action UIButton tap Buy"},
    {"ViewWillAppear", "UIViewController", "viewWillAppear:", appearance, "v@:C", visitAPage,
     "screen UIViewController Page", false},
    {"ViewWillDisappear", "UIViewController", "viewWillDisappear:", appearance, "v@:C", visitAPage,
     "screen UIViewController Page", false},
    {"ScrollViewDelegate", "UIScrollView", "setDelegate:", setter, "v@:@", scroll, "scroll UIScrollView Scrolled"},
    {"TableViewDelegate", "UITableView", "setDelegate:", setter, "v@:@", chooseARow,
     "selection UITableView Cell Selected Row 1"},
    {"TabBarDelegate", "UITabBar", "setDelegate:", setter, "v@:@", chooseATab, "action UITabBar Tap Shop"},
    {"CollectionViewSource", "UICollectionView", "setDataSource:", setter, "v@:@", chooseAnItem,
     "selection UICollectionView Cell Selected "},
    {"SearchBarDelegate", "UISearchBar", "setDelegate:", setter, "v@:@", search, "action UISearchBar Search tea"},
    {"SearchResultsUpdater", "UISearchController", "setSearchResultsUpdater:", setter, "v@:@", updateASearch,
     "action UISearchBar Search Updated t"},
};

INSTANTIATE_TEST_SUITE_P(All, ObjCExchanges, ::testing::ValuesIn(exchanges),
                         [](const auto& test) { return std::string(test.param.name); });

} // namespace
