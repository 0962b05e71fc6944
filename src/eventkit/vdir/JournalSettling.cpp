#include "eventkit/vdir/JournalSettling.h"

#include "eventkit/vdir/VdirFiles.h"
#include "foundation/AtomicFile.h"

#include <QFile>

#include <algorithm>
#include <cerrno>

namespace kestrant::vdir {

using items::FileLocation;
using items::Journal;

namespace {

bool isWithinFolder(const FileLocation& location) {
    return !location.collection.startsWith('.') && !location.collection.contains('/') &&
           !location.file.contains('/') && isItemName(location.file);
}

QByteArray pathOf(const QByteArray& root, const FileLocation& location) {
    return root + '/' + location.collection + '/' + location.file;
}

}  // namespace

bool staysInFolder(const Journal& journal) {
    return isWithinFolder(journal.changed) &&
           std::all_of(journal.made.begin(), journal.made.end(),
                       [](const Journal::Made& file) { return isWithinFolder(file.location); });
}

bool settle(const Journal& journal, const QByteArray& root) {
    const auto present = openFile(pathOf(root, journal.changed));
    if (!present && present.error() != ENOENT)
        return false;
    if (journal.isDone(present ? std::optional(present->text) : std::nullopt))
        return true;
    bool isKnown = true;
    return std::all_of(journal.made.begin(), journal.made.end(), [&](const Journal::Made& file) {
        // One that somebody has changed meanwhile is theirs.
        const auto isAsMade = [&](const QString& path) {
            const auto opened = openFile(QFile::encodeName(path));
            isKnown = isKnown && (opened || opened.error() == ENOENT);
            return opened && items::digestOf(opened->text) == file.digest;
        };
        const auto removed = removeFileIf(QFile::decodeName(pathOf(root, file.location)), isAsMade);
        return removed || (isKnown && removed.error().errorNumber == ESTALE);
    });
}

}  // namespace kestrant::vdir
