#include "reminders/flags/ReminderFlagIndex.h"

#include <gtest/gtest.h>

namespace kestrant {
namespace {

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
