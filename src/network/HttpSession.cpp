#include "network/HttpSession.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QObject>

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

class Exchange final : public QObject, public HttpExchange {
  public:
    Exchange(Scheduler& scheduler, QNetworkAccessManager& manager, const QNetworkRequest& request,
             const JsonPost& post, HttpSession::Completion completion)
        : scheduler_(scheduler)
        , idleTimeout_(post.idleTimeout)
        , completion_(std::move(completion))
        , reply_(manager.post(request, post.body)) {
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
        const bool isStatus = error >= QNetworkReply::ContentAccessDenied && status() >= 400;
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
        reply->deleteLater();
    }

    Scheduler& scheduler_;
    Duration idleTimeout_;
    HttpSession::Completion completion_;
    QNetworkReply* reply_;
    QByteArray body_;
    ScheduledTask idle_;
    ScheduledTask total_;
};

}  // namespace

HttpSession::HttpSession(Scheduler& scheduler, const QSslConfiguration& tls)
    : scheduler_(scheduler)
    , tls_(tls)
    , manager_(std::make_unique<QNetworkAccessManager>()) {}

HttpSession::~HttpSession() = default;

std::unique_ptr<HttpExchange> HttpSession::post(const JsonPost& request, Completion completion) {
    return std::make_unique<Exchange>(scheduler_, *manager_, networkRequest(request, tls_), request,
                                      std::move(completion));
}

}  // namespace kestrant
