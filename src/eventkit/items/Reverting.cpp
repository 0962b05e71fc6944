#include "eventkit/icalendar/Reverting.h"

#include "eventkit/EKErrors.h"
#include "eventkit/ReminderChanges.h"
#include "eventkit/items/OpenItem.h"

#include <QFile>

#include <utility>

namespace kestrant::items {

using icalendar::Document;
using icalendar::TodoItem;

namespace {

/// A reminder in the text of a file that was read before.
struct KnownItem {
    Document document;
    TodoItem item;

    [[nodiscard]] icalendar::ComponentView todo() const {
        return document.components("VTODO")[static_cast<std::size_t>(item.index)];
    }
};

std::optional<KnownItem> knownItem(const ItemState& state, const QByteArray& key, const ZoneCalendar& local) {
    auto document = Document::parse(state.text);
    if (!document)
        return std::nullopt;
    int ordinal = 0;
    for (TodoItem& item : icalendar::readTodos(*document, local)) {
        if (item.key == key && ordinal++ == state.ordinal)
            return KnownItem{std::move(*document), std::move(item)};
    }
    return std::nullopt;
}

}  // namespace

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
        return bringBack(change, local);
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
    const ItemState& before = *change.before;
    const ItemState& after = *change.after;
    const auto refuse = [](EKError error) { return tl::unexpected(WriteError(std::move(error))); };
    const auto conflict = [&] { return refuse(conflictError(opened.current.title)); };
    QByteArray target = opened.place.collection;
    if (before.collection != after.collection) {
        // In the list it came from already, nothing of the move is left to take back.
        if (target != after.collection && target != before.collection)
            return conflict();
        target = before.collection;
    }
    if (const auto writable = writableCollection(QFile::decodeName(target)); !writable)
        return refuse(writable.error());
    const auto wasBefore = knownItem(before, change.key, local);
    const auto wasAfter = knownItem(after, change.key, local);
    if (!wasBefore || !wasAfter)
        return conflict();

    // It may have come back under another UID since.
    const QByteArray key = opened.item.key;
    ItemState found = opened.state();
    Revision revision{.document = opened.document};
    const bool isUntouched = opened.place.collection == after.collection && opened.place.file == after.file &&
                             found.text == after.text;
    if (isUntouched && before.isAlone == after.isAlone) {
        revision.document = wasBefore->document;
        opened.item = wasBefore->item;
    } else {
        const auto todos = opened.document.components("VTODO");
        const auto todo =
            icalendar::reverted(todos[static_cast<std::size_t>(opened.item.index)], wasBefore->todo(),
                                wasAfter->todo(), opened.document.lineEnd(), now);
        if (!todo)
            return conflict();
        revision.document.replace(opened.item.index, *todo);
    }
    const auto written = writeRevision(opened, target, revision, local);
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
    const auto made = knownItem(*change.after, change.key, local);
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

tl::expected<ItemChange, EKError> ItemDatabase::bringBack(const ItemChange& change,
                                                          const ZoneCalendar& local) {
    const ItemState& before = *change.before;
    const auto collection = writableCollection(QFile::decodeName(before.collection));
    if (!collection)
        return tl::unexpected(collection.error());
    auto known = knownItem(before, change.key, local);
    if (!known || snapshot_->reminders.contains(change.identifier))
        return tl::unexpected(conflictError(known ? known->item.data.title : change.identifier));
    if (!before.isAlone)
        known->document = aloneIn(std::move(known->document), known->item);
    const auto created = createFile(*collection, change.key, before.file, known->document, local);
    if (!created)
        return tl::unexpected(created.error());
    rebuildSnapshot();
    return ItemChange{identifierIn(snapshot_->reminders, created->place, created->uid), created->uid,
                      std::nullopt,
                      ItemState{created->place.collection, created->place.file, created->stored.text}};
}

}  // namespace kestrant::items
