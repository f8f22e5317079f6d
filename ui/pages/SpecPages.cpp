#include "ui/pages/SpecPages.h"

#include <algorithm>

namespace tallowmere {

namespace {

const QString unknown = QStringLiteral("Unknown");
const QString noneDetected = QStringLiteral("None detected");

QString orUnknown(const std::optional<QString>& value)
{
    return value && !value->isEmpty() ? *value : unknown;
}

QString oneDecimal(double value)
{
    return QString::asprintf("%.1f", value);
}

// A device list: one item per name, or the empty state when there is none.
CardRecord deviceCard(const QString& title, const QString& icon, const QStringList& names, EmptyState empty)
{
    CardRecord card{.title = title, .icon = icon};
    for (const QString& name : names)
        card.items.append(ItemRecord{.name = name, .icon = icon});
    if (names.isEmpty())
        card.empty = std::move(empty);
    return card;
}

QString coresText(const SystemInfo& info)
{
    QString text = QString::number(info.cpuCores) + QStringLiteral(" cores");
    if (info.cpuFrequencyGHz)
        text += QStringLiteral(" \u00B7 ") + QString::asprintf("%.1f GHz", *info.cpuFrequencyGHz);
    return text;
}

PageRecord summaryPage(const PageInputs& in, PageRecord page)
{
    const SystemInfo& info = in.info;
    page.subtitle = info.displayModelName();
    page.tiles = {
        {QStringLiteral("CPU"), orUnknown(info.cpuBrand), coresText(info), QStringLiteral("cpu")},
        {QStringLiteral("Memory"), gigabytesText(info.memoryGB), QStringLiteral("Installed"), QStringLiteral("memorychip")},
        {QStringLiteral("Storage"),
         info.storageFreeGB ? QString::asprintf("%.1f GB free", *info.storageFreeGB) : unknown,
         info.storageTotalGB ? std::optional(QStringLiteral("of ") + gigabytesText(*info.storageTotalGB)) : std::nullopt,
         QStringLiteral("internaldrive")},
        {QStringLiteral("Graphics"), info.gpus.isEmpty() ? noneDetected : info.gpus.first(),
         info.gpus.isEmpty() ? std::nullopt : std::optional(graphicsSummary(info.gpus)), QStringLiteral("display")},
    };
    CardRecord platform{.title = QStringLiteral("Platform"), .icon = QStringLiteral("square.grid.2x2"),
                        .caption = QStringLiteral("Platform details")};
    platform.rows = {
        {QStringLiteral("Operating System"), info.osDisplayVersion()},
        {QStringLiteral("Model Identifier"), orUnknown(info.modelIdentifier)},
        {QStringLiteral("Board ID"), orUnknown(info.boardID)},
        {QStringLiteral("Processor"), orUnknown(info.cpuBrand)},
        {QStringLiteral("Memory"), gigabytesText(info.memoryGB)},
        {QStringLiteral("Uptime"), in.uptimeSeconds ? uptimeText(*in.uptimeSeconds) : unknown},
    };
    CardRecord graphics = deviceCard(QStringLiteral("Graphics"), QStringLiteral("display"), info.gpus,
                                     {QStringLiteral("display.trianglebadge.exclamationmark"),
                                      QStringLiteral("No GPU information available")});
    graphics.caption = QStringLiteral("Graphics hardware");
    page.cards = {platform, graphics};
    return page;
}

PageRecord operatingSystemPage(const PageInputs& in, PageRecord page)
{
    const SystemInfo& info = in.info;
    page.subtitle = info.osDisplayVersion();
    page.tiles = {{QStringLiteral("Kernel"), orUnknown(info.osKernelVersion), std::nullopt, QStringLiteral("desktopcomputer")},
                  {QStringLiteral("Computer Name"), orUnknown(info.osComputerName), std::nullopt, QStringLiteral("desktopcomputer")}};
    CardRecord card{.title = QStringLiteral("Operating System"), .icon = QStringLiteral("desktopcomputer")};
    card.rows = {
        {QStringLiteral("Version"), info.osMarketingVersion.isEmpty() ? info.osVersion : info.osMarketingVersion},
        {QStringLiteral("Computer Name"), orUnknown(info.osComputerName)},
        {QStringLiteral("Kernel"), orUnknown(info.osKernelVersion), true},
    };
    if (info.osBuildNumber)
        card.rows.append({QStringLiteral("Build"), *info.osBuildNumber, true});
    if (!info.osVersion.isEmpty())
        card.rows.append({QStringLiteral("System"), info.osVersion, true});
    page.cards = {card};
    return page;
}

PageRecord cpuPage(const PageInputs& in, PageRecord page)
{
    const SystemInfo& info = in.info;
    page.subtitle = orUnknown(info.cpuBrand);
    CardRecord card{.title = QStringLiteral("Processor"), .icon = QStringLiteral("cpu")};
    card.rows.append({QStringLiteral("Brand"), orUnknown(info.cpuBrand)});
    if (info.cpuPhysicalCores)
        card.rows.append({QStringLiteral("Physical Cores"), QString::number(*info.cpuPhysicalCores)});
    card.rows.append({QStringLiteral("Logical Cores"), QString::number(info.cpuCores)});
    if (info.cpuFrequencyGHz)
        card.rows.append({QStringLiteral("Frequency"), QString::asprintf("%.2f GHz", *info.cpuFrequencyGHz)});
    page.tiles = {{QStringLiteral("Processor"), orUnknown(info.cpuBrand), coresText(info), QStringLiteral("cpu")}};
    page.cards = {card};
    return page;
}

PageRecord ramPage(const PageInputs& in, PageRecord page)
{
    page.subtitle = gigabytesText(in.info.memoryGB) + QStringLiteral(" installed");
    page.tiles = {{QStringLiteral("Installed memory"), gigabytesText(in.info.memoryGB), std::nullopt,
                   QStringLiteral("memorychip")}};
    CardRecord card{.title = QStringLiteral("Memory"), .icon = QStringLiteral("memorychip")};
    card.rows = {{QStringLiteral("Installed"), gigabytesText(in.info.memoryGB)}};
    page.cards = {card};
    return page;
}

PageRecord batteryPage(const PageInputs& in, PageRecord page)
{
    const BatteryInfo battery = in.battery.value_or(BatteryInfo::noBattery());
    std::optional<QString> maxText;
    if (const auto max = battery.maximumCapacityPercent())
        maxText = QString::number(*max) + QStringLiteral("% max");
    const QString charge = battery.isPresent && battery.percentage ? QString::number(*battery.percentage) + u'%'
                                                                   : QStringLiteral("No battery");
    page.subtitle = battery.isPresent ? battery.statusLine() : QStringLiteral("No battery detected");
    page.tiles = {{QStringLiteral("Battery"), charge, maxText, QStringLiteral("battery.100percent")}};
    CardRecord power{.title = QStringLiteral("Power status"), .icon = QStringLiteral("bolt.fill")};
    power.rows = {{QStringLiteral("Status"), battery.isPresent ? battery.statusLine() : QStringLiteral("No battery detected")},
                  {QStringLiteral("Power Source"), battery.powerSource.value_or(unknown)}};
    page.cards = {power};
    return page;
}

PageRecord motherboardPage(const PageInputs& in, PageRecord page)
{
    const SystemInfo& info = in.info;
    page.subtitle = info.displayModelName();
    CardRecord card{.title = QStringLiteral("Motherboard"), .icon = QStringLiteral("rectangle.connected.to.line.below")};
    if (info.marketingName)
        card.rows.append({QStringLiteral("Model"), *info.marketingName});
    card.rows.append({QStringLiteral("Model Identifier"), orUnknown(info.modelIdentifier)});
    if (info.modelNumber)
        card.rows.append({QStringLiteral("Model Number"), *info.modelNumber});
    if (info.targetType)
        card.rows.append({QStringLiteral("Target Type"), *info.targetType});
    card.rows.append({QStringLiteral("Machine"), orUnknown(info.machine)});
    card.rows.append({QStringLiteral("Board ID"), orUnknown(info.boardID)});
    // Identifiers people should not share by accident stay masked until revealed.
    card.rows.append({QStringLiteral("Serial Number"), orUnknown(info.serialNumber), true, info.serialNumber.has_value()});
    card.rows.append({QStringLiteral("Hardware UUID"), orUnknown(info.platformUUID), true, info.platformUUID.has_value()});
    const QString model = info.displayModelName();
    page.tiles = {{QStringLiteral("Model"), model, info.machine != model ? info.machine : std::nullopt,
                   QStringLiteral("rectangle.connected.to.line.below")}};
    page.cards = {card};
    return page;
}

PageRecord graphicsPage(const PageInputs& in, PageRecord page)
{
    page.subtitle = graphicsSummary(in.info.gpus);
    page.tiles = {{QStringLiteral("Graphics"), graphicsSummary(in.info.gpus), std::nullopt, QStringLiteral("display")}};
    CardRecord card = deviceCard(QStringLiteral("Graphics Processors"), QStringLiteral("display"), in.info.gpus,
                                 {QStringLiteral("display.trianglebadge.exclamationmark"),
                                  QStringLiteral("No GPU information available")});
    card.caption = QStringLiteral("Graphics hardware");
    page.cards = {card};
    return page;
}

PageRecord storagePage(const PageInputs& in, PageRecord page)
{
    const SystemInfo& info = in.info;
    const auto total = info.storageTotalGB;
    const auto free = info.storageFreeGB;
    if (total && free) {
        const double used = std::max(0.0, *total - *free);
        const double fraction = *total > 0 ? std::clamp(used / *total, 0.0, 1.0) : 0.0;
        page.subtitle = QString::asprintf("%.1f GB free of %.1f GB", *free, *total);
        page.tiles = {{QStringLiteral("Storage"), QString::asprintf("%.1f / %.1f GB", used, *total),
                       QString::asprintf("of %.1f GB", *total) + QStringLiteral(" \u00B7 ")
                           + in.rootFileSystemType.value_or(unknown),
                       QStringLiteral("internaldrive")}};
        CardRecord usage{.title = QStringLiteral("Disk Usage"), .icon = QStringLiteral("chart.pie")};
        usage.rows = {{QStringLiteral("Used"), gigabytesText(used)},
                      {QStringLiteral("Free"), gigabytesText(*free)},
                      {QStringLiteral("Total"), gigabytesText(*total)}};
        usage.usedFraction = fraction;
        usage.barCaption = QString::asprintf("%.0f%%", fraction * 100) + QStringLiteral(" used");
        page.cards.append(usage);
    } else {
        page.subtitle = unknown;
        page.tiles = {{QStringLiteral("Storage"), unknown, std::nullopt, QStringLiteral("internaldrive")}};
    }
    CardRecord volumes{.title = QStringLiteral("Volumes"), .icon = QStringLiteral("externaldrive")};
    for (const VolumeInfo& volume : info.volumes) {
        ItemRecord item{.name = volume.name, .icon = QStringLiteral("internaldrive")};
        if (volume.totalGB && volume.freeGB && *volume.totalGB > 0)
            item.usedFraction = std::clamp((*volume.totalGB - *volume.freeGB) / *volume.totalGB, 0.0, 1.0);
        item.captions = {volume.freeGB ? QString::asprintf("%.1f GB free", *volume.freeGB) : unknown,
                         volume.totalGB ? QString::asprintf("%.1f GB total", *volume.totalGB) : unknown};
        volumes.items.append(item);
    }
    if (info.volumes.isEmpty())
        volumes.empty = EmptyState{QStringLiteral("externaldrive.badge.xmark"), QStringLiteral("No volumes found")};
    page.cards.append(volumes);
    return page;
}

PageRecord networkPage(const PageInputs& in, PageRecord page)
{
    CardRecord card{.title = QStringLiteral("Interfaces"), .icon = QStringLiteral("network")};
    for (const NetworkInterfaceInfo& interface : in.info.networkInterfaces) {
        ItemRecord item{.name = interface.name, .icon = QStringLiteral("network")};
        for (const QString& address : interface.addresses)
            item.rows.append({QStringLiteral("Address"), address, true});
        card.items.append(item);
    }
    if (card.items.isEmpty())
        card.empty = EmptyState{QStringLiteral("wifi.slash"), QStringLiteral("No interfaces found")};
    const auto count = in.info.networkInterfaces.size();
    page.subtitle = count == 1 ? QStringLiteral("1 interface") : QString::number(count) + QStringLiteral(" interfaces");
    page.cards = {card};
    return page;
}

} // namespace

QString gigabytesText(double gigabytes)
{
    return oneDecimal(gigabytes) + QStringLiteral(" GB");
}

QString uptimeText(qint64 seconds)
{
    const qint64 minutes = seconds / 60;
    const QString clock = QString::number((minutes % 1440) / 60) + u':' + QString::asprintf("%02lld", minutes % 60);
    if (seconds < 86400)
        return QStringLiteral("Up ") + clock;
    const qint64 days = seconds / 86400;
    return QStringLiteral("Up ") + QString::number(days) + QStringLiteral(" day") + (seconds < 172800 ? QString() : QStringLiteral("s"))
        + QStringLiteral(", ") + clock;
}

QString graphicsSummary(const QStringList& gpus)
{
    if (gpus.size() < 2)
        return QStringLiteral("Integrated graphics");
    return QString::number(gpus.size()) + QStringLiteral(" GPUs detected");
}

PageRecord makeSpecPage(SpecCategory category, const PageInputs& inputs)
{
    PageRecord page{.category = category, .title = categoryTitle(category)};
    switch (category) {
    case SpecCategory::summary: return summaryPage(inputs, page);
    case SpecCategory::operatingSystem: return operatingSystemPage(inputs, page);
    case SpecCategory::cpu: page.hasLiveCards = true; return cpuPage(inputs, page);
    case SpecCategory::ram: page.hasLiveCards = true; return ramPage(inputs, page);
    case SpecCategory::battery: page.hasLiveCards = true; return batteryPage(inputs, page);
    case SpecCategory::motherboard: return motherboardPage(inputs, page);
    case SpecCategory::graphics: return graphicsPage(inputs, page);
    case SpecCategory::storage: page.hasLiveCards = true; return storagePage(inputs, page);
    case SpecCategory::opticalDrives:
        page.cards = {deviceCard(QStringLiteral("Optical Drives"), QStringLiteral("opticaldisc"), inputs.info.opticalDrives,
                                 {QString(), noneDetected})};
        return page;
    case SpecCategory::audio:
        page.cards = {deviceCard(QStringLiteral("Audio Devices"), QStringLiteral("speaker.wave.2"), inputs.info.audioDevices,
                                 {QStringLiteral("speaker.slash"), noneDetected})};
        return page;
    case SpecCategory::camera: page.hasLiveCards = true; return page;
    case SpecCategory::peripherals:
        page.cards = {deviceCard(QStringLiteral("Peripherals"), QStringLiteral("cable.connector"), inputs.info.peripherals,
                                 {QString(), noneDetected})};
        return page;
    case SpecCategory::network: page.hasLiveCards = true; return networkPage(inputs, page);
    }
    return page;
}

} // namespace tallowmere
