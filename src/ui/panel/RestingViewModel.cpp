#include "ui/panel/RestingViewModel.h"

#include "preferences/PreferenceKeys.h"
#include "preferences/Preferences.h"
#include "reminders/store/ReminderStore.h"

namespace kestrant {

RestingViewModel::RestingViewModel(ReminderStore& reminders, Preferences& preferences, QObject* parent)
    : QObject(parent)
    , reminders_(reminders)
    , preferences_(preferences) {
    connect(&reminders, &ReminderStore::filterCountsChanged, this, &RestingViewModel::countsChanged);
    connect(&reminders, &ReminderStore::tasksChanged, this, &RestingViewModel::remindersChanged);
    subscription_ = preferences.observeChanges([this](const QString& key) {
        if (key == preferenceKeys::restingContent || key == preferenceKeys::pulsesWhenRinging ||
            key == preferenceKeys::showReminders)
            Q_EMIT changed();
    });
    shownCount_ = count();
}

bool RestingViewModel::saysWhatComes() const {
    return preferences_.restingContent() != RestingContent::nothing;
}

bool RestingViewModel::saysAll() const {
    return preferences_.restingContent() == RestingContent::everything;
}

QString RestingViewModel::kind() const {
    if (!ringingID_.isEmpty() && (saysWhatComes() || pulses()))
        return QStringLiteral("ringing");
    if (event_ && saysWhatComes())
        return QStringLiteral("event");
    if (preferences_.showReminders()) {
        if (overdue() > 0 && saysWhatComes())
            return QStringLiteral("overdue");
        if (count() > 0 && saysAll())
            return QStringLiteral("count");
        if (isDone_ && saysAll())
            return QStringLiteral("done");
    }
    return QStringLiteral("silent");
}

int RestingViewModel::count() const {
    return reminders_.filterCounts().today;
}

int RestingViewModel::overdue() const {
    return reminders_.filterCounts().overdue;
}

QString RestingViewModel::title() const {
    if (const ReminderTask* ringing = reminders_.task(ringingID_))
        return ringing->title;
    return event_ ? event_->title : QString();
}

bool RestingViewModel::pulses() const {
    return preferences_.pulsesWhenRinging();
}

bool RestingViewModel::followsTime() const {
    return saysWhatComes();
}

void RestingViewModel::setEvent(const std::optional<RestingEvent>& event) {
    if (event == event_)
        return;
    event_ = event;
    Q_EMIT changed();
}

void RestingViewModel::ring(const QString& reminderID) {
    ringingID_ = reminderID;
    Q_EMIT changed();
}

void RestingViewModel::acknowledge() {
    if (ringingID_.isEmpty())
        return;
    ringingID_.clear();
    Q_EMIT changed();
}

void RestingViewModel::finishDone() {
    if (!isDone_)
        return;
    isDone_ = false;
    Q_EMIT changed();
}

void RestingViewModel::countsChanged() {
    const int now = count() + overdue();
    isDone_ = now == 0 && (isDone_ || shownCount_ > 0);
    shownCount_ = now;
    Q_EMIT changed();
}

void RestingViewModel::remindersChanged() {
    if (!ringingID_.isEmpty() && !reminders_.task(ringingID_))
        acknowledge();
}

}  // namespace kestrant
