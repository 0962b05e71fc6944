#pragma once

#include "foundation/Text.h"
#include "reminders/model/ReminderAlertSchedule.h"

#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <QVariantList>

#include <tl/expected.hpp>

#include <optional>

namespace kestrant {

class Localizer;

/// The alert that is being chosen for a due date. An alert that does not fit the due date is not shown, and
/// is back when it fits again. Thread: main.
class AlertPicker : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("belongs to a form")

    /// Of a choice; empty for none.
    Q_PROPERTY(QString id READ id WRITE setId NOTIFY changed)
    Q_PROPERTY(QString title READ title NOTIFY changed)
    /// The alert rings at a time of day of its own.
    Q_PROPERTY(bool hasTime READ hasTime NOTIFY changed)
    /// As typed.
    Q_PROPERTY(QString time READ time WRITE setTime NOTIFY changed)
    Q_PROPERTY(bool timeIsWrong READ timeIsWrong NOTIFY changed)

  public:
    /// The due date to alert about.
    enum class Due { nothing, day, time };
    /// The choice, whether or not it fits the due date.
    struct Value {
        std::optional<ReminderAlertSchedule> schedule;
        /// As typed, for an alert with a time of day of its own.
        QString time;

        bool operator==(const Value&) const = default;
    };

    /// The localizer must outlive the picker.
    explicit AlertPicker(const Localizer& localizer, QObject* parent = nullptr);

    void setDue(Due due);
    /// Shows an alert, which is among the choices from now on, whatever it is.
    void setSchedule(const std::optional<ReminderAlertSchedule>& schedule);
    /// The alert that is shown; why the time that was typed cannot be read.
    [[nodiscard]] tl::expected<std::optional<ReminderAlertSchedule>, TextPair> takeSchedule();
    [[nodiscard]] const Value& value() const { return value_; }
    void setValue(const Value& value);

    /// {id, title} each.
    Q_INVOKABLE [[nodiscard]] QVariantList choices() const;
    [[nodiscard]] QString id() const;
    void setId(const QString& id);
    [[nodiscard]] QString title() const;
    [[nodiscard]] bool hasTime() const;
    [[nodiscard]] const QString& time() const { return value_.time; }
    void setTime(const QString& typed);
    /// True for a typed time that could not be read when it was to be taken.
    [[nodiscard]] bool timeIsWrong() const { return timeIsWrong_; }

  Q_SIGNALS:
    void changed();
    /// The person has changed something.
    void edited();

  private:
    [[nodiscard]] bool fits(const ReminderAlertSchedule& schedule) const;
    [[nodiscard]] std::optional<ReminderAlertSchedule> shown() const;
    [[nodiscard]] QString titleOf(const std::optional<ReminderAlertSchedule>& schedule) const;
    [[nodiscard]] QString timeTextOf(const std::optional<ReminderAlertSchedule>& schedule) const;

    const Localizer& localizer_;
    Due due_ = Due::nothing;
    std::optional<ReminderAlertSchedule> given_;
    Value value_;
    bool timeIsWrong_ = false;
};

}  // namespace kestrant
