#pragma once

#include "update/AvailableUpdate.h"
#include "update/UpdateError.h"

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <optional>
#include <variant>

namespace tallowmere {

// A decimal integer with an optional leading sign and nothing else.
std::optional<qint64> parseBuildNumber(QStringView text);

// Reads the update entry out of a feed document. What counts is the character data of the
// elements named version, build, url, releaseNotes, minimumSystemVersion and signature
// (base64) wherever they sit;
// text is appended to the field of the element opened last, so repeated elements concatenate.
class AppcastParser {
public:
    using Result = std::variant<AvailableUpdate, UpdateError>;

    static Result parse(const QByteArray& document);

    void elementStarted(QStringView name);
    void characters(QStringView text);
    Result finish() const;

private:
    QString* fieldFor(QStringView name);

    QString current_;
    QString version_;
    QString build_;
    QString url_;
    QString notes_;
    QString minimumSystemVersion_;
    QString signature_;
};

} // namespace tallowmere
