#pragma once

#include <QString>
#include <QUrl>

#include <optional>

namespace kestrant {

/// The base URL of a web service as a configuration gives it; absent when it cannot be used. It must be
/// absolute, with https, or with http to a loopback address ("localhost", 127.0.0.0/8, ::1), and carry
/// neither user information nor a query nor a fragment.
[[nodiscard]] std::optional<QUrl> serviceBaseUrl(const QString& text);

/// `base` with `path` ("v1/completions") appended to its own path, separated by one slash.
[[nodiscard]] QUrl appendingPath(const QUrl& base, const QString& path);

}  // namespace kestrant
