#pragma once

#include "foundation/Instant.h"

#include <QByteArray>
#include <QString>

#include <map>
#include <optional>
#include <vector>

namespace kestrant {

/// When a reminder was completed, as far as this program has learnt.
struct CompletionRecord {
    QString reminderIdentifier;
    Instant completedAt;
    /// When the reminder was last seen completed; brought up to date at most once a day.
    Instant lastSeenAt;
    int schemaVersion = 1;
    bool operator==(const CompletionRecord&) const = default;
};

/// Which reminders were completed and when, whatever the database still knows of them.
struct CompletionLedgerV1 {
    int schemaVersion = 1;
    /// Keyed by reminder identifier.
    std::map<QString, CompletionRecord> records;
    /// True once the reminders completed before the ledger began have been taken over.
    bool didBackfill = false;
    bool operator==(const CompletionLedgerV1&) const = default;
};

/// One reminder that the database shows as completed, with its completion date where it has one.
struct CompletionObservation {
    QString reminderIdentifier;
    std::optional<Instant> completedAt;
    bool operator==(const CompletionObservation&) const = default;
};

/// The last change that this program made to a reminder.
struct ReminderCompletionState {
    enum class Kind {
        completed,
        /// Taken back: the reminder leaves the ledger.
        incomplete,
        /// Removed from the database: its completion still counts.
        deleted,
    };
    Kind kind = Kind::incomplete;
    /// The completion date of a completed reminder, if known.
    std::optional<Instant> completedAt;

    [[nodiscard]] static ReminderCompletionState completed(std::optional<Instant> date) {
        return {Kind::completed, date};
    }
    [[nodiscard]] static ReminderCompletionState incomplete() { return {Kind::incomplete, {}}; }
    [[nodiscard]] static ReminderCompletionState deleted() { return {Kind::deleted, {}}; }
    bool operator==(const ReminderCompletionState&) const = default;
};

/// Takes states and then observations over into the ledger, so that the database's date prevails. True when
/// this changed the ledger. A reminder without a completion date never makes a record.
[[nodiscard]] bool mergeCompletions(CompletionLedgerV1& ledger,
                                    const std::map<QString, ReminderCompletionState>& states,
                                    const std::vector<CompletionObservation>& observations, Instant now);

/// The changes to a ledger since it last equalled its file.
struct LedgerChange {
    CompletionLedgerV1 before;
    CompletionLedgerV1 after;
};
/// `present`, which others may have written meanwhile, with that done to it too.
[[nodiscard]] CompletionLedgerV1 withChange(CompletionLedgerV1 present, const LedgerChange& change);

/// The records by completion date, then by identifier.
[[nodiscard]] std::vector<CompletionRecord> sortedRecords(const CompletionLedgerV1& ledger);

/// JSON with sorted keys and no whitespace; dates are seconds since 2001-01-01 00:00:00 UTC.
[[nodiscard]] QByteArray encodeLedger(const CompletionLedgerV1& ledger);
/// Absent for anything but a complete ledger of schema version 1.
[[nodiscard]] std::optional<CompletionLedgerV1> decodeLedger(const QByteArray& document);

}  // namespace kestrant
