#include "eventkit/icalendar/Reverting.h"

#include "eventkit/items/Reverting.h"
#include "eventkit/model/EKErrors.h"
#include "eventkit/model/ReminderChanges.h"

#include <QFile>

#include <utility>

namespace kestrant::items {

using icalendar::TodoItem;

tl::expected<EKSaveResult, EKError> ItemDatabase::revert(const ReminderChange& change,
                                                         const QString& identifier, Instant now,
                                                         const ZoneCalendar& local) {
    if (!isOpen_)
        return tl::unexpected(accessDeniedError());
    EKSaveResult result{identifier, std::nullopt};
    const auto reverse = std::make_shared<ReminderChange>();
    for (const ItemChange& item : change.items) {
        const bool isCopy = &item != &change.items.front();
        auto done = revertItem(item, isCopy ? item.identifier : identifier, now, local);
        if (!done) {
            // A copy that somebody else has removed already leaves nothing to do.
            if (isCopy && done.error().code == EKError::Code::itemNotFound)
                continue;
            for (const ItemChange& step : reverse->items)
                (void)revertItem(step, step.identifier, now, local);
            return tl::unexpected(done.error());
        }
        if (!isCopy)
            result.calendarItemIdentifier = done->identifier;
        else if (done->after)
            result.completedCopyIdentifier = done->identifier;
        reverse->items.push_back(std::move(*done));
    }
    result.change = reverse;
    return result;
}

tl::expected<ItemChange, EKError> ItemDatabase::revertItem(const ItemChange& change,
                                                           const QString& identifier, Instant now,
                                                           const ZoneCalendar& local) {
    if (!change.after)
        return bringBack<TodoItem>(change, &Snapshot::reminders, local);
    const auto attempt = [&]() -> tl::expected<ItemChange, WriteError> {
        auto opened = openItem(identifier, local);
        if (!opened)
            return tl::unexpected(WriteError(opened.error()));
        if (auto error = reasonNotToChange(opened->place))
            return tl::unexpected(WriteError(std::move(*error)));
        auto done = change.before ? restore(change, *opened, now, local) : takeAway(change, *opened, local);
        // What the file says now is known from here on.
        if (!done && std::holds_alternative<EKError>(done.error()))
            (void)refresh({.files = {{opened->place.collection, {opened->place.file}}}}, local);
        return done;
    };
    std::vector<QString> collections{QFile::decodeName(change.after->collection)};
    if (change.before)
        collections.push_back(QFile::decodeName(change.before->collection));
    return persist<ItemChange>(identifier, collections, attempt);
}

tl::expected<ItemChange, WriteError> ItemDatabase::restore(const ItemChange& change, OpenItem& opened,
                                                           Instant now, const ZoneCalendar& local) {
    const auto conflict = [&] { return tl::unexpected(WriteError(conflictError(opened.current.title))); };
    const auto target = collectionBefore(change, opened.place, opened.current.title);
    if (!target)
        return tl::unexpected(target.error());
    const auto wasBefore = knownItem<TodoItem>(*change.before, change.key, local);
    const auto wasAfter = knownItem<TodoItem>(*change.after, change.key, local);
    if (!wasBefore || !wasAfter)
        return conflict();

    // It may have come back under another UID since.
    const QByteArray key = opened.item.key;
    ItemState found = opened.state();
    Revision revision{.document = opened.document};
    if (opened.isUntouchedSince(change)) {
        revision.document = wasBefore->document;
        opened.item = wasBefore->item;
    } else {
        const auto todoIn = [](const icalendar::Document& document, const TodoItem& item) {
            return document.components("VTODO")[static_cast<std::size_t>(item.index)];
        };
        const auto todo = icalendar::reverted(
            todoIn(opened.document, opened.item), todoIn(wasBefore->document, wasBefore->item),
            todoIn(wasAfter->document, wasAfter->item), opened.document.lineEnd(), now);
        if (!todo)
            return conflict();
        revision.document.replace(opened.item.index, *todo);
    }
    const auto written = writeRevision(opened, *target, revision, local);
    if (!written)
        return tl::unexpected(written.error());
    rebuildSnapshot();
    QString identifier = opened.current.calendarItemIdentifier;
    if (written->place.collection != opened.place.collection)
        identifier = identifierIn(snapshot_->reminders, written->place, key);
    return ItemChange{identifier, key, std::move(found), written->stateAfter(opened)};
}

tl::expected<ItemChange, WriteError> ItemDatabase::takeAway(const ItemChange& change, OpenItem& opened,
                                                            const ZoneCalendar& local) {
    const auto made = knownItem<TodoItem>(*change.after, change.key, local);
    EKReminderData expected = made ? made->item.data : EKReminderData();
    expected.calendarIdentifier = QFile::decodeName(change.after->collection);
    if (!saysTheSame(std::move(expected), opened.current))
        return tl::unexpected(WriteError(conflictError(opened.current.title)));
    ItemState found = opened.state();
    if (auto error = takeOut(opened, "VTODO", opened.item, local))
        return tl::unexpected(std::move(*error));
    rebuildSnapshot();
    return ItemChange{opened.current.calendarItemIdentifier, opened.item.key, std::move(found), std::nullopt};
}

tl::expected<QByteArray, WriteError>
ItemDatabase::collectionBefore(const ItemChange& change, const Place& present, const QString& title) const {
    const QByteArray& before = change.before->collection;
    const QByteArray& after = change.after->collection;
    QByteArray result = present.collection;
    if (before != after) {
        // Where it came from already, nothing of the move is left to take back.
        if (result != after && result != before)
            return tl::unexpected(WriteError(conflictError(title)));
        result = before;
    }
    if (const auto writable = writableCollection(QFile::decodeName(result)); !writable)
        return tl::unexpected(WriteError(writable.error()));
    return result;
}

}  // namespace kestrant::items
