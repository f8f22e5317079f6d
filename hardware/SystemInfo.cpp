#include "hardware/SystemInfo.h"

#include "hardware/SystemInfoReader.h"

#include <QHash>

namespace tallowmere {

namespace {

// Marketing names of machines whose firmware reports only a model identifier.
const QHash<QString, QString>& marketingNames()
{
    static const QHash<QString, QString> names{
        {"Mac14,2", R"(MacBook Air (13", 2022))"},  {"Mac14,7", R"(MacBook Pro (13", 2022))"},
        {"Mac14,9", R"(MacBook Pro (14", 2023))"},  {"Mac14,10", R"(MacBook Pro (14", 2023))"},
        {"Mac14,5", R"(MacBook Pro (16", 2023))"},  {"Mac14,6", R"(MacBook Pro (16", 2023))"},
        {"Mac14,15", R"(MacBook Air (15", 2023))"}, {"Mac15,3", R"(MacBook Pro (14", 2023))"},
        {"Mac15,6", R"(MacBook Pro (14", 2023))"},  {"Mac15,7", R"(MacBook Pro (16", 2023))"},
        {"Mac15,8", R"(MacBook Pro (16", 2023))"},  {"Mac15,9", R"(MacBook Pro (16", 2023))"},
        {"Mac15,10", R"(MacBook Pro (16", 2023))"}, {"Mac15,11", R"(MacBook Pro (16", 2023))"},
        {"Mac15,12", R"(MacBook Pro (14", 2023))"}, {"Mac15,13", R"(MacBook Air (15", 2024))"},
        {"Mac16,1", R"(MacBook Pro (14", 2024))"},  {"Mac16,5", R"(MacBook Pro (16", 2024))"},
        {"Mac16,6", R"(MacBook Pro (16", 2024))"},  {"Mac16,8", R"(MacBook Air (13", 2024))"},
        {"Mac16,10", R"(MacBook Air (15", 2024))"}, {"Mac16,12", R"(MacBook Pro (14", 2024))"},
        {"Mac16,13", R"(MacBook Pro (16", 2024))"},
    };
    return names;
}

} // namespace

SystemInfo SystemInfo::current()
{
    return SystemInfoReader().read();
}

SystemInfo SystemInfo::current(const SystemInfoSources& sources)
{
    return SystemInfoReader(sources).read();
}

QString SystemInfo::displayModelName() const
{
    if (marketingName && marketingName->contains(u'('))
        return *marketingName;
    if (!modelIdentifier)
        return marketingName.value_or(machine.value_or(QStringLiteral("This Computer")));
    if (const auto it = marketingNames().constFind(*modelIdentifier); it != marketingNames().constEnd())
        return *it;
    return marketingName.value_or(*modelIdentifier);
}

QString SystemInfo::osDisplayVersion() const
{
    if (!osBuildNumber)
        return osMarketingVersion;
    return osMarketingVersion + QStringLiteral(" \u00B7 Build ") + *osBuildNumber;
}

} // namespace tallowmere
