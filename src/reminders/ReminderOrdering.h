#pragma once

#include "foundation/TextCollation.h"
#include "reminders/ReminderTask.h"

#include <QStringList>

#include <array>
#include <cstdint>
#include <functional>
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
    /// An empty set.
    ReminderOrdering() = default;
    /// `previous`, an ordering of an earlier state of the same tasks, lends what it knows of titles that are
    /// the same.
    ReminderOrdering(const std::vector<ReminderTask>& tasks, const TextCollation& collation,
                     const ReminderOrdering& previous = {});

    /// Gives the tasks their places in the manual order. Where it names an id twice, the first place counts.
    void setManualOrder(const QStringList& ids);

    /// Indices into the tasks, in order, of those for which `included` holds.
    [[nodiscard]] std::vector<std::uint32_t>
    ordered(ReminderSortMode mode, const std::function<bool(std::uint32_t index)>& included) const;

  private:
    /// Three numbers compared one after the other; the lower half of the last is the task's place in the
    /// title order.
    using Key = std::array<std::int64_t, 3>;
    struct Facts {
        std::int64_t due = 0;
        std::int64_t created = 0;
        std::int64_t priority = 0;
        bool timed = false;
        bool hasCreationDate = false;
        std::int64_t place = 0;
    };

    /// One of the titles. Those that count as equal have the same rank.
    struct RankedTitle {
        QString title;
        std::uint32_t rank = 0;
    };

    /// The tasks' titles, each once, in their order. `known` are those of earlier tasks.
    [[nodiscard]] static std::vector<RankedTitle> rankedTitles(const std::vector<ReminderTask>& tasks,
                                                               const TextCollation& collation,
                                                               const std::vector<RankedTitle>& known);
    [[nodiscard]] Key key(ReminderSortMode mode, std::uint32_t index) const;

    std::vector<Facts> facts_;
    std::vector<QString> ids_;
    std::vector<std::uint32_t> titleRanks_;
    std::vector<std::uint32_t> byTitle_;
    std::vector<RankedTitle> titles_;
    QLocale locale_;
};

}  // namespace kestrant
