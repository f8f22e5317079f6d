#include "core/PreferenceReaders.h"

#include "tests/support/TestSupport.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace tallowmere;

namespace {
enum class Duration { tenMinutes, thirtyMinutes, infinite };

PreferencesStore storeWith(const QTemporaryDir& dir, const QByteArray& json)
{
    test::writeFile(dir.path(), QStringLiteral("p.json"), json);
    return PreferencesStore(dir.path() + QStringLiteral("/p.json"));
}
} // namespace

TEST(PreferenceReaders, WakeMinuteLandsOnAQuarterHour)
{
    const std::pair<qint64, int> cases[] = {{59, 45}, {14, 0}, {15, 15}, {44, 30}, {-5, 0}, {120, 45}};
    for (const auto& [stored, loaded] : cases)
        EXPECT_EQ(prefs::normalisedQuarterMinute(stored), loaded) << stored;
}

TEST(PreferenceReaders, ChoicesFallBackOnUnknownTextAndWrongTypes)
{
    QTemporaryDir dir;
    const auto names = {std::pair{QLatin1StringView("tenMinutes"), Duration::tenMinutes},
                        std::pair{QLatin1StringView("thirtyMinutes"), Duration::thirtyMinutes},
                        std::pair{QLatin1StringView("infinite"), Duration::infinite}};
    const std::pair<QByteArray, Duration> cases[] = {
        {R"({"d": "infinite"})", Duration::infinite},
        {R"({"d": "tenMinutes"})", Duration::tenMinutes},
        {R"({"d": "TenMinutes"})", Duration::thirtyMinutes},
        {R"({"d": "forever"})", Duration::thirtyMinutes},
        {R"({"d": 10})", Duration::thirtyMinutes},
        {R"({})", Duration::thirtyMinutes},
    };
    for (const auto& [json, expected] : cases) {
        const PreferencesStore store = storeWith(dir, json);
        EXPECT_EQ(prefs::choiceOr(store, QLatin1StringView("d"), names, Duration::thirtyMinutes), expected) << json.constData();
    }
}

TEST(PreferenceReaders, OneBadEntryEmptiesAWholeMap)
{
    QTemporaryDir dir;
    PreferencesStore good = storeWith(dir, R"({"v": {"a": 0.5, "b": 1}, "m": {"a": true}, "i": 7.5})");
    EXPECT_EQ(prefs::numberMap(good, QLatin1StringView("v")).value(QStringLiteral("a")), 0.5);
    EXPECT_EQ(prefs::numberMap(good, QLatin1StringView("v")).size(), 2);
    EXPECT_TRUE(prefs::flagMap(good, QLatin1StringView("m")).value(QStringLiteral("a")));
    // Not an integer: the reader's own default applies.
    EXPECT_EQ(prefs::integerOr(good, QLatin1StringView("i"), 7), 7);

    PreferencesStore bad = storeWith(dir, R"({"v": {"a": 0.5, "b": "loud"}, "m": {"a": true, "b": 1}})");
    EXPECT_TRUE(prefs::numberMap(bad, QLatin1StringView("v")).isEmpty());
    EXPECT_TRUE(prefs::flagMap(bad, QLatin1StringView("m")).isEmpty());
    EXPECT_TRUE(prefs::numberMap(bad, QLatin1StringView("absent")).isEmpty());
}
