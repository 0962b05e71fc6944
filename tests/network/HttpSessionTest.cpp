#include "network/HttpSession.h"

#include "network/EventLoop.h"
#include "network/HttpTestServer.h"
#include "network/TestCertificates.h"
#include "support/ManualScheduler.h"

#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <string>
#include <tuple>
#include <utility>

namespace kestrant {

namespace {

using namespace std::chrono_literals;
using Redirects = JsonPost::Redirects;

/// More than anybody waits for.
constexpr qint64 endless = 1LL << 30;
/// What the sockets of both sides buffer at most.
constexpr qint64 mostBuffered = 32LL * 1024 * 1024;

/// A session with a scheduler that stands still, and at most one exchange.
struct Client {
    explicit Client(const std::optional<QSslConfiguration>& tls = {})
        : session(std::in_place, scheduler, tls) {}

    void post(const QString& url, const QByteArray& body = "{}", Redirects redirects = Redirects::refused) {
        result.reset();
        exchange =
            session->post({QUrl(url), "Agent/1", body, 20s, 30s, redirects}, [this](const auto& outcome) {
                ++completions;
                result = outcome;
            });
    }
    [[nodiscard]] bool waitForResult() {
        return turnUntil([this] { return result.has_value(); });
    }

    ManualScheduler scheduler{Instant{}};
    std::optional<HttpSession> session;
    std::optional<HttpResult> result;
    int completions = 0;
    std::unique_ptr<HttpExchange> exchange;
};

}  // namespace

TEST(HttpSession, SendsTheBodyWithTheseHeadersAndNoOthers) {
    HttpTestServer server([](const auto&) { return Answer::status(200, "{\"ok\":true}"); });
    Client client;
    client.post(server.url() + "/v1/things", "{\"a\":1}");
    ASSERT_TRUE(client.waitForResult());

    ASSERT_TRUE(client.result->has_value());
    EXPECT_EQ((*client.result)->status, 200);
    EXPECT_EQ((*client.result)->body, QByteArray("{\"ok\":true}"));
    ASSERT_EQ(server.requests().size(), 1U);
    const RecordedRequest& request = server.requests().front();
    EXPECT_EQ(request.requestLine(), "POST /v1/things HTTP/1.1");
    EXPECT_EQ(request.body(), "{\"a\":1}");
    const std::map<std::string, std::string> expected{
        {"accept", "application/json"},
        {"accept-encoding", "identity"},
        {"connection", "close"},
        {"content-length", "7"},
        {"content-type", "application/json"},
        {"host", "127.0.0.1:" + std::to_string(server.serverPort())},
        {"user-agent", "Agent/1"}};
    EXPECT_EQ(request.headers(), expected);
}

TEST(HttpSession, EveryCompleteAnswerIsAnAnswerWhateverItsStatus) {
    for (const int status :
         {200, 204, 299, 300, 304, 399, 400, 401, 404, 407, 408, 429, 499, 500, 503, 599, 600, 999}) {
        HttpTestServer server([&](const auto&) {
            return Answer::status(
                status, status == 204 || status == 304 ? "" : "body",
                "WWW-Authenticate: Basic realm=\"x\"\r\nProxy-Authenticate: Basic realm=\"x\"\r\n"
                "Retry-After: 120\r\n");
        });
        Client client;
        client.post(server.url());
        ASSERT_TRUE(client.waitForResult()) << status;
        ASSERT_TRUE(client.result->has_value()) << status << client.result->error().description.toStdString();
        EXPECT_EQ((*client.result)->status, status);
        EXPECT_EQ((*client.result)->retryAfter, "120") << status;
        EXPECT_EQ(server.requests().size(), 1U) << status;
    }
}

TEST(HttpSession, RedirectsAreFollowedOnlyWhereThatIsAskedFor) {
    HttpTestServer target([](const auto&) { return Answer::status(200, "there"); });
    for (const auto& [status, again] :
         {std::pair(301, "GET /new?a=1 HTTP/1.1"), std::pair(302, "GET /new?a=1 HTTP/1.1"),
          std::pair(303, "GET /new?a=1 HTTP/1.1"), std::pair(307, "POST /new?a=1 HTTP/1.1"),
          std::pair(308, "POST /new?a=1 HTTP/1.1")}) {
        HttpTestServer server([&](const auto&) {
            return Answer::status(status, "", "Location: " + target.url().toLatin1() + "/new?a=1#part\r\n");
        });
        Client client;
        const auto sent = target.requests().size();
        client.post(server.url());
        ASSERT_TRUE(client.waitForResult()) << status;
        EXPECT_EQ(client.result->value().status, status);
        EXPECT_EQ(target.requests().size(), sent);

        client.post(server.url(), "{\"a\":1}", Redirects::followed);
        ASSERT_TRUE(client.waitForResult()) << status;
        EXPECT_EQ(client.result->value().body, QByteArray("there")) << status;
        ASSERT_EQ(target.requests().size(), sent + 1);
        const RecordedRequest& request = target.requests().back();
        EXPECT_EQ(request.requestLine(), again);
        EXPECT_EQ(request.body(), request.requestLine().startsWith("POST") ? "{\"a\":1}" : "");
    }
}

TEST(HttpSession, ARedirectThatLeadsNowhereGoodIsTheAnswer) {
    HttpTestServer target([](const auto&) { return Answer::status(200, "there"); });
    QByteArray location;
    const auto redirect = [&](const auto&) {
        return Answer::status(307, "here", "Location: " + location + "\r\n");
    };
    HttpTestServer open(redirect);
    HttpTestServer secure(redirect, serverIdentity("localhost"));
    struct Case {
        QString from;
        QByteArray to;
        std::size_t requests;
    };
    for (const Case& c : {Case{secure.url("localhost"), target.url().toLatin1(), 1},
                          Case{open.url(), "file:///etc/passwd", 1}, Case{open.url(), "ftp://localhost/", 1},
                          Case{open.url(), "", 1}, Case{open.url(), "http://", 1},
                          Case{open.url(), open.url().toLatin1(), 11}}) {
        location = c.to;
        const auto before = open.requests().size() + secure.requests().size();
        Client client(trusting("localhost"));
        client.post(c.from, "{}", Redirects::followed);
        ASSERT_TRUE(client.waitForResult());
        ASSERT_TRUE(client.result->has_value())
            << c.to.toStdString() << client.result->error().description.toStdString();
        EXPECT_EQ(client.result->value().status, 307) << c.to.toStdString();
        EXPECT_EQ(open.requests().size() + secure.requests().size() - before, c.requests)
            << c.to.toStdString();
    }
    EXPECT_TRUE(target.requests().empty());
    location = "/back";
    Client client(trusting("localhost"));
    open.setHandler([&](const auto&) {
        return Answer::status(308, "", "Location: " + secure.url("localhost").toLatin1() + "/up\r\n");
    });
    secure.setHandler([](const auto&) { return Answer::status(200, "safe"); });
    client.post(open.url(), "{}", Redirects::followed);
    ASSERT_TRUE(client.waitForResult());
    EXPECT_EQ(client.result->value().body, QByteArray("safe"));
}

TEST(HttpSession, ACookieIsNeverSentBack) {
    HttpTestServer server(
        [](const auto&) { return Answer::status(200, "", "Set-Cookie: id=1; Path=/\r\n"); });
    Client client;
    for (int round = 0; round < 2; ++round) {
        client.post(server.url());
        ASSERT_TRUE(client.waitForResult());
    }
    ASSERT_EQ(server.requests().size(), 2U);
    EXPECT_FALSE(server.requests().back().headers().contains("cookie"));
}

TEST(HttpSession, AnAnswerThatIsCutOffIsNone) {
    const QByteArray head = "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n";
    for (const QByteArray& part : {QByteArray(), QByteArray("HTTP/1.1 20"), head, head + "{\"ok\"",
                                   QByteArray("what is this\r\n\r\n")}) {
        HttpTestServer server([&](const auto&) { return Answer{part}; });
        Client client;
        client.post(server.url());
        ASSERT_TRUE(client.waitForResult()) << part.toStdString();
        EXPECT_FALSE(client.result->has_value()) << part.toStdString();
        EXPECT_EQ(client.completions, 1);
        EXPECT_EQ(server.requests().size(), 1U) << "sent again: " << part.toStdString();
    }
}

TEST(HttpSession, NobodyListeningIsATransportError) {
    QString url;
    {
        const HttpTestServer gone([](const auto&) { return Answer::silence(); });
        url = gone.url();
    }
    Client client;
    client.post(url);
    ASSERT_TRUE(client.waitForResult());
    EXPECT_FALSE(client.result->has_value());
}

TEST(HttpSession, WhateverAServerSendsWithoutEndIsCutOff) {
    const QByteArray ok = "HTTP/1.1 200 OK\r\n";
    struct Case {
        const char* what;
        Answer answer;
        bool hasStatus;
        Redirects redirects = Redirects::refused;
    };
    const auto stream = [](const QByteArray& head, const QByteArray& pattern) {
        return Answer{head, endless, Answer::Ending::close, pattern};
    };
    for (const Case& c : {
             Case{"a body", stream(ok + "Content-Length: 1073741824\r\n\r\n", "0"), true},
             Case{"a body without length", stream(ok + "\r\n", "0"), true},
             Case{"chunks", stream(ok + "Transfer-Encoding: chunked\r\n\r\n", "5\r\nhello\r\n"), true},
             Case{"a chunk size", stream(ok + "Transfer-Encoding: chunked\r\n\r\n", "0"), true},
             Case{"trailers", stream(ok + "Transfer-Encoding: chunked\r\n\r\n0\r\n", "A: b\r\n"), true},
             Case{"headers", stream(ok, "X-Header: value\r\n"), false},
             Case{"a header", stream(ok + "X-Header: ", "0"), false},
             Case{"a status line", stream("HTTP/1.1 200 ", "0"), false},
             Case{"interim answers", stream("", "HTTP/1.1 100 Continue\r\n\r\n"), false},
             Case{"noise", stream("", "0"), false},
             Case{"empty lines", stream("", "\n"), false},
         }) {
        for (const bool isSecure : {false, true}) {
            HttpTestServer server([&](const auto&) { return c.answer; },
                                  isSecure ? std::optional(serverIdentity("localhost")) : std::nullopt);
            Client client(trusting("localhost"));
            client.post(server.url("localhost"));
            ASSERT_TRUE(client.waitForResult()) << c.what;
            ASSERT_EQ(client.result->has_value(), c.hasStatus) << c.what;
            if (c.hasStatus) {
                EXPECT_EQ(client.result->value().status, 200) << c.what;
                EXPECT_FALSE(client.result->value().body.has_value()) << c.what;
            }
            EXPECT_TRUE(turnUntil([&] { return server.openConnections() == 0; })) << c.what;
            EXPECT_LT(server.paddingWritten(), mostBuffered) << c.what;
        }
    }
}

TEST(HttpSession, AnExchangeThatIsGivenUpEndsItsConnectionWhateverArrives) {
    for (const Answer& answer :
         {Answer::silence(),
          Answer{"HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n1", 0, Answer::Ending::keepOpen},
          Answer{"HTTP/1.1 200 OK\r\n", endless, Answer::Ending::keepOpen, "X-Header: value\r\n"}}) {
        enum class By { exchange, session, timeout };
        for (const By by : {By::exchange, By::session, By::timeout}) {
            HttpTestServer server([&](const auto&) { return answer; });
            Client client;
            client.post(server.url());
            ASSERT_TRUE(turnUntil([&] { return !server.requests().empty(); }));
            if (by == By::timeout)
                client.scheduler.advance(30s);
            client.exchange.reset();
            if (by == By::session)
                client.session.reset();
            EXPECT_TRUE(turnUntil([&] { return server.openConnections() == 0; }));
            EXPECT_EQ(client.completions, by == By::timeout ? 1 : 0);
            EXPECT_EQ(client.scheduler.pendingCount(), 0U);
            EXPECT_LT(server.paddingWritten(), mostBuffered);
        }
    }
}

TEST(HttpSession, SilenceEndsAfterTheIdleTimeout) {
    HttpTestServer server([](const auto&) { return Answer::silence(); });
    Client client;
    client.post(server.url());
    ASSERT_TRUE(turnUntil([&] { return !server.requests().empty(); }));
    client.scheduler.advance(20s - 1us);
    EXPECT_FALSE(client.result);
    client.scheduler.advance(1us);
    ASSERT_TRUE(client.result);
    EXPECT_FALSE(client.result->has_value());
}

TEST(HttpSession, ATrickleEndsAfterTheTotalTimeout) {
    HttpTestServer server([](const auto&) {
        return Answer{"HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n", 1, Answer::Ending::keepOpen};
    });
    Client client;
    client.post(server.url());
    ASSERT_TRUE(turnUntil([&] { return server.paddingWritten() == 1; }));
    client.scheduler.advance(19s);
    // Each byte that arrives restarts the idle time.
    ASSERT_TRUE(turnUntil([&] { return client.scheduler.pendingCount() == 2; }));
    client.scheduler.advance(11s);
    ASSERT_TRUE(client.result);
    EXPECT_FALSE(client.result->has_value());
}

TEST(HttpSession, OnlyATrustedCertificateForThisHostIsAnswered) {
    struct Case {
        const char* server;
        const char* trusted;
        bool reached;
    };
    for (const Case& c : {Case{"localhost", "localhost", true}, Case{"localhost", "elsewhere", false},
                          Case{"elsewhere", "elsewhere", false}}) {
        HttpTestServer server([](const auto&) { return Answer::status(200, "{}"); },
                              serverIdentity(c.server));
        Client client(trusting(c.trusted));
        client.post(server.url("localhost"));
        ASSERT_TRUE(client.waitForResult());
        EXPECT_EQ(client.result->has_value(), c.reached) << c.server << " trusting " << c.trusted;
        EXPECT_EQ(server.requests().size(), c.reached ? 1U : 0U);
    }
}

}  // namespace kestrant
