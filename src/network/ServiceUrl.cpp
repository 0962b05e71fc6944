#include "network/ServiceUrl.h"

#include <QHostAddress>

namespace kestrant {

bool isLoopback(const QString& host) {
    return host == QLatin1String("localhost") || QHostAddress(host).isLoopback();
}

std::optional<QUrl> serviceUrl(const QString& text) {
    const QUrl url(text, QUrl::StrictMode);
    if (!url.isValid() || url.scheme().isEmpty() || url.host().isEmpty())
        return std::nullopt;
    return url;
}

std::optional<QUrl> protectedServiceUrl(const QString& text) {
    const auto url = serviceUrl(text);
    if (!url || !url->userInfo().isEmpty() || url->hasQuery() || url->hasFragment())
        return std::nullopt;
    if (url->scheme() == QLatin1String("https") ||
        (url->scheme() == QLatin1String("http") && isLoopback(url->host())))
        return url;
    return std::nullopt;
}

QUrl appendingPath(const QUrl& base, const QString& path) {
    QString whole = base.path(QUrl::FullyEncoded);
    if (!whole.endsWith(QLatin1Char('/')))
        whole += QLatin1Char('/');
    QUrl url = base;
    url.setPath(whole + path, QUrl::TolerantMode);
    return url;
}

}  // namespace kestrant
