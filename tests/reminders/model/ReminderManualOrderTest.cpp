#include "reminders/model/ReminderManualOrder.h"

#include <gtest/gtest.h>

namespace kestrant {
namespace {

/// Orders with one letter for each id.
struct Case {
    const char* order;
    const char* other;
    const char* expected;
};

QStringList letters(const char* text) {
    return QString::fromUtf8(text).split(QString(), Qt::SkipEmptyParts);
}

TEST(ReminderManualOrder, FillsThePlacesOfWhatMovedAndKeepsTheRest) {
    for (const Case& each : {Case{"", "ab", "ab"}, Case{"abc", "", "abc"}, Case{"abc", "cab", "cab"},
                             Case{"axbxc", "cba", "cxbxa"}, Case{"ahb", "anb", "ahnb"},
                             Case{"aab", "ba", "ba"}, Case{"h", "ab", "hab"}})
        EXPECT_EQ(mergedManualOrder(letters(each.order), letters(each.other)), letters(each.expected))
            << each.order << " with " << each.other;
}

TEST(ReminderManualOrder, FindsThePlaceBehindWhatIsStillThere) {
    for (const Case& each : {Case{"abd", "abxd", "abxd"}, Case{"dba", "abxd", "dbxa"},
                             Case{"nm", "xab", "xnm"}, Case{"anm", "abx", "axnm"}, Case{"axb", "xab", "axb"},
                             Case{"ab", "ab", "ab"}, Case{"", "abx", "x"}})
        EXPECT_EQ(withPlaceRestored(letters(each.order), letters(each.other), QStringLiteral("x")),
                  letters(each.expected))
            << each.order << " after " << each.other;
}

}  // namespace
}  // namespace kestrant
