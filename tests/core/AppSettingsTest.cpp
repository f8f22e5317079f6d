#include "core/AppSettings.h"
#include "core/PreferenceKeys.h"
#include "core/PreferencesStore.h"

#include "tests/support/TestSupport.h"

#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace tallowmere;

namespace {
struct AppSettingsTest : ::testing::Test {
    QTemporaryDir dir;
    QString path() const { return dir.path() + QStringLiteral("/preferences.json"); }
    void store(const QByteArray& json) { test::writeFile(dir.path(), QStringLiteral("preferences.json"), json); }
};
} // namespace

TEST_F(AppSettingsTest, RecordingFlagAcceptsBooleansAndNumbersOnly)
{
    const std::pair<QByteArray, bool> cases[] = {
        {R"({"networkRecordingEnabled": false})", false},
        {R"({"networkRecordingEnabled": 0})", false},
        {R"({"networkRecordingEnabled": 1})", true},
        {R"({"networkRecordingEnabled": "NO"})", true},
        {R"({"networkRecordingEnabled": null})", true},
        {R"({})", true},
    };
    for (const auto& [json, expected] : cases) {
        store(json);
        PreferencesStore prefs(path());
        EXPECT_EQ(AppSettings(prefs).networkRecordingEnabled(), expected) << json.constData();
    }
    // The other two switches are off unless a Boolean says otherwise.
    store(R"({"menuBarEnabled": 1, "localServerEnabled": "YES"})");
    PreferencesStore prefs(path());
    AppSettings settings(prefs);
    EXPECT_FALSE(settings.menuBarEnabled());
    EXPECT_FALSE(settings.localServerEnabled());
}

TEST_F(AppSettingsTest, SameValueIsWrittenButNotAnnounced)
{
    PreferencesStore prefs(path());
    AppSettings settings(prefs);
    QSignalSpy spy(&settings, &AppSettings::menuBarEnabledChanged);

    settings.setMenuBarEnabled(false);
    EXPECT_EQ(spy.count(), 0);
    EXPECT_EQ(PreferencesStore(path()).readBool(keys::menuBarEnabled).status, ReadStatus::found);

    settings.setMenuBarEnabled(true);
    settings.setLocalServerEnabled(true);
    settings.setNetworkRecordingEnabled(false);
    EXPECT_EQ(spy.count(), 1);

    PreferencesStore reread(path());
    AppSettings reloaded(reread);
    EXPECT_TRUE(reloaded.menuBarEnabled());
    EXPECT_TRUE(reloaded.localServerEnabled());
    EXPECT_FALSE(reloaded.networkRecordingEnabled());
}
