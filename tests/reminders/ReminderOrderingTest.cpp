#include "reminders/ReminderOrdering.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <random>
#include <string>

namespace kestrant {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::ElementsAreArray;

const QLocale english(QLocale::English, QLocale::UnitedStates);
const Instant day0 = Instant(std::chrono::hours(24 * 20000));

ReminderTask task(const char* id, const char* title, std::optional<Duration> due = {}, bool timed = false,
                  int priority = 0, std::optional<Duration> created = {}) {
    ReminderTask result;
    result.id = QString::fromUtf8(id);
    result.title = QString::fromUtf8(title);
    if (due)
        result.dueDate = day0 + *due;
    result.dueDateIncludesTime = timed;
    result.priority = priority;
    if (created)
        result.creationDate = day0 + *created;
    return result;
}

std::vector<std::string> idsInOrder(const std::vector<ReminderTask>& tasks, ReminderSortMode mode,
                                    const QStringList& manualOrder = {}) {
    ReminderOrdering ordering(tasks, TextCollation(english));
    ordering.setManualOrder(manualOrder);
    std::vector<std::string> ids;
    for (const std::uint32_t index : ordering.ordered(mode, [](std::uint32_t) { return true; }))
        ids.push_back(tasks[index].id.toStdString());
    return ids;
}

TEST(ReminderOrdering, DueDateOrderGoesByDayThenTimeThenPriorityThenTitle) {
    const std::vector tasks{
        task("none", "none"),
        task("none-high", "none", {}, false, 1),
        task("nine-late-alphabet", "zebra", 9h, true, 5),
        task("nine-early-alphabet", "Apple", 9h, true, 5),
        task("nine-high", "zz", 9h, true, 1),
        task("midnight", "midnight", 0h, true, 1),
        task("whole-day", "whole day", 0h),
        task("whole-day-low", "a whole day", 0h, false, 9),
        task("next-day", "a", 24h),
        task("day-before-late", "b", -1h, true),
    };
    EXPECT_THAT(idsInOrder(tasks, ReminderSortMode::dueDate),
                ElementsAre("day-before-late", "whole-day-low", "whole-day", "midnight", "nine-high",
                            "nine-early-alphabet", "nine-late-alphabet", "next-day", "none-high", "none"));
}

TEST(ReminderOrdering, NoPriorityComesAfterTheLowest) {
    const std::vector tasks{task("none", "a", 0h), task("lowest", "b"), task("highest", "c"),
                            task("lowest-due", "d", 5h, true)};
    auto prioritised = tasks;
    prioritised[1].priority = 9;
    prioritised[2].priority = 1;
    prioritised[3].priority = 9;
    EXPECT_THAT(idsInOrder(prioritised, ReminderSortMode::priority),
                ElementsAre("highest", "lowest-due", "lowest", "none"));
}

TEST(ReminderOrdering, TitlesCompareAsTheLocaleDoesAndTiesFallToTheIdentifier) {
    const std::vector tasks{task("4", "zoo"),   task("b", "écrire"), task("a", "Écrire"),
                            task("2", "apple"), task("3", "Banana"), task("B", "écrire")};
    EXPECT_THAT(idsInOrder(tasks, ReminderSortMode::title), ElementsAre("2", "3", "B", "a", "b", "4"));
}

TEST(ReminderOrdering, CreationOrderPutsTasksWithoutADateLastEitherWay) {
    const std::vector tasks{task("unknown-b", "b"), task("old", "x", {}, false, 0, -5h),
                            task("new-b", "b", {}, false, 0, 5h), task("new-a", "a", {}, false, 0, 5h),
                            task("unknown-a", "a")};
    EXPECT_THAT(idsInOrder(tasks, ReminderSortMode::creationOldestFirst),
                ElementsAre("old", "new-a", "new-b", "unknown-a", "unknown-b"));
    EXPECT_THAT(idsInOrder(tasks, ReminderSortMode::creationNewestFirst),
                ElementsAre("new-a", "new-b", "old", "unknown-a", "unknown-b"));
}

TEST(ReminderOrdering, ManualOrderPutsUnplacedTasksLastByDueDate) {
    const std::vector tasks{task("a", "a"), task("b", "b", 3h, true), task("c", "c"),
                            task("d", "d", 1h, true)};
    EXPECT_THAT(idsInOrder(tasks, ReminderSortMode::manual, {QStringLiteral("c"), QStringLiteral("gone")}),
                ElementsAre("c", "d", "b", "a"));
    EXPECT_THAT(idsInOrder(tasks, ReminderSortMode::manual), ElementsAre("d", "b", "a", "c"));
    EXPECT_THAT(idsInOrder(tasks, ReminderSortMode::manual,
                           {QStringLiteral("b"), QStringLiteral("a"), QStringLiteral("b")}),
                ElementsAre("b", "a", "d", "c"));
}

TEST(ReminderOrdering, LeavesOutWhatIsNotIncluded) {
    const std::vector tasks{task("a", "a"), task("b", "b"), task("c", "c")};
    const ReminderOrdering ordering(tasks, TextCollation(english));
    for (const ReminderSortMode mode : allReminderSortModes)
        EXPECT_THAT(ordering.ordered(mode, [](std::uint32_t index) { return index != 1; }),
                    ElementsAre(0U, 2U));
}

TEST(ReminderOrdering, KnowledgeLentByAnEarlierOrderingIsDroppedWithItsLocale) {
    const std::vector tasks{task("1", "ö"), task("2", "z"), task("3", "o")};
    const ReminderOrdering german(tasks, TextCollation(QLocale(QLocale::German, QLocale::Germany)));
    const ReminderOrdering swedish(tasks, TextCollation(QLocale(QLocale::Swedish, QLocale::Sweden)), german);
    const auto all = [](std::uint32_t) { return true; };
    EXPECT_THAT(german.ordered(ReminderSortMode::title, all), ElementsAre(2U, 0U, 1U));
    EXPECT_THAT(swedish.ordered(ReminderSortMode::title, all), ElementsAre(2U, 1U, 0U));
}

// The rules once more, one pair at a time and as they are told, to hold the prepared numbers against.
class PairwiseOrder {
  public:
    PairwiseOrder(ReminderSortMode mode, QStringList manualOrder)
        : mode_(mode)
        , manualOrder_(std::move(manualOrder)) {}

    bool operator()(const ReminderTask& a, const ReminderTask& b) const {
        switch (mode_) {
        case ReminderSortMode::manual:
            return byPlace(a, b);
        case ReminderSortMode::dueDate:
            return byDueDate(a, b);
        case ReminderSortMode::priority:
            return rank(a) != rank(b) ? rank(a) < rank(b) : byDueDate(a, b);
        case ReminderSortMode::title:
            return byTitle(a, b);
        case ReminderSortMode::creationOldestFirst:
            return byCreation(a, b, false);
        case ReminderSortMode::creationNewestFirst:
            return byCreation(a, b, true);
        }
        return false;
    }

  private:
    static int rank(const ReminderTask& task) { return task.priority == 0 ? 10 : task.priority; }
    bool byTitle(const ReminderTask& a, const ReminderTask& b) const {
        const int compared = collation_.compare(a.title, b.title);
        return compared != 0 ? compared < 0 : a.id < b.id;
    }
    bool byDueDate(const ReminderTask& a, const ReminderTask& b) const {
        if (a.dueDate && b.dueDate) {
            if (std::chrono::floor<std::chrono::days>(*a.dueDate) ==
                std::chrono::floor<std::chrono::days>(*b.dueDate)) {
                if (a.dueDateIncludesTime != b.dueDateIncludesTime)
                    return b.dueDateIncludesTime;
                if (a.dueDateIncludesTime && a.dueDate != b.dueDate)
                    return a.dueDate < b.dueDate;
                if (rank(a) != rank(b))
                    return rank(a) < rank(b);
            }
            return a.dueDate == b.dueDate ? byTitle(a, b) : a.dueDate < b.dueDate;
        }
        if (a.dueDate.has_value() != b.dueDate.has_value())
            return a.dueDate.has_value();
        return rank(a) != rank(b) ? rank(a) < rank(b) : byTitle(a, b);
    }
    bool byCreation(const ReminderTask& a, const ReminderTask& b, bool newestFirst) const {
        if (a.creationDate && b.creationDate && a.creationDate != b.creationDate)
            return newestFirst ? a.creationDate > b.creationDate : a.creationDate < b.creationDate;
        if (a.creationDate.has_value() != b.creationDate.has_value())
            return a.creationDate.has_value();
        return byTitle(a, b);
    }
    bool byPlace(const ReminderTask& a, const ReminderTask& b) const {
        const auto placeA = manualOrder_.indexOf(a.id);
        const auto placeB = manualOrder_.indexOf(b.id);
        if (placeA >= 0 && placeB >= 0)
            return placeA != placeB ? placeA < placeB : byTitle(a, b);
        if ((placeA >= 0) != (placeB >= 0))
            return placeA >= 0;
        return byDueDate(a, b);
    }

    ReminderSortMode mode_;
    QStringList manualOrder_;
    TextCollation collation_{english};
};

TEST(ReminderOrdering, EqualsTheRulesAppliedPairByPairOnRandomTasks) {
    constexpr std::array titles{"a", "A", "á", "b", "B 2", "b 10", "", "ß", "ss", "Z", "z"};
    for (unsigned seed = 1; seed <= 30; ++seed) {
        std::mt19937 random(seed);
        const auto pick = [&](int count) { return std::uniform_int_distribution(0, count - 1)(random); };
        std::vector<ReminderTask> tasks;
        QStringList manualOrder;
        for (int n = 0; n < 120; ++n) {
            ReminderTask made = task(std::to_string(pick(1000000)).c_str(), titles.at(pick(titles.size())));
            made.dueDateIncludesTime = pick(2) == 1;
            if (pick(3) > 0)
                made.dueDate = day0 + std::chrono::days(pick(3)) +
                               (made.dueDateIncludesTime ? std::chrono::hours(pick(4)) : 0h);
            made.priority = pick(4) == 0 ? 0 : pick(10);
            if (pick(4) > 0)
                made.creationDate = day0 + std::chrono::hours(pick(10));
            if (pick(2) == 0)
                manualOrder.append(made.id);
            tasks.push_back(made);
        }
        std::shuffle(manualOrder.begin(), manualOrder.end(), random);
        for (const ReminderSortMode mode : allReminderSortModes) {
            auto expected = tasks;
            std::sort(expected.begin(), expected.end(), PairwiseOrder(mode, manualOrder));
            std::vector<std::string> ids;
            for (const ReminderTask& sorted : expected)
                ids.push_back(sorted.id.toStdString());
            EXPECT_THAT(idsInOrder(tasks, mode, manualOrder), ElementsAreArray(ids))
                << "seed " << seed << ", " << rawValue(mode).toStdString();
        }
    }
}

}  // namespace
}  // namespace kestrant
