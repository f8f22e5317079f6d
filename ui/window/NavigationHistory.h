#pragma once

#include "ui/pages/SpecCategory.h"

#include <QList>

#include <optional>

namespace tallowmere {

// Browser-like back and forward over the sidebar selection. Selecting records the new entry
// (dropping any forward entries) unless it repeats the current one; a back or forward step
// changes the selection without recording it until finishHistoryStep() is called.
class NavigationHistory {
public:
    NavigationHistory();

    const std::optional<SidebarSelection>& selection() const { return selection_; }
    const QList<SidebarSelection>& entries() const { return entries_; }
    int index() const { return index_; }
    bool isHistoryNavigation() const { return isHistoryNavigation_; }

    bool canGoBack() const { return index_ >= 1; }
    bool canGoForward() const { return index_ < entries_.size() - 1; }

    // The selection changed (by the user, or by a history step in progress).
    void select(std::optional<SidebarSelection> selection);
    // Both return the selection stepped to, or nothing at the ends of the history.
    std::optional<SidebarSelection> goBack();
    std::optional<SidebarSelection> goForward();
    // Called once the selection change of a step has been handled.
    void finishHistoryStep() { isHistoryNavigation_ = false; }

private:
    std::optional<SidebarSelection> step(int delta);

    std::optional<SidebarSelection> selection_;
    QList<SidebarSelection> entries_;
    int index_ = 0;
    bool isHistoryNavigation_ = false;
};

} // namespace tallowmere
