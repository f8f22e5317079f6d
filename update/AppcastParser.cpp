#include "update/AppcastParser.h"

#include <QStringDecoder>
#include <QUrl>
#include <QXmlStreamReader>

namespace tallowmere {

namespace {

bool isValidUtf8(QByteArrayView bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString decoded = decoder.decode(bytes);
    return !decoder.hasError();
}

// The stream reader rejects a whole document over one badly encoded CDATA block; such a block
// is only left out, so the rest of the entry still counts. Bad bytes elsewhere stay an error.
QByteArray withoutUndecodableCdata(const QByteArray& document)
{
    static const QByteArray open = "<![CDATA[";
    static const QByteArray close = "]]>";
    QByteArray result;
    qsizetype from = 0;
    for (qsizetype start = document.indexOf(open); start >= 0; start = document.indexOf(open, from)) {
        const qsizetype end = document.indexOf(close, start + open.size());
        if (end < 0)
            break;
        const QByteArrayView content = QByteArrayView(document).sliced(start + open.size(), end - start - open.size());
        result += QByteArrayView(document).sliced(from, start - from);
        if (isValidUtf8(content))
            result += QByteArrayView(document).sliced(start, end + close.size() - start);
        from = end + close.size();
    }
    if (from == 0)
        return document;
    result += QByteArrayView(document).sliced(from);
    return result;
}

} // namespace

std::optional<qint64> parseBuildNumber(QStringView text)
{
    if (text.isEmpty())
        return std::nullopt;
    QStringView digits = text;
    if (digits.front() == u'+' || digits.front() == u'-')
        digits = digits.mid(1);
    // toLongLong alone would also take surrounding blanks; only sign and ASCII digits may appear.
    if (digits.isEmpty())
        return std::nullopt;
    for (QChar c : digits) {
        if (c < u'0' || c > u'9')
            return std::nullopt;
    }
    bool ok = false;
    const qint64 value = text.toLongLong(&ok, 10);
    if (!ok)
        return std::nullopt;
    return value;
}

AppcastParser::Result AppcastParser::parse(const QByteArray& document)
{
    AppcastParser parser;
    QXmlStreamReader reader(withoutUndecodableCdata(document));
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
        case QXmlStreamReader::StartElement:
            parser.elementStarted(reader.name());
            break;
        case QXmlStreamReader::Characters:
            // Plain text and CDATA blocks alike.
            parser.characters(reader.text());
            break;
        default:
            break;
        }
    }
    if (reader.hasError())
        return UpdateError::malformedFeed;
    return parser.finish();
}

void AppcastParser::elementStarted(QStringView name)
{
    current_ = name.toString();
}

void AppcastParser::characters(QStringView text)
{
    if (QString* field = fieldFor(current_))
        field->append(text);
}

QString* AppcastParser::fieldFor(QStringView name)
{
    if (name == u"version")
        return &version_;
    if (name == u"build")
        return &build_;
    if (name == u"url")
        return &url_;
    if (name == u"releaseNotes")
        return &notes_;
    if (name == u"minimumSystemVersion")
        return &minimumSystemVersion_;
    if (name == u"signature")
        return &signature_;
    return nullptr;
}

AppcastParser::Result AppcastParser::finish() const
{
    const std::optional<qint64> build = parseBuildNumber(build_.trimmed());
    const QString urlText = url_.trimmed();
    const QUrl url(urlText, QUrl::StrictMode);
    if (!build || urlText.isEmpty() || !url.isValid())
        return UpdateError::malformedFeed;

    AvailableUpdate update;
    update.version = version_.trimmed();
    update.build = *build;
    update.downloadURL = url;
    update.releaseNotes = notes_.trimmed();
    const QString minimum = minimumSystemVersion_.trimmed();
    if (!minimum.isEmpty())
        update.minimumSystemVersion = minimum;
    // A missing or unreadable signature is no reason to hide the offer; the archive it stands
    // for will simply not verify, and the user is told so.
    const auto signature = QByteArray::fromBase64Encoding(signature_.trimmed().toLatin1(),
                                                          QByteArray::AbortOnBase64DecodingErrors);
    if (signature)
        update.signature = signature.decoded;
    return update;
}

} // namespace tallowmere
