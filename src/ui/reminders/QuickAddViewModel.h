#pragma once

#include "reminders/model/ReminderTask.h"
#include "reminders/quickadd/QuickAddParser.h"
#include "ui/calendar/DayPicker.h"
#include "ui/controls/FormViewModel.h"
#include "ui/reminders/AlertPicker.h"

#include <QColor>
#include <QLocale>
#include <QQmlEngine>
#include <QString>
#include <QStringList>
#include <QVariantList>

#include <functional>
#include <optional>
#include <vector>

namespace kestrant {

class Localizer;
class ReminderStore;

/// The new reminder being written, and which kind of thing is: a reminder or an event. Thread: main.
class QuickAddViewModel : public kestrant::FormViewModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")

    /// "reminder" or "event": what the popover was last used for.
    Q_PROPERTY(QString type READ type WRITE setType NOTIFY changed)
    /// The line as typed. A day, a time, a priority and a list in it are understood and are no part of the
    /// reminder's title; what is chosen by hand afterwards wins.
    Q_PROPERTY(QString title READ title WRITE setTitle NOTIFY changed)
    /// The words that were understood, {kind, start, length} each, counted in UTF-16 units. The kind is one
    /// of the facts that a reminder has: "list", "due", "zone", "priority", "flag", "alert", "repeat", "link"
    /// and "notes".
    Q_PROPERTY(QVariantList pieces READ pieces NOTIFY changed)
    /// The kinds among the pieces.
    Q_PROPERTY(QStringList understood READ understood NOTIFY changed)
    /// The facts that hold: the list, then what was understood in the order of the line, then what was
    /// chosen.
    Q_PROPERTY(QStringList said READ said NOTIFY factsChanged)
    /// The facts that could be added.
    Q_PROPERTY(QStringList addable READ addable NOTIFY factsChanged)
    /// "none", "high", "normal" or "low".
    Q_PROPERTY(QString priority READ priority WRITE setPriority NOTIFY changed)
    Q_PROPERTY(QString priorityTitle READ priorityTitle NOTIFY changed)
    /// {id, title} each, from none to high.
    Q_PROPERTY(QVariantList priorities READ priorities NOTIFY textsChanged)
    Q_PROPERTY(QString listId READ listId WRITE setListId NOTIFY changed)
    Q_PROPERTY(QString listTitle READ listTitle NOTIFY changed)
    Q_PROPERTY(QColor listColor READ listColor NOTIFY changed)
    /// Why it is this list, in words.
    Q_PROPERTY(QString listReason READ listReason NOTIFY changed)
    /// Lists that take new reminders, {id, title, color} each.
    Q_PROPERTY(QVariantList lists READ lists NOTIFY listsChanged)
    Q_PROPERTY(kestrant::DayPicker* dueDay READ dueDay CONSTANT)
    /// As typed; empty for a whole day.
    Q_PROPERTY(QString timeText READ timeText WRITE setTimeText NOTIFY changed)
    Q_PROPERTY(bool isFlagged READ isFlagged WRITE setFlagged NOTIFY changed)
    Q_PROPERTY(kestrant::AlertPicker* alert READ alert CONSTANT)
    /// See RepeatChoices; "none" without a due date.
    Q_PROPERTY(QString repeatId READ repeatId WRITE setRepeatId NOTIFY changed)
    Q_PROPERTY(QString repeatTitle READ repeatTitle NOTIFY changed)
    /// Words that may say when but were left in the title, and weekdays that may be meant every week:
    /// {kind, words, title} each.
    Q_PROPERTY(QVariantList offers READ offers NOTIFY changed)
    /// The line has an end, too: it may be meant as an event.
    Q_PROPERTY(bool mayBeEvent READ mayBeEvent NOTIFY changed)
    /// The time in the zone that the line names; empty without one.
    Q_PROPERTY(QString zoneText READ zoneText NOTIFY changed)
    Q_PROPERTY(QString linkText READ linkText NOTIFY changed)
    Q_PROPERTY(QString notesText READ notesText NOTIFY changed)
    /// What Tab adds to the end of the line: the rest of a list's name, or of a title that is known; empty
    /// for nothing.
    Q_PROPERTY(QString completion READ completion NOTIFY changed)
    /// Day and time in words; empty without a due date.
    Q_PROPERTY(QString dueText READ dueText NOTIFY changed)
    Q_PROPERTY(bool canSubmit READ canSubmit NOTIFY changed)

  public:
    /// Everything must outlive the view model.
    QuickAddViewModel(ReminderStore& store, const Clock& clock, const CurrentTimeZone& currentZone,
                      Localizer& localizer, std::function<QLocale()> locale, QObject* parent = nullptr);

    /// Shows what was written and neither added nor discarded, or else an empty reminder in the list that is
    /// preferred now.
    Q_INVOKABLE void begin();
    /// Puts text behind what is written.
    void append(const QString& text);
    /// Gives up what was written.
    Q_INVOKABLE void discard();
    /// Saves; ends with `added`, or with errorText set and everything left as it was written.
    Q_INVOKABLE void submit();
    /// Undoes a fact: words that say it mean nothing but themselves from now on.
    Q_INVOKABLE void takeBack(const QString& fact);
    /// Whether there is anything to undo: some list takes the reminder in any case.
    Q_INVOKABLE [[nodiscard]] bool canTakeBack(const QString& fact) const;
    /// {id, title} each.
    Q_INVOKABLE [[nodiscard]] QVariantList repeats() const;
    /// Takes the words of an offer for what they may say.
    Q_INVOKABLE void accept(const QString& words);
    [[nodiscard]] QVariantList offers() const;
    [[nodiscard]] bool mayBeEvent() const { return line_.hasEnd; }
    [[nodiscard]] QString zoneText() const;
    [[nodiscard]] const QString& linkText() const { return line_.url; }
    [[nodiscard]] const QString& notesText() const { return line_.notes; }
    [[nodiscard]] QString completion() const;

    [[nodiscard]] const QString& type() const { return type_; }
    void setType(const QString& type);
    [[nodiscard]] const QString& title() const { return title_; }
    void setTitle(const QString& title);
    [[nodiscard]] QVariantList pieces() const;
    [[nodiscard]] QStringList understood() const;
    [[nodiscard]] const QStringList& said() const { return said_; }
    [[nodiscard]] const QStringList& addable() const { return addable_; }
    [[nodiscard]] bool isFlagged() const { return isFlagged_; }
    void setFlagged(bool flagged);
    [[nodiscard]] AlertPicker* alert() { return &alert_; }
    /// Empty for a repetition that is none of the choices.
    [[nodiscard]] QString repeatId() const;
    void setRepeatId(const QString& id);
    [[nodiscard]] QString repeatTitle() const;
    [[nodiscard]] QString priority() const;
    void setPriority(const QString& rawValue);
    [[nodiscard]] QString priorityTitle() const;
    [[nodiscard]] QVariantList priorities() const;
    [[nodiscard]] QString listId() const;
    void setListId(const QString& id);
    [[nodiscard]] QString listTitle() const;
    [[nodiscard]] QColor listColor() const;
    [[nodiscard]] QString listReason() const;
    [[nodiscard]] QVariantList lists() const;
    [[nodiscard]] DayPicker* dueDay() { return &dueDay_; }
    [[nodiscard]] const QString& timeText() const { return timeText_; }
    void setTimeText(const QString& typed);
    [[nodiscard]] QString dueText() const;
    [[nodiscard]] bool canSubmit() const;

  Q_SIGNALS:
    void factsChanged();
    void textsChanged();
    void listsChanged();
    void added();

  private:
    void edited() override;
    /// Sorts the facts anew; tells only when one has come or gone, since views have a control for each.
    void updateFacts();
    [[nodiscard]] bool holds(const QString& fact) const;
    /// Reads the line, and takes over what it says now and did not say before.
    void understand();
    [[nodiscard]] bool hasTime() const { return !timeText_.trimmed().isEmpty(); }
    /// Tells the alert what there is to ring for.
    void updateAlert();
    [[nodiscard]] std::vector<EKRecurrenceRule> rules() const;
    [[nodiscard]] const ReminderList* list() const;
    [[nodiscard]] std::optional<QString> preferredListID() const;

    ReminderStore& store_;
    const Clock& clock_;
    const CurrentTimeZone& currentZone_;
    Localizer& localizer_;
    /// The person's own, for the order of numeric dates.
    std::function<QLocale()> locale_;
    QString type_ = QStringLiteral("reminder");
    QString title_;
    QuickAddLine line_;
    /// Words that were refused.
    QStringList refused_;
    QStringList accepted_;
    bool isFlagged_ = false;
    AlertPicker alert_;
    std::vector<EKRecurrenceRule> rules_;
    /// A priority that nobody has chosen is none.
    std::optional<NewReminderPriority> priority_;
    std::optional<QString> listID_;
    QString newListTitle_;
    QStringList said_;
    QStringList addable_;
    DayPicker dueDay_;
    QString timeText_;
};

}  // namespace kestrant
