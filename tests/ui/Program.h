#pragma once

#include "calendar/CalendarStore.h"
#include "completion/CompletionLedgerRepository.h"
#include "eventkit/memory/InMemoryEventStore.h"
#include "feedback/Feedback.h"
#include "foundation/CurrentCalendars.h"
#include "foundation/NotificationCenter.h"
#include "notch/NotchGeometry.h"
#include "notch/NotchInteractionModel.h"
#include "preferences/Localization.h"
#include "reminders/ReminderStore.h"
#include "support/ManualExecutor.h"
#include "support/ManualScheduler.h"
#include "support/MemoryUserDefaults.h"
#include "ui/calendar/CalendarActionHistory.h"
#include "ui/calendar/CalendarEditViewModel.h"
#include "ui/calendar/CalendarViewModel.h"
#include "ui/calendar/NewEventViewModel.h"
#include "ui/onboarding/YearRevealViewModel.h"
#include "ui/panel/Appearance.h"
#include "ui/panel/HistoryViewModel.h"
#include "ui/panel/Localizer.h"
#include "ui/panel/PanelViewModel.h"
#include "ui/reminders/QuickAddViewModel.h"
#include "ui/reminders/ReminderEditViewModel.h"
#include "ui/reminders/RemindersViewModel.h"
#include "ui/settings/SettingsViewModel.h"

#include <QTemporaryDir>

namespace kestrant::test {

/// Keeps what was to be heard.
class RecordingCuePlayer : public CuePlayer {
  public:
    void prepare() override {}
    void play(Cue cue) override { heard.push_back(cue); }

    std::vector<Cue> heard;
};

/// The program below its window, on a database in memory: Saturday 21 November 2026, 14:30 in Paris, in
/// English.
struct Program {
    Program() {
        preferences.setLanguage(Language::english);
        appearance.setReducedMotion(true);
        interaction.setExpansionEnabled(true);
        home = database.putCalendar({.title = QStringLiteral("Home"), .color = Color{0x30, 0xd1, 0x58}});
        work = database.putCalendar({.title = QStringLiteral("Work"), .color = Color{0xff, 0x45, 0x3a}});
    }

    /// Adds a reminder; the day counts from today.
    QString add(const QString& title, std::optional<int> day = {}, QTime timeOfDay = {}) {
        EKReminderData data;
        data.title = title;
        data.calendarIdentifier = home;
        if (day) {
            const QDate date = QDate(2026, 11, 21).addDays(*day);
            data.dueDateComponents = timeOfDay.isValid() ? DateComponents::fromDateTime(date, timeOfDay)
                                                         : DateComponents::fromDate(date);
        }
        return database.putReminder(data);
    }
    /// Opens the database, or takes its later changes in.
    void load() {
        if (store.accessState().kind != ReminderAccessState::Kind::authorized)
            store.requestAccess();
        if (calendarStore.accessState().kind != CalendarAccessState::Kind::authorized)
            calendarStore.requestAccess();
        settle();
    }
    /// Lets debounced reloads pass; pending completions stay pending.
    void settle() { time.advance(std::chrono::milliseconds(400)); }

    [[nodiscard]] QStringList titles() {
        QStringList titles;
        for (const ReminderTask& task : reminders.cards()->tasks())
            titles.append(task.title);
        return titles;
    }
    [[nodiscard]] ReminderCard card(int row) {
        return reminders.cards()
            ->data(reminders.cards()->index(row), ReminderCardModel::cardRole)
            .value<ReminderCard>();
    }

    ManualScheduler time{*parseIso8601(u"2026-11-21T14:30:00+01:00")};
    FixedCurrentCalendar calendar{ZoneCalendar(*TimeZone::named("Europe/Paris"))};
    MemoryUserDefaults defaults;
    Preferences preferences{defaults, [] { return QLocale(); }};
    Localization localization{preferences};
    RecordingCuePlayer cues;
    SilentHapticPerformer haptics;
    Feedback feedback{preferences, cues, haptics};
    NotificationCenter notifications;
    InMemoryEventStore database{time, time, calendar};
    QTemporaryDir folder;
    CompletionLedgerRepository ledger{folder.filePath(QStringLiteral("ledger.json"))};
    ReminderActionHistory actions{time, time};
    CalendarActionHistory calendarActions{actions};
    ReminderStore store{ReminderStoreServices{.eventStore = database,
                                              .scheduler = time,
                                              .clock = time,
                                              .calendar = calendar,
                                              .defaults = defaults,
                                              .localization = localization,
                                              .notifications = notifications,
                                              .ledger = ledger,
                                              .history = &actions}};
    ManualExecutor executor;
    CalendarStore calendarStore{CalendarStoreServices{
        .eventStore = database,
        .scheduler = time,
        .clock = time,
        .calendar = calendar,
        .preferences = preferences,
        .notifications = notifications,
        .executor = executor,
        .locale = [this] { return preferences.dateLocale(); },
        .clearReminderDueDate =
            [this](const QString& id, const std::function<void(tl::expected<void, TextPair>)>& done) {
                store.removeFromCalendar(id, [done](const tl::expected<void, ReminderStoreError>& result) {
                    done(result.map_error([](const ReminderStoreError& error) { return error.message(); }));
                });
            },
        .actions = &calendarActions}};
    NotchInteractionModel interaction{time, preferences, feedback};
    NotchGeometry geometry{Screen{.name = QStringLiteral("test"), .frame = QRectF(0, 0, 1512, 982)}};
    Localizer localizer{localization};
    Appearance appearance{nullptr};
    PanelViewModel panel{interaction, geometry, store, preferences, notifications, feedback};
    RemindersViewModel reminders{store, time, calendar, localizer};
    CalendarViewModel days{calendarStore, time,
                           calendar,      localizer,
                           panel,         [] { return QLocale(QLocale::English, QLocale::UnitedKingdom); }};
    QuickAddViewModel quickAdd{store, time, calendar, localizer};
    HttpSession session{time};
    FeedbackAPIClient feedbackClient{InformationDictionary(), session};
    FeedbackViewModel feedbackForm{[this]() -> FeedbackAPIClient& { return feedbackClient; }, localizer};
    SettingsViewModel settings{preferences, localizer, feedbackForm};
    NewEventViewModel newEvent{calendarStore, time, calendar, localizer};
    CalendarEditViewModel calendarEdit{calendarStore, time, calendar, localizer};
    ReminderEditViewModel reminderEdit{store, time, calendar, localizer};
    HistoryViewModel history{actions, notifications, localizer};
    YearRevealViewModel yearReveal{interaction, ledger, preferences, time, calendar, localizer};
    QString home;
    QString work;
};

}  // namespace kestrant::test
