#include "reminders/model/ReminderTask.h"

#include <gmock/gmock.h>

namespace kestrant {
namespace {

TEST(ReminderTask, StoredWordsStandForTheirCasesAndOthersForNone) {
    for (const ReminderSortMode mode : allReminderSortModes)
        EXPECT_EQ(reminderSortMode(rawValue(mode)), mode);
    EXPECT_EQ(reminderSortMode(u"DueDate"), std::nullopt);
    EXPECT_EQ(reminderSortMode(u""), std::nullopt);
    for (const NewReminderPriority priority : allNewReminderPriorities)
        EXPECT_EQ(newReminderPriority(rawValue(priority)), priority);
    EXPECT_EQ(newReminderPriority(u"medium"), std::nullopt);
}

}  // namespace
}  // namespace kestrant
