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

TEST(PreferenceReaders, MapsSkipEntriesOfTheWrongTypeAndKeepTheRest)
{
    QTemporaryDir dir;
    const PreferencesStore store = storeWith(dir, R"({"v": {"a": 0.5, "b": "loud", "c": 1},
        "m": {"a": true, "b": 1, "c": false}, "i": 7.5, "o": [1]})");
    EXPECT_EQ(prefs::numberMap(store, QLatin1StringView("v")), (QHash<QString, double>{{"a", 0.5}, {"c", 1.0}}));
    EXPECT_EQ(prefs::flagMap(store, QLatin1StringView("m")), (QHash<QString, bool>{{"a", true}, {"c", false}}));
    EXPECT_TRUE(prefs::numberMap(store, QLatin1StringView("o")).isEmpty());
    EXPECT_TRUE(prefs::numberMap(store, QLatin1StringView("absent")).isEmpty());
    // Not an integer: the reader's own default applies.
    EXPECT_EQ(prefs::integerOr(store, QLatin1StringView("i"), 7), 7);
}
