#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <tl/expected.hpp>

#include <optional>

namespace kestrant {

/// The server's answer.
struct HttpReply {
    int status = 0;
    /// The values of "Retry-After" and "Location"; empty when the answer has none.
    QByteArray retryAfter;
    QByteArray location;
    /// Absent when the answer is longer than may be received; the rest of it is not received then.
    std::optional<QByteArray> body;

    bool operator==(const HttpReply&) const = default;
};

/// No complete answer came: no connection, no trust in the server's certificate, silence, an answer shorter
/// than announced, or one whose head alone is longer than may be received.
struct TransportError {
    /// For logs.
    QString description;

    bool operator==(const TransportError&) const = default;
};

using HttpResult = tl::expected<HttpReply, TransportError>;

/// Reads one HTTP/1.1 answer to a request with a method other than HEAD (RFC 9112) from the bytes of its
/// connection, however they are cut. Interim answers (1xx) are passed over. Everything received counts
/// against one limit: status lines, headers, interim answers, the framing of chunks, and bodies.
class HttpAnswerReader {
  public:
    /// In bytes.
    explicit HttpAnswerReader(qint64 limit) : limit_(limit) {}

    /// The next bytes. The result once there is one; it stays what it is.
    [[nodiscard]] std::optional<HttpResult> take(QByteArrayView bytes);
    /// The other side has closed the connection.
    [[nodiscard]] HttpResult end();
    /// Bytes counted so far; never more than the limit.
    [[nodiscard]] qint64 received() const { return received_; }

  private:
    enum class Part { statusLine, header, body, chunkSize, chunk, chunkEnd, trailer, rest };

    /// False when more bytes are needed.
    [[nodiscard]] bool advance();
    [[nodiscard]] std::optional<QByteArray> takeLine();
    void readLine(const QByteArray& line);
    void readStatus(const QByteArray& line);
    void readHeader(const QByteArray& line);
    void readChunkSize(const QByteArray& line);
    void endHead();
    [[nodiscard]] bool takeBody();
    void complete(std::optional<QByteArray> body);
    void fail(const char* description);

    qint64 limit_;
    qint64 received_ = 0;
    /// Received and not read yet, from `position_` on; no line ends before `scanned_`.
    QByteArray buffer_;
    qsizetype position_ = 0;
    qsizetype scanned_ = 0;

    Part part_ = Part::statusLine;
    HttpReply reply_;
    std::optional<qint64> length_;
    bool isChunked_ = false;
    /// Of the body, or of the present chunk.
    qint64 remaining_ = 0;
    QByteArray body_;
    std::optional<HttpResult> result_;
};

}  // namespace kestrant
