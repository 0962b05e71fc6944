#include "eventkit/icalendar/Reverting.h"
#include "eventkit/items/Reverting.h"
#include "eventkit/model/EKErrors.h"

#include <QFile>

#include <algorithm>
#include <map>
#include <utility>

namespace kestrant::items {

using icalendar::Component;
using icalendar::ComponentView;
using icalendar::Document;
using icalendar::EventItem;

namespace {

using KnownEvent = KnownItem<EventItem>;

/// The components of an event by the date of the series that each is about; the series itself has none.
std::map<QByteArray, qsizetype> componentsOf(const EventItem& item, const Document& document) {
    const auto events = document.components("VEVENT");
    std::map<QByteArray, qsizetype> result{{QByteArray(), item.index}};
    for (const qsizetype index : item.changeIndexes) {
        const auto date = events[static_cast<std::size_t>(index)].property("RECURRENCE-ID");
        result.emplace(date ? date->value : QByteArray(), index);
    }
    return result;
}

/// The present file with what led from `before` to `after` taken back, component by component; absent where
/// somebody else has changed the same.
std::optional<Document> merged(const Document& present, const EventItem& item, const KnownEvent& before,
                               const KnownEvent& after, Instant now) {
    const auto was = componentsOf(before.item, before.document);
    const auto became = componentsOf(after.item, after.document);
    const auto is = componentsOf(item, present);
    const auto view = [](const Document& document, const std::map<QByteArray, qsizetype>& indexes,
                         const QByteArray& date) -> std::optional<ComponentView> {
        const auto found = indexes.find(date);
        if (found == indexes.end())
            return std::nullopt;
        return document.components("VEVENT")[static_cast<std::size_t>(found->second)];
    };
    auto dates = was;
    dates.insert(became.begin(), became.end());
    Document result = present;
    std::vector<Component> missing;
    std::vector<qsizetype> superfluous;
    for (const auto& [date, index] : dates) {
        const auto old = view(before.document, was, date);
        const auto changed = view(after.document, became, date);
        const auto current = view(present, is, date);
        if (old && changed) {
            if (old->text() == changed->text())
                continue;
            const auto restored = current
                                      ? icalendar::reverted(*current, *old, *changed, present.lineEnd(), now)
                                      : std::nullopt;
            if (!restored)
                return std::nullopt;
            result.replace(is.at(date), *restored);
        } else if (old) {
            if (current)
                return std::nullopt;
            missing.emplace_back(old->lines());
        } else if (current) {
            if (!icalendar::saySame(*current, *changed))
                return std::nullopt;
            superfluous.push_back(is.at(date));
        }
    }
    std::sort(superfluous.rbegin(), superfluous.rend());
    for (const qsizetype index : superfluous)
        result.remove("VEVENT", index);
    for (const Component& component : missing)
        result.add(component);
    return result;
}

/// Whether the file still says of an event what it said then, and nothing more.
bool isAsItWas(const KnownEvent& then, const Document& document, const EventItem& item) {
    const auto was = componentsOf(then.item, then.document);
    const auto is = componentsOf(item, document);
    return std::equal(was.begin(), was.end(), is.begin(), is.end(), [&](const auto& a, const auto& b) {
        const ComponentView old = then.document.components("VEVENT")[static_cast<std::size_t>(a.second)];
        const ComponentView present = document.components("VEVENT")[static_cast<std::size_t>(b.second)];
        return a.first == b.first && icalendar::saySame(old, present);
    });
}

}  // namespace

tl::expected<EKSaveResult, EKError> ItemDatabase::revert(const EventChange& change, const QString& identifier,
                                                         Instant now, const ZoneCalendar& local) {
    if (!isOpen_)
        return tl::unexpected(accessDeniedError());
    std::vector<ItemChange> reverse;
    for (const ItemChange& item : change.items) {
        const bool isFirst = &item == &change.items.front();
        auto done = revertEvent(item, isFirst ? identifier : item.identifier, now, local);
        if (!done) {
            for (const ItemChange& step : reverse)
                (void)revertEvent(step, step.identifier, now, local);
            return tl::unexpected(done.error());
        }
        reverse.push_back(std::move(*done));
    }
    const QString present = reverse.front().identifier;
    return EKSaveResult{present, std::nullopt, std::make_shared<EventChange>(std::move(reverse))};
}

tl::expected<ItemChange, EKError> ItemDatabase::revertEvent(const ItemChange& change,
                                                            const QString& identifier, Instant now,
                                                            const ZoneCalendar& local) {
    if (!change.after)
        return bringBack<EventItem>(change, &Snapshot::events, local);
    const auto attempt = [&]() -> tl::expected<ItemChange, WriteError> {
        const auto opened = openWith(&Snapshot::events, &icalendar::readEvents, identifier, local);
        if (!opened)
            return tl::unexpected(WriteError(opened.error()));
        const auto& [file, item] = *opened;
        if (auto error = reasonNotToChange(file.place))
            return tl::unexpected(WriteError(std::move(*error)));
        if (change.before)
            return restoreEvent(change, file, item, now, local);
        const auto made = knownItem<EventItem>(*change.after, change.key, local);
        if (!made || file.place.collection != change.after->collection ||
            !isAsItWas(*made, file.document, item))
            return tl::unexpected(WriteError(conflictError(item.event.data.title)));
        if (auto error = takeOut(file, "VEVENT", item, local))
            return tl::unexpected(std::move(*error));
        rebuildSnapshot();
        return ItemChange{identifier, item.key, file.state(), std::nullopt};
    };
    std::vector<QString> collections{QFile::decodeName(change.after->collection)};
    if (change.before)
        collections.push_back(QFile::decodeName(change.before->collection));
    return persist<ItemChange>(identifier, collections, attempt);
}

tl::expected<ItemChange, WriteError> ItemDatabase::restoreEvent(const ItemChange& change,
                                                                const OpenFile& opened, const EventItem& item,
                                                                Instant now, const ZoneCalendar& local) {
    const QString& title = item.event.data.title;
    const auto target = collectionBefore(change, opened.place, title);
    if (!target)
        return tl::unexpected(target.error());
    const auto wasBefore = knownItem<EventItem>(*change.before, change.key, local);
    const auto wasAfter = knownItem<EventItem>(*change.after, change.key, local);
    const auto conflict = [&] { return tl::unexpected(WriteError(conflictError(title))); };
    if (!wasBefore || !wasAfter)
        return conflict();

    ItemState found = opened.state();
    auto document = opened.isUntouchedSince(change)
                        ? wasBefore->document
                        : merged(opened.document, item, *wasBefore, *wasAfter, now);
    if (!document)
        return conflict();
    ItemState present = found;
    // It may have come back under another UID since.
    QByteArray key = item.key;
    QString identifier;
    if (*target == opened.place.collection) {
        auto text = replaceFile(opened, *document, local);
        if (!text)
            return tl::unexpected(std::move(text.error()));
        present.text = *std::move(text);
        rebuildSnapshot();
        identifier = identifierIn(snapshot_->events, opened.place, key);
    } else {
        if (!opened.isAlone)
            icalendar::keepOnlyItem(*document, "VEVENT", item);
        const auto moved = move(
            opened, opened.isAlone ? SecondStep::removes : SecondStep::rewrites, *target, key, *document,
            [&] { return takeOut(opened, "VEVENT", item, local); }, local);
        if (!moved)
            return tl::unexpected(moved.error());
        present = ItemState{moved->place.collection, moved->place.file, moved->stored.text};
        rebuildSnapshot();
        key = moved->uid;
        identifier = identifierIn(snapshot_->events, moved->place, key);
    }
    return ItemChange{identifier, item.key, std::move(found), std::move(present)};
}

}  // namespace kestrant::items
