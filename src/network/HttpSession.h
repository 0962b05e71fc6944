#pragma once

#include "foundation/Scheduler.h"

#include <QByteArray>
#include <QSslConfiguration>
#include <QUrl>

#include <tl/expected.hpp>

#include <functional>
#include <memory>
#include <optional>

namespace kestrant {

/// One POST of a JSON text.
struct JsonPost {
    QUrl url;
    QByteArray userAgent;
    QByteArray body;
    /// The longest silence of the other side.
    Duration idleTimeout;
    /// The longest time the whole exchange may take.
    Duration totalTimeout;
};

/// What the server answered. A redirect is an answer like any other.
struct HttpReply {
    int status = 0;
    /// The value of "Retry-After"; empty when the answer has none.
    QByteArray retryAfter;
    /// Absent when it is longer than HttpSession::bodyLimit; the rest is not received then.
    std::optional<QByteArray> body;
};

/// No complete answer came: no connection, no trust in the server's certificate, silence, or an answer
/// shorter than announced. One in chunks may end early without this; its JSON tells.
struct TransportError {
    /// For logs.
    QString description;
};

/// A request under way. Destroying it ends the exchange; its completion is not called then. Thread: its
/// session's.
class HttpExchange {
  public:
    virtual ~HttpExchange() = default;
};

/// Sends requests that leave no trace: no cookie, credential or cached content is kept or sent, no redirect
/// followed, no language of the person named, no connection held open afterwards. Thread: the one it is
/// created on, which runs a Qt event loop.
class HttpSession {
  public:
    using Completion = std::function<void(tl::expected<HttpReply, TransportError>)>;

    /// No more of a body is read.
    static constexpr qint64 bodyLimit = 64LL * 1024;

    /// `scheduler` measures the timeouts and must outlive the session. `tls` names the trusted certificates.
    explicit HttpSession(Scheduler& scheduler,
                         const QSslConfiguration& tls = QSslConfiguration::defaultConfiguration());
    HttpSession(const HttpSession&) = delete;
    HttpSession& operator=(const HttpSession&) = delete;

    /// The completion is called once, on a later turn; it may destroy the exchange.
    [[nodiscard]] std::unique_ptr<HttpExchange> post(const JsonPost& request, Completion completion);

  private:
    Scheduler& scheduler_;
    QSslConfiguration tls_;
};

}  // namespace kestrant
