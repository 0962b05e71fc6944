#pragma once

#include "calendar/CalendarEditing.h"
#include "calendar/CalendarItems.h"
#include "ui/calendar/EventTimes.h"
#include "ui/controls/FormDraft.h"
#include "ui/controls/FormViewModel.h"

#include <QColor>
#include <QQmlEngine>
#include <QString>
#include <QVariant>
#include <QVariantList>

#include <optional>

namespace kestrant {

class CalendarStore;
class Localizer;

/// The event that is being edited, and the removal of calendar rows. A row is a QVariant that holds a
/// CalendarEventItem. Thread: main.
class CalendarEditViewModel : public kestrant::FormViewModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")

    Q_PROPERTY(QString title READ title WRITE setTitle NOTIFY changed)
    Q_PROPERTY(kestrant::EventTimes* times READ times CONSTANT)
    Q_PROPERTY(QString calendarId READ calendarId WRITE setCalendarId NOTIFY changed)
    Q_PROPERTY(QString calendarTitle READ calendarTitle NOTIFY changed)
    Q_PROPERTY(QColor calendarColor READ calendarColor NOTIFY changed)
    Q_PROPERTY(QString location READ location WRITE setLocation NOTIFY changed)
    Q_PROPERTY(QString notes READ notes WRITE setNotes NOTIFY changed)
    /// The form shows entries kept from an earlier, unsaved one.
    Q_PROPERTY(bool isRestored READ isRestored NOTIFY changed)
    Q_PROPERTY(bool canSave READ canSave NOTIFY changed)

  public:
    /// Everything must outlive the view model.
    CalendarEditViewModel(CalendarStore& store, const Clock& clock, const CurrentTimeZone& currentZone,
                          Localizer& localizer, QObject* parent = nullptr);

    /// Shows the event behind a row; its details follow on a later turn, or errorText. What was kept of an
    /// earlier form of this event is shown again, as long as the event is what it was then. Returns the
    /// form's number, for end().
    Q_INVOKABLE int begin(const QVariant& row);
    /// Ends with `saved`, or with errorText set and everything left as it was written. Nothing is written
    /// when nothing was changed.
    Q_INVOKABLE void save();

    /// Keeps what was written, until it is saved or another form is kept. To be called before end() when a
    /// form goes that nobody has given up.
    Q_INVOKABLE void keep(int form);
    /// Gives up what was written.
    Q_INVOKABLE void discard();

    /// Deletes what is behind the row; ends with `removed` or `removalFailed`.
    Q_INVOKABLE void remove(const QVariant& row);
    /// Clears the due date of the reminder behind the row; ends with `removed` or `removalFailed`.
    Q_INVOKABLE void detach(const QVariant& row);

    Q_INVOKABLE [[nodiscard]] bool isReminder(const QVariant& row) const;
    Q_INVOKABLE [[nodiscard]] QString reminderId(const QVariant& row) const;
    Q_INVOKABLE [[nodiscard]] QString titleOf(const QVariant& row) const;
    /// Whether it may be changed or removed.
    Q_INVOKABLE [[nodiscard]] bool isWritable(const QVariant& row) const;
    /// One date of several.
    Q_INVOKABLE [[nodiscard]] bool isRecurring(const QVariant& row) const;
    Q_INVOKABLE [[nodiscard]] QString calendarTitleOf(const QVariant& row) const;
    /// The calendars that take events, {id, title, color} each.
    Q_INVOKABLE [[nodiscard]] QVariantList calendars() const;

    [[nodiscard]] const QString& title() const { return title_; }
    void setTitle(const QString& title) { set(title_, title); }
    [[nodiscard]] EventTimes* times() { return &times_; }
    [[nodiscard]] const QString& calendarId() const { return calendarID_; }
    void setCalendarId(const QString& id);
    [[nodiscard]] const QString& calendarTitle() const { return calendarTitle_; }
    [[nodiscard]] const QColor& calendarColor() const { return calendarColor_; }
    [[nodiscard]] const QString& location() const { return location_; }
    void setLocation(const QString& location) { set(location_, location); }
    [[nodiscard]] const QString& notes() const { return notes_; }
    void setNotes(const QString& notes) { set(notes_, notes); }
    [[nodiscard]] QString lockReason() const override;
    [[nodiscard]] bool isRestored() const { return isRestored_; }
    [[nodiscard]] bool canSave() const { return loaded_ && canEdit(); }

  Q_SIGNALS:
    void saved();
    void removed();
    void removalFailed(const QString& message);

  private:
    [[nodiscard]] CalendarEventEditDetails details(const EventTimes::Span& span) const;
    void show(const CalendarEventEditDetails& present);
    void finishSaving(int form, const CalendarEventEditDetails& written,
                      const tl::expected<void, CalendarError>& result);
    void finishRemoval(const tl::expected<void, CalendarError>& result);

    CalendarStore& store_;
    Localizer& localizer_;
    EventTimes times_;
    CalendarEventItem row_;
    /// Absent until they have arrived.
    std::optional<CalendarEventEditDetails> loaded_;
    QString title_;
    QString calendarID_;
    QString calendarTitle_;
    QColor calendarColor_;
    QString location_;
    QString notes_;
    /// The event's calendar takes no changes, or cannot be reached.
    bool isReadOnly_ = false;
    bool isAnswering_ = true;
    FormDraft<CalendarEventEditDetails> draft_;
    bool isRestored_ = false;
};

}  // namespace kestrant
