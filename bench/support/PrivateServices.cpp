#include "bench/support/PrivateServices.h"

#include <QDir>
#include <QFile>
#include <QUrl>

namespace tallowmere::bench {

std::unique_ptr<AppServices> makePrivateServices(const QString& dir, bool switchesOff)
{
    if (switchesOff) {
        QFile prefs(QDir(dir).filePath(QStringLiteral("preferences.json")));
        if (prefs.open(QIODevice::WriteOnly))
            prefs.write(R"({"menuBarEnabled": false, "localServerEnabled": false, "networkRecordingEnabled": false})");
    }
    AppEnvironment options = AppEnvironment::forThisMachine();
    options.roots.config = dir;
    options.roots.data = dir;
    options.feedUrl = QUrl();
    options.serverPort = 0;
    return std::make_unique<AppServices>(options);
}

} // namespace tallowmere::bench
