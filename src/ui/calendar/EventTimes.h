#pragma once

#include "foundation/Text.h"
#include "ui/calendar/DayPicker.h"

#include <QDateTime>
#include <QObject>
#include <QQmlEngine>
#include <QString>

#include <tl/expected.hpp>

#include <optional>

namespace kestrant {

/// When an event begins and ends, as a form shows it. Moving the start moves the end along. A whole-day event
/// keeps its times of day for the way back. Thread: main.
class EventTimes : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("belongs to a form")

    Q_PROPERTY(bool isAllDay READ isAllDay WRITE setAllDay NOTIFY changed)
    Q_PROPERTY(kestrant::DayPicker* startDay READ startDay CONSTANT)
    /// All-day: the last day.
    Q_PROPERTY(kestrant::DayPicker* endDay READ endDay CONSTANT)
    /// As typed until applyTyped(), then "14:30".
    Q_PROPERTY(QString startTime READ startTime WRITE setStartTime NOTIFY changed)
    Q_PROPERTY(QString endTime READ endTime WRITE setEndTime NOTIFY changed)
    Q_PROPERTY(bool startTimeIsWrong READ startTimeIsWrong NOTIFY changed)
    Q_PROPERTY(bool endTimeIsWrong READ endTimeIsWrong NOTIFY changed)

  public:
    struct Span {
        Instant start;
        /// Excluded; all-day: the start of the day after the last one.
        Instant end;
        bool isAllDay = false;
        bool operator==(const Span&) const = default;
    };

    /// Everything must outlive the times.
    EventTimes(const Clock& clock, const CurrentTimeZone& currentZone, const Localizer& localizer,
               QObject* parent = nullptr);

    /// Shows an event's own times.
    void show(const Span& span);
    /// Shows the next half hour, for an hour.
    void showNextHalfHour();
    /// The times in the form; exactly those given to show() where they were not changed. Fails with the
    /// sentence for the person when a time cannot be read or the end lies before the start.
    [[nodiscard]] tl::expected<Span, TextPair> span();
    /// Takes typed times in: the person has finished typing.
    Q_INVOKABLE void applyTyped();

    [[nodiscard]] bool isAllDay() const { return isAllDay_; }
    void setAllDay(bool allDay);
    [[nodiscard]] DayPicker* startDay() { return &start_.day; }
    [[nodiscard]] DayPicker* endDay() { return &end_.day; }
    [[nodiscard]] QString startTime() const { return text(start_); }
    void setStartTime(const QString& typed) { setTyped(start_, typed); }
    [[nodiscard]] QString endTime() const { return text(end_); }
    void setEndTime(const QString& typed) { setTyped(end_, typed); }
    /// True for typed times that were applied and could not be read.
    [[nodiscard]] bool startTimeIsWrong() const { return start_.isWrong; }
    [[nodiscard]] bool endTimeIsWrong() const { return end_.isWrong; }

  Q_SIGNALS:
    void changed();
    /// The person has changed something.
    void edited();

  private:
    struct Side {
        /// Takes typed text in; absent when there is none, or none that says another time.
        [[nodiscard]] std::optional<QTime> takeTyped();

        DayPicker day;
        /// Local date and time, without a zone (which Qt calls UTC).
        QDateTime wall;
        /// The same as it was shown at first.
        QDateTime original;
        std::optional<QString> typed;
        bool isWrong = false;
    };

    [[nodiscard]] QString text(const Side& side) const;
    void show(const QDateTime& start, const QDateTime& end);
    void setTyped(Side& side, const QString& typed);
    void pickDay(Side& side);
    void moveStart(const QDateTime& start);
    /// Tells of a change, the day pickers included.
    void publish();
    [[nodiscard]] bool isOrdered() const;
    [[nodiscard]] QDateTime wallTime(Instant instant) const;
    [[nodiscard]] bool isAsGiven(const Side& side) const;

    const Clock& clock_;
    const CurrentTimeZone& currentZone_;
    const Localizer& localizer_;
    /// The zone does not change under what is shown.
    TimeZone zone_;
    std::optional<Span> given_;
    bool isAllDay_ = false;
    Side start_;
    Side end_;
};

}  // namespace kestrant
