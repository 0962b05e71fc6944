#pragma once

#include "reminders/model/ReminderTask.h"
#include "ui/calendar/DayPicker.h"
#include "ui/controls/FormDraft.h"
#include "ui/controls/FormViewModel.h"
#include "ui/reminders/AlertPicker.h"

#include <QColor>
#include <QQmlEngine>
#include <QString>
#include <QVariantList>

#include <tl/expected.hpp>

#include <optional>
#include <vector>

namespace kestrant {

class Localizer;
class ReminderStore;
struct ReminderStoreError;

/// The reminder that is being edited. Thread: main.
class ReminderEditViewModel : public kestrant::FormViewModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")

    Q_PROPERTY(QString title READ title WRITE setTitle NOTIFY changed)
    Q_PROPERTY(kestrant::DayPicker* dueDay READ dueDay CONSTANT)
    /// As typed; empty for a whole day.
    Q_PROPERTY(QString dueTime READ dueTime WRITE setDueTime NOTIFY changed)
    Q_PROPERTY(bool dueTimeIsWrong READ dueTimeIsWrong NOTIFY changed)
    /// "none", "low", "normal" or "high".
    Q_PROPERTY(QString priority READ priority WRITE setPriority NOTIFY changed)
    /// {rawValue, title} each, in that order.
    Q_PROPERTY(QVariantList priorities READ priorities NOTIFY changed)
    Q_PROPERTY(QString listId READ listId WRITE setListId NOTIFY changed)
    Q_PROPERTY(QString listTitle READ listTitle NOTIFY changed)
    Q_PROPERTY(QColor listColor READ listColor NOTIFY changed)
    Q_PROPERTY(kestrant::AlertPicker* alert READ alert CONSTANT)
    /// See RepeatChoices; empty for rules that are none of the choices.
    Q_PROPERTY(QString repeatId READ repeatId WRITE setRepeatId NOTIFY changed)
    Q_PROPERTY(QString repeatTitle READ repeatTitle NOTIFY changed)
    Q_PROPERTY(QString notes READ notes WRITE setNotes NOTIFY changed)
    /// The form shows entries kept from an earlier, unsaved one.
    Q_PROPERTY(bool isRestored READ isRestored NOTIFY changed)
    Q_PROPERTY(bool canSave READ canSave NOTIFY changed)

  public:
    /// Everything must outlive the view model.
    ReminderEditViewModel(ReminderStore& store, const Clock& clock, const CurrentTimeZone& currentZone,
                          Localizer& localizer, QObject* parent = nullptr);

    /// Shows a reminder, or in errorText that it is gone. Returns the form's number, for end().
    Q_INVOKABLE int begin(const QString& reminderId);
    /// Shows what was kept of an earlier form of this reminder, as long as the reminder is what it was then.
    Q_INVOKABLE void restore();
    /// Keeps what was written for restore(), until it is saved or another form is kept. To be called before
    /// end() when a form goes that nobody has given up.
    Q_INVOKABLE void keep(int form);
    /// Gives up what was written.
    Q_INVOKABLE void discard();
    /// Ends with `saved`, or with errorText set and everything left as it was written. Nothing is written
    /// when nothing was changed.
    Q_INVOKABLE void save();
    /// The lists that take reminders, {id, title, color} each.
    Q_INVOKABLE [[nodiscard]] QVariantList lists() const;
    /// {id, title} each, the rules that the reminder came with among them.
    Q_INVOKABLE [[nodiscard]] QVariantList repeats() const;

    [[nodiscard]] const QString& title() const { return title_; }
    void setTitle(const QString& title) { set(title_, title); }
    [[nodiscard]] DayPicker* dueDay() { return &dueDay_; }
    [[nodiscard]] const QString& dueTime() const { return dueTime_; }
    void setDueTime(const QString& typed);
    /// True for a typed time that could not be read when it was to be saved.
    [[nodiscard]] bool dueTimeIsWrong() const { return dueTimeIsWrong_; }
    [[nodiscard]] QString priority() const;
    void setPriority(const QString& rawValue);
    [[nodiscard]] QVariantList priorities() const;
    [[nodiscard]] const QString& listId() const { return list_.id; }
    void setListId(const QString& id);
    [[nodiscard]] const QString& listTitle() const { return list_.title; }
    [[nodiscard]] QColor listColor() const;
    [[nodiscard]] AlertPicker* alert() { return &alert_; }
    [[nodiscard]] QString repeatId() const;
    void setRepeatId(const QString& id);
    [[nodiscard]] QString repeatTitle() const;
    [[nodiscard]] const QString& notes() const { return notes_; }
    void setNotes(const QString& notes) { set(notes_, notes); }
    [[nodiscard]] QString lockReason() const override;
    [[nodiscard]] bool isRestored() const { return isRestored_; }
    [[nodiscard]] bool canSave() const { return loaded_ && canEdit(); }

  Q_SIGNALS:
    void saved();

  private:
    /// Everything that can be changed.
    struct Fields {
        QString title;
        QDate dueDay;
        QString dueTime;
        int priority = 0;
        ReminderList list;
        QString notes;
        AlertPicker::Value alert;
        /// The repetition that the reminder came with, and the one chosen instead.
        std::vector<EKRecurrenceRule> rules;
        std::optional<ReminderRepeat> repeat;

        bool operator==(const Fields&) const = default;
    };

    [[nodiscard]] Fields fields() const;
    void edited() override;
    void finishSaving(int form, const tl::expected<void, ReminderStoreError>& result);
    [[nodiscard]] bool hasTime() const { return !dueTime_.trimmed().isEmpty(); }
    /// Tells the alert what there is to ring for.
    void updateAlert();
    [[nodiscard]] std::vector<EKRecurrenceRule> shownRules() const;
    /// Puts the due date that is shown into the details; false when its time cannot be read.
    [[nodiscard]] bool takeDueDate(ReminderEditDetails& details);

    ReminderStore& store_;
    const CurrentTimeZone& currentZone_;
    Localizer& localizer_;
    QString id_;
    /// The values the form began with; absent when the reminder is gone.
    std::optional<ReminderEditDetails> loaded_;
    /// The zone does not change under what is shown.
    TimeZone zone_;
    QString title_;
    DayPicker dueDay_;
    QString dueTime_;
    bool dueTimeIsWrong_ = false;
    int priority_ = 0;
    ReminderList list_;
    QString notes_;
    AlertPicker alert_;
    /// The initial repetition and the one chosen instead.
    std::vector<EKRecurrenceRule> rules_;
    std::optional<ReminderRepeat> repeat_;
    Fields begun_;
    FormDraft<Fields> draft_;
    bool isRestored_ = false;
};

}  // namespace kestrant
