#include "ui/calendar/EventTimes.h"

#include "calendar/CalendarError.h"
#include "ui/calendar/TimeOfDay.h"
#include "ui/panel/Localizer.h"

#include <QTimeZone>

#include <algorithm>

namespace kestrant {
namespace {

/// Times of day for a whole-day event that is given some.
const QTime usualStart(9, 0);
const QTime usualEnd(10, 0);

QDateTime wallTimeAt(QDate day, QTime time) {
    return {day, time, QTimeZone::utc()};
}

}  // namespace

QString EventTimes::text(const Side& side) const {
    return side.typed.value_or(clockText(side.wall.time(), localizer_.clockHours()));
}

std::optional<QTime> EventTimes::Side::takeTyped() {
    if (!typed)
        return std::nullopt;
    const auto time = timeOfDay(*typed);
    isWrong = !time;
    if (!time)
        return std::nullopt;
    typed.reset();
    // The time that is there may have seconds.
    return isSameMinute(*time, wall.time()) ? std::nullopt : time;
}

EventTimes::EventTimes(const Clock& clock, const CurrentTimeZone& currentZone, const Localizer& localizer,
                       QObject* parent)
    : QObject(parent)
    , clock_(clock)
    , currentZone_(currentZone)
    , localizer_(localizer)
    , zone_(currentZone.zone())
    , start_{.day = DayPicker(clock, currentZone, localizer), .wall = {}, .original = {}, .typed = {}}
    , end_{.day = DayPicker(clock, currentZone, localizer), .wall = {}, .original = {}, .typed = {}} {
    showNextHalfHour();
    connect(&start_.day, &DayPicker::dayChanged, this, [this] { pickDay(start_); });
    connect(&end_.day, &DayPicker::dayChanged, this, [this] { pickDay(end_); });
}

QDateTime EventTimes::wallTime(Instant instant) const {
    return wallTimeAt(zone_.dayOf(instant), zone_.timeOf(instant));
}

void EventTimes::show(const Span& span) {
    zone_ = currentZone_.zone();
    given_ = span;
    isAllDay_ = span.isAllDay;
    if (!isAllDay_) {
        show(wallTime(span.start), wallTime(span.end));
        return;
    }
    const QDate firstDay = zone_.dayOf(span.start);
    const QDate lastDay = std::max(firstDay, zone_.dayOf(span.end - Duration(1)));
    show(wallTimeAt(firstDay, usualStart), wallTimeAt(lastDay, usualEnd));
}

void EventTimes::showNextHalfHour() {
    zone_ = currentZone_.zone();
    given_.reset();
    isAllDay_ = false;
    const QDateTime now = wallTime(clock_.now());
    const QDateTime hour = wallTimeAt(now.date(), QTime(now.time().hour(), 0));
    const QDateTime start = hour.addSecs(now.time().minute() < 30 ? 30 * 60 : 60 * 60);
    show(start, start.addSecs(60 * 60));
}

void EventTimes::show(const QDateTime& start, const QDateTime& end) {
    start_.wall = start_.original = start;
    end_.wall = end_.original = end;
    for (Side* side : {&start_, &end_}) {
        side->typed.reset();
        side->isWrong = false;
    }
    publish();
}

void EventTimes::publish() {
    for (Side* side : {&start_, &end_})
        side->day.setDay(side->wall.date());
    Q_EMIT changed();
}

bool EventTimes::isOrdered() const {
    return isAllDay_ ? start_.wall.date() <= end_.wall.date() : start_.wall <= end_.wall;
}

void EventTimes::pickDay(Side& side) {
    const QDate day = side.day.day();
    if (day == side.wall.date())
        return;
    const QDateTime picked = wallTimeAt(day.isValid() ? day : side.wall.date(), side.wall.time());
    if (&side == &start_)
        moveStart(picked);
    else
        end_.wall = picked;
    publish();
    Q_EMIT edited();
}

void EventTimes::moveStart(const QDateTime& start) {
    if (isOrdered())
        end_.wall = end_.wall.addMSecs(start_.wall.msecsTo(start));
    start_.wall = start;
}

void EventTimes::setAllDay(bool allDay) {
    if (allDay == isAllDay_)
        return;
    applyTyped();
    const bool wasOrdered = isOrdered();
    isAllDay_ = allDay;
    // Within a repeated hour an event may seem to end before it starts.
    const bool isGiven = isAsGiven(start_) && isAsGiven(end_);
    if (wasOrdered && !isOrdered() && !isGiven)
        end_.wall = end_.wall.addDays(1);
    publish();
    Q_EMIT edited();
}

void EventTimes::setTyped(Side& side, const QString& typed) {
    if (typed == text(side))
        return;
    side.typed = typed;
    side.isWrong = false;
    Q_EMIT changed();
    Q_EMIT edited();
}

void EventTimes::applyTyped() {
    if (isAllDay_)
        return;
    const auto endTime = end_.takeTyped();
    if (const auto startTime = start_.takeTyped())
        moveStart(wallTimeAt(start_.wall.date(), *startTime));
    if (endTime)
        end_.wall.setTime(*endTime);
    publish();
}

bool EventTimes::isAsGiven(const Side& side) const {
    if (!given_ || given_->isAllDay != isAllDay_)
        return false;
    return isAllDay_ ? side.wall.date() == side.original.date() : side.wall == side.original;
}

tl::expected<EventTimes::Span, TextPair> EventTimes::span() {
    applyTyped();
    if (!isAllDay_ && (start_.isWrong || end_.isWrong))
        return tl::unexpected(unreadableTimeText());
    Span span{.isAllDay = isAllDay_};
    if (isAllDay_) {
        span.start = zone_.startOfDay(start_.wall.date());
        span.end = zone_.startOfDay(end_.wall.date().addDays(1));
    } else {
        span.start = zone_.instantAt(start_.wall.date(), start_.wall.time());
        span.end = zone_.instantAt(end_.wall.date(), end_.wall.time());
    }
    if (isAsGiven(start_))
        span.start = given_->start;
    if (isAsGiven(end_))
        span.end = given_->end;
    if (span.end < span.start || (isAllDay_ && !isOrdered()))
        return tl::unexpected(CalendarError{CalendarError::Code::invalidDateRange}.message());
    return span;
}

}  // namespace kestrant
