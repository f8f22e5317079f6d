#include "server/HTTPRequest.h"

#include <QStringDecoder>
#include <QStringList>

#include <limits>

namespace tallowmere {

namespace {

constexpr char kHeadEnd[] = "\r\n\r\n";
constexpr qsizetype kHeadEndLength = 4;

bool isBlank(QChar c)
{
    return c == u' ' || c == u'\t';
}

QString trimBlanks(QStringView text)
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && isBlank(text[begin]))
        ++begin;
    while (end > begin && isBlank(text[end - 1]))
        --end;
    return text.mid(begin, end - begin).toString();
}

} // namespace

QString HTTPRequest::header(const QString& lowerCaseName) const
{
    const auto it = headers.find(lowerCaseName);
    return it == headers.end() ? QString() : it->second;
}

qsizetype parseContentLength(const QString& value)
{
    if (value.isEmpty())
        return 0;
    qsizetype length = 0;
    for (const QChar c : value) {
        if (c < u'0' || c > u'9')
            return 0;
        const int digit = c.unicode() - u'0';
        if (length > (std::numeric_limits<qsizetype>::max() - digit) / 10)
            return 0; // does not fit: not a usable integer
        length = length * 10 + digit;
    }
    return length;
}

RequestReader::Status RequestReader::append(const char* data, qsizetype size)
{
    if (status_ != Status::incomplete)
        return status_;
    buffer_.append(data, size);
    if (bodyStart_ >= 0)
        return status_ = checkBody();

    // Look for the end of the head only in what is new, plus the three bytes before it
    // in case the blank line was split between two reads.
    const qsizetype headEnd = buffer_.indexOf(kHeadEnd, searchFrom_);
    if (headEnd < 0) {
        searchFrom_ = std::max<qsizetype>(0, buffer_.size() - (kHeadEndLength - 1));
        if (buffer_.size() > limits_.maxHeadBytes)
            return status_ = Status::headTooLarge;
        return status_;
    }
    if (headEnd > limits_.maxHeadBytes)
        return status_ = Status::headTooLarge;
    status_ = parseHead(headEnd);
    if (status_ != Status::incomplete)
        return status_;
    return status_ = checkBody();
}

RequestReader::Status RequestReader::parseHead(qsizetype headEnd)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString head = decoder(QByteArrayView(buffer_.constData(), headEnd));
    if (decoder.hasError())
        return Status::malformed;

    const QStringList lines = head.split(QStringLiteral("\r\n"));
    QStringList words;
    for (const QString& word : lines.first().split(u' ', Qt::SkipEmptyParts))
        words += word.split(u'\t', Qt::SkipEmptyParts);
    if (words.size() < 2)
        return Status::malformed;
    request_.method = words[0];
    request_.path = words[1];

    for (qsizetype i = 1; i < lines.size(); ++i) {
        const QString& line = lines[i];
        const qsizetype colon = line.indexOf(u':');
        if (colon < 0)
            continue;
        request_.headers[trimBlanks(QStringView(line).left(colon)).toLower()] =
            trimBlanks(QStringView(line).mid(colon + 1));
    }

    bodyStart_ = headEnd + kHeadEndLength;
    bodyLength_ = parseContentLength(request_.header(QStringLiteral("content-length")));
    if (bodyLength_ > limits_.maxBodyBytes)
        return Status::bodyTooLarge;
    return Status::incomplete;
}

RequestReader::Status RequestReader::checkBody()
{
    if (buffer_.size() - bodyStart_ < bodyLength_)
        return Status::incomplete;
    return Status::complete;
}

HTTPRequest RequestReader::take()
{
    // Bytes after the announced body are ignored.
    request_.body = buffer_.mid(bodyStart_, bodyLength_);
    buffer_.clear();
    return std::move(request_);
}

} // namespace tallowmere
