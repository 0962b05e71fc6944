#include "ui/onboarding/OnboardingTrial.h"

#include "notch/NotchInteractionModel.h"
#include "notch/NotchPanelController.h"
#include "preferences/PreferenceKeys.h"
#include "reminders/ReminderFlagIndex.h"
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
    , database_(services.scheduler, services.clock, services.calendar)
    , ledger_({}, keepNothing)
    , actions_(services.scheduler, services.clock)
    , calendarActions_(actions_)
    , store_(ReminderStoreServices{
          .eventStore = database_,
          .scheduler = services.scheduler,
          .clock = services.clock,
          .calendar = services.calendar,
          .defaults = defaults_,
          .localization = localization_,
          .notifications = notifications_,
          .ledger = ledger_,
          .completionsCommitted = [this](int) { Q_EMIT completed(); },
          .history = &actions_,
      })
    , calendarStore_(CalendarStoreServices{
          .eventStore = database_,
          .scheduler = services.scheduler,
          .clock = services.clock,
          .calendar = services.calendar,
          .preferences = preferences_,
          .notifications = notifications_,
          .executor = executor_,
          .locale = [this] { return preferences_.dateLocale(); },
          .clearReminderDueDate =
              [this](const QString& reminderID,
                     const std::function<void(tl::expected<void, TextPair>)>& done) {
                  store_.removeFromCalendar(reminderID,
                                            [done](const tl::expected<void, ReminderStoreError>& result) {
                                                done(result.map_error([](const ReminderStoreError& error) {
                                                    return error.message();
                                                }));
                                            });
              },
          .actions = &calendarActions_,
      })
    , geometry_(trialScreen)
    , panel_(notch, geometry_, store_, preferences_, notifications_, services.feedback)
    , reminders_(store_, services.clock, services.calendar, services.localizer)
    , calendar_(calendarStore_, services.clock, services.calendar, services.localizer, panel_,
                [] { return QLocale::system(); })
    , quickAdd_(store_, services.clock, services.calendar, services.localizer)
    , newEvent_(calendarStore_, services.clock, services.calendar, services.localizer)
    , calendarEdit_(calendarStore_, services.clock, services.calendar, services.localizer)
    , reminderEdit_(store_, services.clock, services.calendar, services.localizer)
    , history_(actions_, notifications_, services.localizer)
    , yearReveal_(notch, ledger_, preferences_, services.clock, services.calendar, services.localizer)
    , overlays_(services.window, services.engine, notch, services.appearance) {
    overlays_.setRoomHeight(roomHeight);
    connect(&notch, &NotchInteractionModel::activeReminderDragsChanged, this,
            &OnboardingTrial::isCarryingChanged);
    connect(&panel_, &PanelViewModel::reminderDropped, this, &OnboardingTrial::rescheduled);
    connect(&history_, &HistoryViewModel::replayed, this, &OnboardingTrial::tookBack);
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
    actions_.clear();
    for (const EKEntityType type : {EKEntityType::reminder, EKEntityType::event}) {
        for (const EKCalendar& calendar : database_.calendars(type))
            database_.dropCalendar(calendar.calendarIdentifier);
    }
    addDemoData(database_, services_.clock.now(), services_.calendar.calendar(),
                services_.localizer.language(), [this](const std::optional<EKError>&) {
                    flagExamples();
                    // Not earlier: nothing is to be seen of an empty database.
                    store_.requestAccess();
                    calendarStore_.requestAccess();
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

void OnboardingTrial::addReminder() {
    notifications_.post(notifications::newReminder);
}

void OnboardingTrial::undo() {
    notifications_.post(notifications::undoReminderAction);
}

}  // namespace kestrant
