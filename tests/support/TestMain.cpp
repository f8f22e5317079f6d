#include <QCoreApplication>
#include <QTemporaryDir>

#include <gtest/gtest.h>

// Every test process gets its own configuration, data and runtime folders, so no test reads
// or writes the preferences or history of the person running the suite.
int main(int argc, char** argv)
{
    QTemporaryDir home;
    for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"})
        qputenv(name, (home.path() + u'/' + QString::fromLatin1(name)).toUtf8());
    // The runtime folder holds the one-copy-per-user lock: programs the tests start must not
    // meet a copy the person running the suite has open, nor each other across test programs.
    qputenv("XDG_RUNTIME_DIR", home.path().toUtf8());
    QCoreApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
