#include "server/HTTPRequest.h"
#include "server/HTTPResponse.h"

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

using Status = RequestReader::Status;

const QByteArray kPost = "POST /mcp?session=1 HTTP/1.1\r\n"
                         "Host: 127.0.0.1\r\n"
                         "CONTENT-length:  5 \r\n"
                         "X-Empty:\r\n"
                         "no colon here\r\n"
                         "X-Twice: first\r\n"
                         "x-twice: second\r\n"
                         "\r\n"
                         "hello";

TEST(HTTPRequestParsing, WholeRequestGivesMethodPathHeadersAndBody)
{
    RequestReader reader;
    ASSERT_EQ(reader.append(kPost), Status::complete);
    const HTTPRequest request = reader.take();
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.path, "/mcp?session=1");
    EXPECT_EQ(request.body, "hello");
    EXPECT_EQ(request.header("content-length"), "5");
    EXPECT_EQ(request.header("host"), "127.0.0.1");
    EXPECT_EQ(request.header("x-empty"), "");
    EXPECT_EQ(request.header("x-twice"), "second"); // the last repetition wins
    EXPECT_EQ(request.headers.size(), 4u);            // the line without a colon is ignored
}

TEST(HTTPRequestParsing, AnySplitOfTheBytesGivesTheSameRequest)
{
    // Every cut point, including inside the blank line and inside the body.
    for (qsizetype cut = 1; cut < kPost.size(); ++cut) {
        RequestReader reader;
        EXPECT_EQ(reader.append(kPost.left(cut)), Status::incomplete) << cut;
        ASSERT_EQ(reader.append(kPost.mid(cut)), Status::complete) << cut;
        EXPECT_EQ(reader.take().body, "hello");
    }
    RequestReader byteByByte;
    Status status = Status::incomplete;
    for (const char c : kPost)
        status = byteByByte.append(&c, 1);
    EXPECT_EQ(status, Status::complete);
}

TEST(HTTPRequestParsing, ContentLengthRules)
{
    const auto bodyOf = [](const QByteArray& lengthHeader, const QByteArray& tail) {
        RequestReader reader;
        const Status status = reader.append("POST /mcp HTTP/1.1\r\n" + lengthHeader + "\r\n\r\n" + tail);
        return status == Status::complete ? reader.take().body : QByteArray("<incomplete>");
    };
    EXPECT_EQ(bodyOf("Content-Length: 3", "abcdef"), "abc"); // extra bytes ignored
    EXPECT_EQ(bodyOf("content-length: 0", "xyz"), "");
    EXPECT_EQ(bodyOf("X-Other: 1", "xyz"), "");                // missing counts as 0
    EXPECT_EQ(bodyOf("Content-Length: -4", "xyz"), "");        // not a non-negative integer
    EXPECT_EQ(bodyOf("Content-Length: 4x", "xyz"), "");
    EXPECT_EQ(bodyOf("Content-Length: 1 2", "xyz"), "");
    EXPECT_EQ(bodyOf("Content-Length: 99999999999999999999999", "xyz"), "");
    EXPECT_EQ(bodyOf("Content-Length: 4", "xyz"), "<incomplete>");

    EXPECT_EQ(parseContentLength("0012"), 12);
    EXPECT_EQ(parseContentLength(""), 0);
    EXPECT_EQ(parseContentLength("\u0661"), 0); // digits of other scripts are not decimal here
}

TEST(HTTPRequestParsing, RequestLineNeedsTwoWordsAndKeepsCase)
{
    RequestReader lower;
    ASSERT_EQ(lower.append("get   /stats\r\n\r\n"), Status::complete);
    const HTTPRequest request = lower.take();
    EXPECT_EQ(request.method, "get");
    EXPECT_EQ(request.path, "/stats");

    for (const QByteArray& head : {QByteArray("GET\r\n\r\n"), QByteArray("\r\n\r\n"), QByteArray("   \r\nHost: x\r\n\r\n")}) {
        RequestReader reader;
        EXPECT_EQ(reader.append(head), Status::malformed) << head.constData();
    }
}

TEST(HTTPRequestParsing, HeadThatIsNotUTF8IsRefused)
{
    RequestReader reader;
    EXPECT_EQ(reader.append("GET /st\xFF\xFEts HTTP/1.1\r\n\r\n"), Status::malformed);
    RequestReader utf8;
    ASSERT_EQ(utf8.append("GET /caf\xC3\xA9 HTTP/1.1\r\n\r\n"), Status::complete);
    EXPECT_EQ(utf8.take().path, QStringLiteral("/café"));
}

TEST(HTTPRequestParsing, LimitsBoundTheBuffer)
{
    const RequestLimits limits{64, 10};
    RequestReader endless(limits);
    EXPECT_EQ(endless.append("GET / HTTP/1.1\r\nX: " + QByteArray(40, 'a')), Status::incomplete);
    EXPECT_EQ(endless.append(QByteArray(40, 'a')), Status::headTooLarge);
    EXPECT_EQ(endless.append("\r\n\r\n"), Status::headTooLarge); // stays refused

    RequestReader bigBody(limits);
    EXPECT_EQ(bigBody.append("POST /mcp HTTP/1.1\r\nContent-Length: 11\r\n\r\n"), Status::bodyTooLarge);

    RequestReader fits(limits);
    EXPECT_EQ(fits.append("POST /mcp HTTP/1.1\r\nContent-Length: 10\r\n\r\n0123456789"), Status::complete);
}

TEST(HTTPResponseFraming, HeadHasTheFixedHeadersInOrder)
{
    const QByteArray body = "{\"x\" : \"\xC3\xA9\"}";
    EXPECT_EQ(frameResponse(HTTPResponse::json(body)),
              "HTTP/1.1 200 OK\r\n"
              "Content-Type: application/json\r\n"
              "Content-Length: 12\r\n"
              "Access-Control-Allow-Origin: *\r\n"
              "Connection: close\r\n"
              "\r\n" + body);
    EXPECT_TRUE(frameResponse(HTTPResponse::text("405 Method Not Allowed"))
                    .endsWith("Content-Type: text/plain\r\nContent-Length: 0\r\n"
                              "Access-Control-Allow-Origin: *\r\nConnection: close\r\n\r\n"));
}

} // namespace
} // namespace tallowmere
