#pragma once

#include "reminders/model/ReminderStoreError.h"

#include <QString>

#include <tl/expected.hpp>

#include <functional>

namespace kestrant {

class Clock;
class CompletionLedgerRepository;
class CurrentTimeZone;
class EKEventStore;
class FlaggedReminderAutomation;
class Localization;
class NotificationCenter;
class OpenReminders;
class ReminderActionHistory;
class Scheduler;
class UserDefaults;

/// The surroundings of a ReminderStore. Everything here must outlive the store.
struct ReminderStoreServices {
    EKEventStore& eventStore;
    /// Those of the same database.
    OpenReminders& openReminders;
    Scheduler& scheduler;
    const Clock& clock;
    CurrentTimeZone& currentZone;
    UserDefaults& defaults;
    /// The language of the first list, and the locale of titles' order and of search.
    Localization& localization;
    NotificationCenter& notifications;
    CompletionLedgerRepository& ledger;
    /// Told the number of completions that were just committed from here; may be empty.
    std::function<void(int count)> completionsCommitted;
    /// May be null: then nothing is recorded.
    ReminderActionHistory* history = nullptr;
    /// May be null: then flags are kept by this program alone.
    FlaggedReminderAutomation* flags = nullptr;
};

/// The completion of a change of a reminder; may be empty.
using ReminderCompletion = std::function<void(tl::expected<void, ReminderStoreError>)>;

}  // namespace kestrant
