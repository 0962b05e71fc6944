#include "recap/Celebration.h"

#include <algorithm>

namespace kestrant {

bool isRoundNumber(int count) {
    if (count == 10)
        return true;
    if (count < 100)
        return false;
    while (count % 10 == 0)
        count /= 10;
    return count == 1 || count == 5;
}

std::optional<Celebration> celebrationFor(const CelebrationFacts& facts, Celebrated& celebrated) {
    std::optional<Celebration> celebration;
    const auto celebrate = [&](CelebrationReason reason, int count) {
        celebration = {reason, count, facts.day.streak};
    };
    if (facts.completedHere < 1)
        return celebration;

    if (facts.completedLastOfToday && celebrated.day != facts.today) {
        celebrated.day = facts.today;
        celebrate(CelebrationReason::dayDone, facts.day.completed);
    }
    const bool isNewOnThisDay = facts.day.completed > 0 && facts.day.completed <= facts.completedHere;
    const RecapPeriod& week = facts.week.period;
    if (facts.today == week.last && facts.week.quietDays == 0 && isNewOnThisDay &&
        celebrated.week != week.first) {
        celebrated.week = week.first;
        celebrate(CelebrationReason::weekKept, facts.week.completed);
    }
    const int before = std::max(facts.total - facts.completedHere, celebrated.roundNumber);
    for (int count = facts.total; count > before; --count) {
        if (isRoundNumber(count)) {
            celebrated.roundNumber = count;
            celebrate(CelebrationReason::roundNumber, count);
            break;
        }
    }
    return celebration;
}

}  // namespace kestrant
