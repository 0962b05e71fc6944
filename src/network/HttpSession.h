#pragma once

#include "foundation/Scheduler.h"
#include "network/HttpAnswer.h"

#include <QByteArray>
#include <QSslConfiguration>
#include <QThread>
#include <QUrl>

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
    enum class Redirects {
        /// A redirect is an answer like any other.
        refused,
        /// Followed to https, and from http to http; what leads elsewhere is an answer like any other.
        followed,
    } redirects = Redirects::refused;
};

/// A request under way. Destroying it ends the exchange and its connection at once, without waiting; its
/// completion is not called then. Thread: its session's.
class HttpExchange {
  public:
    virtual ~HttpExchange() = default;
};

/// Sends requests that leave no trace: no cookie, credential or cached content is kept or sent, no language
/// of the person named, no connection held open afterwards. Nothing is sent twice. Connections live on a
/// thread of the session's own, so that whatever the other side does, the session's thread neither waits nor
/// works for it. Thread: the one it is created on, which runs a Qt event loop.
class HttpSession {
  public:
    using Completion = std::function<void(HttpResult)>;

    /// So many bytes are received in one exchange: status lines, headers, interim answers, redirects and the
    /// body, all counted together.
    static constexpr qint64 answerLimit = 64LL * 1024;

    /// `scheduler` measures the timeouts and must outlive the session. `tls` names the trusted certificates;
    /// absent: those of the machine.
    explicit HttpSession(Scheduler& scheduler, std::optional<QSslConfiguration> tls = {});
    HttpSession(const HttpSession&) = delete;
    HttpSession& operator=(const HttpSession&) = delete;
    /// Its exchanges have been destroyed.
    ~HttpSession();

    /// The completion is called once, on a later turn; it may destroy the exchange.
    [[nodiscard]] std::unique_ptr<HttpExchange> post(const JsonPost& request, Completion completion);

  private:
    Scheduler& scheduler_;
    std::optional<QSslConfiguration> tls_;
    /// Runs from the first request on.
    std::unique_ptr<QThread> thread_;
};

}  // namespace kestrant
