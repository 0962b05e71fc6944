#include "ui/onboarding/OnboardingTrial.h"

#include "notch/NotchInteractionModel.h"
#include "notch/NotchPanelController.h"
#include "preferences/PreferenceKeys.h"
#include "reminders/flags/ReminderFlagIndex.h"
#include "ui/onboarding/DemoData.h"
#include "ui/panel/Localizer.h"

#include <QLocale>
#include <QStringList>

#include <utility>

namespace kestrant {
namespace {

/// A display of ordinary width without a camera.
const Screen trialScreen{.name = QStringLiteral("trial"), .frame = QRectF(0, 0, 1512, 982)};
/// Points from the top of the introduction's window within which popovers stay, in their own scale.
constexpr double roomHeight = 620.0;

bool isShared(const QString& key) {
    namespace keys = preferenceKeys;
    static const QStringList shared{
        keys::language,       keys::hoverExpandDelay,        keys::requiresClickOrSwipeToExpand,
        keys::autoCloseDelay, keys::notchMaterial,           keys::showReminders,
        keys::showCalendar,   keys::showRemindersInCalendar, keys::moduleOrder,
        keys::layoutRatio};
    return shared.contains(key);
}

void keepNothing(const QString&, const std::shared_ptr<const LedgerChange>& change,
                 const std::function<void(const LedgerWriteResult&)>& done) {
    done(change->after);
}

}  // namespace

QJsonValue TrialDefaults::object(const QString& key) const {
    return isShared(key) ? real_.object(key) : values_.value(key);
}

void TrialDefaults::set(const QString& key, const QJsonValue& value) {
    if (isShared(key)) {
        real_.set(key, value);
        return;
    }
    if (value.isUndefined())
        values_.remove(key);
    else
        values_.insert(key, value);
    observers_.notify(key);
}

Subscription TrialDefaults::observe(std::function<void(const QString&)> observer) {
    return observers_.add(std::move(observer));
}

OnboardingTrial::OnboardingTrial(const Services& services, NotchInteractionModel& notch)
    : services_(services)
    , notch_(notch)
    , defaults_(services.preferences.defaults())
    , preferences_(defaults_, [] { return QLocale::system(); })
    , localization_(preferences_)
    , database_(services.scheduler, services.clock, services.currentZone)
    , ledger_({}, keepNothing)
    , geometry_(trialScreen)
    , composition_({
          .eventStore = database_,
          .openReminders = openReminders_,
          .scheduler = services.scheduler,
          .clock = services.clock,
          .currentZone = services.currentZone,
          .preferences = preferences_,
          .localization = localization_,
          .localizer = services.localizer,
          .notifications = notifications_,
          .ledger = ledger_,
          .executor = executor_,
          .locale = [] { return QLocale::system(); },
          .feedback = services.feedback,
          .interaction = notch,
          .geometry = geometry_,
          .completionsCommitted = [this](int) { Q_EMIT completed(); },
      })
    , overlays_(services.window, services.engine, notch, services.appearance) {
    // What is tried out is no achievement.
    preferences_.celebrates.set(false);
    overlays_.setRoomHeight(roomHeight);
    connect(&notch, &NotchInteractionModel::activeReminderDragsChanged, this,
            &OnboardingTrial::isCarryingChanged);
    connect(&composition_.panel, &PanelViewModel::reminderDropped, this, &OnboardingTrial::rescheduled);
    connect(&composition_.history, &HistoryViewModel::replayed, this, &OnboardingTrial::tookBack);
    connect(&overlays_, &OverlayHost::overlaysChanged, this, [this] {
        if (overlays_.topmost() == QLatin1String("card"))
            Q_EMIT openedMenu();
    });
    creations_ = notifications_.observe(QLatin1String(ReminderStore::reminderCreatedNotification),
                                        [this] { Q_EMIT added(); });
    connect(&services.localizer, &Localizer::languageChanged, this, &OnboardingTrial::reset);
    reset();
}

void OnboardingTrial::reset() {
    overlays_.dismissAll();
    composition_.actions.clear();
    for (const EKEntityType type : {EKEntityType::reminder, EKEntityType::event}) {
        for (const EKCalendar& calendar : database_.calendars(type))
            database_.dropCalendar(calendar.calendarIdentifier);
    }
    addDemoData(database_, services_.clock.now(), services_.currentZone.zone(),
                services_.localizer.language(), [this](const std::optional<EKError>&) {
                    flagExamples();
                    // Only now, so that the empty database is never shown.
                    composition_.reminderStore.requestAccess();
                    composition_.calendarStore.requestAccess();
                });
}

void OnboardingTrial::flagExamples() {
    const ReminderFlagIndex before = ReminderFlagIndex::load(defaults_);
    ReminderFlagIndex flags;
    for (const EKReminderData& reminder : database_.reminders()) {
        if (reminder.isFlagged)
            flags.localOverrides.insert(ReminderFlagIndex::flagKey(reminder.calendarItemIdentifier), true);
    }
    flags.save(defaults_, before);
}

bool OnboardingTrial::isCarrying() const {
    return !notch_.activeReminderDragIDs().isEmpty();
}

bool OnboardingTrial::showsSigns() const {
    return preferences_.restingContent() != RestingContent::nothing;
}

void OnboardingTrial::setShowsSigns(bool shows) {
    if (shows == showsSigns())
        return;
    preferences_.restingContent.set(shows ? RestingContent::everything : RestingContent::nothing);
    Q_EMIT showsSignsChanged();
}

void OnboardingTrial::addReminder() {
    notifications_.post(notifications::newReminder);
}

void OnboardingTrial::undo() {
    notifications_.post(notifications::undoReminderAction);
}

}  // namespace kestrant
