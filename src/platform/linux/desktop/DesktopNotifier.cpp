#include "platform/linux/desktop/DesktopNotifier.h"

#include "foundation/ControlCharacters.h"
#include "foundation/StandardFolders.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QVariantMap>

#include <array>
#include <utility>

namespace kestrant {

namespace {

const QString serviceName = QStringLiteral("org.freedesktop.Notifications");
const QString objectPath = QStringLiteral("/org/freedesktop/Notifications");
const QString applicationName = QStringLiteral("Kestrant");

constexpr int answerTimeoutMilliseconds = 5000;
constexpr int neverExpires = 0;
/// Why the service closed a notification.
constexpr uint dismissedByThePerson = 2;

constexpr std::array<std::pair<AlertAnswer, const char*>, 5> actionKeys{{
    {AlertAnswer::complete, "complete"},
    {AlertAnswer::snoozeTenMinutes, "snooze-10-minutes"},
    {AlertAnswer::snoozeOneHour, "snooze-1-hour"},
    {AlertAnswer::snoozeUntilTomorrow, "snooze-tomorrow"},
    // A click on the notification itself.
    {AlertAnswer::open, "default"},
}};

QString keyOf(AlertAnswer answer) {
    for (const auto& [known, key] : actionKeys)
        if (known == answer)
            return QString::fromLatin1(key);
    return {};
}

std::optional<AlertAnswer> answerOf(const QString& key) {
    for (const auto& [answer, known] : actionKeys)
        if (key == QLatin1String(known))
            return answer;
    return {};
}

}  // namespace

DesktopNotifier::DesktopNotifier(const QDBusConnection& bus, QObject* parent)
    : QObject(parent)
    , bus_(bus)
    , watcher_(serviceName, bus, QDBusServiceWatcher::WatchForOwnerChange) {
    bus_.connect(serviceName, objectPath, serviceName, QStringLiteral("ActionInvoked"), this,
                 SLOT(actionInvoked(uint, QString)));
    bus_.connect(serviceName, objectPath, serviceName, QStringLiteral("NotificationClosed"), this,
                 SLOT(notificationClosed(uint, uint)));
    // Another service knows nothing of what was shown by the one before.
    connect(&watcher_, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString&, const QString& before) {
                if (!before.isEmpty())
                    entries_.clear();
            });
}

DesktopNotifier::~DesktopNotifier() {
    for (const Entry& entry : std::as_const(entries_))
        if (entry.number != 0)
            close(entry.number);
}

void DesktopNotifier::show(const UserNotification& notification, Shown shown) {
    const int generation = ++generation_;
    entries_[notification.id].generation = generation;
    // Asked each time: another service may have taken over.
    call(QStringLiteral("GetCapabilities"), {},
         [this, notification, generation, shown = std::move(shown)](const QDBusPendingCallWatcher& watcher) {
             const QDBusPendingReply<QStringList> reply = watcher;
             const bool readsMarkup =
                 reply.isValid() && reply.value().contains(QStringLiteral("body-markup"));
             notify(notification, readsMarkup, generation, shown);
         });
}

void DesktopNotifier::notify(const UserNotification& notification, bool readsMarkup, int generation,
                             Shown shown) {
    const uint replaced = entries_.value(notification.id).number;
    QStringList actions{keyOf(AlertAnswer::open), QString()};
    for (const UserNotification::Action& action : notification.actions)
        actions << keyOf(action.answer) << action.label;
    const QVariantMap hints{
        {QStringLiteral("desktop-entry"), desktopIdentifier},
        {QStringLiteral("category"), QStringLiteral("x-kestrant.reminder")},
        {QStringLiteral("sound-name"), QStringLiteral("alarm-clock-elapsed")},
    };
    // Only the body may hold markup.
    const QString title = onOneLine(notification.title);
    const QString plainBody = withoutControlCharacters(notification.body);
    const QString body = readsMarkup ? plainBody.toHtmlEscaped() : plainBody;
    call(QStringLiteral("Notify"),
         {applicationName, replaced, desktopIdentifier, title, body, actions, hints, neverExpires},
         [this, id = notification.id, generation,
          shown = std::move(shown)](const QDBusPendingCallWatcher& watcher) {
             const QDBusPendingReply<uint> reply = watcher;
             const auto entry = entries_.find(id);
             const bool isWanted = entry != entries_.end() && entry->generation == generation;
             if (!reply.isValid()) {
                 if (isWanted && entry->number == 0)
                     entries_.erase(entry);
             } else if (isWanted) {
                 entry->number = reply.value();
             } else if (entry == entries_.end() || entry->number != reply.value()) {
                 // Withdrawn, or shown anew, before the service had given it a number.
                 close(reply.value());
             }
             shown(reply.isValid());
         });
}

void DesktopNotifier::withdraw(const QString& id) {
    const Entry entry = entries_.take(id);
    if (entry.number != 0)
        close(entry.number);
}

Subscription DesktopNotifier::observeAnswers(AnswerObserver observer) {
    return observers_.add(std::move(observer));
}

void DesktopNotifier::call(const QString& method, const QVariantList& arguments,
                           std::function<void(const QDBusPendingCallWatcher&)> done) {
    QDBusMessage message = QDBusMessage::createMethodCall(serviceName, objectPath, serviceName, method);
    message.setArguments(arguments);
    auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(message, answerTimeoutMilliseconds), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher, done = std::move(done)] {
        watcher->deleteLater();
        done(*watcher);
    });
}

void DesktopNotifier::close(uint number) {
    QDBusMessage message = QDBusMessage::createMethodCall(serviceName, objectPath, serviceName,
                                                          QStringLiteral("CloseNotification"));
    message.setAutoStartService(false);
    message << number;
    bus_.send(message);
}

QString DesktopNotifier::idOf(uint number) const {
    for (auto entry = entries_.cbegin(); entry != entries_.cend(); ++entry)
        if (entry->number == number)
            return entry.key();
    return {};
}

void DesktopNotifier::answered(uint number, AlertAnswer answer) {
    const QString id = number == 0 ? QString() : idOf(number);
    if (id.isEmpty())
        return;
    entries_.remove(id);
    observers_.notify(id, answer);
}

void DesktopNotifier::actionInvoked(uint number, const QString& action) {
    const auto answer = answerOf(action);
    if (!answer || idOf(number).isEmpty())
        return;
    // Some services leave a notification on the screen after its action.
    close(number);
    answered(number, *answer);
}

void DesktopNotifier::notificationClosed(uint number, uint reason) {
    if (reason == dismissedByThePerson) {
        answered(number, AlertAnswer::dismiss);
        return;
    }
    const QString id = number == 0 ? QString() : idOf(number);
    if (!id.isEmpty())
        entries_.remove(id);
}

}  // namespace kestrant
