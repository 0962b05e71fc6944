#include "network/HttpConnection.h"

#include "network/ServiceUrl.h"

#include <QHostAddress>
#include <QNetworkProxyFactory>
#include <QSslSocket>

#include <netdb.h>
#include <sys/socket.h>

#include <chrono>
#include <mutex>
#include <thread>
#include <utility>

namespace kestrant {

namespace {

constexpr auto untilNextAttempt = std::chrono::milliseconds(300);
constexpr qint64 receivedAtOnce = 16LL * 1024;
constexpr int httpPort = 80;
constexpr int httpsPort = 443;

bool isSecure(const QUrl& url) {
    return url.scheme() == QLatin1String("https");
}

quint16 portOf(const QUrl& url) {
    return static_cast<quint16>(url.port(isSecure(url) ? httpsPort : httpPort));
}

/// Asks the system's resolver, for as long as it takes.
std::vector<QHostAddress> addressesOf(const QByteArray& host) {
    addrinfo wanted{};
    wanted.ai_socktype = SOCK_STREAM;
    wanted.ai_flags = AI_ADDRCONFIG;
    addrinfo* found = nullptr;
    std::vector<QHostAddress> addresses;
    if (::getaddrinfo(host.constData(), nullptr, &wanted, &found) != 0)
        return addresses;
    for (const addrinfo* each = found; each != nullptr; each = each->ai_next)
        addresses.emplace_back(each->ai_addr);
    ::freeaddrinfo(found);
    return addresses;
}

QNetworkProxy proxyFor(const QUrl& url) {
    if (isLoopback(url.host()))
        return {QNetworkProxy::NoProxy};
    const auto proxies = QNetworkProxyFactory::proxyForQuery(QNetworkProxyQuery(url));
    return proxies.isEmpty() ? QNetworkProxy(QNetworkProxy::NoProxy) : proxies.front();
}

}  // namespace

/// Between a connection and the thread that looks up its name, which may come back after its end.
struct HttpConnection::Lookup {
    std::mutex lock;
    HttpConnection* connection;
};

QByteArray HttpRequest::bytes() const {
    QUrl host = url;
    host.setUserInfo({});
    QByteArray target = url.path(QUrl::FullyEncoded).toLatin1();
    if (target.isEmpty())
        target = "/";
    if (url.hasQuery())
        target += '?' + url.query(QUrl::FullyEncoded).toLatin1();
    const bool hasBody = method == Method::post;
    // An encoding other than none might expand to any length.
    return (hasBody ? "POST " : "GET ") + target +
           " HTTP/1.1\r\nHost: " + host.authority(QUrl::FullyEncoded).toLatin1() +
           "\r\nUser-Agent: " + userAgent +
           "\r\nAccept: application/json\r\nAccept-Encoding: identity\r\nConnection: close\r\n" +
           (hasBody ? "Content-Type: application/json\r\nContent-Length: " + QByteArray::number(body.size()) +
                          "\r\n\r\n" + body
                    : QByteArray("\r\n"));
}

std::optional<HttpRequest> HttpRequest::redirectedBy(const HttpReply& reply) const {
    const bool asItIs = reply.status == 307 || reply.status == 308;
    const bool asGet = reply.status == 301 || reply.status == 302 || reply.status == 303;
    const QUrl location = QUrl::fromEncoded(reply.location);
    if ((!asItIs && !asGet) || reply.location.isEmpty() || !location.isValid())
        return std::nullopt;
    HttpRequest next = *this;
    next.url = url.resolved(location);
    if (next.url.host().isEmpty() ||
        !(isSecure(next.url) || (next.url.scheme() == QLatin1String("http") && !isSecure(url))))
        return std::nullopt;
    if (asGet)
        next.method = Method::get;
    return next;
}

HttpConnection::HttpConnection(HttpRequest request, std::optional<QSslConfiguration> tls, qint64 limit)
    : request_(std::move(request))
    , tls_(std::move(tls))
    , reader_(limit) {
    nextAttempt_.setSingleShot(true);
    nextAttempt_.setInterval(untilNextAttempt);
    connect(&nextAttempt_, &QTimer::timeout, this, &HttpConnection::tryNextAddress);
}

HttpConnection::~HttpConnection() {
    if (!lookup_)
        return;
    const std::lock_guard guard(lookup_->lock);
    lookup_->connection = nullptr;
}

void HttpConnection::start() {
    const QString scheme = request_.url.scheme();
    if (request_.url.host().isEmpty() ||
        (scheme != QLatin1String("https") && scheme != QLatin1String("http"))) {
        finish(tl::unexpected(TransportError{QStringLiteral("no address of a web service")}));
        return;
    }
    QNetworkProxy proxy = proxyFor(request_.url);
    if (proxy.type() == QNetworkProxy::NoProxy) {
        lookUp();
        return;
    }
    if (proxy.type() == QNetworkProxy::HttpCachingProxy)
        proxy.setType(QNetworkProxy::HttpProxy);
    QSslSocket* socket = newAttempt();
    socket->setProxy(proxy);
    socket->connectToHost(request_.url.host(), portOf(request_.url));
}

void HttpConnection::lookUp() {
    lookup_ = std::make_shared<Lookup>();
    lookup_->connection = this;
    // Neither the resolver nor, at the end of the process, its thread can be ended, so nobody waits for them.
    std::thread([lookup = lookup_, host = request_.url.host(QUrl::FullyEncoded).toLatin1()] {
        const auto addresses = addressesOf(host);
        const std::lock_guard guard(lookup->lock);
        if (HttpConnection* connection = lookup->connection)
            QMetaObject::invokeMethod(
                connection, [connection, addresses] { connection->connectTo(addresses); },
                Qt::QueuedConnection);
    }).detach();
}

void HttpConnection::connectTo(const std::vector<QHostAddress>& addresses) {
    // In reverse, to be taken from the end.
    addresses_.assign(addresses.rbegin(), addresses.rend());
    if (addresses_.empty())
        finish(tl::unexpected(TransportError{QStringLiteral("the name of the service is not known")}));
    else
        tryNextAddress();
}

void HttpConnection::tryNextAddress() {
    if (addresses_.empty())
        return;
    QSslSocket* socket = newAttempt();
    socket->setProxy(QNetworkProxy::NoProxy);
    const QHostAddress address = addresses_.back();
    addresses_.pop_back();
    nextAttempt_.start();
    socket->connectToHost(address, portOf(request_.url));
}

QSslSocket* HttpConnection::newAttempt() {
    auto* socket = new QSslSocket(this);
    socket->setReadBufferSize(receivedAtOnce);
    connect(socket, &QSslSocket::connected, this, [this, socket] { connected(socket); });
    connect(socket, &QSslSocket::errorOccurred, this, [this, socket] { attemptFailed(socket); });
    attempts_.push_back(socket);
    return socket;
}

void HttpConnection::attemptFailed(QSslSocket* socket) {
    const QString description = socket->errorString();
    std::erase(attempts_, socket);
    socket->disconnect(this);
    socket->deleteLater();
    if (!addresses_.empty())
        tryNextAddress();
    else if (attempts_.empty())
        finish(tl::unexpected(TransportError{description}));
}

void HttpConnection::connected(QSslSocket* socket) {
    nextAttempt_.stop();
    addresses_.clear();
    std::erase(attempts_, socket);
    for (QSslSocket* other : std::exchange(attempts_, {})) {
        other->disconnect(this);
        other->deleteLater();
    }
    socket_ = socket;
    socket->disconnect(this);
    connect(socket, &QSslSocket::readyRead, this, &HttpConnection::read);
    connect(socket, &QSslSocket::bytesWritten, this, &HttpConnection::progressed);
    connect(socket, &QSslSocket::encryptedBytesWritten, this, &HttpConnection::progressed);
    connect(socket, &QSslSocket::errorOccurred, this, &HttpConnection::disconnected);
    if (!isSecure(request_.url)) {
        send();
        return;
    }
    if (tls_)
        socket->setSslConfiguration(*tls_);
    socket->setPeerVerifyName(request_.url.host(QUrl::FullyEncoded));
    connect(socket, &QSslSocket::encrypted, this, &HttpConnection::send);
    socket->startClientEncryption();
}

void HttpConnection::send() {
    socket_->write(request_.bytes());
}

void HttpConnection::read() {
    Q_EMIT progressed();
    while (!isFinished_ && socket_->bytesAvailable() > 0) {
        if (const auto result = reader_.take(socket_->read(receivedAtOnce)))
            finish(*result);
    }
}

void HttpConnection::disconnected() {
    const bool wasClosed = socket_->error() == QAbstractSocket::RemoteHostClosedError;
    const QString description = socket_->errorString();
    read();
    if (!isFinished_)
        finish(wasClosed ? reader_.end() : tl::unexpected(TransportError{description}));
}

void HttpConnection::finish(const HttpResult& result) {
    if (std::exchange(isFinished_, true))
        return;
    if (socket_ != nullptr) {
        socket_->disconnect(this);
        socket_->abort();
    }
    Q_EMIT finished(result, reader_.received());
}

}  // namespace kestrant
