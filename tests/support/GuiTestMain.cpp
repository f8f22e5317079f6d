#include <QApplication>
#include <QTemporaryDir>

#include <gtest/gtest.h>

// Widgets need a QApplication; the offscreen platform draws without a display.
int main(int argc, char** argv)
{
    QTemporaryDir home;
    for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"})
        qputenv(name, (home.path() + u'/' + QString::fromLatin1(name)).toUtf8());
    // The runtime folder holds the one-copy-per-user lock: programs the tests start must not
    // meet a copy the person running the suite has open, nor each other across test programs.
    qputenv("XDG_RUNTIME_DIR", home.path().toUtf8());
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
