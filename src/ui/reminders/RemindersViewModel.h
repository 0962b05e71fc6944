#pragma once

#include "foundation/CurrentTimeZone.h"
#include "foundation/Scheduler.h"
#include "ui/reminders/ReminderCardModel.h"

#include <QColor>
#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <QVariantList>

#include <tl/expected.hpp>

#include <functional>

namespace kestrant {

class Localizer;
class ReminderStore;
struct ReminderStoreError;
struct ReminderTask;

/// The reminders module: cards, lists, filters, order, search, and what a person can do with them. Holds no
/// state of its own beside texts made from the store's. Thread: main.
class RemindersViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")

    Q_PROPERTY(kestrant::ReminderCardModel* cards READ cards CONSTANT)
    /// The state of the module: "cards", "loading", "empty" (no open reminder), "allDone" (none passes the
    /// filters), "nothingFound" (the search finds none), "denied", "restricted" or "failed".
    Q_PROPERTY(QString content READ content NOTIFY contentChanged)
    /// A reminder was ever completed; before that "empty" is a beginning.
    Q_PROPERTY(bool hasCompleted READ hasCompleted NOTIFY hasCompletedChanged)
    /// The reason, for "failed".
    Q_PROPERTY(QString failureText READ failureText NOTIFY contentChanged)

    /// {id, title, color, isWritable} each.
    Q_PROPERTY(QVariantList lists READ lists NOTIFY listsChanged)
    /// Empty for all lists.
    Q_PROPERTY(QString selectedListId READ selectedListId WRITE setSelectedListId NOTIFY listsChanged)
    Q_PROPERTY(QString selectedListTitle READ selectedListTitle NOTIFY listsChanged)
    Q_PROPERTY(QColor selectedListColor READ selectedListColor NOTIFY listsChanged)
    /// Of the entry that stands for all lists; none of theirs.
    Q_PROPERTY(QColor allListsColor READ allListsColor CONSTANT)

    Q_PROPERTY(bool showsTodayOnly READ showsTodayOnly WRITE setShowsTodayOnly NOTIFY filtersChanged)
    Q_PROPERTY(bool showsOverdueOnly READ showsOverdueOnly WRITE setShowsOverdueOnly NOTIFY filtersChanged)
    Q_PROPERTY(bool showsFlaggedOnly READ showsFlaggedOnly WRITE setShowsFlaggedOnly NOTIFY filtersChanged)
    Q_PROPERTY(int todayCount READ todayCount NOTIFY countsChanged)
    Q_PROPERTY(int overdueCount READ overdueCount NOTIFY countsChanged)
    Q_PROPERTY(int flaggedCount READ flaggedCount NOTIFY countsChanged)
    /// Flags that were set elsewhere are being read.
    Q_PROPERTY(bool isFlagLoading READ isFlagLoading NOTIFY flagSyncChanged)
    /// Why they are not known; empty when they are.
    Q_PROPERTY(QString flagFilterError READ flagFilterError NOTIFY flagSyncChanged)

    /// {rawValue, title} each.
    Q_PROPERTY(QVariantList sortModes READ sortModes NOTIFY sortModesChanged)
    Q_PROPERTY(QString sortMode READ sortMode WRITE setSortMode NOTIFY sortModeChanged)
    /// Reminders whose completion can still be taken back by the same click.
    Q_PROPERTY(QStringList completingIds READ completingIds NOTIFY completingIdsChanged)
    Q_PROPERTY(QString searchQuery READ searchQuery WRITE setSearchQuery NOTIFY searchQueryChanged)

  public:
    /// Everything must outlive the view model.
    RemindersViewModel(ReminderStore& store, const Clock& clock, const CurrentTimeZone& currentZone,
                       Localizer& localizer, QObject* parent = nullptr);

    [[nodiscard]] ReminderCardModel* cards() { return &cards_; }
    [[nodiscard]] const QString& content() const { return content_; }
    [[nodiscard]] bool hasCompleted() const;
    [[nodiscard]] QString failureText() const;
    [[nodiscard]] QStringList completingIds() const;
    [[nodiscard]] QVariantList lists() const;
    [[nodiscard]] QString selectedListId() const;
    void setSelectedListId(const QString& id);
    [[nodiscard]] QString selectedListTitle() const;
    [[nodiscard]] QColor selectedListColor() const;
    [[nodiscard]] QColor allListsColor() const;
    [[nodiscard]] bool showsTodayOnly() const;
    void setShowsTodayOnly(bool on);
    [[nodiscard]] bool showsOverdueOnly() const;
    void setShowsOverdueOnly(bool on);
    [[nodiscard]] bool showsFlaggedOnly() const;
    void setShowsFlaggedOnly(bool on);
    [[nodiscard]] int todayCount() const;
    [[nodiscard]] int overdueCount() const;
    [[nodiscard]] int flaggedCount() const;
    [[nodiscard]] bool isFlagLoading() const;
    [[nodiscard]] QString flagFilterError() const;
    [[nodiscard]] QVariantList sortModes() const;
    [[nodiscard]] QString sortMode() const;
    void setSortMode(const QString& rawValue);
    [[nodiscard]] QString searchQuery() const;
    void setSearchQuery(const QString& query);

    /// Asks for completion, or takes it back while that is possible.
    Q_INVOKABLE void toggleCompletion(const QString& taskId);
    Q_INVOKABLE void remove(const QString& taskId);
    Q_INVOKABLE void toggleFlag(const QString& taskId);
    Q_INVOKABLE void moveToList(const QString& taskId, const QString& listId);
    Q_INVOKABLE void clearDueDate(const QString& taskId);
    /// Puts a card in this place among those on show; from then on the cards are in manual order.
    Q_INVOKABLE void placeAt(const QString& taskId, int row);
    /// Due on that day ("2026-11-24") from now on, at the time of day it has; without one, the whole day.
    /// False when it is due then already.
    Q_INVOKABLE bool moveToDay(const QString& taskId, const QString& day);
    /// The due date in words that moveToDay() would give it.
    [[nodiscard]] Q_INVOKABLE QString dueTextOn(const QString& taskId, const QString& day) const;
    /// The day that "today", "tomorrow" or "nextWeek" (its Monday) stand for.
    [[nodiscard]] Q_INVOKABLE QString dayNamed(const QString& name) const;
    /// Tries again to open the database.
    Q_INVOKABLE void retry();
    Q_INVOKABLE void openPrivacyPage();

  Q_SIGNALS:
    void contentChanged();
    void hasCompletedChanged();
    void listsChanged();
    void filtersChanged();
    void countsChanged();
    void flagSyncChanged();
    void completingIdsChanged();
    void sortModesChanged();
    void sortModeChanged();
    void searchQueryChanged();
    /// A card is to be brought into view and pointed out.
    void revealRequested(const QString& taskId);
    /// A change did not happen; the sentence says why.
    void changeFailed(const QString& message);
    /// The person wants to allow access; the application opens the place where that is done.
    void privacyPageRequested();

  private:
    void updateContent();
    /// Tells of a change that did not happen.
    [[nodiscard]] std::function<void(const tl::expected<void, ReminderStoreError>&)> reportFailure();
    /// A task's due date moved to another day.
    [[nodiscard]] Instant dueDateOn(const ReminderTask& task, QDate day) const;
    [[nodiscard]] ReminderCard card(const ReminderTask& task, bool isPending) const;
    [[nodiscard]] QString computedContent() const;

    ReminderStore& store_;
    const Clock& clock_;
    const CurrentTimeZone& currentZone_;
    Localizer& localizer_;
    ReminderCardModel cards_;
    QString content_ = QStringLiteral("loading");
};

}  // namespace kestrant
