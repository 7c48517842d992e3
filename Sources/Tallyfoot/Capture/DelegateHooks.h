#pragma once

#include "Tallyfoot/Capture/CapturePlatform.h"
#include "Tallyfoot/Capture/Interception.h"
#include "Tallyfoot/Capture/MethodBody.h"
#include "Tallyfoot/Platform/Exclusive.h"

#include <array>
#include <cstddef>
#include <set>
#include <utility>

namespace tallyfoot {

// The callbacks of delegates: intercepted in a delegate's class when it is set, and passed on to the
// host's own implementation when they arrive.
class DelegateHooks {
public:
    struct Callback {
        MethodBody setter; // the exchanged setter that brings the delegate
        MethodBody body;
        const char* original;
        const char* renamed;
        const char* types;
        std::size_t arguments;
    };

    static constexpr std::array<Callback, 9> all{{
        {MethodBody::tableViewDelegate, MethodBody::tableViewSelection,
         "tableView:didSelectRowAtIndexPath:", "orig_tableView:didSelectRowAt:", "v@:@i@", 2},
        {MethodBody::collectionViewSource, MethodBody::collectionViewSelection,
         "collectionView:didSelectItemAtIndexPath:", "orig_collectionView:didSelectItemAt:", "v@:@i@", 2},
        {MethodBody::tabBarDelegate, MethodBody::tabBarSelection,
         "tabBar:didSelectItem:", "orig_tabBar:didSelect:", "v@:@@", 2},
        {MethodBody::searchBarDelegate, MethodBody::searchBarSearch,
         "searchBarSearchButtonClicked:", "orig_searchBarSearchButtonClicked:", "v@:@", 1},
        {MethodBody::searchBarDelegate, MethodBody::searchBarBookmark,
         "searchBarBookmarkButtonClicked:", "orig_searchBarBookmarkButtonClicked:", "v@:@", 1},
        {MethodBody::searchBarDelegate, MethodBody::searchBarCancel,
         "searchBarCancelButtonClicked:", "orig_searchBarCancelButtonClicked:", "v@:@", 1},
        {MethodBody::searchBarDelegate, MethodBody::searchBarResultsList,
         "searchBarResultsListButtonClicked:", "orig_searchBarResultsListButtonClicked:", "v@:@", 1},
        {MethodBody::searchControllerUpdater, MethodBody::searchResultsUpdate,
         "updateSearchResultsForSearchController:", "orig_updateSearchResultsFor:", "v@:@", 1},
        {MethodBody::scrollViewDelegate, MethodBody::endOfDeceleration,
         "scrollViewDidEndDecelerating:", "orig_scrollViewDidEndDecelerating:", "v@:@", 1},
    }};

    explicit DelegateHooks(const CapturePlatform& platform);

    // What the delegate's class can be told is told to the library first from now on.
    void intercept(MethodBody setter, ObjectRef self, ObjectRef delegate);

    // To the host's implementation, if there is one, or to the object that the delegate passes messages
    // on to. False if this is no call of the platform's but one that a handling under way makes, and so is
    // recorded with that one: to its superclass's, where it goes then, or to another delegate.
    bool forward(MethodBody body, ObjectRef delegate, ObjectRef sender, ObjectRef item);

private:
    struct Selectors {
        SelectorRef original;
        SelectorRef replacement;
        SelectorRef renamed;
    };

    void intercept(std::size_t place, ObjectRef delegate, ClassRef delegateClass);
    bool wasAdded(std::size_t place, ClassRef toClass) const;
    // From where on to look for what the delegate's callback was before: what its subclasses keep may be older.
    ClassRef firstLevel(std::size_t place, ObjectRef delegate) const;
    // Whether what was written for the class comes back to the library when it calls its superclass's.
    bool isInterceptedAbove(std::size_t place, ClassRef level) const;
    // Whether its class passes on messages that it has no method for, as proxies do.
    bool passesOn(ObjectRef delegate) const;

    const CapturePlatform& platform_;
    const Interception interception_;
    std::array<Selectors, all.size()> selectors_;                // a place for each callback
    Exclusive<std::set<std::pair<ClassRef, MethodBody>>> added_; // to classes that had no such method
};

} // namespace tallyfoot
