#include "ui/window/NavigationHistory.h"

namespace tallowmere {

NavigationHistory::NavigationHistory()
    : selection_(SidebarSelection::forCategory(SpecCategory::summary))
    , entries_{SidebarSelection::forCategory(SpecCategory::summary)}
{
}

void NavigationHistory::select(std::optional<SidebarSelection> selection)
{
    selection_ = selection;
    if (isHistoryNavigation_ || !selection || *selection == entries_[index_])
        return;
    entries_.resize(index_ + 1);
    entries_.append(*selection);
    index_ = static_cast<int>(entries_.size()) - 1;
}

std::optional<SidebarSelection> NavigationHistory::goBack()
{
    return canGoBack() ? step(-1) : std::nullopt;
}

std::optional<SidebarSelection> NavigationHistory::goForward()
{
    return canGoForward() ? step(1) : std::nullopt;
}

std::optional<SidebarSelection> NavigationHistory::step(int delta)
{
    isHistoryNavigation_ = true;
    index_ += delta;
    select(entries_[index_]);
    return selection_;
}

} // namespace tallowmere
