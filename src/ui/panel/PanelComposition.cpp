#include "ui/panel/PanelComposition.h"

#include "preferences/Preferences.h"

namespace kestrant {

PanelComposition::PanelComposition(const Services& services)
    : actions(services.scheduler, services.clock)
    , calendarActions(actions)
    , reminderStore({
          .eventStore = services.eventStore,
          .openReminders = services.openReminders,
          .scheduler = services.scheduler,
          .clock = services.clock,
          .currentZone = services.currentZone,
          .defaults = services.preferences.defaults(),
          .localization = services.localization,
          .notifications = services.notifications,
          .ledger = services.ledger,
          .completionsCommitted =
              [this, report = services.completionsCommitted](int count) {
                  celebration.noteCompleted(count);
                  if (report)
                      report(count);
              },
          .history = &actions,
          .flags = services.flags,
      })
    , calendarStore({
          .eventStore = services.eventStore,
          .openReminders = services.openReminders,
          .scheduler = services.scheduler,
          .clock = services.clock,
          .currentZone = services.currentZone,
          .preferences = services.preferences,
          .notifications = services.notifications,
          .executor = services.executor,
          .locale = services.locale,
          .clearReminderDueDate =
              [this](const QString& reminderID,
                     const std::function<void(tl::expected<void, TextPair>)>& done) {
                  reminderStore.removeFromCalendar(
                      reminderID, [done](const tl::expected<void, ReminderStoreError>& result) {
                          done(result.map_error(
                              [](const ReminderStoreError& error) { return error.message(); }));
                      });
              },
          .actions = &calendarActions,
      })
    , panel(services.interaction, services.geometry, reminderStore, services.preferences,
            services.notifications, services.feedback)
    , reminders(reminderStore, services.clock, services.currentZone, services.localizer)
    , days(calendarStore, services.clock, services.currentZone, services.localizer, panel, services.locale)
    , quickAdd(reminderStore, services.clock, services.currentZone, services.localizer, services.locale)
    , newEvent(calendarStore, services.clock, services.currentZone, services.localizer, services.locale)
    , calendarEdit(calendarStore, services.clock, services.currentZone, services.localizer)
    , eventDetails(calendarStore, services.clock, services.currentZone, services.localizer, services.locale)
    , reminderEdit(reminderStore, services.clock, services.currentZone, services.localizer)
    , history(actions, services.interaction, services.notifications, services.localizer)
    , recap({.eventStore = services.eventStore,
             .reminders = reminderStore,
             .scheduler = services.scheduler,
             .clock = services.clock,
             .currentZone = services.currentZone,
             .localizer = services.localizer,
             .interaction = services.interaction,
             .executor = services.executor,
             .locale = services.locale,
             .defaults = services.preferences.defaults(),
             .shareBaseUrl = services.recapShareBaseUrl})
    , celebration({.eventStore = services.eventStore,
                   .reminders = reminderStore,
                   .preferences = services.preferences,
                   .scheduler = services.scheduler,
                   .clock = services.clock,
                   .currentZone = services.currentZone,
                   .localizer = services.localizer,
                   .interaction = services.interaction,
                   .feedback = services.feedback,
                   .locale = services.locale})
    , announcement(services.preferences, services.clock, services.scheduler, services.interaction, recap)
    , yearReveal(services.interaction, services.ledger, services.preferences, services.clock,
                 services.currentZone, services.localizer, services.locale) {}

}  // namespace kestrant
