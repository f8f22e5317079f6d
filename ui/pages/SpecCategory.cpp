#include "ui/pages/SpecCategory.h"

#include "ui/components/Theme.h"

namespace tallowmere {

const QList<SpecCategory>& allSpecCategories()
{
    static const QList<SpecCategory> all{
        SpecCategory::summary,       SpecCategory::operatingSystem, SpecCategory::cpu,      SpecCategory::ram,
        SpecCategory::battery,       SpecCategory::motherboard,     SpecCategory::graphics, SpecCategory::storage,
        SpecCategory::opticalDrives, SpecCategory::audio,           SpecCategory::camera,   SpecCategory::peripherals,
        SpecCategory::network,
    };
    return all;
}

QString categoryTitle(SpecCategory category)
{
    switch (category) {
    case SpecCategory::summary: return QStringLiteral("Summary");
    case SpecCategory::operatingSystem: return QStringLiteral("Operating System");
    case SpecCategory::cpu: return QStringLiteral("CPU");
    case SpecCategory::ram: return QStringLiteral("RAM");
    case SpecCategory::battery: return QStringLiteral("Battery");
    case SpecCategory::motherboard: return QStringLiteral("Motherboard");
    case SpecCategory::graphics: return QStringLiteral("Graphics");
    case SpecCategory::storage: return QStringLiteral("Storage");
    case SpecCategory::opticalDrives: return QStringLiteral("Optical Drives");
    case SpecCategory::audio: return QStringLiteral("Audio");
    case SpecCategory::camera: return QStringLiteral("Camera");
    case SpecCategory::peripherals: return QStringLiteral("Peripherals");
    case SpecCategory::network: return QStringLiteral("Network");
    }
    return {};
}

QString categoryIcon(SpecCategory category)
{
    switch (category) {
    case SpecCategory::summary: return QStringLiteral("square.grid.2x2");
    case SpecCategory::operatingSystem: return QStringLiteral("desktopcomputer");
    case SpecCategory::cpu: return QStringLiteral("cpu");
    case SpecCategory::ram: return QStringLiteral("memorychip");
    case SpecCategory::battery: return QStringLiteral("battery.100percent");
    case SpecCategory::motherboard: return QStringLiteral("rectangle.connected.to.line.below");
    case SpecCategory::graphics: return QStringLiteral("display");
    case SpecCategory::storage: return QStringLiteral("internaldrive");
    case SpecCategory::opticalDrives: return QStringLiteral("opticaldisc");
    case SpecCategory::audio: return QStringLiteral("speaker.wave.2");
    case SpecCategory::camera: return QStringLiteral("camera");
    case SpecCategory::peripherals: return QStringLiteral("cable.connector");
    case SpecCategory::network: return QStringLiteral("network");
    }
    return {};
}

QString categorySection(SpecCategory category)
{
    const int index = static_cast<int>(category);
    if (index == 0)
        return QStringLiteral("Overview");
    if (index == 1)
        return QStringLiteral("System");
    return index <= 8 ? QStringLiteral("Hardware") : QStringLiteral("Devices");
}

const QStringList& sidebarSections()
{
    static const QStringList sections{QStringLiteral("System"), QStringLiteral("Hardware"), QStringLiteral("Devices")};
    return sections;
}

QColor categoryAccent(SpecCategory category, const Theme& theme)
{
    const bool dark = theme.dark;
    switch (category) {
    case SpecCategory::cpu: return theme.colors.cpu;
    case SpecCategory::ram: return theme.colors.memory;
    case SpecCategory::storage: return theme.colors.disk;
    case SpecCategory::network: return theme.colors.network;
    case SpecCategory::battery: return theme.colors.battery;
    case SpecCategory::summary: return theme.colors.accent;
    case SpecCategory::operatingSystem: return dark ? QColor(0x8e, 0x9c, 0xff) : QColor(0x4f, 0x5b, 0xd5);
    case SpecCategory::motherboard: return dark ? QColor(0x4f, 0xd1, 0xc5) : QColor(0x0f, 0x8a, 0x7e);
    case SpecCategory::graphics: return dark ? QColor(0xc0, 0x8c, 0xff) : QColor(0x85, 0x4d, 0xd6);
    case SpecCategory::opticalDrives: return dark ? QColor(0xff, 0xb3, 0x5c) : QColor(0xc2, 0x6a, 0x00);
    case SpecCategory::audio: return dark ? QColor(0xff, 0x85, 0xb0) : QColor(0xc7, 0x3e, 0x74);
    case SpecCategory::camera: return dark ? QColor(0x7e, 0xd9, 0x8a) : QColor(0x2e, 0x8b, 0x43);
    case SpecCategory::peripherals: return dark ? QColor(0xd9, 0xb2, 0x8c) : QColor(0x8c, 0x62, 0x39);
    }
    return theme.colors.accent;
}

} // namespace tallowmere
