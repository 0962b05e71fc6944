#pragma once

#include "foundation/DateComponents.h"
#include "pictures/MemoryGround.h"
#include "support/ManualExecutor.h"
#include "support/ManualScheduler.h"
#include "support/MemoryUserDefaults.h"
#include "ui/settings/SettingsViewModel.h"

namespace kestrant::test {

/// Keeps what was to be heard.
class RecordingCuePlayer : public CuePlayer {
  public:
    void prepare() override {}
    void play(Cue cue) override { heard.push_back(cue); }

    std::vector<Cue> heard;
};

using ProgramGround = MemoryGround<ManualScheduler, MemoryUserDefaults, RecordingCuePlayer, ManualExecutor>;

/// The program below its window, in English, on a display without a camera.
struct Program : ProgramGround, PanelComposition {
    Program() : ProgramGround(QLocale(), Language::english, 1512), PanelComposition(services) {
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
