#include "reminders/flags/ReminderFlagSync.h"

#include "foundation/UserDefaults.h"
#include "preferences/PreferenceKeys.h"
#include "reminders/flags/FlaggedReminderAutomation.h"

#include <QPointer>

#include <chrono>
#include <utility>

namespace kestrant {
namespace {

using namespace std::chrono_literals;

constexpr Duration readingTime = 10s;

TextPair unavailable(const TextPair& reason) {
    const TextPair sentence =
        text("Reminders sync unavailable: %1 Local flags remain available.",
             "Synchronisation Rappels indisponible : %1 Les drapeaux locaux restent disponibles.");
    return {sentence.english.arg(reason.english), sentence.french.arg(reason.french)};
}

}  // namespace

ReminderFlagSync::ReminderFlagSync(Scheduler& scheduler, UserDefaults& defaults,
                                   FlaggedReminderAutomation* automation)
    : scheduler_(scheduler)
    , defaults_(defaults)
    , automation_(automation)
    , index_(ReminderFlagIndex::load(defaults))
    , defaultsObserver_(defaults.observe([this](const QString& key) {
        if (key == preferenceKeys::reminderFlagLocalOverrides.name)
            takeOverLocalFlags();
    })) {}

void ReminderFlagSync::takeOverLocalFlags() {
    auto local = ReminderFlagIndex::load(defaults_).localOverrides;
    if (local == index_.localOverrides)
        return;
    index_.localOverrides = std::move(local);
    Q_EMIT indexChanged();
}

void ReminderFlagSync::setIndex(ReminderFlagIndex index) {
    if (index == index_)
        return;
    const ReminderFlagIndex previous = std::exchange(index_, std::move(index));
    index_.save(defaults_, previous);
    Q_EMIT indexChanged();
}

void ReminderFlagSync::setLoading(bool loading) {
    if (std::exchange(isLoading_, loading) != loading)
        Q_EMIT isLoadingChanged();
}

void ReminderFlagSync::setError(std::optional<TextPair> error) {
    if (error == error_)
        return;
    error_ = std::move(error);
    Q_EMIT errorChanged();
}

void ReminderFlagSync::end() {
    if (--underWay_ == 0)
        Q_EMIT ended();
}

void ReminderFlagSync::load() {
    if (!automation_)
        return;
    const int generation = ++generation_;
    setLoading(true);
    timeoutTask_ = scheduler_.after(readingTime, [this] {
        setLoading(false);
        setError(text("Sync with Reminders Flagged list timed out. Local flags remain available.",
                      "La synchronisation avec la liste Drapeaux de Rappels a expiré. Les drapeaux locaux "
                      "restent disponibles."));
    });
    ++underWay_;
    automation_->readFlaggedIdentifiers([self = QPointer(this), generation](auto result) {
        if (!self)
            return;
        if (generation == self->generation_) {
            self->timeoutTask_.cancel();
            self->setLoading(false);
            if (result) {
                ReminderFlagIndex index = self->index_;
                index.nativeIDs = std::move(*result);
                self->setIndex(std::move(index));
                self->setError(std::nullopt);
            } else {
                self->setError(unavailable(result.error().message));
            }
        }
        self->end();
    });
}

void ReminderFlagSync::setLocally(const QString& reminderID, bool flag) {
    ReminderFlagIndex index = index_;
    index.localOverrides.insert(ReminderFlagIndex::flagKey(reminderID), flag);
    setIndex(std::move(index));
}

void ReminderFlagSync::write(const QString& reminderID, const std::optional<QString>& listTitle,
                             Completion completion) {
    const QString key = ReminderFlagIndex::flagKey(reminderID);
    if (!automation_) {
        scheduler_.post([completion = std::move(completion)] {
            if (completion)
                completion(std::nullopt);
        });
        return;
    }
    const int generation = ++writeGenerations_[key];
    pendingIDs_.insert(reminderID);
    ++underWay_;
    automation_->setFlag(key, index_.isFlagged(reminderID), listTitle,
                         [self = QPointer(this), reminderID, key, generation,
                          completion = std::move(completion)](const auto& result) {
                             if (!self)
                                 return;
                             if (self->writeGenerations_[key] == generation) {
                                 self->writeGenerations_.erase(key);
                                 self->pendingIDs_.remove(reminderID);
                             }
                             if (completion)
                                 completion(result ? std::nullopt : std::optional(result.error().message));
                             if (self)
                                 self->end();
                         });
}

void ReminderFlagSync::follow(const QString& formerID, const QString& reminderID) {
    const QString former = ReminderFlagIndex::flagKey(formerID);
    const QString key = ReminderFlagIndex::flagKey(reminderID);
    ReminderFlagIndex index = index_;
    if (const auto local = index.localOverrides.find(former); local != index.localOverrides.end()) {
        index.localOverrides.insert(key, *local);
        index.localOverrides.remove(former);
    }
    if (index.nativeIDs.remove(former))
        index.nativeIDs.insert(key);
    setIndex(std::move(index));
}

}  // namespace kestrant
