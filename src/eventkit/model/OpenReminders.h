#pragma once

#include "eventkit/model/EKEventStore.h"
#include "foundation/Scheduler.h"
#include "foundation/Subscription.h"

#include <functional>
#include <memory>
#include <vector>

namespace kestrant {

/// The open reminders of all lists, fetched once for everybody who wants them. What a fetch found is kept
/// until the database tells of a change, so that the consumers that reload after a change share one fetch.
/// Thread: main.
class OpenReminders {
  public:
    /// Never null. The same object as before where nothing has been fetched since.
    using Reminders = std::shared_ptr<const EKReminders>;
    using Completion = std::function<void(const Reminders& reminders)>;

    /// Both outlive this object. It is made before its consumers, which observe the same database: it is then
    /// told of a change before they are.
    OpenReminders(EKEventStore& eventStore, Scheduler& scheduler);
    OpenReminders(const OpenReminders&) = delete;
    OpenReminders& operator=(const OpenReminders&) = delete;
    ~OpenReminders();

    /// Calls back once, on a later turn, with what the database held at the time of the call or later; not
    /// after the end of this object.
    void fetch(Completion completion);

  private:
    /// One fetch of the database: whoever waits for it, and what it found.
    struct Fetch {
        std::vector<Completion> waiting;
        Reminders found;
    };

    EKEventStore& eventStore_;
    Scheduler& scheduler_;
    /// Null when the database has changed since.
    std::shared_ptr<Fetch> latest_;
    std::shared_ptr<bool> isAlive_ = std::make_shared<bool>(true);
    Subscription changes_;
};

}  // namespace kestrant
