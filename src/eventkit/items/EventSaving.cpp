#include "eventkit/icalendar/TimeZoneText.h"
#include "eventkit/items/OpenFile.h"
#include "eventkit/model/EKErrors.h"
#include "eventkit/model/EventChanges.h"

#include <QFile>

#include <algorithm>
#include <utility>

namespace kestrant::items {

using icalendar::Component;
using icalendar::Document;
using icalendar::EventComponent;
using icalendar::EventItem;

/// One occurrence of an event with its file, as the file is at this moment.
struct ItemDatabase::OpenEvent : OpenFile {
    EventItem item;
    EventSeries::Occurrence occurrence;

    [[nodiscard]] const EKEventData& current() const { return *occurrence.data; }
    /// Whether a component of the file is about this occurrence alone.
    [[nodiscard]] bool hasComponent() const { return !item.recurs() || ownChange(); }
    /// Whether it is one of several of the file's series.
    [[nodiscard]] bool isOfSeries() const { return item.recurs(); }
    /// The component that says what the occurrence is, and where it is in the
    /// file.
    [[nodiscard]] const EventComponent& component() const {
        const auto change = ownChange() ? ownChange() : occurrence.source;
        return change ? item.changes[*change] : item.event;
    }
    [[nodiscard]] qsizetype index() const {
        return ownChange() ? item.changeIndexes[*ownChange()] : item.index;
    }
    /// The change that is about this occurrence and no later one.
    [[nodiscard]] std::optional<std::size_t> ownChange() const {
        return occurrence.source == occurrence.change ? std::nullopt : occurrence.change;
    }
    /// The file without this occurrence of its series.
    [[nodiscard]] Document withoutOccurrence(Instant now) const {
        Document result = document;
        icalendar::excludeDate(result, item, occurrence.time, ownChange(), now);
        return result;
    }
};

namespace {

void defineZones(Document& document, const Document& before, const EKEventData& event,
                 const TimeZone& local) {
    icalendar::addMissingTimeZones(document, before, firstZoneYear(local.dayOf(event.startDate).year()),
                                   {event.timeZone});
}

}  // namespace

tl::expected<ItemDatabase::OpenEvent, EKError> ItemDatabase::openEvent(const EKEventData& base,
                                                                       const TimeZone& local) {
    const QString& identifier = base.calendarItemIdentifier;
    auto opened = openWith<EventItem>(identifier, local);
    if (!opened)
        return tl::unexpected(opened.error());
    auto& [file, item] = *opened;
    const EventSeries series(item, identifier, QFile::decodeName(file.location.collection), local);
    auto occurrence = series.occurrence(base.occurrenceDate);
    if (!occurrence)
        return tl::unexpected(itemNotFoundError());
    return OpenEvent{std::move(file), std::move(item), std::move(*occurrence)};
}

tl::expected<EKSaveResult, EKError> ItemDatabase::saveEvent(const std::shared_ptr<const EKEventData>& base,
                                                            EKEventData edited, Instant now,
                                                            const TimeZone& local) {
    if (!isOpen_)
        return tl::unexpected(accessDeniedError());
    if (!base)
        return saveNewEvent(std::move(edited), now, local);
    return persist<EKSaveResult>(edited.title, {base->calendarIdentifier, edited.calendarIdentifier},
                                 [&] { return tryEventSave(*base, edited, now, local); });
}

tl::expected<EKSaveResult, EKError> ItemDatabase::saveNewEvent(EKEventData edited, Instant now,
                                                               const TimeZone& local) {
    if (auto error = invalidReason(std::nullopt, edited))
        return tl::unexpected(std::move(*error));
    if (edited.calendarIdentifier.isEmpty()) {
        const auto standard = snapshot_->calendar(snapshot_->defaultForEvents);
        const auto calendar =
            standard
                ? tl::expected<EKCalendar, EKError>(*standard)
                : saveCalendar({.title = newCalendarTitle, .allowsReminders = false, .allowsEvents = true},
                               local);
        if (!calendar)
            return tl::unexpected(calendar.error());
        edited.calendarIdentifier = calendar->calendarIdentifier;
    }
    const auto collection = writableCollection(edited.calendarIdentifier);
    if (!collection)
        return tl::unexpected(collection.error());
    const EKEventData prepared = preparedForSave(std::nullopt, std::move(edited), now);
    const QByteArray uid = newUid();
    Document document = icalendar::makeEvent(uid, prepared, local, now);
    defineZones(document, Document::make(), prepared, local);
    return createItem<EventItem>(*collection, uid, {}, document, local).map([](ItemChange change) {
        return resultOf(EKEntityType::event, {std::move(change)});
    });
}

tl::expected<EKSaveResult, WriteError> ItemDatabase::tryEventSave(const EKEventData& base,
                                                                  const EKEventData& edited, Instant now,
                                                                  const TimeZone& local) {
    const auto opened = openEvent(base, local);
    if (!opened)
        return tl::unexpected(WriteError(opened.error()));
    const EKEventData& current = opened->current();
    auto wish = wanted(opened->location, base, edited, current);
    if (!wish || !*wish) {
        // The written text becomes the known one.
        (void)refresh({.files = {{opened->location.collection, {opened->location.file}}}}, local);
        if (!wish)
            return tl::unexpected(WriteError(std::move(wish.error())));
        return EKSaveResult{base.calendarItemIdentifier, std::nullopt, nullptr};
    }
    const EKEventData after = preparedForSave(current, std::move((*wish)->data), now);
    const auto written = writeOccurrence(*opened, after, (*wish)->target, now, local);
    if (!written)
        return tl::unexpected(written.error());
    rebuildSnapshot();
    const bool moved = written->location.collection != opened->location.collection;
    const QString identifier = moved ? identifierIn(snapshot_->events, written->location, written->key)
                                     : base.calendarItemIdentifier;
    const ItemState present = opened->stateAfter(*written);
    if (!moved || !opened->isOfSeries())
        return resultOf(EKEntityType::event, {{identifier, opened->state(), present}});
    ItemState rest = opened->state();
    rest.text = opened->withoutOccurrence(now).text();
    if (const auto file = openFile(opened->location); file && *file)
        rest.text = (*file)->document.text();
    return resultOf(EKEntityType::event, {{identifier, std::nullopt, present},
                                          {base.calendarItemIdentifier, opened->state(), rest}});
}

tl::expected<ItemDatabase::WrittenItem, WriteError>
ItemDatabase::writeOccurrence(const OpenEvent& opened, const EKEventData& after, const QByteArray& target,
                              Instant now, const TimeZone& local) {
    Document document = opened.document;
    Component component =
        opened.hasComponent()
            ? Component(document.components("VEVENT")[static_cast<std::size_t>(opened.index())].lines())
            : icalendar::makeChange(opened.item, opened.occurrence.time, opened.occurrence.source, document);
    icalendar::writeEvent(component, opened.component().times, opened.current(), after, document, local, now);
    if (target != opened.location.collection && opened.isOfSeries()) {
        const QByteArray uid = newUid();
        document = icalendar::makeSeparateEvent(uid, std::move(component), std::move(document));
        defineZones(document, Document::make(), after, local);
        const auto leave = [&] {
            return failureOf(replaceFile(opened, opened.withoutOccurrence(now), local));
        };
        return move(opened, SecondStep::rewrites, target, uid, document, leave, local);
    }
    if (opened.hasComponent())
        document.replace(opened.index(), component);
    else
        document.insertAfter(opened.item.index, component);
    defineZones(document, opened.document, after, local);
    return storeItem(opened, opened.item, std::move(document), opened.item, target, local);
}

tl::expected<EKSaveResult, EKError> ItemDatabase::removeEvent(const EKEventData& base, Instant now,
                                                              const TimeZone& local) {
    if (!isOpen_)
        return tl::unexpected(accessDeniedError());
    const auto attempt = [&]() -> tl::expected<EKSaveResult, WriteError> {
        const auto opened = openEvent(base, local);
        if (!opened)
            return tl::unexpected(WriteError(opened.error()));
        if (auto error = writeRefusal(opened->location))
            return tl::unexpected(WriteError(std::move(*error)));
        std::optional<ItemState> rest;
        if (opened->isOfSeries()) {
            auto text = replaceFile(*opened, opened->withoutOccurrence(now), local);
            if (!text)
                return tl::unexpected(std::move(text.error()));
            rest = opened->state();
            rest->text = *std::move(text);
        } else if (auto failed = removeFromFile(*opened, "VEVENT", opened->item, local)) {
            return tl::unexpected(std::move(*failed));
        }
        rebuildSnapshot();
        return resultOf(EKEntityType::event,
                        {{base.calendarItemIdentifier, opened->state(), std::move(rest)}});
    };
    return persist<EKSaveResult>(base.title, {base.calendarIdentifier}, attempt);
}

}  // namespace kestrant::items
