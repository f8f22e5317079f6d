#include "app/settings/PreferencesStore.h"

#include <gtest/gtest.h>

TEST(Smoke, Builds) { SUCCEED(); }
