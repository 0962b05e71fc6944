#pragma once

#include <QString>
#include <QUrl>

#include <optional>

namespace kestrant {

/// The base URL of a web service as a configuration gives it; absent when the text is no URL with a scheme
/// and a host.
[[nodiscard]] std::optional<QUrl> serviceUrl(const QString& text);

/// One that can be trusted to protect what is sent; absent for any other. It must have https, or http to a
/// loopback address, and carry neither user information nor a query nor a fragment.
[[nodiscard]] std::optional<QUrl> protectedServiceUrl(const QString& text);

/// "localhost", 127.0.0.0/8 or ::1.
[[nodiscard]] bool isLoopback(const QString& host);

/// `base` with `path` ("v1/completions") appended to its own path, separated by one slash; its query stays.
[[nodiscard]] QUrl appendingPath(const QUrl& base, const QString& path);

}  // namespace kestrant
