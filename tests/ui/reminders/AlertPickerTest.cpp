#include "ui/reminders/AlertPicker.h"

#include "ui/Program.h"

#include <gmock/gmock.h>

using namespace kestrant;
using namespace kestrant::test;

namespace {

struct Picking : Program {
    [[nodiscard]] std::string offered() const {
        QStringList titles;
        for (const QVariant& choice : picker.choices())
            titles.append(choice.toMap()[QStringLiteral("title")].toString());
        return titles.join(QStringLiteral(" | ")).toStdString();
    }
    [[nodiscard]] std::optional<ReminderAlertSchedule> taken() {
        const auto schedule = picker.takeSchedule();
        EXPECT_TRUE(schedule.has_value());
        return schedule.value_or(std::nullopt);
    }

    AlertPicker picker{localizer};
};

TEST(AlertPicker, OffersWhatFitsTheDueDateAndWhatWasThere) {
    Picking test;
    EXPECT_EQ(test.offered(), "No alert");
    test.picker.setSchedule(RelativeToDueTime{-2700});
    test.picker.setDue(AlertPicker::Due::time);
    EXPECT_EQ(test.offered(), "No alert | At due time | 5 min before | 15 min before | 1 hr before | "
                              "1 day before | 45 min before");
    EXPECT_EQ(test.picker.title(), QStringLiteral("45 min before"));
    test.picker.setDue(AlertPicker::Due::day);
    EXPECT_EQ(test.offered(), "No alert | On day of event | Day before");
    EXPECT_EQ(test.taken(), std::nullopt) << "it does not fit";
    test.picker.setDue(AlertPicker::Due::time);
    EXPECT_EQ(test.taken(), ReminderAlertSchedule(RelativeToDueTime{-2700}));

    test.picker.setDue(AlertPicker::Due::day);
    test.picker.setSchedule(DayRelativeToDueDate{-3, 18, 30});
    EXPECT_EQ(test.offered(), "No alert | On day of event | Day before | 3 days before at 18:30");
    EXPECT_FALSE(test.picker.hasTime());
    EXPECT_EQ(test.taken(), ReminderAlertSchedule(DayRelativeToDueDate{-3, 18, 30}));
}

TEST(AlertPicker, RingsForAWholeDayAtAnyTimeOfDay) {
    Picking test;
    test.picker.setDue(AlertPicker::Due::day);
    test.picker.setId(QStringLiteral("day 0"));
    EXPECT_EQ(test.taken(), ReminderAlertSchedule(DayRelativeToDueDate{0, 9, 0}));
    test.picker.setTime(QStringLiteral("7h15"));
    test.picker.setId(QStringLiteral("day -1"));
    EXPECT_EQ(test.taken(), ReminderAlertSchedule(DayRelativeToDueDate{-1, 7, 15})) << "the time stays";

    test.picker.setTime(QStringLiteral("soon"));
    EXPECT_FALSE(test.picker.timeIsWrong());
    const auto refused = test.picker.takeSchedule();
    ASSERT_FALSE(refused.has_value());
    EXPECT_EQ(refused.error().english, QStringLiteral("Enter the time like 9:30."));
    EXPECT_TRUE(test.picker.timeIsWrong());
    test.picker.setId(QString());
    EXPECT_EQ(test.taken(), std::nullopt);

    test.picker.setSchedule(DayRelativeToDueDate{-1, 18, 5});
    EXPECT_EQ(test.picker.time(), QStringLiteral("18:05"));
    EXPECT_EQ(test.taken(), ReminderAlertSchedule(DayRelativeToDueDate{-1, 18, 5}));
}

}  // namespace
