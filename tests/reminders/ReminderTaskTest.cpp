#include "reminders/ReminderTask.h"

#include "reminders/ReminderFlagIndex.h"

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

TEST(ReminderFlagIndex, ComparesTheLastPartOfIdentifiersAndAFlagSetHereWins) {
    ReminderFlagIndex index;
    index.nativeIDs = {QStringLiteral("abc"), QStringLiteral("def")};
    index.localOverrides = {{QStringLiteral("def"), false}, {QStringLiteral("ghi"), true}};
    EXPECT_TRUE(index.isFlagged(QStringLiteral("x-kestrant-reminder://ABC")));
    EXPECT_FALSE(index.isFlagged(QStringLiteral("dEF")));
    EXPECT_TRUE(index.isFlagged(QStringLiteral("a/b/GHI")));
    EXPECT_FALSE(index.isFlagged(QStringLiteral("abc/")));
}

}  // namespace
}  // namespace kestrant
