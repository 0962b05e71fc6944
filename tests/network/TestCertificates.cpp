#include "network/TestCertificates.h"

#include <QFile>
#include <QSslCertificate>
#include <QSslKey>

#include <stdexcept>

namespace kestrant {

namespace {

QByteArray pem(const QString& name) {
    QFile file(QStringLiteral(KESTRANT_TEST_CERTIFICATES "/%1.pem").arg(name));
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("no test certificate of that name");
    return file.readAll();
}

}  // namespace

QSslConfiguration serverIdentity(const QString& name) {
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setLocalCertificate(QSslCertificate(pem(name)));
    configuration.setPrivateKey(QSslKey(pem(name), QSsl::Ec));
    configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
    return configuration;
}

QSslConfiguration trusting(const QString& name) {
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setCaCertificates({QSslCertificate(pem(name))});
    return configuration;
}

}  // namespace kestrant
