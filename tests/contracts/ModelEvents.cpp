#include "ModelEvents.h"

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
    const EKEventRef event = world_.driver.add(data);
    for (int i = 0; i < (data.recurrenceRules.empty() ? 1 : 4); ++i) {
        EKEventData occurrence = event->data;
        const QDate day = paris.dayOf(data.startDate).addDays(i);
        occurrence.startDate = at("Europe/Paris", day, {9, 0});
        occurrence.endDate = at("Europe/Paris", day, {10, 0});
        if (!data.recurrenceRules.empty())
            occurrence.occurrenceDate = occurrence.startDate;
        events_[keyOf(occurrence)] = world_.valuesOf(occurrence);
    }
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
        if (leaves) {
            events_.erase(found);
            events_[{answer->calendarItemIdentifier, {}}] = without(*wanted, "detached");
        } else {
            found->second = *wanted;
            if (isOccurrence)
                found->second["detached"] = "yes";
        }
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
    events_.erase(hand.key);
    return {};
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
    if (isDone && removes)
        events_.erase(found);
    world_.isUnsettled = true;
}

QString ModelEvents::take(const Step& step) {
    switch (step.kind) {
    case Kind::addEvent:
        add(step);
        return {};
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
