#pragma once

#include "eventkit/items/StorageContents.h"

#include <QByteArray>
#include <QByteArrayView>

#include <optional>
#include <vector>

namespace kestrant::items {

/// Note of a change in two steps: files are made, then another one is rewritten or removed. It is kept while
/// the change is under way, in a hidden file with one line of JSON, so that whoever reads the collections
/// after the process was killed can take the first step back.
struct Journal {
    struct Made {
        FileLocation location;
        /// digestOf() its text; empty while that is not known.
        QByteArray digest;
    };

    std::vector<Made> made;
    FileLocation changed;
    /// digestOf() the text that the changed file had.
    QByteArray before;
    /// Whether the second step removes the file.
    bool isRemoved = false;

    [[nodiscard]] QByteArray text() const;
    /// Absent where it is none; what the places are called is for the reader to judge.
    [[nodiscard]] static std::optional<Journal> parse(QByteArrayView text);

    /// The collections it is about.
    [[nodiscard]] std::vector<QByteArray> collections() const;

    /// Whether the second step was carried out, by the changed file's text now; absent where it is gone.
    [[nodiscard]] bool isDone(const std::optional<QByteArray>& present) const;
};

/// SHA-256, in hexadecimal digits.
[[nodiscard]] QByteArray digestOf(const QByteArray& text);

[[nodiscard]] QByteArray newJournalName();
[[nodiscard]] bool isJournalName(QByteArrayView name);
/// Whether the process that began the change is still there.
[[nodiscard]] bool isOfRunningProcess(QByteArrayView journalName);

}  // namespace kestrant::items
