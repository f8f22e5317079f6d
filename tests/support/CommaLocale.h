#pragma once

#include <QLocale>
#include <QString>

#include <string>

namespace tallowmere::test {

// Puts the whole process (C library and Qt) into de_DE.UTF-8, whose decimal separator is a
// comma, for the lifetime of the object. A machine without that locale gets it generated into a
// private folder with localedef. The previous locale comes back on destruction.
class ScopedCommaLocale {
public:
    ScopedCommaLocale();
    ~ScopedCommaLocale();
    ScopedCommaLocale(const ScopedCommaLocale&) = delete;
    ScopedCommaLocale& operator=(const ScopedCommaLocale&) = delete;

    // Empty when the locale is in force; otherwise why it could not be set.
    const QString& unavailable() const { return unavailable_; }

private:
    std::string previous_;
    QLocale previousDefault_;
    QString unavailable_;
};

} // namespace tallowmere::test
