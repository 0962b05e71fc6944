#pragma once

#include "calendar/CalendarStore.h"
#include "reminders/store/ReminderActionHistory.h"
#include "reminders/store/ReminderStore.h"
#include "ui/calendar/CalendarActionHistory.h"
#include "ui/calendar/CalendarEditViewModel.h"
#include "ui/calendar/CalendarViewModel.h"
#include "ui/calendar/EventDetailsViewModel.h"
#include "ui/calendar/NewEventViewModel.h"
#include "ui/panel/HistoryViewModel.h"
#include "ui/panel/PanelViewModel.h"
#include "ui/recap/AnnouncementViewModel.h"
#include "ui/recap/CelebrationViewModel.h"
#include "ui/recap/RecapViewModel.h"
#include "ui/recap/YearRevealViewModel.h"
#include "ui/reminders/QuickAddViewModel.h"
#include "ui/reminders/ReminderEditViewModel.h"
#include "ui/reminders/RemindersViewModel.h"

#include <QLocale>

#include <functional>

namespace kestrant {

class BackgroundExecutor;
class CompletionLedgerRepository;
class SensoryFeedback;
class FlaggedReminderAutomation;
class Localizer;
class NotchGeometry;
class NotchInteractionModel;
class NotificationCenter;
class OpenReminders;
class Preferences;

/// A panel without its window: one history, the stores over a database and the view models over them, built
/// in the order in which they need each other. The program, the introduction, pictures and tests each have
/// one over a database of their own. Thread: main.
struct PanelComposition {
    /// Everything must outlive the composition.
    struct Services {
        EKEventStore& eventStore;
        /// Those of the same database.
        OpenReminders& openReminders;
        Scheduler& scheduler;
        Clock& clock;
        CurrentTimeZone& currentZone;
        Preferences& preferences;
        Localization& localization;
        Localizer& localizer;
        NotificationCenter& notifications;
        CompletionLedgerRepository& ledger;
        /// Where rows of the calendar are made and pictures written.
        BackgroundExecutor& executor;
        /// The locale of the calendar's rows, asked anew for each load.
        std::function<QLocale()> locale;
        const SensoryFeedback& feedback;
        NotchInteractionModel& interaction;
        NotchGeometry& geometry;
        /// Told the number of completions that were just committed from here; may be empty.
        std::function<void(int count)> completionsCommitted = {};
        /// Of the page that shows shared recaps; empty for none.
        QString recapShareBaseUrl = {};
        /// May be null: then flags are kept by this program alone.
        FlaggedReminderAutomation* flags = nullptr;
    };
    explicit PanelComposition(const Services& services);

    ReminderActionHistory actions;
    CalendarActionHistory calendarActions;
    ReminderStore reminderStore;
    CalendarStore calendarStore;
    PanelViewModel panel;
    RemindersViewModel reminders;
    CalendarViewModel days;
    QuickAddViewModel quickAdd;
    NewEventViewModel newEvent;
    CalendarEditViewModel calendarEdit;
    EventDetailsViewModel eventDetails;
    ReminderEditViewModel reminderEdit;
    HistoryViewModel history;
    RecapViewModel recap;
    CelebrationViewModel celebration;
    AnnouncementViewModel announcement;
    YearRevealViewModel yearReveal;
};

}  // namespace kestrant
