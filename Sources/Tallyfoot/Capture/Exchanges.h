#pragma once

#include "Tallyfoot/Capture/CapturePlatform.h"
#include "Tallyfoot/Capture/Interception.h"
#include "Tallyfoot/Capture/MethodBody.h"

#include <array>

namespace tallyfoot {

// Which of the library's methods go where, and which of them take the place of the platform's.
class Exchanges {
public:
    struct Exchange {
        const char* className;
        const char* original;
        MethodBody replacement;
    };

    // In the order in which they are made.
    static constexpr std::array<Exchange, 10> all{{
        {"UIGestureRecognizer", "initWithTarget:action:", MethodBody::initWithTarget},
        {"UIApplication", "sendAction:to:from:forEvent:", MethodBody::sendAction},
        {"UIViewController", "viewWillAppear:", MethodBody::viewWillAppear},
        {"UIViewController", "viewWillDisappear:", MethodBody::viewWillDisappear},
        {"UIScrollView", "setDelegate:", MethodBody::scrollViewDelegate},
        {"UITableView", "setDelegate:", MethodBody::tableViewDelegate},
        {"UITabBar", "setDelegate:", MethodBody::tabBarDelegate},
        {"UICollectionView", "setDataSource:", MethodBody::collectionViewSource},
        {"UISearchBar", "setDelegate:", MethodBody::searchBarDelegate},
        {"UISearchController", "setSearchResultsUpdater:", MethodBody::searchControllerUpdater},
    }};

    explicit Exchanges(const CapturePlatform& platform) : platform_(platform), interception_(platform) {}

    void addMethods() const; // to the classes that there are; those that have them keep them
    void exchange() const;

private:
    void add(MethodBody body, const char* className) const;

    const CapturePlatform& platform_;
    const Interception interception_;
};

} // namespace tallyfoot
