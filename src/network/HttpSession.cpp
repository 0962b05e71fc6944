#include "network/HttpSession.h"

#include "network/HttpConnection.h"

#include <QObject>

#include <chrono>
#include <utility>

namespace kestrant {

namespace {

constexpr int mostRedirects = 10;
/// The thread itself never waits; what the system does on it, such as choosing a proxy, might.
constexpr auto longestEnding = std::chrono::milliseconds(500);

/// On the session's thread, with one connection after the other on the network's.
class Exchange final : public QObject, public HttpExchange {
  public:
    Exchange(Scheduler& scheduler, QThread& thread, std::optional<QSslConfiguration> tls,
             const JsonPost& post, HttpSession::Completion completion)
        : scheduler_(scheduler)
        , thread_(thread)
        , tls_(std::move(tls))
        , idleTimeout_(post.idleTimeout)
        , redirectsLeft_(post.redirects == JsonPost::Redirects::followed ? mostRedirects : 0)
        , completion_(std::move(completion))
        , request_{.url = post.url, .userAgent = post.userAgent, .body = post.body} {
        total_ = scheduler_.after(post.totalTimeout, [this] { fail("the answer takes too long"); });
        open();
    }

    ~Exchange() override { close(); }

  private:
    void open() {
        connection_ = new HttpConnection(request_, tls_, bytesLeft_);
        connection_->moveToThread(&thread_);
        connect(connection_, &HttpConnection::progressed, this, &Exchange::armIdleTimer);
        connect(connection_, &HttpConnection::finished, this, &Exchange::finished);
        QMetaObject::invokeMethod(connection_, &HttpConnection::start, Qt::QueuedConnection);
        armIdleTimer();
    }

    void close() {
        if (!connection_)
            return;
        connection_->disconnect(this);
        std::exchange(connection_, nullptr)->deleteLater();
    }

    void armIdleTimer() {
        idle_ = scheduler_.after(idleTimeout_, [this] { fail("no answer in time"); });
    }

    void finished(const HttpResult& result, qint64 received) {
        bytesLeft_ -= received;
        auto next = result && redirectsLeft_ > 0 ? request_.redirectedBy(*result) : std::nullopt;
        if (!next) {
            end(result);
            return;
        }
        --redirectsLeft_;
        request_ = std::move(*next);
        close();
        open();
    }

    void fail(const char* description) {
        end(tl::unexpected(TransportError{QString::fromLatin1(description)}));
    }

    void end(const HttpResult& result) {
        idle_.cancel();
        total_.cancel();
        close();
        const auto completion = std::exchange(completion_, nullptr);
        completion(result);
    }

    Scheduler& scheduler_;
    QThread& thread_;
    std::optional<QSslConfiguration> tls_;
    Duration idleTimeout_;
    int redirectsLeft_;
    HttpSession::Completion completion_;
    HttpRequest request_;
    qint64 bytesLeft_ = HttpSession::answerLimit;
    HttpConnection* connection_ = nullptr;
    ScheduledTask idle_;
    ScheduledTask total_;
};

}  // namespace

HttpSession::HttpSession(Scheduler& scheduler, std::optional<QSslConfiguration> tls)
    : scheduler_(scheduler)
    , tls_(std::move(tls)) {}

HttpSession::~HttpSession() {
    if (!thread_)
        return;
    thread_->quit();
    // Left to the end of the process then.
    if (!thread_->wait(longestEnding))
        static_cast<void>(thread_.release());
}

std::unique_ptr<HttpExchange> HttpSession::post(const JsonPost& request, Completion completion) {
    if (!thread_) {
        thread_ = std::make_unique<QThread>();
        thread_->setObjectName(QStringLiteral("network"));
        thread_->start();
    }
    return std::make_unique<Exchange>(scheduler_, *thread_, tls_, request, std::move(completion));
}

}  // namespace kestrant
