#include "eventkit/vdir/VdirDatabase.h"

#include "eventkit/EKErrors.h"
#include "foundation/AtomicFile.h"

#include <QFile>

#include <algorithm>
#include <tuple>
#include <utility>

namespace kestrant::vdir {
namespace {

EKCalendar calendarFrom(const QByteArray& name, const Collection& collection) {
    bool holdsReminders = false;
    bool holdsEvents = false;
    for (const auto& [file, items] : collection.files) {
        holdsReminders = holdsReminders || !items.reminders.empty();
        holdsEvents = holdsEvents || items.holdsEvents;
    }
    return {.calendarIdentifier = QFile::decodeName(name),
            .title = collection.title,
            .color = collection.color,
            .allowsContentModifications = collection.isWritable,
            .allowsReminders = holdsReminders || !holdsEvents,
            .allowsEvents = holdsEvents || !holdsReminders};
}

std::vector<EKCalendar> orderedCalendars(const Library& library) {
    using Named = std::pair<QByteArray, const Collection*>;
    std::vector<Named> named;
    for (const auto& [name, collection] : library.collections)
        named.emplace_back(name, &collection);
    std::stable_sort(named.begin(), named.end(), [](const Named& a, const Named& b) {
        const auto rank = [](const Collection& c) { return std::pair(!c.order, c.order.value_or(0)); };
        if (rank(*a.second) != rank(*b.second))
            return rank(*a.second) < rank(*b.second);
        return a.second->title.compare(b.second->title, Qt::CaseInsensitive) < 0;
    });
    std::vector<EKCalendar> result;
    for (const auto& [name, collection] : named)
        result.push_back(calendarFrom(name, *collection));
    return result;
}

/// An identifier that says where a reminder is, for one that its UID does not tell apart.
QString placeIdentifier(const QByteArray& collection, const QByteArray& file, const FileReminder& reminder) {
    QString result = QString::fromUtf8(reminder.key) + QLatin1Char('#') + QFile::decodeName(collection) +
                     QLatin1Char('/') + QFile::decodeName(file);
    if (reminder.ordinal > 0)
        result += QStringLiteral("#%1").arg(reminder.ordinal + 1);
    return result;
}

}  // namespace

VdirDatabase::VdirDatabase(QByteArray root, std::function<void(const std::vector<QByteArray>&)> aboutToRead)
    : root_(std::move(root))
    , aboutToRead_(std::move(aboutToRead)) {}

std::optional<EKError> VdirDatabase::open(const ZoneCalendar& local) {
    if (const auto created = createFolder(QFile::decodeName(root_)); !created)
        return storageError(created.error().path, created.error().description);
    refresh({.everything = true}, local);
    if (library_.problem)
        return EKError{EKError::Code::storage, *library_.problem};
    isOpen_ = true;
    return std::nullopt;
}

bool VdirDatabase::refresh(const Changes& changes, const ZoneCalendar& local) {
    aboutToRead_(collectionNames(root_).value_or(std::vector<QByteArray>()));
    const bool changed = updateLibrary(library_, root_, changes, local);
    if (changed)
        rebuildSnapshot();
    return changed;
}

void VdirDatabase::rebuildSnapshot() {
    auto snapshot = std::make_shared<Snapshot>();
    snapshot->calendars = orderedCalendars(library_);
    if (library_.problem)
        snapshot->problems.push_back(*library_.problem);
    qsizetype count = 0;
    for (const auto& [name, collection] : library_.collections) {
        for (const auto& [file, items] : collection.files)
            count += static_cast<qsizetype>(items.reminders.size());
    }
    snapshot->reminders.reserve(count);
    for (const auto& [name, collection] : library_.collections) {
        if (collection.problem)
            snapshot->problems.push_back(*collection.problem);
        for (const auto& [file, items] : collection.files) {
            if (items.problem)
                snapshot->problems.push_back(*items.problem);
            for (const FileReminder& reminder : items.reminders) {
                Entry entry{reminder.data, items.stamp.toText(), name, file, reminder.key, reminder.ordinal};
                QString identifier = reminder.data->calendarItemIdentifier;
                if (identifier.isEmpty() || snapshot->reminders.contains(identifier)) {
                    identifier = placeIdentifier(name, file, reminder);
                    EKReminderData renamed = *reminder.data;
                    renamed.calendarItemIdentifier = identifier;
                    entry.data = std::make_shared<const EKReminderData>(std::move(renamed));
                }
                snapshot->reminders.insert(identifier, std::move(entry));
            }
        }
    }
    snapshot_ = std::move(snapshot);
}

QByteArray VdirDatabase::pathOf(const Place& place) const {
    return root_ + '/' + place.collection + '/' + place.file;
}

QString VdirDatabase::identifierAt(const Place& place, const QByteArray& key, int ordinal) const {
    for (auto entry = snapshot_->reminders.cbegin(); entry != snapshot_->reminders.cend(); ++entry) {
        if (entry->file == place.file && entry->collection == place.collection && entry->key == key &&
            entry->ordinal == ordinal)
            return entry.key();
    }
    return {};
}

}  // namespace kestrant::vdir
