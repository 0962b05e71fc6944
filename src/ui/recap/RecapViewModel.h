#pragma once

#include "foundation/Instant.h"
#include "foundation/Subscription.h"
#include "recap/Recap.h"
#include "ui/recap/RecapCard.h"
#include "ui/recap/RecapSharing.h"

#include <QColor>
#include <QHash>
#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <QVariantList>

#include <functional>
#include <optional>
#include <vector>

namespace kestrant {

class BackgroundExecutor;
class Clock;
class CurrentTimeZone;
class EKEventStore;
class Localizer;
class NotchInteractionModel;
class ReminderStore;
class Scheduler;
class UserDefaults;

/// The recap of what was completed: an overview of four cards, and each card by itself, of the present period
/// or an earlier one. It counts only while it is open, from the records that are in memory; titles come from
/// the database, which may know them no more. While it is open it holds the panel open. Thread: main.
class RecapViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(bool isOpen READ isOpen NOTIFY isOpenChanged)
    /// "overview", "day", "week", "month" or "year".
    Q_PROPERTY(QString view READ view WRITE setView NOTIFY viewChanged)
    /// {rawValue, title} each.
    Q_PROPERTY(QVariantList views READ views NOTIFY changed)
    /// Nothing was completed yet, as far as anybody knows.
    Q_PROPERTY(bool isEmpty READ isEmpty NOTIFY changed)
    /// The four RecapCards of the overview.
    Q_PROPERTY(QVariantList cards READ cards NOTIFY changed)
    /// The card on show; on the overview that of the week.
    Q_PROPERTY(kestrant::RecapCard card READ card NOTIFY changed)
    Q_PROPERTY(bool hasPrevious READ hasPrevious NOTIFY changed)
    Q_PROPERTY(bool hasNext READ hasNext NOTIFY changed)
    /// What was completed on the card's day, or today on the overview: {time, title, list, color, isKnown}
    /// each.
    Q_PROPERTY(QVariantList rows READ rows NOTIFY changed)
    /// Of today: reminders that are still open.
    Q_PROPERTY(QString openText READ openText NOTIFY changed)
    /// Passes on the card.
    Q_PROPERTY(kestrant::RecapSharing* sharing READ sharing CONSTANT)

  public:
    struct Services {
        EKEventStore& eventStore;
        ReminderStore& reminders;
        Scheduler& scheduler;
        const Clock& clock;
        CurrentTimeZone& currentZone;
        Localizer& localizer;
        NotchInteractionModel& interaction;
        /// Where pictures are written.
        BackgroundExecutor& executor;
        /// Says on which day weeks begin.
        std::function<QLocale()> locale;
        /// Where links that were made are remembered.
        UserDefaults& defaults;
        /// Of the page that shows shared recaps; empty for none.
        QString shareBaseUrl;
    };
    /// Everything must outlive the view model.
    explicit RecapViewModel(const Services& services, QObject* parent = nullptr);

    [[nodiscard]] bool isOpen() const { return isOpen_; }
    Q_INVOKABLE void open();
    Q_INVOKABLE void close();

    [[nodiscard]] QString view() const;
    /// Goes to the present period of that kind.
    void setView(const QString& view);
    [[nodiscard]] QVariantList views() const;
    [[nodiscard]] bool isEmpty() const { return days_.empty(); }
    [[nodiscard]] QVariantList cards() const;
    [[nodiscard]] const RecapCard& card() const { return card_; }
    [[nodiscard]] bool hasPrevious() const;
    [[nodiscard]] bool hasNext() const;
    [[nodiscard]] QVariantList rows() const;
    [[nodiscard]] QString openText() const;
    [[nodiscard]] RecapSharing* sharing() { return &sharing_; }

    Q_INVOKABLE void showPrevious();
    Q_INVOKABLE void showNext();
    /// Shows a day of the card's period by itself. One that has not begun changes nothing.
    Q_INVOKABLE void showDay(int index);
    /// Of a day of the card's period: {title, number, names, spokenText}.
    Q_INVOKABLE [[nodiscard]] QVariantMap dayHint(int index) const;

  Q_SIGNALS:
    void isOpenChanged();
    void viewChanged();
    void changed();

  private:
    struct Item {
        QString title;
        QString list;
        QColor color;
    };

    [[nodiscard]] Qt::DayOfWeek firstDayOfWeek() const { return services_.locale().firstDayOfWeek(); }
    [[nodiscard]] QDate today() const;
    [[nodiscard]] RecapPeriod periodOf(RecapKind kind, QDate day) const;
    [[nodiscard]] RecapCard makeCard(const RecapPeriod& period) const;
    /// The records of a day, in order.
    [[nodiscard]] std::vector<const CompletionRecord*> recordsOf(QDate day) const;
    void show(std::optional<RecapKind> kind, QDate day);
    /// Counts anew.
    void refresh();
    void makeCards();
    void fetchTitles();

    Services services_;
    bool isOpen_ = false;
    /// Absent on the overview.
    std::optional<RecapKind> kind_;
    /// A day of the period on show; invalid for the present one.
    QDate day_;
    std::vector<CompletedDay> days_;
    RecapCard card_;
    std::vector<RecapCard> cards_;
    /// What the database knows of the reminders completed in the period, by identifier.
    QHash<QString, Item> items_;
    RecapPeriod fetched_;
    int fetchGeneration_ = 0;
    RecapSharing sharing_;
    Subscription zoneChanges_;
    Subscription databaseChanges_;
};

}  // namespace kestrant
