#pragma once

#include <QSslConfiguration>
#include <QString>

namespace kestrant {

/// A server's side of https with the certificate of certificates/<name>.pem: "localhost" is for this machine,
/// "elsewhere" for another. Nobody trusts either unless told to.
[[nodiscard]] QSslConfiguration serverIdentity(const QString& name);

/// A client's side that trusts the certificate of that name and no other.
[[nodiscard]] QSslConfiguration trusting(const QString& name);

}  // namespace kestrant
