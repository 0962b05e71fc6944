#pragma once

#include <QByteArray>
#include <QSslConfiguration>
#include <QTcpServer>
#include <QUrl>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

class QSslSocket;

namespace kestrant {

/// A request as it came over the wire.
struct RecordedRequest {
    QByteArray bytes;

    [[nodiscard]] QByteArray requestLine() const;
    /// By lower-case name.
    [[nodiscard]] std::map<std::string, std::string> headers() const;
    [[nodiscard]] QByteArray body() const;
};

/// What a server does with a request.
struct Answer {
    QByteArray bytes;
    /// As many bytes follow, written as fast as they are taken.
    qint64 padding = 0;
    enum class Ending { close, keepOpen } ending = Ending::close;
    /// What the padding repeats.
    QByteArray pattern = "0";

    [[nodiscard]] static Answer status(int status, const QByteArray& body = {},
                                       const QByteArray& extraHeaders = {});
    /// Ends the connection without a word.
    [[nodiscard]] static Answer cutOff() { return {}; }
    /// Never answers.
    [[nodiscard]] static Answer silence() { return {.ending = Ending::keepOpen}; }
};

/// A web server on a loopback port, on the event loop of the thread that made it. It records every request
/// byte for byte and answers as told.
class HttpTestServer : public QTcpServer {
  public:
    using Handler = std::function<Answer(const RecordedRequest&)>;

    /// With `tls` it speaks https.
    explicit HttpTestServer(Handler handler, std::optional<QSslConfiguration> tls = {});

    void setHandler(Handler handler) { handler_ = std::move(handler); }
    [[nodiscard]] const std::vector<RecordedRequest>& requests() const { return requests_; }
    [[nodiscard]] qint64 paddingWritten() const { return paddingWritten_; }
    [[nodiscard]] int openConnections() const { return openConnections_; }
    [[nodiscard]] QString url(const QString& host = QStringLiteral("127.0.0.1")) const;

  protected:
    void incomingConnection(qintptr descriptor) override;

  private:
    void receive(QSslSocket* socket, QByteArray& received);
    void pad(QSslSocket* socket, const Answer& answer);

    Handler handler_;
    std::optional<QSslConfiguration> tls_;
    std::vector<RecordedRequest> requests_;
    qint64 paddingWritten_ = 0;
    int openConnections_ = 0;
};

}  // namespace kestrant
