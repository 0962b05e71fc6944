#pragma once

#include "foundation/Scheduler.h"
#include "foundation/Subscription.h"
#include "foundation/Text.h"
#include "reminders/flags/ReminderFlagIndex.h"

#include <QObject>
#include <QSet>

#include <tl/expected.hpp>

#include <functional>
#include <map>
#include <optional>

namespace kestrant {

class FlaggedReminderAutomation;
class UserDefaults;

/// Holds the index of flags, kept in the preferences, and keeps it and the Reminders application in step:
/// flags set there are read, flags set here are written there. A flag set here stays, whatever becomes of
/// that. Thread: main.
class ReminderFlagSync : public QObject {
    Q_OBJECT

  public:
    using Completion = std::function<void(const std::optional<TextPair>& failure)>;

    /// Without an automation flags are kept here only. Everything given outlives this object.
    ReminderFlagSync(Scheduler& scheduler, UserDefaults& defaults, FlaggedReminderAutomation* automation);

    [[nodiscard]] const ReminderFlagIndex& index() const { return index_; }
    [[nodiscard]] bool isLoading() const { return isLoading_; }
    /// Why the flags set elsewhere could not be read the last time.
    [[nodiscard]] const std::optional<TextPair>& error() const { return error_; }
    /// Reminders whose flag is being written.
    [[nodiscard]] const QSet<QString>& pendingIDs() const { return pendingIDs_; }
    /// A read or a write is under way.
    [[nodiscard]] bool isBusy() const { return underWay_ > 0; }

    /// Reads the flags set elsewhere; the way to try again after a failure. An earlier reading that has not
    /// ended counts no more.
    void load();
    /// Sets a flag here, at once.
    void setLocally(const QString& reminderID, bool flag);
    /// Writes the flag as it is set here. The list is the one that holds the reminder, by its title.
    void write(const QString& reminderID, const std::optional<QString>& listTitle, Completion completion);
    /// The reminder has another identifier from now on.
    void follow(const QString& formerID, const QString& reminderID);

  Q_SIGNALS:
    void indexChanged();
    void isLoadingChanged();
    void errorChanged();
    /// Emitted when no write is under way any more.
    void ended();

  private:
    void setIndex(ReminderFlagIndex index);
    /// Another process has changed them, or this one has.
    void takeOverLocalFlags();
    void setLoading(bool loading);
    void setError(std::optional<TextPair> error);
    void end();

    Scheduler& scheduler_;
    UserDefaults& defaults_;
    FlaggedReminderAutomation* automation_;
    ReminderFlagIndex index_;
    bool isLoading_ = false;
    std::optional<TextPair> error_;
    QSet<QString> pendingIDs_;
    int underWay_ = 0;
    int generation_ = 0;
    ScheduledTask timeoutTask_;
    /// The number of the latest write, by flag key.
    std::map<QString, int> writeGenerations_;
    Subscription defaultsObserver_;
};

}  // namespace kestrant
