#include "ui/calendar/CalendarRowModel.h"

#include "ui/controls/RowFollower.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>

#include <gmock/gmock.h>

#include <random>

using namespace kestrant;
using namespace kestrant::test;
using testing::ElementsAre;

namespace {

const QDate firstDay(2026, 11, 21);

CalendarEventItem item(int id, const QString& title = QStringLiteral("title")) {
    CalendarEventItem item;
    item.id = QString::number(id);
    item.title = title;
    return item;
}

CalendarDayGroup group(int day, QList<CalendarEventItem> events) {
    return {firstDay.addDays(day), {}, QString::number(day), false, std::move(events)};
}

CalendarRow present(const CalendarDayGroup& group, int event) {
    CalendarRow row;
    row.isHeading = event < 0;
    row.day = group.day.toString(Qt::ISODate);
    row.id = event < 0 ? QString() : group.events.at(event).id;
    row.title = event < 0 ? group.headerTitle : group.events.at(event).title;
    return row;
}

QString iso(int day) {
    return firstDay.addDays(day).toString(Qt::ISODate);
}

QString line(const CalendarRow& row) {
    return row.day + u'/' + row.id + u' ' + row.title;
}

std::vector<QString> linesOf(const QList<CalendarDayGroup>& groups) {
    std::vector<QString> lines;
    for (const CalendarDayGroup& each : groups) {
        for (int event = -1; event < int(each.events.size()); ++event)
            lines.push_back(line(present(each, event)));
    }
    return lines;
}

TEST(CalendarRowModel, TellsEveryChangeSoThatAFollowerHoldsTheSameLines) {
    std::mt19937 random(7);
    CalendarRowModel model(present);
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    const RowFollower follower(model, [&](int row) { return line(model.rowAt(row)); });
    for (int round = 0; round < 200; ++round) {
        QList<CalendarDayGroup> groups;
        // Some rounds change too many days to be told one by one.
        const int days = round % 8 == 7 ? 300 : 8;
        const int first = int(random() % 5);
        for (int day = first; day < first + days; ++day) {
            if (random() % 3 == 0)
                continue;
            QList<CalendarEventItem> events;
            // Some days have too many rows to be told one by one.
            const int ids = random() % 20 == 0 ? 200 : 6;
            for (int id = 0; id < ids; ++id) {
                if (random() % 2 != 0)
                    events.push_back(item(id, QString::number(random() % 2)));
            }
            std::shuffle(events.begin(), events.end(), random);
            groups.push_back(group(day, events));
        }
        model.setGroups(groups);
        ASSERT_EQ(follower.rows, linesOf(groups)) << "round " << round;
    }
}

TEST(CalendarRowModel, TakesInYearsOfDaysBeforeAndAfterInOneInsertionEach) {
    CalendarRowModel model(present);
    QList<CalendarDayGroup> week{group(0, {item(1)}), group(2, {item(2)})};
    model.setGroups(week);
    QList<CalendarDayGroup> years;
    for (int day = -2000; day < 0; ++day)
        years.push_back(group(day, {item(1), item(2)}));
    years += week;
    for (int day = 3; day < 2000; ++day)
        years.push_back(group(day, {item(1)}));

    QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
    QSignalSpy others(&model, &QAbstractItemModel::modelReset);
    QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
    model.setGroups(years);
    EXPECT_EQ(inserted.count(), 2);
    EXPECT_EQ(others.count() + changed.count(), 0);
    EXPECT_EQ(model.count(), 2000 * 3 + 4 + 1997 * 2);
}

TEST(CalendarRowModel, ChangesOneLineForAnEventThatChanged) {
    CalendarRowModel model(present);
    model.setGroups({group(0, {item(1), item(2)}), group(1, {item(1)})});
    QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
    QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
    model.setGroups({group(0, {item(1), item(2, QStringLiteral("other"))}), group(1, {item(1)})});
    ASSERT_EQ(changed.count(), 1);
    EXPECT_EQ(changed.at(0).at(0).toModelIndex().row(), 2);
    EXPECT_EQ(changed.at(0).at(1).toModelIndex().row(), 2);
    EXPECT_EQ(inserted.count(), 0);
}

TEST(CalendarRowModel, KnowsWhereDaysAndItemsAre) {
    CalendarRowModel model(present);
    EXPECT_EQ(model.headingFrom(iso(0)), -1);
    EXPECT_EQ(model.nextItem(-1, 1), -1);

    // 0 heading, 1 and 2; 3 heading of a day without items; 4 heading, 5.
    model.setGroups({group(0, {item(1), item(2)}), group(1, {}), group(4, {item(1)})});
    EXPECT_EQ(model.rowOf(iso(4), QStringLiteral("1")), 5);
    EXPECT_EQ(model.rowOf(iso(4), QString()), 4);
    EXPECT_EQ(model.rowOf(iso(4), QStringLiteral("2")), -1);
    EXPECT_EQ(model.rowOf(iso(2), QString()), -1);

    EXPECT_EQ(model.headingFrom(iso(-5)), 0);
    EXPECT_EQ(model.headingFrom(iso(2)), 4);
    EXPECT_EQ(model.headingFrom(iso(9)), 4);
    EXPECT_EQ(model.headingOf(2), 0);
    EXPECT_EQ(model.headingAfter(2), 3);
    EXPECT_EQ(model.headingAfter(5), -1);

    EXPECT_EQ(model.nextItem(-1, 1), 1);
    EXPECT_EQ(model.nextItem(2, 1), 5);
    EXPECT_EQ(model.nextItem(5, -1), 2);
    EXPECT_EQ(model.nextItem(5, 1), -1);
    EXPECT_EQ(model.firstItemOfNextDay(2, 1), 5);
    EXPECT_EQ(model.firstItemOfNextDay(5, -1), 1);
    EXPECT_EQ(model.firstItemOfNextDay(1, -1), -1);

    EXPECT_EQ(model.item(3), nullptr);
    ASSERT_NE(model.item(5), nullptr);
    EXPECT_EQ(model.item(5)->id, QStringLiteral("1"));
    EXPECT_EQ(model.dayAt(3), iso(1));
    EXPECT_EQ(model.idAt(3), QString());
}

}  // namespace
