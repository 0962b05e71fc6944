#include "network/HttpSession.h"

#include <QIODevice>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QObject>

#include <algorithm>
#include <utility>

namespace kestrant {

namespace {

QNetworkRequest networkRequest(const JsonPost& post, const QSslConfiguration& tls) {
    QNetworkRequest request(post.url);
    request.setRawHeader("Content-Type", "application/json");
    request.setRawHeader("Accept", "application/json");
    request.setRawHeader("User-Agent", post.userAgent);
    request.setRawHeader("Connection", "close");
    // Both would be filled in otherwise: the first with the person's languages, the second with compressions
    // whose expansion is not bounded by what is read.
    request.setRawHeader("Accept-Language", "*");
    request.setRawHeader("Accept-Encoding", "identity");
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    request.setSslConfiguration(tls);
    return request;
}

/// A body that is given out once. Where the connection breaks before the answer, the network access sends its
/// request again, twice, and the server might take every one; without a body it takes none. Refusing the
/// reset itself would turn a redirect into an error.
class BodyReadOnce final : public QIODevice {
  public:
    explicit BodyReadOnce(QByteArray content) : content_(std::move(content)) { open(ReadOnly | Unbuffered); }

    [[nodiscard]] qint64 size() const override { return content_.size(); }
    bool seek(qint64 position) override { return position == pos() && QIODevice::seek(position); }
    bool reset() override {
        spent_ = true;
        return true;
    }

  protected:
    qint64 readData(char* data, qint64 limit) override {
        if (spent_)
            return -1;
        const qint64 length = std::min<qint64>(limit, content_.size() - pos());
        std::copy_n(content_.constData() + pos(), length, data);
        return length;
    }
    qint64 writeData(const char*, qint64) override { return -1; }

  private:
    QByteArray content_;
    bool spent_ = false;
};

/// Has a network access of its own, which keeps connections open: a request that went over one that the
/// server is about to close would fail without having been sent.
class Exchange final : public QObject, public HttpExchange {
  public:
    Exchange(Scheduler& scheduler, const QNetworkRequest& request, const JsonPost& post,
             HttpSession::Completion completion)
        : scheduler_(scheduler)
        , idleTimeout_(post.idleTimeout)
        , completion_(std::move(completion))
        , access_(new QNetworkAccessManager)
        , reply_(start(*access_, request, post.body)) {
        reply_->setReadBufferSize(HttpSession::bodyLimit);
        connect(reply_, &QNetworkReply::readyRead, this, [this] { read(); });
        connect(reply_, &QNetworkReply::uploadProgress, this, [this] { armIdleTimer(); });
        connect(reply_, &QNetworkReply::metaDataChanged, this, [this] { armIdleTimer(); });
        connect(reply_, &QNetworkReply::finished, this, [this] { finished(); });
        total_ = scheduler_.after(post.totalTimeout,
                                  [this] { fail(QStringLiteral("the answer takes too long")); });
        armIdleTimer();
    }

    ~Exchange() override { release(); }

  private:
    static QNetworkReply* start(QNetworkAccessManager& manager, const QNetworkRequest& request,
                                const QByteArray& content) {
        auto* body = new BodyReadOnce(content);
        QNetworkReply* reply = manager.post(request, body);
        body->setParent(reply);
        return reply;
    }

    void armIdleTimer() {
        idle_ = scheduler_.after(idleTimeout_, [this] { fail(QStringLiteral("no answer in time")); });
    }

    void read() {
        armIdleTimer();
        body_ += reply_->read(HttpSession::bodyLimit + 1 - body_.size());
        if (isTooLong())
            end(answer(std::nullopt));
    }

    [[nodiscard]] bool isTooLong() const { return body_.size() > HttpSession::bodyLimit; }

    void finished() {
        const auto error = reply_->error();
        const bool isStatus = status() >= 400 && (error >= QNetworkReply::ContentAccessDenied ||
                                                  error == QNetworkReply::ProxyAuthenticationRequiredError);
        if (error != QNetworkReply::NoError && !isStatus) {
            fail(reply_->errorString());
            return;
        }
        body_ += reply_->read(HttpSession::bodyLimit + 1 - body_.size());
        end(answer(isTooLong() ? std::nullopt : std::optional(body_)));
    }

    [[nodiscard]] int status() const {
        return reply_->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    }

    [[nodiscard]] HttpReply answer(std::optional<QByteArray> body) const {
        return {status(), reply_->rawHeader("Retry-After"), std::move(body)};
    }

    void fail(const QString& description) { end(tl::unexpected(TransportError{description})); }

    void end(const tl::expected<HttpReply, TransportError>& result) {
        release();
        const auto completion = std::exchange(completion_, nullptr);
        completion(result);
    }

    void release() {
        idle_.cancel();
        total_.cancel();
        if (!reply_)
            return;
        QNetworkReply* reply = std::exchange(reply_, nullptr);
        reply->disconnect(this);
        reply->abort();
        // The reply, which may be calling this, goes with it.
        access_->deleteLater();
    }

    Scheduler& scheduler_;
    Duration idleTimeout_;
    HttpSession::Completion completion_;
    QNetworkAccessManager* access_;
    QNetworkReply* reply_;
    QByteArray body_;
    ScheduledTask idle_;
    ScheduledTask total_;
};

}  // namespace

HttpSession::HttpSession(Scheduler& scheduler, const QSslConfiguration& tls)
    : scheduler_(scheduler)
    , tls_(tls) {}

std::unique_ptr<HttpExchange> HttpSession::post(const JsonPost& request, Completion completion) {
    return std::make_unique<Exchange>(scheduler_, networkRequest(request, tls_), request,
                                      std::move(completion));
}

}  // namespace kestrant
