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

namespace kestrant {

namespace {

using namespace std::chrono_literals;
using Result = tl::expected<HttpReply, TransportError>;

/// A session with a scheduler that stands still, and at most one exchange.
struct Client {
    explicit Client(const QSslConfiguration& tls = QSslConfiguration::defaultConfiguration())
        : session(scheduler, tls) {}

    void post(const QString& url, const QByteArray& body = "{}") {
        result.reset();
        exchange = session.post({QUrl(url), "Agent/1", body, 20s, 30s}, [this](const Result& outcome) {
            ++completions;
            result = outcome;
        });
    }
    [[nodiscard]] bool waitForResult() {
        return turnUntil([this] { return result.has_value(); });
    }

    ManualScheduler scheduler{Instant{}};
    HttpSession session;
    std::optional<Result> result;
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
        {"accept-language", "*"},
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

TEST(HttpSession, ARedirectIsNotFollowed) {
    HttpTestServer target([](const auto&) { return Answer::status(200); });
    for (const int status : {301, 302, 303, 307, 308}) {
        HttpTestServer server([&](const auto&) {
            return Answer::status(status, "", "Location: " + target.url().toLatin1() + "\r\n");
        });
        Client client;
        client.post(server.url());
        ASSERT_TRUE(client.waitForResult()) << status;
        ASSERT_TRUE(client.result->has_value()) << status << client.result->error().description.toStdString();
        EXPECT_EQ((*client.result)->status, status);
    }
    EXPECT_TRUE(target.requests().empty());
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

TEST(HttpSession, NoMoreOfALongBodyIsReadThanTheLimit) {
    constexpr qint64 length = 100LL * 1000 * 1000;
    const QByteArray head = "HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(length) + "\r\n\r\n";
    HttpTestServer server([&](const auto&) { return Answer{head, length}; });
    Client client;
    client.post(server.url());
    ASSERT_TRUE(client.waitForResult());
    ASSERT_TRUE(client.result->has_value());
    EXPECT_FALSE(client.result->value().body.has_value());
    EXPECT_LT(server.paddingWritten(), 32 * 1000 * 1000) << "what the two sockets buffer at most";
}

TEST(HttpSession, ABodyOfExactlyTheLimitIsRead) {
    HttpTestServer server(
        [](const auto&) { return Answer::status(200, QByteArray(HttpSession::bodyLimit, 'x')); });
    Client client;
    client.post(server.url());
    ASSERT_TRUE(client.waitForResult());
    EXPECT_EQ(client.result->value().body.value_or("").size(), HttpSession::bodyLimit);
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
    // The byte that has arrived meanwhile starts the idle time anew.
    ASSERT_TRUE(turnUntil([&] { return client.scheduler.pendingCount() == 2; }));
    client.scheduler.advance(11s);
    ASSERT_TRUE(client.result);
    EXPECT_FALSE(client.result->has_value());
}

TEST(HttpSession, ADestroyedExchangeNeverCompletes) {
    HttpTestServer server([](const auto&) { return Answer::silence(); });
    Client client;
    client.post(server.url());
    ASSERT_TRUE(turnUntil([&] { return !server.requests().empty(); }));
    client.exchange.reset();
    client.scheduler.advance(1min);
    EXPECT_EQ(client.completions, 0);
    EXPECT_EQ(client.scheduler.pendingCount(), 0U);
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
