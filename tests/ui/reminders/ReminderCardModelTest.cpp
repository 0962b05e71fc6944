#include "ui/reminders/ReminderCardModel.h"

#include "ui/controls/RowFollower.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>

#include <gmock/gmock.h>

#include <algorithm>
#include <numeric>
#include <random>

using namespace kestrant;
using namespace kestrant::test;
using testing::ElementsAre;

namespace {

ReminderTask task(int id, const QString& title = QStringLiteral("title")) {
    ReminderTask task;
    task.id = QString::number(id);
    task.title = title;
    return task;
}

ReminderTaskList listOf(std::vector<ReminderTask> tasks) {
    std::vector<std::uint32_t> order(tasks.size());
    std::iota(order.begin(), order.end(), 0U);
    return {std::make_shared<const std::vector<ReminderTask>>(std::move(tasks)), std::move(order)};
}

ReminderCard present(const ReminderTask& task, bool isPending) {
    ReminderCard card;
    card.id = task.id;
    card.title = task.title;
    card.isPending = isPending;
    return card;
}

TEST(ReminderCardModel, TellsEveryChangeSoThatAFollowerHoldsTheSameCards) {
    std::mt19937 random(11);
    ReminderCardModel model(present);
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    const RowFollower follower(model, [&](int row) {
        const auto card = model.data(model.index(row), ReminderCardModel::cardRole).value<ReminderCard>();
        return card.id + QLatin1Char(' ') + card.title;
    });
    for (int round = 0; round < 200; ++round) {
        std::vector<ReminderTask> tasks;
        // Some rounds are too large to be told row by row.
        const int ids = round % 10 == 9 ? 200 : 20;
        for (int id = 0; id < ids; ++id) {
            if (random() % 2 != 0)
                tasks.push_back(task(id, QString::number(random() % 3)));
        }
        std::shuffle(tasks.begin(), tasks.end(), random);
        model.setTasks(listOf(tasks));

        std::vector<QString> expected;
        for (const ReminderTask& wanted : tasks)
            expected.push_back(wanted.id + QLatin1Char(' ') + wanted.title);
        ASSERT_EQ(follower.rows, expected) << "round " << round;
        ASSERT_EQ(model.tasks(), listOf(tasks));
    }
}

TEST(ReminderCardModel, TellsOfTheRowsAloneWhoseCardsLookDifferent) {
    ReminderCardModel model(present);
    model.setTasks(listOf({task(1), task(2), task(3)}));
    QSignalSpy changes(&model, &QAbstractItemModel::dataChanged);
    const auto rows = [&changes] {
        std::vector<int> told;
        for (const QList<QVariant>& change : changes)
            told.push_back(change.at(0).toModelIndex().row());
        changes.clear();
        std::sort(told.begin(), told.end());
        return told;
    };

    model.setTasks(listOf({task(1), task(2, QStringLiteral("other")), task(3)}));
    EXPECT_THAT(rows(), ElementsAre(1));
    model.setPendingIDs({QStringLiteral("1"), QStringLiteral("3")});
    EXPECT_THAT(rows(), ElementsAre(0, 2));
    model.setPendingIDs({QStringLiteral("3"), QStringLiteral("9")});
    EXPECT_THAT(rows(), ElementsAre(0));
    EXPECT_TRUE(model.data(model.index(2), ReminderCardModel::cardRole).value<ReminderCard>().isPending);
}

}  // namespace
