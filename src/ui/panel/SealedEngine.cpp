#include "ui/panel/SealedEngine.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>

namespace kestrant {
namespace {

/// Answers every request as one for an address that nobody can reach.
class NoNetwork final : public QNetworkAccessManager {
  public:
    using QNetworkAccessManager::QNetworkAccessManager;

  protected:
    QNetworkReply* createRequest(Operation, const QNetworkRequest&, QIODevice*) override {
        return QNetworkAccessManager::createRequest(GetOperation, QNetworkRequest(), nullptr);
    }
};

}  // namespace

SealedEngine::SealedEngine() {
    setNetworkAccessManagerFactory(&network_);
    addUrlInterceptor(&addresses_);
}

SealedEngine::~SealedEngine() {
    removeUrlInterceptor(&addresses_);
    setNetworkAccessManagerFactory(nullptr);
}

QNetworkAccessManager* SealedEngine::Network::create(QObject* parent) {
    return new NoNetwork(parent);
}

QUrl SealedEngine::Addresses::intercept(const QUrl& url, DataType type) {
    // The directories of Qt's own modules are files; views name the modules, never the files.
    if (type == QmldirFile || url.scheme() == QLatin1String("qrc"))
        return url;
    return {};
}

}  // namespace kestrant
