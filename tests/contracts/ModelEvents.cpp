#include "ModelEvents.h"

#include "foundation/TimeZone.h"

#include <algorithm>
#include <iterator>

namespace kestrant::model {

using namespace std::chrono_literals;

std::vector<EKEventRef> ModelEvents::shown() {
    return world_.driver.events(at("Europe/Paris", {2026, 3, 1}), at("Europe/Paris", {2026, 5, 1}));
}

ModelEvents::InHand ModelEvents::pick(unsigned which) {
    if (events_.empty())
        return {};
    auto found = events_.begin();
    std::advance(found, which % events_.size());
    for (const EKEventRef& event : shown()) {
        if (keyOf(event->data) == found->first)
            return {event, found->first};
    }
    return {};
}

void ModelEvents::add(const Step& step) {
    EKEventData data;
    data.title = "event";
    data.calendarIdentifier = oneOf(world_.calendars, step.which);
    data.timeZone = TimeZone::named("Europe/Paris");
    data.startDate = at("Europe/Paris", today.addDays(static_cast<int>(step.value % 4)), {9, 0});
    data.endDate = data.startDate + 1h;
    if (step.property % 3) {
        data.recurrenceRules = {EKRecurrenceRule::parse("FREQ=DAILY;COUNT=4")};
    }
    world_.note("add an event");
    const auto event = std::make_shared<EKEvent>();
    event->data = data;
    const auto answer = world_.driver.save(event);
    ASSERT_TRUE(answer.has_value());
    Record record{.isWhole = true};
    for (int i = 0; i < (data.recurrenceRules.empty() ? 1 : 4); ++i) {
        EKEventData occurrence = event->data;
        const QDate day = paris.dayOf(data.startDate).addDays(i);
        occurrence.startDate = at("Europe/Paris", day, {9, 0});
        occurrence.endDate = at("Europe/Paris", day, {10, 0});
        if (!data.recurrenceRules.empty())
            occurrence.occurrenceDate = occurrence.startDate;
        events_[keyOf(occurrence)] = world_.valuesOf(occurrence);
        record.occurrences[keyOf(occurrence)].after = world_.valuesOf(occurrence);
    }
    identifiers_.insert(answer->calendarItemIdentifier);
    keep(*answer, std::move(record));
}

void ModelEvents::keep(const EKSaveResult& result, Record record) {
    record.result = result;
    for (const auto& [key, difference] : record.occurrences) {
        if (!key.second.isEmpty() && !record.isWhole && !(difference.before && difference.after))
            record.exclusions = ++exclusions_[key.first];
    }
    records_.push_back(std::move(record));
}

std::size_t ModelEvents::countOf(const QString& identifier) const {
    return static_cast<std::size_t>(std::count_if(
        events_.begin(), events_.end(), [&](const auto& each) { return each.first.first == identifier; }));
}

QString ModelEvents::save(const InHand& hand) {
    const Values base = world_.valuesOf(*hand.event->stored());
    const Values edited = world_.valuesOf(hand.event->data);
    world_.note(QStringLiteral("save the event %1: %2 -> %3")
                    .arg(hand.key.second, model::shown(base), model::shown(edited)));
    const auto answer = world_.driver.save(hand.event);
    const auto found = events_.find(hand.key);
    Code expected;
    std::optional<Values> wanted;
    if (found == events_.end())
        expected = EKError::Code::itemNotFound;
    else if (wanted = merged(without(base, "detached"), without(edited, "detached"), found->second); !wanted)
        expected = EKError::Code::conflict;
    if (codeOf(answer) != expected)
        return QStringLiteral("answered %1 in place of %2")
            .arg(shownCode(codeOf(answer)), shownCode(expected));
    world_.log.last() += " (" + shownCode(expected) + ")";
    if (!answer)
        return {};
    if (*wanted != found->second) {
        const bool isOccurrence = !hand.key.second.isEmpty();
        const bool leaves = isOccurrence && wanted->at("calendar") != found->second.at("calendar");
        Record record;
        record.occurrences[hand.key].before = found->second;
        if (leaves) {
            const EventKey separate{answer->calendarItemIdentifier, {}};
            events_.erase(found);
            identifiers_.insert(separate.first);
            events_[separate] = without(*wanted, "detached");
            record.occurrences[separate].after = events_[separate];
        } else {
            found->second = *wanted;
            if (isOccurrence)
                found->second["detached"] = "yes";
            record.occurrences[hand.key].after = found->second;
        }
        keep(*answer, std::move(record));
        if (!leaves)
            identifierBecame(hand.key.first, answer->calendarItemIdentifier);
    }
    const auto stored = events_.find(keyOf(hand.event->data));
    if (stored == events_.end() || world_.valuesOf(hand.event->data) != stored->second)
        return "in hand after saving: " + model::shown(world_.valuesOf(hand.event->data));
    return {};
}

QString ModelEvents::remove(const InHand& hand) {
    world_.note("remove the event " + hand.key.second);
    const auto answer = world_.driver.remove(hand.event);
    const Code expected = events_.contains(hand.key) ? std::nullopt : Code(EKError::Code::itemNotFound);
    if (codeOf(answer) != expected)
        return QStringLiteral("answered %1 in place of %2")
            .arg(shownCode(codeOf(answer)), shownCode(expected));
    if (!answer)
        return {};
    Record record{.isWhole = hand.key.second.isEmpty()};
    record.occurrences[hand.key].before = events_[hand.key];
    events_.erase(hand.key);
    if (record.isWhole)
        identifiers_.erase(hand.key.first);
    keep(*answer, std::move(record));
    return {};
}

bool ModelEvents::isCertain(const Record& record) const {
    return std::all_of(record.occurrences.begin(), record.occurrences.end(), [&](const auto& each) {
        const auto& [key, difference] = each;
        const auto found = events_.find(key);
        const bool isPresent = found != events_.end();
        if (record.isWhole || key.second.isEmpty())
            return difference.before || !isPresent ||
                   found->second.at("calendar") == difference.after->at("calendar");
        if (!identifiers_.contains(key.first) || isPresent != difference.after.has_value())
            return false;
        if (difference.before && difference.after)
            return true;
        return exclusions_.at(key.first) == record.exclusions &&
               (!isPresent || found->second == *difference.after);
    });
}

Code ModelEvents::takenBackInModel(const Record& record) {
    auto events = events_;
    for (const auto& [key, difference] : record.occurrences) {
        const auto& [before, after] = difference;
        const auto found = events.find(key);
        if (after && !identifiers_.contains(key.first))
            return EKError::Code::itemNotFound;
        if (after && found == events.end())
            return EKError::Code::conflict;
        if (!after) {
            events[key] = *before;
        } else if (!before || before->contains("detached") != after->contains("detached")) {
            // What would have to go has to be as it was made.
            if (found->second != *after ||
                (record.isWhole && countOf(key.first) != record.occurrences.size()))
                return EKError::Code::conflict;
            if (before)
                found->second = *before;
            else
                events.erase(found);
        } else {
            const auto restored = merged(*after, *before, found->second);
            if (!restored)
                return EKError::Code::conflict;
            found->second = *restored;
        }
    }
    events_ = std::move(events);
    return std::nullopt;
}

QString ModelEvents::takeBack(unsigned which) {
    if (records_.empty())
        return {};
    // Mostly the latest one, as a person does.
    const std::size_t position = records_.size() - 1 - (which % 3 ? 0 : which / 3 % records_.size());
    const Record record = records_[position];
    records_.erase(records_.begin() + static_cast<std::ptrdiff_t>(position));
    if (!isCertain(record))
        return {};
    QString what = "take back";
    for (const auto& [key, difference] : record.occurrences)
        what += QStringLiteral(" the event %1: %2 -> %3")
                    .arg(key.second, model::shown(difference.after.value_or(Values())),
                         model::shown(difference.before.value_or(Values())));
    world_.note(what);
    const auto before = events_;
    const Code expected = takenBackInModel(record);
    const auto answer = world_.driver.revert(record.result);
    if (codeOf(answer) != expected)
        return QStringLiteral("answered %1 in place of %2")
            .arg(shownCode(codeOf(answer)), shownCode(expected));
    world_.log.last() += " (" + shownCode(expected) + ")";
    if (!answer)
        return {};
    Record reverse{.isWhole = record.isWhole};
    for (const auto& [key, difference] : record.occurrences) {
        const bool isEvent = record.isWhole || key.second.isEmpty();
        if (isEvent && !difference.after)
            identifiers_.insert(key.first);
        else if (isEvent && !difference.before)
            identifiers_.erase(key.first);
        const auto was = before.find(key);
        const auto is = events_.find(key);
        reverse.occurrences[key] = {was == before.end() ? std::nullopt : std::optional(was->second),
                                    is == events_.end() ? std::nullopt : std::optional(is->second)};
    }
    keep(*answer, std::move(reverse));
    identifierBecame(record.result.calendarItemIdentifier, answer->calendarItemIdentifier);
    return {};
}

void ModelEvents::identifierBecame(const QString& former, const QString& identifier) {
    if (former == identifier)
        return;
    const auto rename = [&](auto& byKey) {
        for (auto each = byKey.lower_bound({former, {}}); each != byKey.end() && each->first.first == former;
             each = byKey.lower_bound({former, {}})) {
            auto renamed = byKey.extract(each);
            renamed.key().first = identifier;
            byKey.insert(std::move(renamed));
        }
    };
    rename(events_);
    if (identifiers_.erase(former) > 0)
        identifiers_.insert(identifier);
    if (const auto count = exclusions_.extract(former))
        exclusions_[identifier] = count.mapped();
    for (Record& record : records_) {
        rename(record.occurrences);
        if (record.result.calendarItemIdentifier == former)
            record.result.calendarItemIdentifier = identifier;
    }
    // Who still has it in hand by another name finds it no more.
    if (inHand_.key.first == former)
        inHand_ = {};
}

QString ModelEvents::removeSeries(const QString& identifier) {
    for (const EKEventRef& event : shown()) {
        if (event->data.calendarItemIdentifier != identifier)
            continue;
        if (QString failure = remove({event, keyOf(event->data)}); !failure.isEmpty())
            return failure;
    }
    return {};
}

QString ModelEvents::takeWith(const Step& step, const InHand& hand) {
    if (!hand.event)
        return {};
    if (step.kind == Kind::removeEvent)
        return remove(hand);
    if (step.kind == Kind::removeSeries)
        return removeSeries(hand.key.first);
    if (step.kind == Kind::moveEvent)
        hand.event->data.calendarIdentifier = oneOf(world_.calendars, step.value);
    change(hand.event->data, step.property, step.value);
    return save(hand);
}

void ModelEvents::takeByOthers(const Step& step) {
    if (events_.empty())
        return;
    auto found = events_.begin();
    std::advance(found, step.which % events_.size());
    const bool removes = step.kind == Kind::othersRemoveEvent;
    world_.note(
        QStringLiteral("others %1 the event %2").arg(removes ? "remove" : "change", found->first.second));
    const bool isDone = world_.others.changeEvent(
        [&](const EKEventData& data) { return keyOf(data) == found->first; },
        [&](EKEventData& data) {
            if (removes)
                return false;
            const Values before = world_.valuesOf(data);
            change(data, step.property, step.value);
            data.isDetached = data.isDetached || (data.occurrenceDate && world_.valuesOf(data) != before);
            found->second = world_.valuesOf(data);
            return true;
        });
    if (isDone && removes) {
        if (found->first.second.isEmpty())
            identifiers_.erase(found->first.first);
        else
            ++exclusions_[found->first.first];
        events_.erase(found);
    }
    world_.isUnsettled = true;
}

QString ModelEvents::take(const Step& step) {
    switch (step.kind) {
    case Kind::addEvent:
        add(step);
        return {};
    case Kind::takeBackEvent:
        return takeBack(step.which);
    case Kind::takeEvent:
        inHand_ = pick(step.which);
        return {};
    case Kind::saveEventInHand:
        if (!inHand_.event)
            return {};
        change(inHand_.event->data, step.property, step.value);
        return save(inHand_);
    default:
        return takeWith(step, pick(step.which));
    }
}

}  // namespace kestrant::model
