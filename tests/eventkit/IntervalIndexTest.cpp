#include "eventkit/items/IntervalIndex.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <random>
#include <vector>

namespace kestrant {
namespace {

using namespace std::chrono_literals;

struct Interval {
    Instant start;
    Instant end;
    int value;
};

std::vector<int> touching(const IntervalIndex<int>& index, Instant from, Instant to) {
    std::vector<int> result;
    index.forEachTouching(from, to, [&](int value) { result.push_back(value); });
    std::ranges::sort(result);
    return result;
}

TEST(IntervalIndex, FindsWhatTouchesASpanThroughChangesAndInFormerCopies) {
    constexpr unsigned seed = 20261122;
    std::mt19937 random(seed);
    // Few different starts, so that many intervals share one.
    const auto instant = [&] { return Instant(std::chrono::minutes(random() % 500)); };
    std::vector<Interval> intervals;
    IntervalIndex<int> index;
    const auto add = [&](int value) {
        const Instant start = instant();
        const auto length = std::chrono::minutes(value % 40 == 0 ? random() % 300 : random() % 3);
        intervals.push_back({start, start + length, value});
        index.add(start, start + length, value);
    };
    for (int value = 0; value < 3'000; ++value)
        add(value);
    index.prepare();
    for (int round = 0; round < 200; ++round) {
        const IntervalIndex<int> former = index;
        const Instant from = instant();
        const Instant to = from + std::chrono::minutes(random() % 20);
        const auto before = touching(former, from, to);
        for (int change = 0; change < 20; ++change) {
            const auto gone = intervals.begin() + std::ptrdiff_t(random() % intervals.size());
            index.remove(gone->start, gone->value);
            intervals.erase(gone);
            add(3'000 + 20 * round + change);
        }
        index.prepare();
        std::vector<int> expected;
        for (const Interval& each : intervals) {
            if (each.start <= to && each.end >= from)
                expected.push_back(each.value);
        }
        std::ranges::sort(expected);
        ASSERT_EQ(touching(index, from, to), expected) << "round " << round;
        ASSERT_EQ(touching(former, from, to), before) << "round " << round;
    }
    for (const Interval& each : intervals)
        index.remove(each.start, each.value);
    EXPECT_TRUE(touching(index, Instant::min(), Instant::max()).empty());
}

}  // namespace
}  // namespace kestrant
