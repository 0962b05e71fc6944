#pragma once

#include "foundation/TextCollation.h"
#include "reminders/model/ReminderTask.h"

#include <QHash>
#include <QLocale>
#include <QString>
#include <QStringList>

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <vector>

namespace kestrant {

/// The orders of a set of tasks. The texts are compared once, when it is made; each ordering then compares
/// numbers.
///
/// Every order is total; in each, ties fall to the title (in the locale's order, letter case aside) and then
/// to the id.
/// - dueDate: by due date; on the same day date-only before timed; at the same instant by priority; tasks
/// without a due
///   date last, by priority. Priority 0 (none) counts as 10.
/// - priority: 1 first, none last; then as dueDate.
/// - title.
/// - creationOldestFirst, creationNewestFirst: by creation date; tasks without one last.
/// - manual: by place in the manual order; tasks without a place last, as dueDate.
class ReminderOrdering {
  public:
    using Tasks = std::shared_ptr<const std::vector<ReminderTask>>;

    /// An empty set.
    ReminderOrdering();
    /// `previous`, an ordering of an earlier state of the same tasks, lends the manual order, and the order
    /// of titles as far as the tasks are the same. `tasks` is not null.
    ReminderOrdering(Tasks tasks, const TextCollation& collation,
                     const ReminderOrdering& previous = ReminderOrdering());

    /// Gives the tasks their places in the manual order. Where it names an id twice, the first place counts.
    void setManualOrder(const QStringList& ids);
    [[nodiscard]] bool hasPlace(std::uint32_t index) const { return facts_[index].place != withoutPlace; }
    /// How many of the tasks have one.
    [[nodiscard]] std::size_t placedTasks() const;

    /// Indices into the tasks, in order, of those for which `included` holds.
    [[nodiscard]] std::vector<std::uint32_t>
    ordered(ReminderSortMode mode, const std::function<bool(std::uint32_t index)>& included) const;

  private:
    /// Three numbers compared one after the other; the lower half of the last is the task's place in the
    /// title order.
    using Key = std::array<std::int64_t, 3>;
    static constexpr std::int64_t withoutPlace = std::numeric_limits<std::int64_t>::max();
    struct Facts {
        std::int64_t due = 0;
        std::int64_t created = 0;
        std::int64_t priority = 0;
        bool timed = false;
        bool hasCreationDate = false;
        std::int64_t place = withoutPlace;
    };

    [[nodiscard]] static Facts factsOf(const ReminderTask& task);
    void orderTitles(const TextCollation& collation);
    /// Puts the tasks that are new into the order of those that `former` found in `previous`.
    void insertTitles(const TextCollation& collation, const ReminderOrdering& previous,
                      const std::vector<std::uint32_t>& former);
    [[nodiscard]] Key key(ReminderSortMode mode, std::uint32_t index) const;

    Tasks tasks_;
    std::vector<Facts> facts_;
    /// Of each task, its place in byTitle_.
    std::vector<std::uint32_t> titleRanks_;
    std::vector<std::uint32_t> byTitle_;
    QHash<QString, std::int64_t> places_;
    QLocale locale_;
};

}  // namespace kestrant
