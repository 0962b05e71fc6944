#include "recap/Celebration.h"

#include <gmock/gmock.h>

namespace kestrant {
namespace {

using testing::ElementsAre;

/// A Sunday, whose week has these counts.
CelebrationFacts sunday(std::vector<int> week, int completedHere = 1, int total = 7) {
    const QDate today(2026, 11, 22);
    std::vector<CompletedDay> days;
    for (std::size_t index = 0; index < week.size(); ++index) {
        if (week[index] > 0)
            days.push_back({today.addDays(int(index) - 6), week[index], {}});
    }
    return {.today = today,
            .completedHere = completedHere,
            .total = total,
            .day = recapOf({RecapKind::day, today, today}, days, today),
            .week = recapOf({RecapKind::week, today.addDays(-6), today}, days, today)};
}

TEST(Celebration, MarksRoundNumbers) {
    std::vector<int> round;
    for (int count = 0; count <= 60'000; ++count) {
        if (isRoundNumber(count))
            round.push_back(count);
    }
    EXPECT_THAT(round, ElementsAre(10, 100, 500, 1'000, 5'000, 10'000, 50'000));
}

TEST(Celebration, HappensOnceForEachReason) {
    CelebrationFacts lastOfToday = sunday({0, 0, 0, 0, 0, 2, 3});
    lastOfToday.completedLastOfToday = true;
    CelebrationFacts severalReasons = sunday({1, 1, 1, 1, 1, 1, 2}, 2, 100);
    severalReasons.completedLastOfToday = true;
    CelebrationFacts elsewhere = lastOfToday;
    elsewhere.completedHere = 0;
    struct Case {
        const char* name;
        CelebrationFacts facts;
        std::optional<Celebration> expected;
    };
    using enum CelebrationReason;
    const Case cases[]{
        {"the last of the day", lastOfToday, Celebration{dayDone, 3, 2}},
        {"completed elsewhere", elsewhere, {}},
        {"one of several", sunday({0, 0, 0, 0, 0, 0, 3}), {}},
        {"a kept week", sunday({1, 2, 1, 1, 4, 1, 1}), Celebration{weekKept, 11, 7}},
        {"a week kept before", sunday({1, 2, 1, 1, 4, 1, 2}), {}},
        {"a week with a quiet day", sunday({1, 0, 1, 1, 4, 1, 1}), {}},
        {"a round number", sunday({0, 0, 0, 0, 0, 0, 3}, 1, 100), Celebration{roundNumber, 100, 1}},
        {"a round number among several", sunday({0, 0, 0, 0, 0, 0, 3}, 3, 101),
         Celebration{roundNumber, 100, 1}},
        {"a round number passed before", sunday({0, 0, 0, 0, 0, 0, 3}, 1, 101), {}},
        {"the rarest of several", severalReasons, Celebration{roundNumber, 100, 7}},
    };
    for (const Case& each : cases) {
        Celebrated celebrated;
        EXPECT_EQ(celebrationFor(each.facts, celebrated), each.expected) << each.name;
        EXPECT_EQ(celebrationFor(each.facts, celebrated), std::nullopt) << each.name << ", again";
    }
    // A number that was reached, taken back and reached again.
    Celebrated celebrated{.roundNumber = 100};
    EXPECT_EQ(celebrationFor(sunday({0, 0, 0, 0, 0, 0, 3}, 1, 100), celebrated), std::nullopt);
}

}  // namespace
}  // namespace kestrant
