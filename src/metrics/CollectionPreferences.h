#pragma once

#include "foundation/InformationDictionary.h"

#include <QUrl>
#include <QUuid>

#include <functional>
#include <mutex>
#include <optional>

namespace kestrant {
class UserDefaults;
}

namespace kestrant::metrics {

/// Whether completions are counted, and where totals go.
struct Configuration {
    /// The program was built for counting.
    bool isAvailable = false;
    /// It was, and the person has not switched it off.
    bool isEnabled = false;
    std::optional<QUrl> baseURL;

    /// As the program was built; enabled where it is available.
    [[nodiscard]] static Configuration from(const InformationDictionary& information);
};

/// Leave to count. What is counted under it belongs to one epoch, which ends when the person switches
/// counting off.
struct CollectionTicket {
    /// Null until the first epoch has been chosen.
    QUuid epoch;
    bool operator==(const CollectionTicket&) const = default;
};

/// Completions counted while the store could not be used.
struct UnsavedCount {
    qint64 count = 0;
    /// Null when it was the first that was yet to be chosen.
    QUuid epoch;
    bool operator==(const UnsavedCount&) const = default;
};

/// Of two numbers that are not negative; what cannot be held is dropped.
[[nodiscard]] qint64 cappedSum(qint64 a, qint64 b);

/// State shared by the switch and the reporter.
struct PreferenceState {
    struct Upload {
        CollectionTicket ticket;
        /// Tells this upload from earlier ones.
        int number = 0;
        /// Ends the upload soon. Thread: any; must not wait.
        std::function<void()> cancel;
    };

    std::mutex lock;
    /// The upload under way.
    std::optional<Upload> upload;
};

/// The person's switch for counting and the epoch that goes with it, kept in the user defaults. Thread: any;
/// nothing here waits for the store or the network.
class CollectionPreferences {
  public:
    /// `defaults` must outlive this object; `freshUuid` is called from any thread.
    CollectionPreferences(const InformationDictionary& information, UserDefaults& defaults,
                          std::function<QUuid()> freshUuid);

    [[nodiscard]] Configuration configuration() const;

    /// Switching off ends the upload under way, and asks for everything counted to be discarded; switching on
    /// again begins a new epoch.
    void setEnabled(bool enabled);

    /// Absent while nothing may be counted.
    [[nodiscard]] std::optional<CollectionTicket> ticket();
    /// The ticket, with an epoch even when none has been chosen yet: then `known`, or a fresh one if that is
    /// null.
    [[nodiscard]] std::optional<CollectionTicket> ticketWithEpoch(const QUuid& known);

    /// Whether counts and reports of the past are still to be deleted.
    [[nodiscard]] bool isDiscardPending() const;
    void discardDone();

    /// The count left over from earlier processes; 0 for none.
    [[nodiscard]] UnsavedCount left() const;
    /// Adds to it; what belongs to another epoch goes.
    void leave(const UnsavedCount& unsaved);
    void forgetLeft();

    /// Registers an upload. False when counting has been switched off, or off and on, since its ticket was
    /// handed out.
    [[nodiscard]] bool beginUpload(PreferenceState::Upload upload);
    /// False when the upload was cancelled meanwhile; its outcome counts for nothing then.
    [[nodiscard]] bool endUpload(int number);
    [[nodiscard]] bool isUploading() const;

  private:
    [[nodiscard]] bool isSwitchedOn() const;
    /// Both with the lock held.
    [[nodiscard]] std::optional<CollectionTicket> currentTicket() const;
    void beginEpoch(const QUuid& epoch);

    /// As long as the person has not switched counting off.
    const Configuration configuration_;
    UserDefaults& defaults_;
    std::function<QUuid()> freshUuid_;
    mutable PreferenceState state_;
};

}  // namespace kestrant::metrics
