#include "Tallyfoot/Capture/Selections.h"

#include "Tallyfoot/Capture/IgnoreLists.h"
#include "Tallyfoot/Capture/TextContainerSubviews.h"

#include <utility>

namespace tallyfoot {

namespace {

// The name that the host gave it, else one of its texts.
std::string nameOrText(const PlatformObject& object, Message textMessage) {
    auto label = object.customName();
    return label.empty() ? object.text(textMessage).value_or(std::string()) : label;
}

bool isPickerOrWebView(const PlatformObject& view) {
    const auto name = view.className();
    return name == IgnoreLists::pickerTableView || name == IgnoreLists::webViewScrollView;
}

} // namespace

void Selections::record(MethodBody callback, const PlatformObject& sender, const PlatformObject& item) const {
    switch (callback) {
    case MethodBody::tableViewSelection: return recordRow(sender, item);
    case MethodBody::collectionViewSelection: return recordItem(sender, item);
    case MethodBody::tabBarSelection: return recordTab(sender, item);
    case MethodBody::searchBarSearch: return recordSearchBar(sender, "Search");
    case MethodBody::searchBarBookmark: return recordSearchBar(sender, "Bookmark");
    case MethodBody::searchBarCancel: return recordSearchBar(sender, "Cancel");
    case MethodBody::searchBarResultsList: return recordSearchBar(sender, "ResultsList");
    case MethodBody::searchResultsUpdate: return recordSearchUpdate(sender);
    case MethodBody::endOfDeceleration: return recordScroll(sender);
    default: return;
    }
}

void Selections::recordRow(const PlatformObject& table, const PlatformObject& indexPath) const {
    if (table.className() == IgnoreLists::pickerTableView || !table.logEnabled()) return;
    if (isIgnored(ITFClass::tableView)) return;
    const auto cell = table.object(Message::cellForRowAtIndexPath, indexPath.reference());
    if (!cell.logEnabled()) return;
    auto label = cell.customName();
    if (label.empty()) label = TextContainerSubviews(cell).cellText();
    log({EventType::selection, ITFClass::tableView, "Cell Selected"}, std::move(label));
}

void Selections::recordItem(const PlatformObject& collection, const PlatformObject& indexPath) const {
    if (!collection.logEnabled() || isIgnored(ITFClass::collectionView)) return;
    const auto cell = collection.object(Message::cellForItemAtIndexPath, indexPath.reference());
    if (IgnoreLists::contains(IgnoreLists::collectionCells, cell.className()) || !cell.logEnabled()) return;
    auto label = cell.customName();
    if (label.empty()) label = TextContainerSubviews(cell).subviewsText();
    log({EventType::selection, ITFClass::collectionView, "Cell Selected"}, std::move(label));
}

void Selections::recordTab(const PlatformObject& tabBar, const PlatformObject& item) const {
    if (!tabBar.logEnabled() || !item.logEnabled() || isIgnored(ITFClass::tabBar)) return;
    log({EventType::action, ITFClass::tabBar, "Tap"}, nameOrText(item, Message::title));
}

void Selections::recordSearchBar(const PlatformObject& searchBar, const char* action) const {
    if (!searchBar.logEnabled() || isIgnored(ITFClass::searchBar)) return;
    log({EventType::action, ITFClass::searchBar, action}, nameOrText(searchBar, Message::text));
}

void Selections::recordSearchUpdate(const PlatformObject& controller) const {
    if (!controller.truth(Message::isActive) || !controller.logEnabled() || isIgnored(ITFClass::searchBar)) return;
    const auto searchBar = controller.object(Message::searchBar);
    if (!searchBar.logEnabled()) return;
    auto label = controller.customName();
    if (label.empty()) label = nameOrText(searchBar, Message::text);
    log({EventType::action, ITFClass::searchBar, "Search Updated"}, std::move(label));
}

void Selections::recordScroll(const PlatformObject& scrollView) const {
    if (!scrollView.logEnabled() || isIgnored(ITFClass::scrollView)) return;
    if (isPickerOrWebView(scrollView) || isPickerOrWebView(scrollView.object(Message::superview))) return;
    auto name = scrollView.customName();
    log({EventType::scroll, ITFClass::scrollView, "Scrolled"},
        name.empty() ? std::nullopt : std::optional(std::move(name)));
}

void Selections::log(const Account& account, std::optional<std::string> label) const {
    Attributes attributes;
    attributes.set(LogAttribute::evtCategory, facade_.category(account.itfClass));
    attributes.set(LogAttribute::evtAction, account.action);
    if (label) attributes.set(LogAttribute::evtLabel, std::move(*label));
    facade_.log(account.type, attributes);
}

} // namespace tallyfoot
