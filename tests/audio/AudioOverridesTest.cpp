#include "audio/AudioOverrides.h"

#include "core/PreferenceKeys.h"

#include <gtest/gtest.h>

#include <QJsonObject>
#include <QTemporaryDir>

using namespace tallowmere;

TEST(AudioOverrides, StoresClampedValuesAndIgnoresEntriesOfTheWrongKind)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("preferences.json"));
    {
        PreferencesStore store(path);
        store.setValue(keys::audioVolumeOverrides, QJsonObject{{"text", "loud"}, {"kept", 55.0}});
        store.setValue(keys::audioMuteOverrides, QJsonObject{{"number", 1}});
        AudioOverrides overrides(store);
        EXPECT_EQ(overrides.setVolume("a", 150), 100);
        EXPECT_EQ(overrides.setVolume("b", -5), 0);
        overrides.setVolume("c", 40);
        overrides.setMuted("m", true);
    }
    PreferencesStore store(path);
    AudioOverrides overrides(store);
    EXPECT_EQ(overrides.volume("a"), 100);
    EXPECT_EQ(overrides.volume("b"), 0);
    EXPECT_EQ(overrides.volume("c"), 40);
    EXPECT_EQ(overrides.volume("kept"), 55);
    // Wrong kinds count as missing but are not removed.
    EXPECT_FALSE(overrides.volume("text").has_value());
    EXPECT_FALSE(overrides.muted("number").has_value());
    EXPECT_EQ(store.readObject(keys::audioVolumeOverrides).value.value("text").toString(), QStringLiteral("loud"));

    // A new application keeps the server's volume; a chosen one gets its gain, muted ones 0.
    EXPECT_FALSE(overrides.gain("new").has_value());
    EXPECT_FLOAT_EQ(*overrides.gain("c"), 0.4f);
    EXPECT_FLOAT_EQ(*overrides.gain("m"), 0.0f);
    overrides.setMuted("c", false);
    EXPECT_FLOAT_EQ(*overrides.gain("c"), 0.4f);
}
