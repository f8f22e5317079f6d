#pragma once

#include <QColor>
#include <QList>
#include <QString>

namespace tallowmere {

struct Theme;

// The inventory pages of the sidebar, in sidebar order.
enum class SpecCategory {
    summary,
    operatingSystem,
    cpu,
    ram,
    battery,
    motherboard,
    graphics,
    storage,
    opticalDrives,
    audio,
    camera,
    peripherals,
    network,
};

const QList<SpecCategory>& allSpecCategories();
QString categoryTitle(SpecCategory category);
// The icon symbol of the sidebar row (see Icons).
QString categoryIcon(SpecCategory category);
// "Overview" (shown without a header), "System", "Hardware" or "Devices".
QString categorySection(SpecCategory category);
// The titled sidebar sections, in order.
const QStringList& sidebarSections();
// The page's colour: the live pages share their monitor's colour with the popover.
QColor categoryAccent(SpecCategory category, const Theme& theme);

// What the sidebar has selected: an inventory page or the settings page.
struct SidebarSelection {
    bool settings = false;
    SpecCategory category = SpecCategory::summary;

    static SidebarSelection forCategory(SpecCategory c) { return {false, c}; }
    static SidebarSelection settingsPage() { return {true, SpecCategory::summary}; }

    bool operator==(const SidebarSelection& other) const
    {
        return settings == other.settings && (settings || category == other.category);
    }
};

} // namespace tallowmere
