#include "eventkit/icalendar/ItemWriting.h"
#include "eventkit/icalendar/TimeZoneText.h"
#include "eventkit/items/OpenItem.h"
#include "eventkit/model/EKErrors.h"
#include "eventkit/model/ReminderChanges.h"

#include <QFile>

#include <algorithm>
#include <utility>

namespace kestrant::items {

using icalendar::Component;
using icalendar::Document;
using icalendar::TodoItem;

namespace {

std::shared_ptr<const ReminderChange> changeOf(std::vector<ItemChange> items) {
    auto change = std::make_shared<ReminderChange>();
    change->items = std::move(items);
    return change;
}

int firstYearOf(const EKReminderData& data) {
    int year = 9999;
    for (const auto& date : {data.startDateComponents, data.dueDateComponents}) {
        if (date && date->year)
            year = std::min<int>(year, *date->year);
    }
    return firstZoneYear(year);
}

void defineZones(Document& document, const Document& before, const EKReminderData& reminder) {
    std::vector<std::optional<TimeZone>> zones;
    for (const auto& date : {reminder.startDateComponents, reminder.dueDateComponents})
        zones.push_back(date ? date->timeZone : std::nullopt);
    icalendar::addMissingTimeZones(document, before, firstYearOf(reminder), zones);
}

}  // namespace

Document aloneIn(Document document, const TodoItem& item) {
    icalendar::keepOnlyItem(document, "VTODO", item);
    return document;
}

tl::expected<ItemDatabase::OpenItem, EKError> ItemDatabase::openItem(const QString& identifier,
                                                                     const ZoneCalendar& local) {
    auto opened = openWith(&Snapshot::reminders, &icalendar::readTodos, identifier, local);
    if (!opened)
        return tl::unexpected(opened.error());
    return OpenItem::of(std::move(*opened), identifier);
}

tl::expected<EKSaveResult, EKError> ItemDatabase::save(const std::shared_ptr<const EKReminderData>& base,
                                                       const EKReminderData& edited, Instant now,
                                                       const ZoneCalendar& local) {
    if (!isOpen_)
        return tl::unexpected(accessDeniedError());
    if (!base)
        return saveNew(edited, now, local);
    return persist<EKSaveResult>(edited.title, {base->calendarIdentifier, edited.calendarIdentifier},
                                 [&] { return trySave(*base, edited, now, local); });
}

tl::expected<EKSaveResult, EKError> ItemDatabase::saveNew(const EKReminderData& edited, Instant now,
                                                          const ZoneCalendar& local) {
    const auto collection = writableCollection(edited.calendarIdentifier);
    if (!collection)
        return tl::unexpected(collection.error());
    if (auto error = invalidReason(std::nullopt, edited))
        return tl::unexpected(std::move(*error));
    const EKReminderData prepared = preparedForSave(std::nullopt, edited, now, local);
    const QByteArray uid = newUid();
    Document document = icalendar::makeTodo(uid, prepared, local, now);
    defineZones(document, Document::make(), prepared);
    const auto created = createFile(*collection, uid, {}, document, local);
    if (!created)
        return tl::unexpected(created.error());
    rebuildSnapshot();
    EKSaveResult result{identifierIn(snapshot_->reminders, created->place, created->uid), std::nullopt};
    result.change =
        changeOf({{result.calendarItemIdentifier, created->uid, std::nullopt,
                   ItemState{created->place.collection, created->place.file, created->stored.text}}});
    return result;
}

tl::expected<EKSaveResult, WriteError> ItemDatabase::trySave(const EKReminderData& base,
                                                             const EKReminderData& edited, Instant now,
                                                             const ZoneCalendar& local) {
    auto opened = openItem(base.calendarItemIdentifier, local);
    if (!opened)
        return tl::unexpected(WriteError(opened.error()));
    const auto prepared = prepareSave(*opened, base, edited, now, local);
    if (!prepared || !*prepared) {
        // What the file says now is known from here on.
        (void)refresh({.files = {{opened->place.collection, {opened->place.file}}}}, local);
        if (!prepared)
            return tl::unexpected(WriteError(prepared.error()));
        return EKSaveResult{base.calendarItemIdentifier, std::nullopt};
    }
    const auto written = writeRevision(*opened, (*prepared)->target, (*prepared)->revision, local);
    if (!written)
        return tl::unexpected(written.error());
    rebuildSnapshot();
    return saved(*opened, *written);
}

tl::expected<std::optional<ItemDatabase::PreparedSave>, EKError>
ItemDatabase::prepareSave(const OpenItem& opened, const EKReminderData& base, const EKReminderData& edited,
                          Instant now, const ZoneCalendar& local) const {
    MergedEdits merge = mergeEdits(base, edited, opened.current);
    if (merge.conflict)
        return tl::unexpected(conflictError(opened.current.title));
    if (merge.merged == opened.current)
        return std::nullopt;
    if (auto error = reasonNotToChange(opened.place))
        return tl::unexpected(std::move(*error));
    const auto target = writableCollection(merge.merged.calendarIdentifier);
    if (!target)
        return tl::unexpected(target.error());
    if (auto error = invalidReason(opened.current, merge.merged))
        return tl::unexpected(std::move(*error));
    return PreparedSave{
        *target,
        revised(opened, preparedForSave(opened.current, std::move(merge.merged), now, local), now, local)};
}

EKSaveResult ItemDatabase::saved(const OpenItem& opened, const WrittenRevision& written) const {
    EKSaveResult result{opened.current.calendarItemIdentifier, std::nullopt};
    if (written.place.collection != opened.place.collection)
        result.calendarItemIdentifier = identifierIn(snapshot_->reminders, written.place, opened.item.key);
    std::vector<ItemChange> changes{
        {result.calendarItemIdentifier, opened.item.key, opened.state(), written.stateAfter(opened)}};
    if (const auto& copy = written.copy) {
        result.completedCopyIdentifier = identifierIn(snapshot_->reminders, copy->place, copy->uid);
        changes.push_back({*result.completedCopyIdentifier, copy->uid, std::nullopt,
                           ItemState{copy->place.collection, copy->place.file, copy->stored.text}});
    }
    result.change = changeOf(std::move(changes));
    return result;
}

ItemDatabase::Revision ItemDatabase::revised(const OpenItem& opened, EKReminderData wanted, Instant now,
                                             const ZoneCalendar& local) {
    Revision result{.document = opened.document};
    Component todo(opened.document.components("VTODO")[static_cast<std::size_t>(opened.item.index)].lines());
    std::optional<CompletedOccurrence> step;
    if (wanted.isCompleted && !opened.current.isCompleted)
        step = completeOccurrence(wanted, opened.item.dates, now, local);
    if (step && step->copy) {
        icalendar::writeAdvancedTodo(todo, opened.item, *step, opened.document, local, now);
        result.copyUid = newUid();
        result.copy = icalendar::makeCompletedCopy(result.copyUid, opened.document, opened.item, *step->copy,
                                                   local, now);
        wanted = std::move(step->series);
    } else {
        icalendar::writeTodo(todo, opened.item, wanted, opened.document, local, now);
    }
    result.document.replace(opened.item.index, todo);
    defineZones(result.document, opened.document, wanted);
    return result;
}

tl::expected<ItemDatabase::WrittenRevision, WriteError>
ItemDatabase::writeRevision(const OpenItem& opened, const QByteArray& target, const Revision& revision,
                            const ZoneCalendar& local) {
    WrittenRevision result{opened.place, {}, std::nullopt};
    // The finished occurrence is stored before the series moves on, and does not
    // stay if that fails.
    const bool leaves = target != opened.place.collection;
    const SecondStep step = leaves && opened.isAlone ? SecondStep::removes : SecondStep::rewrites;
    StorageHold steps;
    if (revision.copy) {
        steps = storage_.beginTwoSteps(opened.place, opened.document.text(), step);
        const auto created = createFile(target, revision.copyUid, {}, *revision.copy, local);
        if (!created)
            return tl::unexpected(WriteError(created.error()));
        result.copy = *created;
    }
    std::optional<WriteError> error;
    if (!leaves) {
        auto replaced = replaceFile(opened, revision.document, local);
        if (replaced)
            result.text = std::move(*replaced);
        else
            error = std::move(replaced.error());
    } else {
        auto moved = move(
            opened, step, target, opened.item.key, aloneIn(revision.document, opened.item),
            [&] { return takeOut(opened, "VTODO", opened.item, local); }, local);
        if (moved) {
            result.place = std::move(moved->place);
            result.text = std::move(moved->stored.text);
        } else {
            error = std::move(moved.error());
        }
    }
    if (error) {
        if (result.copy)
            takeBack(*result.copy);
        return tl::unexpected(std::move(*error));
    }
    return result;
}

tl::expected<EKSaveResult, EKError> ItemDatabase::remove(const QString& identifier,
                                                         const ZoneCalendar& local) {
    if (!isOpen_)
        return tl::unexpected(accessDeniedError());
    const auto attempt = [&]() -> tl::expected<EKSaveResult, WriteError> {
        const auto opened = openItem(identifier, local);
        if (!opened)
            return tl::unexpected(WriteError(opened.error()));
        if (auto error = reasonNotToChange(opened->place))
            return tl::unexpected(WriteError(std::move(*error)));
        if (auto error = takeOut(*opened, "VTODO", opened->item, local))
            return tl::unexpected(std::move(*error));
        rebuildSnapshot();
        return EKSaveResult{identifier, std::nullopt,
                            changeOf({{identifier, opened->item.key, opened->state(), std::nullopt}})};
    };
    const auto entry = snapshot_->reminders.constFind(identifier);
    if (entry == snapshot_->reminders.cend())
        return tl::unexpected(itemNotFoundError());
    return persist<EKSaveResult>(entry->data->title, {entry->data->calendarIdentifier}, attempt);
}

}  // namespace kestrant::items
