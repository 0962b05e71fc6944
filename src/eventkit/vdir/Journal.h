#pragma once

#include "eventkit/items/ItemLibrary.h"

#include <QByteArray>
#include <QByteArrayView>

#include <optional>
#include <vector>

namespace kestrant::vdir {

/// Note of a change in two steps: files are made, then another one is rewritten or removed. It is kept beside
/// the collections while the change is under way, in a hidden file with one line of JSON, so that whoever
/// reads the folder after the process was killed can take the first step back.
struct Journal {
    struct Made {
        items::Place place;
        /// digestOf() its text.
        QByteArray digest;
    };

    std::vector<Made> made;
    items::Place changed;
    /// digestOf() the text that the changed file had.
    QByteArray before;
    /// Whether the second step removes the file.
    bool isRemoved = false;

    [[nodiscard]] QByteArray text() const;
    [[nodiscard]] static std::optional<Journal> parse(QByteArrayView text);

    /// The collections it is about.
    [[nodiscard]] std::vector<QByteArray> collections() const;

    /// Takes the first step back unless the second was carried out. False where that cannot be found out, or
    /// not be done, now. No other process may be in the middle of the change.
    [[nodiscard]] bool settle(const QByteArray& root) const;
};

/// SHA-256, in hexadecimal digits.
[[nodiscard]] QByteArray digestOf(const QByteArray& text);

[[nodiscard]] QByteArray newJournalName();
[[nodiscard]] bool isJournalName(QByteArrayView name);
/// Whether the process that began the change is still there.
[[nodiscard]] bool isOfRunningProcess(QByteArrayView journalName);

}  // namespace kestrant::vdir
