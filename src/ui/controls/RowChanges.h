#pragma once

#include <QString>

#include <optional>
#include <vector>

namespace kestrant {

/// One step from a list of rows to another, applied to the list as the steps before have left it.
struct RowChange {
    enum class Kind {
        /// Rows first..last go.
        remove,
        /// Rows first..last of the *new* list come, at the same places.
        insert,
        /// The row `first` goes to the place `last` (as counted after it was taken out).
        move,
    };
    Kind kind = Kind::remove;
    int first = 0;
    int last = 0;

    bool operator==(const RowChange&) const = default;
};

/// The fewest single moves, and removals and insertions in runs, that lead from one list of distinct
/// identifiers to another. Absent when more than `limit` rows would change place, come or go one by one: then
/// showing the new list as a whole is quicker and calmer.
[[nodiscard]] std::optional<std::vector<RowChange>> rowChanges(const std::vector<QString>& before,
                                                               const std::vector<QString>& after, int limit);

}  // namespace kestrant
