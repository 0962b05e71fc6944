#pragma once

#include "completion/CompletionLedgerRepository.h"
#include "cues/SensoryFeedback.h"
#include "eventkit/memory/InMemoryEventStore.h"
#include "eventkit/model/OpenReminders.h"
#include "foundation/CurrentCalendars.h"
#include "foundation/NotificationCenter.h"
#include "notch/NotchGeometry.h"
#include "notch/NotchInteractionModel.h"
#include "preferences/Localization.h"
#include "support/ManualExecutor.h"
#include "support/ManualScheduler.h"
#include "support/MemoryUserDefaults.h"
#include "ui/panel/Appearance.h"
#include "ui/panel/Localizer.h"
#include "ui/panel/PanelComposition.h"
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

/// The surroundings of the program below its window: a database in memory, Saturday 21 November 2026, 14:30
/// in Paris, in English.
struct ProgramGround {
    ManualScheduler time{*parseIso8601(u"2026-11-21T14:30:00+01:00")};
    FixedCurrentCalendar calendar{ZoneCalendar(*TimeZone::named("Europe/Paris"))};
    MemoryUserDefaults defaults;
    Preferences preferences{defaults, [] { return QLocale(); }};
    Localization localization{preferences};
    RecordingCuePlayer cues;
    SilentHapticPerformer haptics;
    SensoryFeedback feedback{preferences, cues, haptics};
    NotificationCenter notifications;
    InMemoryEventStore database{time, time, calendar};
    OpenReminders openReminders{database, time};
    QTemporaryDir folder;
    CompletionLedgerRepository ledger{folder.filePath(QStringLiteral("ledger.json"))};
    ManualExecutor executor;
    NotchInteractionModel interaction{time, preferences, feedback};
    NotchGeometry geometry{Screen{.name = QStringLiteral("test"), .frame = QRectF(0, 0, 1512, 982)}};
    Localizer localizer{localization};
    Appearance appearance{nullptr};
    PanelComposition::Services services{
        .eventStore = database,
        .openReminders = openReminders,
        .scheduler = time,
        .clock = time,
        .calendar = calendar,
        .preferences = preferences,
        .localization = localization,
        .localizer = localizer,
        .notifications = notifications,
        .ledger = ledger,
        .executor = executor,
        .locale = [] { return QLocale(QLocale::English, QLocale::UnitedKingdom); },
        .feedback = feedback,
        .interaction = interaction,
        .geometry = geometry};
};

/// The program below its window.
struct Program : ProgramGround, PanelComposition {
    Program() : PanelComposition(services) {
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
        if (reminderStore.accessState().kind != ReminderAccessState::Kind::authorized)
            reminderStore.requestAccess();
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

    HttpSession session{time};
    FeedbackAPIClient feedbackClient{InformationDictionary(), session};
    FeedbackViewModel feedbackForm{[this]() -> FeedbackAPIClient& { return feedbackClient; }, localizer};
    SettingsViewModel settings{preferences, localizer, feedbackForm};
    QString home;
    QString work;
};

}  // namespace kestrant::test
