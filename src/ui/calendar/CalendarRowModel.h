#pragma once

#include "calendar/CalendarItems.h"

#include <QAbstractListModel>
#include <QColor>
#include <QHash>
#include <QQmlEngine>
#include <QString>

#include <functional>
#include <optional>
#include <vector>

namespace kestrant {

/// Everything one line of the calendar shows: the heading of a day, or an event or reminder below it.
struct CalendarRow {
    Q_GADGET
    Q_PROPERTY(bool isHeading MEMBER isHeading CONSTANT)
    Q_PROPERTY(QString day MEMBER day CONSTANT)
    Q_PROPERTY(bool isToday MEMBER isToday CONSTANT)
    Q_PROPERTY(QString id MEMBER id CONSTANT)
    Q_PROPERTY(QString title MEMBER title CONSTANT)
    Q_PROPERTY(QString monthText MEMBER monthText CONSTANT)
    Q_PROPERTY(QString spanText MEMBER spanText CONSTANT)
    Q_PROPERTY(QString briefTimeText MEMBER briefTimeText CONSTANT)
    Q_PROPERTY(QString place MEMBER place CONSTANT)
    Q_PROPERTY(QString calendarTitle MEMBER calendarTitle CONSTANT)
    Q_PROPERTY(QColor color MEMBER color CONSTANT)
    Q_PROPERTY(bool isAllDay MEMBER isAllDay CONSTANT)
    Q_PROPERTY(bool isReminder MEMBER isReminder CONSTANT)
    Q_PROPERTY(bool isOverdue MEMBER isOverdue CONSTANT)
    Q_PROPERTY(bool isNow MEMBER isNow CONSTANT)
    Q_PROPERTY(double progress MEMBER progress CONSTANT)
    Q_PROPERTY(bool isOver MEMBER isOver CONSTANT)
    Q_PROPERTY(QString nowLine MEMBER nowLine CONSTANT)
    Q_PROPERTY(QString nowText MEMBER nowText CONSTANT)
    Q_PROPERTY(bool isRecurring MEMBER isRecurring CONSTANT)
    Q_PROPERTY(bool hasNotes MEMBER hasNotes CONSTANT)
    Q_PROPERTY(bool canBeJoined MEMBER canBeJoined CONSTANT)
    Q_PROPERTY(QString spokenText MEMBER spokenText CONSTANT)

  public:
    bool isHeading = false;
    /// "2026-11-24".
    QString day;
    bool isToday = false;
    /// Empty for a heading.
    QString id;
    QString title;
    /// Of a heading in the full calendar: "November 2026". Else empty.
    QString monthText;
    /// "09:30 – 10:15", "until Tue", "all day".
    QString spanText;
    /// "09:30", "– 02:00", "all day".
    QString briefTimeText;
    /// On one line; empty for none.
    QString place;
    QString calendarTitle;
    QColor color;
    bool isAllDay = false;
    bool isReminder = false;
    /// A reminder whose time has passed.
    bool isOverdue = false;
    bool isNow = false;
    /// How much of what is happening now has passed, 0 to 1.
    double progress = 0.0;
    /// An event that has ended.
    bool isOver = false;
    /// "above" or "below" when the present lies at that edge of the row, between what has begun and what has
    /// not; else empty.
    QString nowLine;
    /// The present, "14:30", where there is such a line.
    QString nowText;
    /// One date of several.
    bool isRecurring = false;
    bool hasNotes = false;
    /// Its meeting is of use now.
    bool canBeJoined = false;
    /// Everything above in words, for assistive technology.
    QString spokenText;
};

/// The days with their rows as one list, role "row" with a CalendarRow. Texts are made when a view asks for
/// them. A new state arrives whole and is told as the fewest changes, day by day; days that come side by side
/// come in one insertion, whatever their number. Thread: main.
class CalendarRowModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(int count READ count NOTIFY countChanged)

  public:
    /// Makes the heading of a day (`event` negative), or one of its rows.
    using Presenter = std::function<CalendarRow(const CalendarDayGroup& group, int event)>;
    enum Role { rowRole = Qt::UserRole };

    explicit CalendarRowModel(Presenter presenter, QObject* parent = nullptr);

    void setGroups(const QList<CalendarDayGroup>& groups);
    /// The presenter would answer differently now: for every row, or for those of today.
    void refreshTexts();
    void refreshToday();

    [[nodiscard]] int count() const { return firstRows_.back(); }
    /// The item of a row; null for a heading and for a row that does not exist. Good until the next change.
    [[nodiscard]] const CalendarEventItem* item(int row) const;

    // Where rows are. Days are given as "2026-11-24"; -1 stands for none.

    /// The row of an item on a day, or of its heading (`id` empty).
    [[nodiscard]] Q_INVOKABLE int rowOf(const QString& day, const QString& id) const;
    /// The heading of the first day from this one on, else of the last day.
    [[nodiscard]] Q_INVOKABLE int headingFrom(const QString& day) const;
    /// The heading that a row stands below, or is.
    [[nodiscard]] Q_INVOKABLE int headingOf(int row) const;
    /// The heading of the next day.
    [[nodiscard]] Q_INVOKABLE int headingAfter(int row) const;
    /// The nearest item that lies at least one row further down (`direction` 1) or up (-1).
    [[nodiscard]] Q_INVOKABLE int nextItem(int row, int direction) const;
    /// The first item of the nearest day with items after (1) or before (-1) that of `row`.
    [[nodiscard]] Q_INVOKABLE int firstItemOfNextDay(int row, int direction) const;
    [[nodiscard]] Q_INVOKABLE QString dayAt(int row) const;
    /// The content of a row; empty for a row that does not exist.
    [[nodiscard]] Q_INVOKABLE kestrant::CalendarRow rowAt(int row) const;
    /// Empty for a heading.
    [[nodiscard]] Q_INVOKABLE QString idAt(int row) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

  Q_SIGNALS:
    void countChanged();
    /// Before the first and after the last of the changes that lead to a new state: for views that keep their
    /// place.
    void aboutToChange();
    void changed();

  private:
    [[nodiscard]] bool isRow(int row) const { return row >= 0 && row < count(); }
    [[nodiscard]] int groupOf(int row) const;
    [[nodiscard]] std::vector<CalendarDayGroup>::const_iterator groupFrom(const QString& day) const;
    [[nodiscard]] bool changesInRuns(const QList<CalendarDayGroup>& groups) const;
    void removeGroups(int first, int count);
    void insertGroups(int at, const QList<CalendarDayGroup>& groups, int count);
    void updateGroup(int index, const CalendarDayGroup& group);
    void updateRows(int index, const QList<CalendarEventItem>& events);
    void countRows();

    Presenter presenter_;
    std::vector<CalendarDayGroup> groups_;
    /// The row of each group's heading, and how many rows there are.
    std::vector<int> firstRows_{0};
};

}  // namespace kestrant

Q_DECLARE_METATYPE(kestrant::CalendarRow)
Q_DECLARE_METATYPE(kestrant::CalendarEventItem)
