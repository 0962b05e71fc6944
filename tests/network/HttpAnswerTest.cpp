#include "network/HttpAnswer.h"

#include "network/HttpDate.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace kestrant {

namespace {

/// The answer in a line: "200 body", "200 -" without the body, or "error".
std::string shown(const std::optional<HttpResult>& result) {
    if (!result)
        return "more";
    if (!*result)
        return "error";
    const auto& body = (*result)->body;
    return std::to_string((*result)->status) + " " + (body ? body->toStdString() : "-");
}

}  // namespace

TEST(HttpAnswer, IsReadHoweverItsBytesAreCut) {
    const QByteArray chunked = "HTTP/1.1 200 OK\r\nTransfer-Encoding: Chunked\r\n\r\n";
    const std::pair<QByteArray, const char*> cases[] = {
        {"HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nhi", "200 hi"},
        {"HTTP/1.1 200 OK\r\ncontent-length:2\r\nContent-Length: 2\r\n\r\nhi and more", "200 hi"},
        {"HTTP/1.0 200\nContent-Length: 0\n\n", "200 "},
        {"HTTP/1.1 404 Not Found\r\n\r\nuntil the end", "404 until the end"},
        {"HTTP/1.1 200 OK\r\nX: folded\r\n value: 1\r\nContent-Length: 1\r\n\r\nx", "200 x"},
        {"HTTP/1.1 204 No Content\r\nContent-Length: 5\r\n\r\n", "204 "},
        {"HTTP/1.1 304 Not Modified\r\n\r\n", "304 "},
        {"HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 103 Early\r\nContent-Length: 9\r\n\r\nHTTP/1.1 200 "
         "OK\r\nContent-Length: 1\r\n\r\nx",
         "200 x"},
        {chunked + "5\r\nhello\r\n6;x=y\r\n world\r\n0\r\nTrailer: 1\r\n\r\n", "200 hello world"},
        {chunked + "0A\r\n0123456789\r\n0\r\n\r\n", "200 0123456789"},
        {"", "error"},
        {"HTTP/1.1", "error"},
        {"HTTP/2 200 OK\r\n\r\n", "error"},
        {"HTTP/1.1 2xx OK\r\n\r\n", "error"},
        {"HTTP/1.1 20\r\n\r\n", "error"},
        {"HTTP/1.1 099 OK\r\n\r\n", "error"},
        {"HTTP/1.1 2000 OK\r\n\r\n", "error"},
        {"<html>\r\n\r\n", "error"},
        {"HTTP/1.1 101 Switching Protocols\r\n\r\n", "error"},
        {"HTTP/1.1 200 OK\r\nno colon\r\n\r\n", "error"},
        {"HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\nhi", "error"},
        {"HTTP/1.1 200 OK\r\nContent-Length: 3\r\nContent-Length: 4\r\n\r\nhihi", "error"},
        {"HTTP/1.1 200 OK\r\nContent-Length: -1\r\n\r\n", "error"},
        {"HTTP/1.1 200 OK\r\nContent-Length: 99999999999999999999\r\n\r\n", "error"},
        {"HTTP/1.1 200 OK\r\nContent-Length: \r\n\r\n", "error"},
        {"HTTP/1.1 200 OK\r\nTransfer-Encoding: gzip\r\n\r\n", "error"},
        {chunked + "5\r\nhello", "error"},
        {chunked + "5\r\nhello\r\n", "error"},
        {chunked + "5\r\nhello!\r\n0\r\n\r\n", "error"},
        {chunked + "-1\r\n\r\n", "error"},
        {chunked + "\r\n\r\n", "error"},
        {chunked + "fffffffffffffffff\r\n\r\n", "error"},
    };
    for (const auto& [bytes, expected] : cases) {
        for (const qsizetype size : {qsizetype(1), qsizetype(7), qsizetype(1000)}) {
            HttpAnswerReader reader(1000);
            std::optional<HttpResult> result;
            for (qsizetype at = 0; at < bytes.size() && !result; at += size)
                result = reader.take(QByteArrayView(bytes).sliced(at, std::min(size, bytes.size() - at)));
            EXPECT_EQ(shown(result ? *result : reader.end()), expected) << bytes.toStdString() << size;
        }
    }
}

TEST(HttpAnswer, EverythingReceivedCountsAgainstOneLimit) {
    const QByteArray answer = "HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nhi";
    const qsizetype interim = answer.indexOf("HTTP/1.1 200");
    for (qsizetype limit = 0; limit <= answer.size(); ++limit) {
        HttpAnswerReader reader(limit);
        const char* expected = limit == answer.size()      ? "200 hi"
                               : limit < answer.size() - 2 ? "error"
                                                           : "200 -";
        EXPECT_EQ(shown(reader.take(answer)), expected) << limit << " of which interim " << interim;
        EXPECT_EQ(reader.received(), limit);
    }
}

TEST(HttpDate, IsInGmtInAllThreeForms) {
    const Instant now = *parseIso8601(u"2026-03-29T00:00:00Z");
    const std::pair<const char*, const char*> cases[] = {
        {"Sun, 06 Nov 1994 08:49:37 GMT", "1994-11-06T08:49:37Z"},
        {"Sun, 6 Nov 1994 08:49:37 GMT", "1994-11-06T08:49:37Z"},
        {"Sunday, 06-Nov-94 08:49:37 GMT", "1994-11-06T08:49:37Z"},
        {"Sun Nov  6 08:49:37 1994", "1994-11-06T08:49:37Z"},
        {"Sun Nov 16 08:49:37 1994", "1994-11-16T08:49:37Z"},
        // 02:00 to 03:00 is left out in Paris on this day.
        {"Sun, 29 Mar 2026 02:30:00 GMT", "2026-03-29T02:30:00Z"},
        {"Sunday, 29-Mar-26 02:30:00 GMT", "2026-03-29T02:30:00Z"},
        {"sun, 29 mar 2026 02:30:00 gmt", "2026-03-29T02:30:00Z"},
        {"Tuesday, 01-Jan-76 00:00:00 GMT", "2076-01-01T00:00:00Z"},
        {"Tuesday, 01-Jan-77 00:00:00 GMT", "1977-01-01T00:00:00Z"},
        {"Sat, 29 Feb 2028 23:59:60 GMT", "2028-03-01T00:00:00Z"},
        {"Sun, 29 Feb 2026 12:00:00 GMT", nullptr},
        {"Sun, 29 Mar 2026 24:00:00 GMT", nullptr},
        {"Sun, 29 Mar 2026 12:60:00 GMT", nullptr},
        {"Sun, 00 Mar 2026 12:00:00 GMT", nullptr},
        {"Sun, 29 Mrz 2026 12:00:00 GMT", nullptr},
        {"Sun, 29 Mar 2026 12:00:00 PST", nullptr},
        {"Sun, 29 Mar 2026 12:00:00", nullptr},
        {"29 Mar 2026 12:00:00 GMT", nullptr},
        {"2026-03-29T12:00:00Z", nullptr},
        {"", nullptr},
    };
    for (const auto& [text, moment] : cases) {
        const auto read = httpDate(text, now);
        EXPECT_EQ(read ? toIso8601(*read) : QString(), QString(moment)) << text;
    }
}

}  // namespace kestrant
