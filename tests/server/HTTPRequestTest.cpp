#include "server/HTTPRequest.h"
#include "server/HTTPResponse.h"

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

using Status = RequestReader::Status;

const QByteArray kPost = "POST /mcp?session=1 HTTP/1.1\r\nHost: 127.0.0.1\r\nCONTENT-length:  5 \r\n"
                         "no colon here\r\nX-Twice: first\r\nx-twice: second\r\n\r\nhello";

TEST(HTTPRequestParsing, AnySplitOfTheBytesGivesTheSameRequest)
{
    for (qsizetype cut = 1; cut <= kPost.size(); ++cut) {
        RequestReader reader;
        const Status first = reader.append(kPost.left(cut));
        ASSERT_EQ(cut == kPost.size() ? first : reader.append(kPost.mid(cut)), Status::complete) << cut;
        EXPECT_EQ(first, cut == kPost.size() ? Status::complete : Status::incomplete) << cut;
        const HTTPRequest request = reader.take();
        EXPECT_EQ(request.method, "POST");
        EXPECT_EQ(request.path, "/mcp?session=1");
        EXPECT_EQ(request.body, "hello");
        EXPECT_EQ(request.header("content-length"), "5");
        EXPECT_EQ(request.header("x-twice"), "second"); // the last repetition wins
        EXPECT_EQ(request.headers.size(), 3u);           // the line without a colon is ignored
    }
}

TEST(HTTPRequestParsing, ContentLengthThatIsNotANonNegativeIntegerCountsAsZero)
{
    const auto bodyOf = [](const QByteArray& length, const QByteArray& tail) {
        RequestReader reader;
        return reader.append("POST / HTTP/1.1\r\n" + length + "\r\n\r\n" + tail) == Status::complete
                   ? reader.take().body
                   : QByteArray("<incomplete>");
    };
    EXPECT_EQ(bodyOf("Content-Length: 3", "abcdef"), "abc"); // extra bytes ignored
    EXPECT_EQ(bodyOf("Content-Length: 4", "xyz"), "<incomplete>");
    for (const QByteArray& length : {QByteArray("X-None: 1"), QByteArray("Content-Length: -4"), QByteArray("Content-Length: 4x"),
                                     QByteArray("Content-Length: 1 2"), QByteArray("Content-Length: 99999999999999999999999"),
                                     QByteArray("Content-Length: \xD9\xA1")})
        EXPECT_EQ(bodyOf(length, "xyz"), "") << length.constData();
}

TEST(HTTPRequestParsing, HeadsThatCanNeverBeARequestOrGrowTooLarge)
{
    for (const QByteArray& head : {QByteArray("GET\r\n\r\n"), QByteArray("   \r\nHost: x\r\n\r\n"), QByteArray("GET /\xFF HTTP/1.1\r\n\r\n")}) {
        RequestReader reader;
        EXPECT_EQ(reader.append(head), Status::malformed) << head.constData();
    }
    const RequestLimits limits{64, 10};
    RequestReader endless(limits);
    EXPECT_EQ(endless.append("GET / HTTP/1.1\r\nX: " + QByteArray(40, 'a')), Status::incomplete);
    EXPECT_EQ(endless.append(QByteArray(40, 'a')), Status::headTooLarge);
    EXPECT_EQ(endless.append("\r\n\r\n"), Status::headTooLarge);
    RequestReader bigBody(limits);
    EXPECT_EQ(bigBody.append("POST / HTTP/1.1\r\nContent-Length: 11\r\n\r\n"), Status::bodyTooLarge);
    RequestReader fits(limits);
    EXPECT_EQ(fits.append("POST / HTTP/1.1\r\nContent-Length: 10\r\n\r\n0123456789"), Status::complete);
}

TEST(HTTPResponseFraming, FixedHeadersInOrderWithTheByteCount)
{
    HTTPResponse response = HTTPResponse::json("{\"x\" : \"\xC3\xA9\"}");
    response.headers = {{"X-One", "1"}};
    EXPECT_EQ(frameResponse(response),
              "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: 12\r\n"
              "Vary: Origin\r\nX-One: 1\r\nConnection: close\r\n\r\n{\"x\" : \"\xC3\xA9\"}");
    EXPECT_EQ(frameResponse({"204 No Content", "text/plain", {}}),
              "HTTP/1.1 204 No Content\r\nVary: Origin\r\nConnection: close\r\n\r\n");
}

} // namespace
} // namespace tallowmere
