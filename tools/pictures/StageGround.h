#pragma once

#include "foundation/BackgroundExecutor.h"
#include "pictures/MemoryGround.h"
#include "preferences/PreferenceKeys.h"
#include "reminders/flags/FlaggedReminderAutomation.h"
#include "reminders/flags/ScriptHost.h"
#include "services/LaunchAtLoginManager.h"
#include "ui/onboarding/DemoData.h"

#include <QJsonObject>

#include <algorithm>
#include <deque>

namespace kestrant {

/// Time that moves only when it is told to.
class PictureTime : public Clock, public Scheduler {
  public:
    explicit PictureTime(Instant now) : now_(now) {}

    [[nodiscard]] Instant now() const override { return now_; }
    [[nodiscard]] ScheduledTask after(Duration delay, std::function<void()> work) override {
        auto state = std::make_shared<ScheduledTask::State>();
        state->work = std::move(work);
        waiting_.push_back({now_ + delay, state});
        return ScheduledTask(state);
    }
    /// Pictures show no moment of repeating work.
    [[nodiscard]] ScheduledTask every(Duration, std::function<void()>) override { return {}; }
    void post(std::function<void()> work) override { posted_.push_back(std::move(work)); }

    /// Runs what is due by then, and what that posts.
    void advance(Duration duration) {
        const Instant end = now_ + duration;
        for (;;) {
            if (!posted_.empty()) {
                const auto work = std::move(posted_.front());
                posted_.pop_front();
                work();
                continue;
            }
            const auto next = std::min_element(waiting_.begin(), waiting_.end(),
                                               [](const auto& a, const auto& b) { return a.due < b.due; });
            if (next == waiting_.end() || next->due > end)
                break;
            now_ = std::max(now_, next->due);
            const auto state = next->state;
            waiting_.erase(next);
            if (std::exchange(state->pending, false))
                state->work();
        }
        now_ = end;
    }

  private:
    struct Waiting {
        Instant due;
        std::shared_ptr<ScheduledTask::State> state;
    };
    Instant now_;
    std::vector<Waiting> waiting_;
    std::deque<std::function<void()>> posted_;
};

class PictureDefaults : public UserDefaults {
  public:
    [[nodiscard]] QJsonValue object(const QString& key) const override { return values_.value(key); }
    void set(const QString& key, const QJsonValue& value) override {
        values_.insert(key, value);
        observers_.notify(key);
    }
    [[nodiscard]] Subscription observe(std::function<void(const QString&)> observer) override {
        return observers_.add(std::move(observer));
    }

  private:
    QJsonObject values_;
    ObserverList<QString> observers_;
};

/// A desktop that starts the program when it is told to.
class PictureLoginItem : public LoginItem {
  public:
    [[nodiscard]] bool isEnabled() const override { return enabled_; }
    [[nodiscard]] tl::expected<void, TextPair> setEnabled(bool enabled) override {
        enabled_ = enabled;
        return {};
    }

  private:
    bool enabled_ = true;
};

/// The scripted application: flags as the database has them, or no answer at all.
class PictureScripts : public ScriptHost {
  public:
    explicit PictureScripts(const InMemoryEventStore& database) : database_(database) {}

    void fail() { fails_ = true; }
    [[nodiscard]] tl::expected<QStringList, ScriptError> execute(const ReminderScript&) override {
        if (fails_)
            return tl::unexpected(ScriptError{ScriptError::Code::timedOut, {}});
        QStringList flagged;
        for (const EKReminderData& reminder : database_.reminders()) {
            if (reminder.isFlagged)
                flagged.append(QStringLiteral("x-kestrant-reminder://") + reminder.calendarItemIdentifier);
        }
        return flagged;
    }
    void interrupt() override {}

  private:
    const InMemoryEventStore& database_;
    bool fails_ = false;
};

/// The program below the panel, for a picture.
struct StageGround : MemoryGround<PictureTime, PictureDefaults, SilentCuePlayer, ImmediateExecutor> {
    StageGround(Language language, double screenWidth)
        : MemoryGround(QLocale(QLocale::English, QLocale::UnitedKingdom), language, screenWidth) {
        services.flags = &automation;
    }

    PictureScripts scripts{database};
    FlaggedReminderAutomation automation{scripts, executor, time};
};

}  // namespace kestrant
