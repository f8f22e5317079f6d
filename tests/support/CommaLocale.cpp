#include "tests/support/CommaLocale.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>

#include <clocale>

namespace tallowmere::test {

namespace {

constexpr const char* kLocale = "de_DE.UTF-8";

bool commaInForce()
{
    return std::setlocale(LC_ALL, kLocale) != nullptr && std::localeconv()->decimal_point == std::string(",");
}

// Builds the locale once into the build folder, which glibc is pointed at through LOCPATH: no
// root and no change to the machine, and later test processes find it made. It is written
// beside its final place and renamed there, so programs running at once never see half of it.
QString generateLocale()
{
    const QString folder = QStringLiteral(TALLOWMERE_BINARY_DIR "/test-locales");
    const QString target = folder + u'/' + QString::fromLatin1(kLocale);
    if (!QDir(target).exists()) {
        QDir().mkpath(folder);
        QTemporaryDir scratch(folder + QStringLiteral("/making-XXXXXX"));
        const QString made = scratch.filePath(QString::fromLatin1(kLocale));
        QProcess localedef;
        localedef.start(QStringLiteral("localedef"),
                        {QStringLiteral("-i"), QStringLiteral("de_DE"), QStringLiteral("-f"), QStringLiteral("UTF-8"), made});
        if (!localedef.waitForFinished(120'000))
            return QStringLiteral("localedef could not run (package locales): %1").arg(localedef.errorString());
        // localedef also exits non-zero on mere warnings; the folder it writes is what counts.
        if (!QDir(made).exists())
            return QStringLiteral("localedef made no de_DE.UTF-8: %1")
                .arg(QString::fromLocal8Bit(localedef.readAllStandardError()).trimmed());
        QDir().rename(made, target); // fails only when another test program was quicker
    }
    qputenv("LOCPATH", QFile::encodeName(folder));
    return QString();
}

} // namespace

ScopedCommaLocale::ScopedCommaLocale()
    : previous_(std::setlocale(LC_ALL, nullptr))
{
    if (!commaInForce()) {
        unavailable_ = generateLocale();
        if (unavailable_.isEmpty() && !commaInForce())
            unavailable_ = QStringLiteral("de_DE.UTF-8 was generated but cannot be set");
    }
    if (unavailable_.isEmpty())
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
}

ScopedCommaLocale::~ScopedCommaLocale()
{
    std::setlocale(LC_ALL, previous_.c_str());
    QLocale::setDefault(previousDefault_);
}

} // namespace tallowmere::test
