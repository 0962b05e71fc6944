#pragma once

#include "foundation/ObserverList.h"
#include "foundation/Scheduler.h"
#include "reminders/alerts/UserNotifier.h"

#include <map>
#include <string>
#include <vector>

namespace kestrant {

/// A notification service that keeps what is on show, and can be absent.
class RecordingNotifier : public UserNotifier {
  public:
    explicit RecordingNotifier(Scheduler& scheduler) : scheduler_(scheduler) {}

    void show(const UserNotification& notification, Shown shown) override {
        scheduler_.post([this, notification, shown = std::move(shown), accepted = isPresent] {
            if (accepted) {
                onShow[notification.id] = notification;
                rung.push_back(notification.title.toStdString());
            }
            shown(accepted);
        });
    }
    void withdraw(const QString& id) override { onShow.erase(id); }
    [[nodiscard]] Subscription observeAnswers(AnswerObserver observer) override {
        return observers_.add(std::move(observer));
    }

    void answer(const QString& id, AlertAnswer given) {
        onShow.erase(id);
        observers_.notify(id, given);
    }
    /// The service dies, with everything it shows.
    void die() {
        isPresent = false;
        onShow.clear();
    }

    bool isPresent = true;
    std::map<QString, UserNotification> onShow;
    /// Titles of everything that was shown, in order.
    std::vector<std::string> rung;

  private:
    Scheduler& scheduler_;
    ObserverList<QString, AlertAnswer> observers_;
};

}  // namespace kestrant
