#include "network/HttpTestServer.h"

#include "network/EventLoop.h"

#include <QSslSocket>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>

namespace kestrant {

namespace {

constexpr QByteArrayView endOfHead = "\r\n\r\n";

/// Length of the whole request, once its head is there.
std::optional<qsizetype> requestLength(const QByteArray& received) {
    const qsizetype head = received.indexOf(endOfHead);
    if (head < 0)
        return std::nullopt;
    const auto headers = RecordedRequest{received.left(head + endOfHead.size())}.headers();
    const auto length = headers.find("content-length");
    return head + endOfHead.size() + (length == headers.end() ? 0 : std::stoll(length->second));
}

}  // namespace

QByteArray RecordedRequest::requestLine() const {
    return bytes.left(bytes.indexOf("\r\n"));
}

std::map<std::string, std::string> RecordedRequest::headers() const {
    std::map<std::string, std::string> headers;
    const auto lines = bytes.left(bytes.indexOf(endOfHead)).replace("\r\n", "\n").split('\n');
    for (const QByteArray& line : lines.mid(1)) {
        const qsizetype colon = line.indexOf(':');
        headers[line.left(colon).toLower().toStdString()] = line.mid(colon + 1).trimmed().toStdString();
    }
    return headers;
}

QByteArray RecordedRequest::body() const {
    return bytes.mid(bytes.indexOf(endOfHead) + endOfHead.size());
}

Answer Answer::status(int status, const QByteArray& body, const QByteArray& extraHeaders) {
    return {"HTTP/1.1 " + QByteArray::number(status) +
            " Whatever\r\nContent-Length: " + QByteArray::number(body.size()) +
            "\r\nContent-Type: application/json\r\n" + extraHeaders + "\r\n" + body};
}

HttpTestServer::HttpTestServer(Handler handler, std::optional<QSslConfiguration> tls)
    : handler_(std::move(handler))
    , tls_(std::move(tls)) {
    ensureApplication();
    if (!listen(QHostAddress::LocalHost))
        throw std::runtime_error("no loopback port to listen on");
}

QString HttpTestServer::url(const QString& host) const {
    return QStringLiteral("%1://%2:%3")
        .arg(tls_ ? QStringLiteral("https") : QStringLiteral("http"), host)
        .arg(serverPort());
}

void HttpTestServer::incomingConnection(qintptr descriptor) {
    auto* socket = new QSslSocket(this);
    socket->setSocketDescriptor(descriptor);
    auto received = std::make_shared<QByteArray>();
    connect(socket, &QTcpSocket::readyRead, this, [this, socket, received] { receive(socket, *received); });
    ++openConnections_;
    connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
        --openConnections_;
        socket->deleteLater();
    });
    if (tls_) {
        socket->setSslConfiguration(*tls_);
        socket->startServerEncryption();
    }
}

void HttpTestServer::receive(QSslSocket* socket, QByteArray& received) {
    received += socket->readAll();
    const auto length = requestLength(received);
    if (!length || received.size() < *length)
        return;
    requests_.push_back({received});
    received.clear();
    const Answer answer = handler_(requests_.back());
    socket->write(answer.bytes);
    if (answer.padding > 0)
        pad(socket, answer);
    else if (answer.ending == Answer::Ending::close)
        socket->disconnectFromHost();
}

void HttpTestServer::pad(QSslSocket* socket, const Answer& answer) {
    constexpr qint64 blockSize = 64LL * 1024;
    auto left = std::make_shared<qint64>(answer.padding);
    const QByteArray block = answer.pattern.repeated(blockSize / answer.pattern.size() + 1);
    const auto writeMore = [this, socket, left, block] {
        while (*left > 0 && socket->bytesToWrite() + socket->encryptedBytesToWrite() < blockSize) {
            const qint64 size = std::min<qint64>(*left, block.size());
            paddingWritten_ += size;
            *left -= size;
            socket->write(block.constData(), size);
        }
    };
    connect(socket, &QSslSocket::bytesWritten, socket, writeMore);
    connect(socket, &QSslSocket::encryptedBytesWritten, socket, writeMore);
    writeMore();
}

}  // namespace kestrant
