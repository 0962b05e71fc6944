#include "reminders/model/ReminderOrdering.h"

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

ReminderOrdering::Tasks shared(const std::vector<ReminderTask>& tasks) {
    return std::make_shared<const std::vector<ReminderTask>>(tasks);
}

std::vector<std::string> idsInOrder(const std::vector<ReminderTask>& tasks, ReminderSortMode mode,
                                    const QStringList& manualOrder = {}) {
    ReminderOrdering ordering(shared(tasks), TextCollation(english));
    ordering.setManualOrder(manualOrder);
    std::vector<std::string> ids;
    for (const std::uint32_t index : ordering.ordered(mode, [](std::uint32_t) { return true; }))
        ids.push_back(tasks[index].id.toStdString());
    return ids;
}

TEST(ReminderOrdering, EveryModeHasItsOrder) {
    const std::vector tasks{
        task("undated", "écrire"),
        task("undated-high", "Écrire", {}, false, 1),
        task("nine-z", "zoo", 9h, true, 9, 2h),
        task("nine-a", "Apple", 9h, true, 9, 2h),
        task("nine-high", "banana", 9h, true, 1, 3h),
        task("midnight-high", "cherry", 0h, true, 1, 4h),
        task("whole-day", "dog", 0h),
        task("whole-day-low", "cat", 0h, false, 9, 1h),
        task("eve", "zoo", -1h, true),
    };
    using Mode = ReminderSortMode;
    EXPECT_THAT(idsInOrder(tasks, Mode::dueDate),
                ElementsAre("eve", "whole-day-low", "whole-day", "midnight-high", "nine-high", "nine-a",
                            "nine-z", "undated-high", "undated"));
    EXPECT_THAT(idsInOrder(tasks, Mode::priority),
                ElementsAre("midnight-high", "nine-high", "undated-high", "whole-day-low", "nine-a", "nine-z",
                            "eve", "whole-day", "undated"));
    EXPECT_THAT(idsInOrder(tasks, Mode::title),
                ElementsAre("nine-a", "nine-high", "whole-day-low", "midnight-high", "whole-day", "undated",
                            "undated-high", "eve", "nine-z"));
    EXPECT_THAT(idsInOrder(tasks, Mode::creationOldestFirst),
                ElementsAre("whole-day-low", "nine-a", "nine-z", "nine-high", "midnight-high", "whole-day",
                            "undated", "undated-high", "eve"));
    EXPECT_THAT(idsInOrder(tasks, Mode::creationNewestFirst),
                ElementsAre("midnight-high", "nine-high", "nine-a", "nine-z", "whole-day-low", "whole-day",
                            "undated", "undated-high", "eve"));
    EXPECT_EQ(idsInOrder(tasks, Mode::manual), idsInOrder(tasks, Mode::dueDate));
    EXPECT_THAT(idsInOrder(tasks, Mode::manual, QStringLiteral("undated gone nine-z eve nine-z").split(u' ')),
                ElementsAre("undated", "nine-z", "eve", "whole-day-low", "whole-day", "midnight-high",
                            "nine-high", "nine-a", "undated-high"));
}

TEST(ReminderOrdering, KnowledgeLentByAnEarlierOrderingIsDroppedWithItsLocale) {
    const std::vector tasks{task("1", "ö"), task("2", "z"), task("3", "o")};
    const ReminderOrdering german(shared(tasks), TextCollation(QLocale(QLocale::German, QLocale::Germany)));
    const ReminderOrdering swedish(shared(tasks), TextCollation(QLocale(QLocale::Swedish, QLocale::Sweden)),
                                   german);
    const auto all = [](std::uint32_t) { return true; };
    EXPECT_THAT(german.ordered(ReminderSortMode::title, all), ElementsAre(2U, 0U, 1U));
    EXPECT_THAT(swedish.ordered(ReminderSortMode::title, all), ElementsAre(2U, 1U, 0U));
    const auto notFirst = [](std::uint32_t index) { return index != 0; };
    for (const auto& choice : choicesOf<ReminderSortMode>)
        EXPECT_THAT(swedish.ordered(choice.value, notFirst), ElementsAre(2U, 1U)) << choice.rawValue;
}

TEST(ReminderOrdering, IsTheSameWhateverWasKnownBefore) {
    constexpr std::array titles{"a", "A",  "á",  "Á", "b", "B 2", "b 10", "",
                                "ß", "ss", "SS", "Z", "z", "é",   "E",    "e"};
    const auto all = [](std::uint32_t) { return true; };
    std::mt19937 random(3);
    const auto pick = [&](int count) { return std::uniform_int_distribution(0, count - 1)(random); };
    ReminderOrdering known;
    QStringList manualOrder;
    std::vector<ReminderTask> tasks;
    for (int round = 0; round < 300; ++round) {
        // Most often a few tasks come, go or change; now and then more titles are new than are compared one
        // by one.
        const bool isNew = round % 20 == 0;
        if (isNew)
            tasks.clear();
        for (int n = isNew ? pick(300) : pick(4); n > 0; --n) {
            const std::string title = std::string(titles.at(std::size_t(pick(titles.size())))) +
                                      (isNew ? std::to_string(pick(100)) : std::string());
            tasks.insert(tasks.begin() + pick(int(tasks.size()) + 1),
                         task(std::to_string(pick(1000000)).c_str(), title.c_str()));
        }
        for (int n = pick(4); n > 0 && !tasks.empty(); --n) {
            const auto chosen = tasks.begin() + pick(int(tasks.size()));
            if (pick(2) == 0)
                tasks.erase(chosen);
            else
                chosen->title = QString::fromUtf8(titles.at(std::size_t(pick(titles.size()))));
        }
        if (!tasks.empty() && pick(5) == 0)
            std::swap(tasks.front(), tasks.back());
        QStringList placed;
        for (const ReminderTask& each : tasks) {
            if (pick(2) == 0)
                placed.prepend(each.id);
        }
        // The order stays while the tasks change.
        known = ReminderOrdering(shared(tasks), TextCollation(english), known);
        if (pick(3) == 0) {
            manualOrder = placed;
            known.setManualOrder(manualOrder);
        }
        ReminderOrdering fresh(shared(tasks), TextCollation(english));
        fresh.setManualOrder(manualOrder);
        for (const ReminderSortMode mode : {ReminderSortMode::title, ReminderSortMode::manual})
            ASSERT_EQ(known.ordered(mode, all), fresh.ordered(mode, all)) << "round " << round;
        ASSERT_EQ(known.placedTasks(), fresh.placedTasks()) << "round " << round;
    }
}

/// The reference: the rules applied to one pair of tasks at a time, without prepared keys.
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
        for (const auto& choice : choicesOf<ReminderSortMode>) {
            auto expected = tasks;
            std::sort(expected.begin(), expected.end(), PairwiseOrder(choice.value, manualOrder));
            std::vector<std::string> ids;
            ids.reserve(expected.size());
            for (const ReminderTask& sorted : expected)
                ids.push_back(sorted.id.toStdString());
            EXPECT_THAT(idsInOrder(tasks, choice.value, manualOrder), ElementsAreArray(ids))
                << "seed " << seed << ", " << choice.rawValue;
        }
    }
}

}  // namespace
}  // namespace kestrant
