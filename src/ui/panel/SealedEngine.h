#pragma once

#include <QQmlAbstractUrlInterceptor>
#include <QQmlEngine>
#include <QQmlNetworkAccessManagerFactory>

namespace kestrant {

/// The engine of all views. It opens nothing but what is built into the program: whatever else a view names,
/// a file or an address on the network, is answered with an error, without a request. Pictures within the
/// markup of a text get no network either, but could be files; no view has texts with markup. Thread: main;
/// the refusal holds on the engine's own threads too.
class SealedEngine : public QQmlEngine {
  public:
    SealedEngine();
    ~SealedEngine() override;

  private:
    class Network final : public QQmlNetworkAccessManagerFactory {
      public:
        [[nodiscard]] QNetworkAccessManager* create(QObject* parent) override;
    };
    class Addresses final : public QQmlAbstractUrlInterceptor {
      public:
        [[nodiscard]] QUrl intercept(const QUrl& url, DataType type) override;
    };

    Network network_;
    Addresses addresses_;
};

}  // namespace kestrant
