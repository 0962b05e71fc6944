#include "platform/linux/desktop/FolderDialog.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QFile>
#include <QUrl>
#include <QVariantMap>

#include <utility>

namespace kestrant {
namespace {

const QString serviceName = QStringLiteral("org.freedesktop.portal.Desktop");
const QString objectPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interfaceName = QStringLiteral("org.freedesktop.portal.FileChooser");
const QString requestInterface = QStringLiteral("org.freedesktop.portal.Request");
constexpr uint succeeded = 0;

}  // namespace

FolderDialog::FolderDialog(const QDBusConnection& bus, QObject* parent) : QObject(parent), bus_(bus) {}

void FolderDialog::open(const QString& title, const QString& start, Done done) {
    if (!request_.isEmpty())
        bus_.disconnect(serviceName, request_, requestInterface, QStringLiteral("Response"), this,
                        SLOT(answered(uint, QVariantMap, QDBusMessage)));
    done_ = std::move(done);
    const int number = ++opened_;
    // The portal derives the request's path from this, so that its answer is awaited before it is asked.
    const QString token = QStringLiteral("kestrant%1").arg(number);
    request_ = QStringLiteral("/org/freedesktop/portal/desktop/request/%1/%2")
                   .arg(bus_.baseService().mid(1).replace(u'.', u'_'), token);
    bus_.connect(serviceName, request_, requestInterface, QStringLiteral("Response"), this,
                 SLOT(answered(uint, QVariantMap, QDBusMessage)));

    QDBusMessage message =
        QDBusMessage::createMethodCall(serviceName, objectPath, interfaceName, QStringLiteral("OpenFile"));
    // A path in this protocol ends with a zero byte.
    message << QString() << title
            << QVariantMap{{QStringLiteral("handle_token"), token},
                           {QStringLiteral("directory"), true},
                           {QStringLiteral("current_folder"), QFile::encodeName(start) + '\0'}};
    auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(message), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, number] {
        watcher->deleteLater();
        if (watcher->isError() && number == opened_)
            fail();
    });
}

void FolderDialog::fail() {
    request_.clear();
    if (const Done done = std::exchange(done_, {}))
        done(tl::unexpected(
            text("This desktop has no dialog for choosing a folder; write its path.",
                 "Ce bureau n’a pas de dialogue pour choisir un dossier ; écrivez son chemin.")));
}

void FolderDialog::answered(uint response, const QVariantMap& results, const QDBusMessage& message) {
    // The answer to an earlier request may be on its way still.
    if (message.path() != request_)
        return;
    request_.clear();
    const Done done = std::exchange(done_, {});
    const QStringList uris = results.value(QStringLiteral("uris")).toStringList();
    if (done && response == succeeded && !uris.isEmpty())
        done(QUrl(uris.constFirst()).toLocalFile());
}

}  // namespace kestrant
