#include "eventkit/icalendar/AlarmText.h"

#include "eventkit/icalendar/DateValue.h"

#include <algorithm>
#include <array>

namespace kestrant::icalendar {
namespace {

/// Stands for "no date" in the alarms of several programs.
constexpr QByteArrayView placeholderTrigger("19760401T005545Z");

EKAlarmProximity readProximity(ComponentView alarm) {
    for (const QByteArrayView name : {QByteArrayView("X-APPLE-PROXIMITY"), QByteArrayView("PROXIMITY")}) {
        if (const auto property = alarm.property(name)) {
            const QByteArray value = property->value.trimmed().toUpper();
            return value == "DEPART" || value == "DISCONNECT" ? EKAlarmProximity::leave
                                                              : EKAlarmProximity::enter;
        }
    }
    return EKAlarmProximity::none;
}

std::optional<double> number(QByteArrayView text) {
    bool ok = false;
    const double value = text.trimmed().toByteArray().toDouble(&ok);
    return ok ? std::optional(value) : std::nullopt;
}

/// Reads "geo:48.85,2.35;u=100" (RFC 5870).
void readGeoUri(QByteArrayView uri, EKStructuredLocation& location) {
    if (uri.size() < 4 || uri.first(4).compare("geo:", Qt::CaseInsensitive) != 0)
        return;
    const QByteArrayList parts = uri.sliced(4).toByteArray().split(';');
    const QByteArrayList coordinates = parts.front().split(',');
    if (coordinates.size() >= 2) {
        location.latitude = number(coordinates[0]);
        location.longitude = number(coordinates[1]);
    }
    for (const QByteArray& part : parts) {
        if (part.startsWith("u=") && !location.radius)
            location.radius = number(part.sliced(2));
    }
}

std::optional<EKStructuredLocation> readLocation(ComponentView alarm) {
    if (const auto property = alarm.property("X-APPLE-STRUCTURED-LOCATION")) {
        EKStructuredLocation location;
        location.title = unescapedText(property->parameter("X-TITLE").value_or(QByteArray()));
        if (const auto radius = property->parameter("X-APPLE-RADIUS"))
            location.radius = number(*radius);
        readGeoUri(property->value, location);
        return location;
    }
    const auto places = alarm.components("VLOCATION");
    if (places.empty())
        return std::nullopt;
    EKStructuredLocation location;
    if (const auto name = places.front().property("NAME"))
        location.title = unescapedText(name->value);
    if (const auto url = places.front().property("URL"))
        readGeoUri(url->value, location);
    return location;
}

Component newAlarm(const EKAlarm& alarm, const QString& title, QByteArrayView lineEnd) {
    Component component("VALARM", lineEnd.toByteArray());
    if (!alarm.identifier.isEmpty())
        component.append(Property{"UID", {}, alarm.identifier}, lineEnd);
    component.append(Property{"ACTION", {}, "DISPLAY"}, lineEnd);
    component.append(Property{"DESCRIPTION", {}, escapedText(title)}, lineEnd);
    if (alarm.relativeOffset) {
        const auto offset = std::chrono::floor<std::chrono::seconds>(*alarm.relativeOffset).count();
        component.append(
            Property{"TRIGGER", {{"RELATED", alarm.followsStart ? "START" : "END"}}, durationText(offset)},
            lineEnd);
    } else {
        const bool rings = alarm.absoluteDate && !alarm.structuredLocation;
        component.append(Property{"TRIGGER",
                                  {{"VALUE", "DATE-TIME"}},
                                  rings ? utcText(*alarm.absoluteDate) : placeholderTrigger.toByteArray()},
                         lineEnd);
    }
    if (alarm.acknowledgedDate)
        component.append(Property{"ACKNOWLEDGED", {}, utcText(*alarm.acknowledgedDate)}, lineEnd);
    if (!alarm.snoozedAlarm.isEmpty())
        component.append(Property{"RELATED-TO", {{"RELTYPE", "SNOOZE"}}, alarm.snoozedAlarm}, lineEnd);
    if (const auto& place = alarm.structuredLocation) {
        const bool leaves = alarm.proximity == EKAlarmProximity::leave;
        component.append(Property{"X-APPLE-PROXIMITY", {}, leaves ? "DEPART" : "ARRIVE"}, lineEnd);
        Property location{"X-APPLE-STRUCTURED-LOCATION", {{"VALUE", "URI"}}, "geo:"};
        if (place->radius)
            location.parameters.push_back({"X-APPLE-RADIUS", QByteArray::number(*place->radius, 'g', 10)});
        QString name = place->title;
        name.remove(QLatin1Char('"')).replace(QLatin1Char('\n'), QLatin1Char(' '));
        location.parameters.push_back({"X-TITLE", name.toUtf8()});
        if (place->latitude && place->longitude)
            location.value += QByteArray::number(*place->latitude, 'f', 6) + ',' +
                              QByteArray::number(*place->longitude, 'f', 6);
        component.append(location, lineEnd);
    }
    return component;
}

}  // namespace

EKAlarm readAlarm(ComponentView alarm, const Document& document, const TimeZone& local) {
    EKAlarm result;
    result.sourceText = alarm.text();
    if (const auto uid = alarm.property("UID"))
        result.identifier = uid->value.trimmed();
    result.acknowledgedDate = readInstant(alarm.property("ACKNOWLEDGED"), document, local);
    for (const Property& relation : alarm.properties("RELATED-TO")) {
        if (relation.parameter("RELTYPE").value_or(QByteArray()).toUpper() == "SNOOZE")
            result.snoozedAlarm = relation.value.trimmed();
    }
    result.proximity = readProximity(alarm);
    result.structuredLocation = readLocation(alarm);
    if (result.proximity != EKAlarmProximity::none && !result.structuredLocation)
        result.structuredLocation.emplace();
    const auto action = alarm.property("ACTION");
    const bool showsMessage = !action || action->value.trimmed().toUpper() == "DISPLAY";
    const auto trigger = alarm.property("TRIGGER");
    if (!trigger || !showsMessage || result.structuredLocation ||
        trigger->value.trimmed() == placeholderTrigger)
        return result;
    if (const auto duration = readDuration(trigger->value)) {
        result.relativeOffset = std::chrono::days(duration->days) + std::chrono::seconds(duration->seconds);
        result.relativeDays = duration->days;
        result.followsStart = trigger->parameter("RELATED").value_or(QByteArray()).toUpper() != "END";
    } else {
        result.absoluteDate = readInstant(trigger, document, local);
    }
    return result;
}

void writeAlarms(Component& item, const std::vector<EKAlarm>& alarms, const QString& title,
                 const Document& document, const TimeZone& local) {
    const QByteArrayView lineEnd = document.lineEnd();
    std::vector<Component> wanted;
    for (const EKAlarm& alarm : alarms) {
        auto component = Component::parse(alarm.sourceText, lineEnd);
        if (!component) {
            wanted.push_back(newAlarm(alarm, title, lineEnd));
            continue;
        }
        const EKAlarm present = readAlarm(component->view(), document, local);
        if (alarm.absoluteDate && !alarm.relativeOffset && alarm.absoluteDate != present.absoluteDate)
            component->set(Property{"TRIGGER", {{"VALUE", "DATE-TIME"}}, utcText(*alarm.absoluteDate)},
                           lineEnd);
        if (alarm.identifier != present.identifier)
            component->set(Property{"UID", {}, alarm.identifier}, lineEnd);
        if (alarm.acknowledgedDate && alarm.acknowledgedDate != present.acknowledgedDate)
            component->set(Property{"ACKNOWLEDGED", {}, utcText(*alarm.acknowledgedDate)}, lineEnd);
        wanted.push_back(std::move(*component));
    }
    item.removeComponents("VALARM", [](const ComponentView&) { return true; });
    for (const Component& component : wanted)
        item.append(component);
}

}  // namespace kestrant::icalendar
