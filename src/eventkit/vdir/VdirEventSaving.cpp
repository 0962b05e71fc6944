#include "eventkit/EKErrors.h"
#include "eventkit/EventChanges.h"
#include "eventkit/icalendar/TimeZoneText.h"
#include "eventkit/vdir/OpenItem.h"

#include <QFile>

#include <algorithm>
#include <utility>

namespace kestrant::vdir {

using icalendar::Component;
using icalendar::Document;
using icalendar::EventComponent;
using icalendar::EventItem;

/// One occurrence of an event with its file, as the file is at this moment.
struct VdirDatabase::OpenEvent : OpenFile {
    EventItem item;
    EventSeries::Occurrence occurrence;

    [[nodiscard]] const EKEventData& current() const { return *occurrence.data; }
    /// Whether a component of the file is about this occurrence alone.
    [[nodiscard]] bool hasComponent() const { return !item.recurs() || occurrence.change; }
    /// Whether it is one of several of the file's series.
    [[nodiscard]] bool isOfSeries() const { return item.recurs(); }
    /// The component that says what the occurrence is, and where it is in the file.
    [[nodiscard]] const EventComponent& component() const {
        return occurrence.change ? item.changes[*occurrence.change] : item.event;
    }
    [[nodiscard]] qsizetype index() const {
        return occurrence.change ? item.changeIndexes[*occurrence.change] : item.index;
    }
    /// The file without this occurrence of its series.
    [[nodiscard]] Document withoutOccurrence(Instant now) const {
        Document result = document;
        icalendar::excludeDate(result, item, occurrence.time, occurrence.change, now);
        return result;
    }
};

namespace {

void defineZones(Document& document, const Document& before, const EKEventData& event,
                 const ZoneCalendar& local) {
    icalendar::addMissingTimeZones(document, before, firstZoneYear(local.dayOf(event.startDate).year()));
}

}  // namespace

tl::expected<VdirDatabase::OpenEvent, EKError> VdirDatabase::openEvent(const EKEventData& base,
                                                                       const ZoneCalendar& local) {
    const QString& identifier = base.calendarItemIdentifier;
    auto opened = openWith(&Snapshot::events, &icalendar::readEvents, identifier, local);
    if (!opened)
        return tl::unexpected(opened.error());
    auto& [file, item] = *opened;
    const EventSeries series(item, identifier, QFile::decodeName(file.place.collection), local);
    auto occurrence = series.occurrence(base.occurrenceDate);
    if (!occurrence)
        return tl::unexpected(itemNotFoundError());
    return OpenEvent{std::move(file), std::move(item), std::move(*occurrence)};
}

tl::expected<EKSaveResult, EKError> VdirDatabase::saveEvent(const std::shared_ptr<const EKEventData>& base,
                                                            EKEventData edited, Instant now,
                                                            const ZoneCalendar& local) {
    if (!isOpen_)
        return tl::unexpected(accessDeniedError());
    if (!base) {
        auto result = saveNewEvent(std::move(edited), now, local);
        rebuildSnapshot();
        return result;
    }
    return persist(edited.title, [&] { return tryEventSave(*base, edited, now, local); });
}

tl::expected<EKSaveResult, EKError> VdirDatabase::saveNewEvent(EKEventData edited, Instant now,
                                                               const ZoneCalendar& local) {
    if (auto error = invalidReason(std::nullopt, edited))
        return tl::unexpected(std::move(*error));
    if (edited.calendarIdentifier.isEmpty()) {
        const auto& calendars = snapshot_->calendars;
        const auto standard =
            std::find_if(calendars.begin(), calendars.end(), [](const EKCalendar& calendar) {
                return calendar.allowsEvents && calendar.allowsContentModifications;
            });
        const auto calendar = standard != calendars.end() ? tl::expected<EKCalendar, EKError>(*standard)
                                                          : saveCalendar({.title = newCalendarTitle}, local);
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
    if (const auto place = createFile(*collection, fileNameFor(uid), document, local); !place)
        return tl::unexpected(place.error());
    return EKSaveResult{QString::fromUtf8(uid), std::nullopt, nullptr};
}

tl::expected<EKSaveResult, VdirDatabase::WriteError> VdirDatabase::tryEventSave(const EKEventData& base,
                                                                                const EKEventData& edited,
                                                                                Instant now,
                                                                                const ZoneCalendar& local) {
    const auto refuse = [](EKError error) { return tl::unexpected(WriteError(std::move(error))); };
    const auto opened = openEvent(base, local);
    if (!opened)
        return refuse(opened.error());
    const EKEventData& current = opened->current();
    MergedEventEdits merge = mergeEdits(base, edited, current);
    EKSaveResult result{base.calendarItemIdentifier, std::nullopt, nullptr};
    if (merge.conflict || merge.merged == current) {
        // Nothing to write, but what the file says now is known from here on.
        (void)refresh({.files = {{opened->place.collection, {opened->place.file}}}}, local);
        if (merge.conflict)
            return refuse(conflictError(current.title));
        return result;
    }
    if (auto error = reasonNotToChange(opened->place))
        return refuse(std::move(*error));
    const auto target = writableCollection(merge.merged.calendarIdentifier);
    if (!target)
        return refuse(target.error());
    if (auto error = invalidReason(current, merge.merged))
        return refuse(std::move(*error));

    const EKEventData after = preparedForSave(current, std::move(merge.merged), now);
    const auto written = writeOccurrence(*opened, after, *target, now, local);
    if (!written)
        return tl::unexpected(written.error());
    rebuildSnapshot();
    if (written->place.collection != opened->place.collection)
        result.calendarItemIdentifier = identifierIn(snapshot_->events, written->place, written->key);
    return result;
}

tl::expected<VdirDatabase::WrittenItem, VdirDatabase::WriteError>
VdirDatabase::writeOccurrence(const OpenEvent& opened, const EKEventData& after, const QByteArray& target,
                              Instant now, const ZoneCalendar& local) {
    Document document = opened.document;
    Component component =
        opened.hasComponent()
            ? Component(document.components("VEVENT")[static_cast<std::size_t>(opened.index())].lines())
            : icalendar::makeChange(opened.item, opened.occurrence.time, document);
    icalendar::writeEvent(component, opened.component().times, opened.current(), after, document, local, now);
    const bool moves = target != opened.place.collection;
    if (moves && opened.isOfSeries()) {
        WrittenItem result{opened.place, newUid()};
        document = icalendar::makeSeparateEvent(result.key, std::move(component), std::move(document));
        defineZones(document, Document::make(), after, local);
        const auto leave = [&] {
            return replaceFile(opened.place, opened.withoutOccurrence(now), opened.stamp, local);
        };
        const auto place = move(target, fileNameFor(result.key), document, leave, local);
        if (!place)
            return tl::unexpected(place.error());
        result.place = *place;
        return result;
    }
    if (opened.hasComponent())
        document.replace(opened.index(), component);
    else
        document.add(component);
    defineZones(document, opened.document, after, local);
    WrittenItem result{opened.place, opened.item.key};
    if (!moves) {
        if (auto error = replaceFile(opened.place, document, opened.stamp, local))
            return tl::unexpected(std::move(*error));
        return result;
    }
    icalendar::keepOnlyItem(document, "VEVENT", opened.item);
    const auto place = move(
        target, opened.isAlone ? opened.place.file : fileNameFor(result.key), document,
        [&] { return takeOut(opened, "VEVENT", opened.item, local); }, local);
    if (!place)
        return tl::unexpected(place.error());
    result.place = *place;
    return result;
}

tl::expected<EKSaveResult, EKError> VdirDatabase::removeEvent(const EKEventData& base, Instant now,
                                                              const ZoneCalendar& local) {
    if (!isOpen_)
        return tl::unexpected(accessDeniedError());
    return persist(base.title, [&]() -> tl::expected<EKSaveResult, WriteError> {
        const auto opened = openEvent(base, local);
        if (!opened)
            return tl::unexpected(WriteError(opened.error()));
        if (auto error = reasonNotToChange(opened->place))
            return tl::unexpected(WriteError(std::move(*error)));
        auto failed = opened->isOfSeries()
                          ? replaceFile(opened->place, opened->withoutOccurrence(now), opened->stamp, local)
                          : takeOut(*opened, "VEVENT", opened->item, local);
        if (failed)
            return tl::unexpected(std::move(*failed));
        rebuildSnapshot();
        return EKSaveResult{base.calendarItemIdentifier, std::nullopt, nullptr};
    });
}

}  // namespace kestrant::vdir
