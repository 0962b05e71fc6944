#include "eventkit/icalendar/ItemWriting.h"
#include "eventkit/icalendar/TimeZoneText.h"
#include "eventkit/items/OpenFile.h"
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

tl::expected<ItemDatabase::OpenReminder, EKError> ItemDatabase::openItem(const QString& identifier,
                                                                         const TimeZone& local) {
    auto opened = openWith<TodoItem>(identifier, local);
    if (!opened)
        return tl::unexpected(opened.error());
    return OpenReminder::of(std::move(*opened), identifier);
}

tl::expected<EKSaveResult, EKError> ItemDatabase::save(const std::shared_ptr<const EKReminderData>& base,
                                                       const EKReminderData& edited, Instant now,
                                                       const TimeZone& local) {
    if (!isOpen_)
        return tl::unexpected(accessDeniedError());
    if (!base)
        return saveNew(edited, now, local);
    return persist<EKSaveResult>(edited.title, {base->calendarIdentifier, edited.calendarIdentifier},
                                 [&] { return trySave(*base, edited, now, local); });
}

tl::expected<EKSaveResult, EKError> ItemDatabase::saveNew(const EKReminderData& edited, Instant now,
                                                          const TimeZone& local) {
    const auto collection = writableCollection(edited.calendarIdentifier);
    if (!collection)
        return tl::unexpected(collection.error());
    if (auto error = invalidReason(std::nullopt, edited))
        return tl::unexpected(std::move(*error));
    const EKReminderData prepared = preparedForSave(std::nullopt, edited, now, local);
    const QByteArray uid = newUid();
    Document document = icalendar::makeTodo(uid, prepared, local, now);
    defineZones(document, Document::make(), prepared);
    return createItem<TodoItem>(*collection, uid, {}, document, local).map([](ItemChange change) {
        return resultOf(EKEntityType::reminder, {std::move(change)});
    });
}

tl::expected<EKSaveResult, WriteError> ItemDatabase::trySave(const EKReminderData& base,
                                                             const EKReminderData& edited, Instant now,
                                                             const TimeZone& local) {
    auto opened = openItem(base.calendarItemIdentifier, local);
    if (!opened)
        return tl::unexpected(WriteError(opened.error()));
    auto wish = wanted(opened->location, base, edited, opened->current);
    if (!wish || !*wish) {
        // The written text becomes the known one.
        (void)refresh({.files = {{opened->location.collection, {opened->location.file}}}}, local);
        if (!wish)
            return tl::unexpected(WriteError(std::move(wish.error())));
        return EKSaveResult{base.calendarItemIdentifier, std::nullopt};
    }
    const auto written = writeRevision(*opened, (*wish)->target,
                                       revised(*opened, std::move((*wish)->data), now, local), local);
    if (!written)
        return tl::unexpected(written.error());
    rebuildSnapshot();
    return saved(*opened, *written);
}

EKSaveResult ItemDatabase::saved(const OpenReminder& opened, const WrittenRevision& written) const {
    QString identifier = opened.current.calendarItemIdentifier;
    if (written.location.collection != opened.location.collection)
        identifier = identifierIn(snapshot_->reminders, written.location, written.key);
    std::vector<ItemChange> changes{{identifier, opened.state(), opened.stateAfter(written)}};
    std::optional<QString> copyIdentifier;
    if (const auto& copy = written.copy) {
        copyIdentifier = identifierIn(snapshot_->reminders, copy->location, copy->uid);
        changes.push_back({*copyIdentifier, std::nullopt, stateOf(*copy)});
    }
    EKSaveResult result = resultOf(EKEntityType::reminder, std::move(changes));
    result.completedCopyIdentifier = copyIdentifier;
    return result;
}

ItemDatabase::Revision ItemDatabase::revised(const OpenReminder& opened, EKReminderData wanted, Instant now,
                                             const TimeZone& local) {
    wanted = preparedForSave(opened.current, std::move(wanted), now, local);
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
ItemDatabase::writeRevision(const OpenReminder& opened, const QByteArray& target, const Revision& revision,
                            const TimeZone& local) {
    WrittenRevision result;
    // The finished occurrence is stored before the series moves on, and does not
    // stay if that fails.
    StorageHold steps;
    if (revision.copy) {
        const bool leaves = target != opened.location.collection;
        steps = storage_.beginTwoSteps(opened.location, opened.document.text(),
                                       leaves && opened.isAlone ? SecondStep::removes : SecondStep::rewrites);
        const auto created = createFile(target, revision.copyUid, {}, *revision.copy, local);
        if (!created)
            return tl::unexpected(WriteError(created.error()));
        result.copy = *created;
    }
    auto written = storeItem(opened, opened.item, revision.document, opened.item, target, local);
    if (!written) {
        if (result.copy)
            takeBack(*result.copy);
        return tl::unexpected(std::move(written.error()));
    }
    static_cast<WrittenItem&>(result) = std::move(*written);
    return result;
}

tl::expected<EKSaveResult, EKError> ItemDatabase::remove(const QString& identifier, const TimeZone& local) {
    if (!isOpen_)
        return tl::unexpected(accessDeniedError());
    const auto attempt = [&]() -> tl::expected<EKSaveResult, WriteError> {
        const auto opened = openItem(identifier, local);
        if (!opened)
            return tl::unexpected(WriteError(opened.error()));
        if (auto error = writeRefusal(opened->location))
            return tl::unexpected(WriteError(std::move(*error)));
        if (auto error = removeFromFile(*opened, "VTODO", opened->item, local))
            return tl::unexpected(std::move(*error));
        rebuildSnapshot();
        return resultOf(EKEntityType::reminder, {{identifier, opened->state(), std::nullopt}});
    };
    const Entry* const entry = snapshot_->reminders.find(identifier);
    if (!entry)
        return tl::unexpected(itemNotFoundError());
    return persist<EKSaveResult>(entry->data->title, {entry->data->calendarIdentifier}, attempt);
}

}  // namespace kestrant::items
