#include "ui/panel/PanelViewModel.h"

#include "cues/SensoryFeedback.h"
#include "foundation/NotificationCenter.h"
#include "notch/NotchGeometry.h"
#include "notch/NotchInteractionModel.h"
#include "notch/NotchPanelController.h"
#include "preferences/PreferenceKeys.h"
#include "preferences/Preferences.h"
#include "reminders/store/ReminderStore.h"

namespace kestrant {

PanelViewModel::PanelViewModel(NotchInteractionModel& interaction, NotchGeometry& geometry,
                               ReminderStore& reminders, Preferences& preferences,
                               NotificationCenter& notifications, const SensoryFeedback& feedback,
                               QObject* parent)
    : QObject(parent)
    , interaction_(interaction)
    , geometry_(geometry)
    , reminders_(reminders)
    , preferences_(preferences)
    , feedback_(feedback)
    , resting_(reminders, preferences) {
    connect(&resting_, &RestingViewModel::changed, this, &PanelViewModel::updateRestingWidth);
    connect(&interaction, &NotchInteractionModel::phaseChanged, this, [this] {
        if (isExpanded())
            resting_.acknowledge();
        Q_EMIT phaseChanged();
        Q_EMIT shapeChanged();
    });
    connect(&geometry, &NotchGeometry::changed, this, [this] {
        updateRestingWidth();
        Q_EMIT shapeChanged();
    });
    connect(&reminders, &ReminderStore::filterCountsChanged, this, &PanelViewModel::updateDueTodayCount);
    subscriptions_.push_back(notifications.observe(
        notifications::newReminder, [this] { request(&PanelViewModel::newReminderRequested); }));
    subscriptions_.push_back(notifications.observe(
        notifications::findReminder, [this] { request(&PanelViewModel::findReminderRequested); }));
    // The tip is for people who have not made a reminder yet.
    subscriptions_.push_back(notifications.observe(QLatin1String(ReminderStore::reminderCreatedNotification),
                                                   [this] { finishNewReminderTip(); }));
    subscriptions_.push_back(preferences.observeChanges([this](const QString& key) {
        if (key == preferenceKeys::showReminders || key == preferenceKeys::showCalendar ||
            key == preferenceKeys::moduleOrder || key == preferenceKeys::layoutRatio)
            Q_EMIT modulesChanged();
        else if (key == preferenceKeys::notchMaterial)
            Q_EMIT materialChanged();
        else if (key == preferenceKeys::initialCommandNTipPending)
            Q_EMIT newReminderTipPendingChanged();
    }));
    updateDueTodayCount();
    updateRestingWidth();
}

void PanelViewModel::updateRestingWidth() {
    const QString kind = resting_.kind();
    // Beside a camera only the wider notch has room at all.
    geometry_.setRestsWide(kind == QLatin1String("event") || kind == QLatin1String("done") ||
                           (hasCamera() && kind != QLatin1String("silent")));
}

void PanelViewModel::request(void (PanelViewModel::*signal)()) {
    interaction_.expand();
    if (interaction_.isExpanded())
        Q_EMIT(this->*signal)();
}

NotchContainerShape PanelViewModel::shape() const {
    return geometry_.shape(interaction_.phase());
}

int PanelViewModel::phase() const {
    return interaction_.phaseValue();
}

bool PanelViewModel::isExpanded() const {
    return interaction_.isExpanded();
}

double PanelViewModel::shapeWidth() const {
    return shape().size.width();
}

double PanelViewModel::shapeHeight() const {
    return shape().size.height();
}

double PanelViewModel::earRadius() const {
    return shape().topEarRadius;
}

double PanelViewModel::bottomRadius() const {
    return shape().bottomRadius;
}

double PanelViewModel::expandedWidth() const {
    return geometry_.expandedSize().width();
}

double PanelViewModel::expandedHeight() const {
    return geometry_.expandedSize().height();
}

double PanelViewModel::restingHeight() const {
    return geometry_.idleSize().height();
}

double PanelViewModel::hoverWidth() const {
    return geometry_.hoverSize().width();
}

bool PanelViewModel::hasCamera() const {
    const Screen& screen = geometry_.screen();
    return screen.auxiliaryTopLeftArea || screen.auxiliaryTopRightArea || screen.topSafeAreaInset > 0.0;
}

double PanelViewModel::cameraSafeWidth() const {
    return geometry_.cameraSafeWidth();
}

void PanelViewModel::setNextEventText(const QString& text) {
    if (text == nextEventText_)
        return;
    nextEventText_ = text;
    Q_EMIT nextEventTextChanged();
}

bool PanelViewModel::showReminders() const {
    return preferences_.showReminders();
}

bool PanelViewModel::showCalendar() const {
    return preferences_.showCalendar();
}

bool PanelViewModel::calendarFirst() const {
    return preferences_.moduleOrder() == KestrantModuleOrder::calendarFirst;
}

double PanelViewModel::firstShare() const {
    return kestrant::firstShare(preferences_.layoutRatio()) / 100.0;
}

QString PanelViewModel::material() const {
    const QString black = QStringLiteral("black");
    return preferences_.notchMaterial() == black ? black : QStringLiteral("glass");
}

bool PanelViewModel::newReminderTipPending() const {
    return preferences_.initialCommandNTipPending();
}

void PanelViewModel::finishNewReminderTip() {
    if (newReminderTipPending())
        preferences_.initialCommandNTipPending.set(false);
}

void PanelViewModel::setSearchIsFocused(bool focused) {
    if (focused && !interaction_.searchIsFocused())
        feedback_.play(Cue::focus);
    interaction_.setSearchIsFocused(focused);
}

void PanelViewModel::setShowsToast(bool shows) {
    if (!shows)
        interaction_.dismissRoute(NotchInteractionModel::toastRoute);
    else if (interaction_.isExpanded() && !interaction_.pointerIsInside())
        interaction_.presentRoute(NotchInteractionModel::toastRoute);
}

void PanelViewModel::fold() {
    interaction_.collapse(interaction_.pointerIsInside());
}

void PanelViewModel::beginReminderDrag(const QString& id, const QRectF& calendar) {
    const QRectF panel = geometry_.panelFrame();
    interaction_.setCalendarWindowFrame(QRectF(panel.x() + calendar.x(),
                                               panel.y() + panel.height() - calendar.bottom(),
                                               calendar.width(), calendar.height()));
    interaction_.beginReminderDrag(id);
    feedback_.play(Cue::dragStart);
}

void PanelViewModel::snapReminderDrag() {
    feedback_.play(Cue::snap);
}

void PanelViewModel::endReminderDrag(const QString& id, bool dropped) {
    if (dropped)
        feedback_.play(Cue::drop);
    interaction_.setCalendarWindowFrame({});
    interaction_.endReminderDrag(id);
    if (dropped)
        Q_EMIT reminderDropped();
}

void PanelViewModel::updateDueTodayCount() {
    const int count = reminders_.filterCounts().today;
    if (count == dueTodayCount_)
        return;
    dueTodayCount_ = count;
    Q_EMIT dueTodayCountChanged();
}

}  // namespace kestrant
