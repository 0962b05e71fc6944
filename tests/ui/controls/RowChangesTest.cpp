#include "ui/controls/RowChanges.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <random>

using namespace kestrant;
using testing::ElementsAre;

namespace {

std::vector<QString> rows(const char* letters) {
    std::vector<QString> result;
    for (const char* letter = letters; *letter; ++letter)
        result.push_back(QString(QLatin1Char(*letter)));
    return result;
}

std::vector<QString> applied(std::vector<QString> list, const std::vector<QString>& target,
                             const std::vector<RowChange>& changes) {
    for (const RowChange& change : changes) {
        switch (change.kind) {
        case RowChange::Kind::remove:
            list.erase(list.begin() + change.first, list.begin() + change.last + 1);
            break;
        case RowChange::Kind::insert:
            list.insert(list.begin() + change.first, target.begin() + change.first,
                        target.begin() + change.last + 1);
            break;
        case RowChange::Kind::move: {
            const QString row = list[change.first];
            list.erase(list.begin() + change.first);
            list.insert(list.begin() + change.last, row);
            break;
        }
        }
    }
    return list;
}

TEST(RowChanges, AreTheFewestThatLeadToTheNewList) {
    using Kind = RowChange::Kind;
    struct Case {
        const char* before;
        const char* after;
        std::vector<RowChange> changes;
    };
    const std::vector<Case> cases{
        {"", "", {}},
        {"abc", "abc", {}},
        {"", "abc", {{Kind::insert, 0, 2}}},
        {"abc", "", {{Kind::remove, 0, 2}}},
        {"abcd", "ad", {{Kind::remove, 1, 2}}},
        {"ad", "abcd", {{Kind::insert, 1, 2}}},
        {"abcd", "bcda", {{Kind::move, 0, 3}}},
        {"abcd", "dabc", {{Kind::move, 3, 0}}},
        {"abcdef", "acdebf", {{Kind::move, 1, 4}}},
        {"abcd",
         "cbx",
         {{Kind::remove, 3, 3}, {Kind::remove, 0, 0}, {Kind::move, 1, 0}, {Kind::insert, 2, 2}}},
    };
    for (const Case& c : cases) {
        const auto changes = rowChanges(rows(c.before), rows(c.after), 100);
        ASSERT_TRUE(changes.has_value()) << c.before << " to " << c.after;
        EXPECT_EQ(*changes, c.changes) << c.before << " to " << c.after;
    }
}

TEST(RowChanges, LeadFromAnyListToAnyOther) {
    std::mt19937 random(7);
    std::vector<QString> list;
    for (int round = 0; round < 500; ++round) {
        std::vector<QString> next;
        for (int id = 0; id < 24; ++id) {
            if (random() % 3 != 0)
                next.push_back(QString::number(id));
        }
        if (random() % 4 != 0) {
            for (std::size_t swaps = random() % 6; swaps > 0 && !next.empty(); --swaps)
                std::swap(next[random() % next.size()], next[random() % next.size()]);
        } else {
            std::shuffle(next.begin(), next.end(), random);
        }
        const auto changes = rowChanges(list, next, 1000);
        ASSERT_TRUE(changes.has_value());
        ASSERT_EQ(applied(list, next, *changes), next) << "round " << round;
        list = std::move(next);
    }
}

TEST(RowChanges, AreGivenUpBeyondTheLimit) {
    EXPECT_TRUE(rowChanges(rows("abcd"), rows("efgh"), 8).has_value());
    EXPECT_FALSE(rowChanges(rows("abcd"), rows("efgh"), 7).has_value());
    EXPECT_FALSE(rowChanges(rows("abcdefgh"), rows("hgfedcba"), 6).has_value());
}

}  // namespace
