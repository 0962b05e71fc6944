#pragma once

#include "foundation/Scheduler.h"
#include "foundation/ZoneCalendar.h"
#include "ui/calendar/CalendarEditViewModel.h"
#include "ui/calendar/CalendarViewModel.h"
#include "ui/calendar/NewEventViewModel.h"
#include "ui/onboarding/YearRevealViewModel.h"
#include "ui/panel/Appearance.h"
#include "ui/panel/HistoryViewModel.h"
#include "ui/panel/Localizer.h"
#include "ui/panel/PanelView.h"
#include "ui/panel/PanelViewModel.h"
#include "ui/reminders/QuickAddViewModel.h"
#include "ui/reminders/ReminderEditViewModel.h"
#include "ui/reminders/RemindersViewModel.h"
#include "ui/settings/FeedbackViewModel.h"
#include "ui/settings/SettingsViewModel.h"

#include <QLocale>

#include <functional>
#include <optional>

namespace kestrant {

class CalendarStore;
class CompletionLedgerRepository;
class Feedback;
class Localization;
class NotchGeometry;
class NotchInteractionModel;
class NotificationCenter;
class Preferences;
class ReminderActionHistory;
class ReminderStore;

/// The view models and the view they fill, built in the order in which they need each other. Thread: main.
class PanelInterface {
  public:
    struct Models {
        const Clock& clock;
        const CurrentCalendar& calendar;
        Preferences& preferences;
        Localization& localization;
        NotificationCenter& notifications;
        const Feedback& cues;
        NotchInteractionModel& interaction;
        NotchGeometry& geometry;
        ReminderStore& reminders;
        ReminderActionHistory& history;
        CalendarStore& calendarStore;
        std::function<FeedbackAPIClient&()> feedbackClient;
        SettingsServices settings;
        CompletionLedgerRepository& ledger;
    };

    explicit PanelInterface(const Models& models)
        : localizer(models.localization)
        , panel(models.interaction, models.geometry, models.reminders, models.preferences,
                models.notifications, models.cues)
        , reminders(models.reminders, models.clock, models.calendar, localizer)
        , calendar(models.calendarStore, models.clock, models.calendar, localizer, panel,
                   [] { return QLocale::system(); })
        , quickAdd(models.reminders, models.clock, models.calendar, localizer)
        , feedback(models.feedbackClient, localizer)
        , settings(models.preferences, localizer, feedback, models.settings)
        , newEvent(models.calendarStore, models.clock, models.calendar, localizer)
        , calendarEdit(models.calendarStore, models.clock, models.calendar, localizer)
        , reminderEdit(models.reminders, models.clock, models.calendar, localizer)
        , history(models.history, models.notifications, localizer)
        , yearReveal(models.interaction, models.ledger, models.preferences, models.clock, models.calendar,
                     localizer)
        , view({models.interaction, localizer, appearance, panel, reminders, calendar, quickAdd, settings,
                newEvent, calendarEdit, reminderEdit, history, yearReveal}) {}

    Localizer localizer;
    Appearance appearance{nullptr};
    PanelViewModel panel;
    RemindersViewModel reminders;
    CalendarViewModel calendar;
    QuickAddViewModel quickAdd;
    FeedbackViewModel feedback;
    SettingsViewModel settings;
    NewEventViewModel newEvent;
    CalendarEditViewModel calendarEdit;
    ReminderEditViewModel reminderEdit;
    HistoryViewModel history;
    YearRevealViewModel yearReveal;
    PanelView view;
};

}  // namespace kestrant
