#pragma once

#include "network/HttpAnswer.h"

#include <QByteArray>
#include <QObject>
#include <QSslConfiguration>
#include <QTimer>
#include <QUrl>

#include <memory>
#include <optional>
#include <vector>

class QHostAddress;
class QSslSocket;

namespace kestrant {

/// A request as sent over one connection.
struct HttpRequest {
    enum class Method { get, post } method = Method::post;
    QUrl url;
    QByteArray userAgent;
    /// A JSON text; sent with a post only.
    QByteArray body;

    /// Head and body as they go over the wire.
    [[nodiscard]] QByteArray bytes() const;
    /// What a redirect has to be sent instead; absent when the reply is none, or would lead to a scheme that
    /// protects less. After 307 and 308 the request is sent again as it is, after 301, 302 and 303 it becomes
    /// a GET (RFC 9110, 15.4).
    [[nodiscard]] std::optional<HttpRequest> redirectedBy(const HttpReply& reply) const;
};

/// One request and its answer over a connection of its own, which ends with the answer or, at once, with this
/// object. Nothing here waits, and the looking up of a name, which nobody can end, waits for by nobody. It
/// tells the signals' receivers only. Thread: the one it is moved to, which runs a Qt event loop; made on
/// any.
class HttpConnection : public QObject {
    Q_OBJECT

  public:
    /// At most `limit` bytes are received. `tls` names the trusted certificates; absent: the machine's.
    HttpConnection(HttpRequest request, std::optional<QSslConfiguration> tls, qint64 limit);
    ~HttpConnection() override;

    void start();

  Q_SIGNALS:
    /// Emitted after bytes were sent or received.
    void progressed();
    /// Once, with the bytes received.
    void finished(const HttpResult& result, qint64 received);

  private:
    struct Lookup;

    void lookUp();
    void connectTo(const std::vector<QHostAddress>& addresses);
    void tryNextAddress();
    [[nodiscard]] QSslSocket* newAttempt();
    void attemptFailed(QSslSocket* socket);
    void connected(QSslSocket* socket);
    void send();
    void read();
    void disconnected();
    void finish(const HttpResult& result);

    HttpRequest request_;
    std::optional<QSslConfiguration> tls_;
    HttpAnswerReader reader_;

    std::shared_ptr<Lookup> lookup_;
    std::vector<QHostAddress> addresses_;
    /// Tried at the same time: one address may be reached by no way while another is.
    std::vector<QSslSocket*> attempts_;
    QTimer nextAttempt_{this};
    QSslSocket* socket_ = nullptr;
    bool isFinished_ = false;
};

}  // namespace kestrant
