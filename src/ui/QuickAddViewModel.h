#pragma once

#include "foundation/Scheduler.h"
#include "foundation/ZoneCalendar.h"
#include "reminders/ReminderTask.h"

#include <QColor>
#include <QDate>
#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <QTime>
#include <QVariantList>

#include <optional>

namespace kestrant {

class Localizer;
class ReminderStore;

/// The new reminder being written, with the month shown to pick its day from. Days are "2026-11-21" to QML.
/// Thread: main.
class QuickAddViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")

    Q_PROPERTY(QString title READ title WRITE setTitle NOTIFY changed)
    /// "high", "normal" or "low".
    Q_PROPERTY(QString priority READ priority WRITE setPriority NOTIFY changed)
    /// {rawValue, title} each, from low to high.
    Q_PROPERTY(QVariantList priorities READ priorities NOTIFY textsChanged)
    Q_PROPERTY(QString listId READ listId WRITE setListId NOTIFY changed)
    Q_PROPERTY(QString listTitle READ listTitle NOTIFY changed)
    Q_PROPERTY(QColor listColor READ listColor NOTIFY changed)
    /// Lists that take new reminders, {id, title, color} each.
    Q_PROPERTY(QVariantList lists READ lists NOTIFY listsChanged)
    /// Empty without one.
    Q_PROPERTY(QString dueDay READ dueDay WRITE setDueDay NOTIFY changed)
    /// As typed; empty for a whole day.
    Q_PROPERTY(QString timeText READ timeText WRITE setTimeText NOTIFY changed)
    /// Day and time in words; empty without a due date.
    Q_PROPERTY(QString dueText READ dueText NOTIFY changed)
    Q_PROPERTY(bool canSubmit READ canSubmit NOTIFY changed)
    Q_PROPERTY(QString errorText READ errorText NOTIFY changed)

    /// "November 2026"
    Q_PROPERTY(QString monthTitle READ monthTitle NOTIFY monthChanged)
    /// {narrow, full} each, from the language's first day of the week on.
    Q_PROPERTY(QVariantList weekdays READ weekdays NOTIFY textsChanged)
    /// Six weeks, {iso, day, isInMonth, isToday, spoken} each.
    Q_PROPERTY(QVariantList days READ days NOTIFY monthChanged)
    Q_PROPERTY(QString today READ today NOTIFY monthChanged)
    Q_PROPERTY(QString tomorrow READ tomorrow NOTIFY monthChanged)
    /// The first day of the coming week.
    Q_PROPERTY(QString nextWeek READ nextWeek NOTIFY monthChanged)

  public:
    /// Everything must outlive the view model.
    QuickAddViewModel(ReminderStore& store, const Clock& clock, const CurrentCalendar& calendar,
                      Localizer& localizer, QObject* parent = nullptr);

    /// Starts an empty reminder in the list that is preferred now. A reminder that could not be saved is
    /// kept.
    Q_INVOKABLE void begin();
    /// Saves; ends with `added`, or with errorText set and everything left as it was written.
    Q_INVOKABLE void submit();
    /// Shows the month that lies so many months after the one shown.
    Q_INVOKABLE void showMonth(int monthsLater);
    /// Moves the due day, from today when there is none, and shows its month.
    Q_INVOKABLE void moveDueDay(int days, int months);

    [[nodiscard]] const QString& title() const { return title_; }
    void setTitle(const QString& title);
    [[nodiscard]] QString priority() const;
    void setPriority(const QString& rawValue);
    [[nodiscard]] QVariantList priorities() const;
    [[nodiscard]] QString listId() const;
    void setListId(const QString& id);
    [[nodiscard]] QString listTitle() const;
    [[nodiscard]] QColor listColor() const;
    [[nodiscard]] QVariantList lists() const;
    [[nodiscard]] QString dueDay() const;
    void setDueDay(const QString& iso);
    [[nodiscard]] const QString& timeText() const { return timeText_; }
    void setTimeText(const QString& typed);
    [[nodiscard]] QString dueText() const;
    [[nodiscard]] bool canSubmit() const;
    [[nodiscard]] QString errorText() const;
    [[nodiscard]] QString monthTitle() const;
    [[nodiscard]] QVariantList weekdays() const;
    [[nodiscard]] QVariantList days() const;
    [[nodiscard]] QString today() const;
    [[nodiscard]] QString tomorrow() const;
    [[nodiscard]] QString nextWeek() const;

  Q_SIGNALS:
    void changed();
    void textsChanged();
    void listsChanged();
    void monthChanged();
    void added();

  private:
    void showMonthOf(QDate day);
    void edited();
    [[nodiscard]] QDate currentDay() const;
    [[nodiscard]] const ReminderList* list() const;
    [[nodiscard]] std::optional<QString> preferredListID() const;

    ReminderStore& store_;
    const Clock& clock_;
    const CurrentCalendar& calendar_;
    Localizer& localizer_;
    QString title_;
    NewReminderPriority priority_ = NewReminderPriority::normal;
    std::optional<QString> listID_;
    QDate dueDay_;
    QString timeText_;
    std::optional<TextPair> error_;
    bool isSaving_ = false;
    QDate firstOfMonth_;
};

}  // namespace kestrant
