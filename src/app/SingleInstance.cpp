#include "app/SingleInstance.h"

#include "app/CommandSocket.h"
#include "foundation/FileLock.h"
#include "foundation/StandardFolders.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusContext>
#include <QDBusError>
#include <QDBusMessage>
#include <QDeadlineTimer>
#include <QLocalSocket>
#include <QThread>
#include <QTimer>
#include <QVariantMap>

#include <unistd.h>

#include <cerrno>
#include <optional>
#include <utility>

namespace kestrant {

namespace {

constexpr int answerTimeoutMilliseconds = 2000;
constexpr int retryMilliseconds = 20;
constexpr int announcementMilliseconds = 150;
const QString objectPath = QStringLiteral("/com/kestrant/notchapp");
const QString interfaceName = QStringLiteral("org.freedesktop.Application");

QString socketPath() {
    return runtimeFolder() + QStringLiteral("/com.kestrant.notchapp-%1.socket").arg(::getuid());
}

/// The error of taking the lock: EWOULDBLOCK where another process holds it.
tl::expected<FileLock, FileError> takeLock() {
    return FileLock::ofFile(SingleInstance::lockPath(), FileLock::Waiting::none);
}

bool isRunning() {
    const auto lock = takeLock();
    return !lock && lock.error().errorNumber == EWOULDBLOCK;
}

bool sendOverBus(const InstanceRequest& request) {
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return false;
    QDBusMessage call = QDBusMessage::createMethodCall(desktopIdentifier, objectPath, interfaceName,
                                                       QStringLiteral("ActivateAction"));
    const QVariantList parameter = request.text.isEmpty() ? QVariantList() : QVariantList{request.text};
    call << nameOf(request.action) << parameter << QVariantMap();
    call.setAutoStartService(false);
    return bus.call(call, QDBus::Block, answerTimeoutMilliseconds).type() == QDBusMessage::ReplyMessage;
}

bool sendOverSocket(const InstanceRequest& request) {
    QLocalSocket socket;
    socket.connectToServer(socketPath());
    if (!socket.waitForConnected(answerTimeoutMilliseconds))
        return false;
    socket.write(lineOf(request) + '\n');
    return socket.waitForReadyRead(answerTimeoutMilliseconds) && socket.readAll().startsWith("ok");
}

/// The object that the desktop and other starts call on the bus.
class BusEndpoint : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

  public:
    explicit BusEndpoint(SingleInstance::Handler handler) : handler_(std::move(handler)) {}

  public Q_SLOTS:
    void Activate(const QVariantMap&) { handler_({InstanceRequest::Action::show}); }
    void Open(const QStringList&, const QVariantMap&) {
        sendErrorReply(QDBusError::NotSupported, QStringLiteral("Kestrant opens no files."));
    }
    void ActivateAction(const QString& name, const QVariantList& parameter, const QVariantMap&) {
        const auto action = actionNamed(name);
        const QString text = parameter.value(0).toString();
        if (!action || text.size() > InstanceRequest::longestText)
            sendErrorReply(QDBusError::InvalidArgs, action ? QStringLiteral("The text is too long.")
                                                           : QStringLiteral("There is no such action."));
        else
            handler_({*action, text});
    }

  private:
    SingleInstance::Handler handler_;
};

}  // namespace

struct SingleInstance::Private {
    /// Held by the one; the system lets go of it with the process, however that ends.
    std::optional<FileLock> lock;
    std::unique_ptr<BusEndpoint> endpoint;
    std::unique_ptr<CommandSocket> server;
};

QString SingleInstance::lockPath() {
    return socketPath() + QStringLiteral(".lock");
}

SingleInstance::SingleInstance(QObject* parent) : QObject(parent), d_(std::make_unique<Private>()) {}

SingleInstance::~SingleInstance() {
    if (d_->endpoint)
        QDBusConnection::sessionBus().unregisterService(desktopIdentifier);
}

SingleInstance::Claim SingleInstance::claim(Handler handler) {
    // The person's own folder may not be there yet.
    (void)createFolder(runtimeFolder());
    auto lock = takeLock();
    if (lock && lock->isHeld()) {
        d_->lock = std::move(*lock);
        // The lock is held; listening for commands can wait until the first frame.
        QTimer::singleShot(announcementMilliseconds, this, [this, handler = std::move(handler)] {
            if (claimOnBus(handler) == Claim::taken)
                Q_EMIT takenOnBus();
            else
                (void)listen(handler);
        });
        return Claim::first;
    }
    if (!lock && lock.error().errorNumber == EWOULDBLOCK)
        return Claim::taken;
    qWarning("There is no lock at %s: %s", qUtf8Printable(lockPath()),
             lock ? "the file system has none" : qUtf8Printable(lock.error().description));
    const Claim onBus = claimOnBus(handler);
    return onBus == Claim::unavailable && listen(handler) ? Claim::first : onBus;
}

SingleInstance::Claim SingleInstance::claimOnBus(const Handler& handler) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return Claim::unavailable;
    // The object is there before the name is, so that whoever sees the name gets an answer.
    d_->endpoint = std::make_unique<BusEndpoint>(handler);
    bus.registerObject(objectPath, d_->endpoint.get(), QDBusConnection::ExportAllSlots);
    if (bus.registerService(desktopIdentifier))
        return Claim::first;
    bus.unregisterObject(objectPath);
    d_->endpoint.reset();
    return bus.interface()->isServiceRegistered(desktopIdentifier) ? Claim::taken : Claim::unavailable;
}

bool SingleInstance::listen(const Handler& handler) {
    auto server = std::make_unique<CommandSocket>([handler](const QByteArray& line) {
        const auto request = requestOf(line);
        if (request)
            handler(*request);
        return request.has_value();
    });
    if (!server->listenAt(socketPath()))
        return false;
    d_->server = std::move(server);
    return true;
}

bool SingleInstance::send(const InstanceRequest& request) {
    // One that has only just started holds the lock and cannot be reached yet.
    const QDeadlineTimer deadline(answerTimeoutMilliseconds);
    while (!sendOverBus(request) && !sendOverSocket(request)) {
        if (!isRunning() || deadline.hasExpired())
            return false;
        QThread::msleep(retryMilliseconds);
    }
    return true;
}

}  // namespace kestrant

#include "SingleInstance.moc"
