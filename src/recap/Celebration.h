#pragma once

#include "recap/Recap.h"

#include <QDate>

#include <optional>

namespace kestrant {

// What about a completion is worth a short moment of joy: plain functions.

enum class CelebrationReason {
    /// The last open reminder of the present day.
    dayDone,
    /// Something on each day of a week, the last of which is today.
    weekKept,
    /// The tenth, the hundredth ... completion of all.
    roundNumber,
};

struct Celebration {
    CelebrationReason reason = CelebrationReason::dayDone;
    /// Completions: of the day, of the week, or the round number.
    int count = 0;
    /// Days in a row, the present one included.
    int streak = 0;
    bool operator==(const Celebration&) const = default;
};

/// What was celebrated last, so that no reason is celebrated twice.
struct Celebrated {
    QDate day;
    /// The first day of the week.
    QDate week;
    int roundNumber = 0;
    bool operator==(const Celebrated&) const = default;
};

struct CelebrationFacts {
    QDate today;
    /// Completions made here just now; those made elsewhere are not celebrated.
    int completedHere = 0;
    /// One of them was due today, and nothing else of today is open.
    bool completedLastOfToday = false;
    /// All completions of all time.
    int total = 0;
    /// The present day and the present week.
    Recap day;
    Recap week;
};

/// 10, 100, 500, 1,000, 5,000, 10,000 ...
[[nodiscard]] bool isRoundNumber(int count);

/// What is to be celebrated, the rarest reason of several; absent for nothing. Every reason that holds is
/// noted in `celebrated`.
[[nodiscard]] std::optional<Celebration> celebrationFor(const CelebrationFacts& facts,
                                                        Celebrated& celebrated);

}  // namespace kestrant
