#include "eventkit/evolution/ServiceText.h"

#include "eventkit/icalendar/ContentLine.h"
#include "eventkit/icalendar/DateValue.h"

#include <QCryptographicHash>

#include <algorithm>
#include <utility>

namespace kestrant::evolution {

using icalendar::Component;
using icalendar::ComponentView;
using icalendar::Document;

namespace {

/// Properties by which the service detects changes on the server.
constexpr QByteArrayView serverVersion("X-EVOLUTION-CALDAV-ETAG");

/// Where such a note is, with its line ends, from a place on; empty where there is none.
QByteArrayView serverVersionAfter(QByteArrayView text, qsizetype from) {
    qsizetype begin = text.indexOf(serverVersion, from);
    while (begin > 0 && text[begin - 1] != '\n')
        begin = text.indexOf(serverVersion, begin + 1);
    if (begin < 0)
        return {};
    qsizetype end = begin;
    do {
        const qsizetype line = text.indexOf('\n', end);
        end = line < 0 ? text.size() : line + 1;
    } while (end < text.size() && (text[end] == ' ' || text[end] == '\t'));
    return text.sliced(begin, end - begin);
}

QByteArray dateOf(ComponentView component) {
    const auto date = component.property("RECURRENCE-ID");
    return date ? date->value : QByteArray();
}

QByteArray dateIn(const QByteArray& text) {
    const auto component = Component::parse(text, "\r\n");
    return component ? dateOf(component->view()) : QByteArray();
}

const ServicePart* findDate(const std::vector<ServicePart>& parts, const QByteArray& date) {
    const auto found =
        std::find_if(parts.begin(), parts.end(), [&](const ServicePart& part) { return part.date == date; });
    return found == parts.end() ? nullptr : &*found;
}

}  // namespace

std::vector<ServicePart> partsOf(const Document& document, QByteArrayView name) {
    std::vector<ServicePart> result;
    for (const ComponentView& component : document.components(name))
        result.push_back({dateOf(component), component.text()});
    std::stable_sort(result.begin(), result.end(),
                     [](const ServicePart& a, const ServicePart& b) { return a.date < b.date; });
    return result;
}

items::Version versionOf(const QByteArray& text) {
    const QByteArray hash = QCryptographicHash::hash(text, QCryptographicHash::Md5);
    items::Version result{};
    std::copy(hash.begin(), hash.end(), reinterpret_cast<char*>(result.data()));
    return result;
}

QByteArray uidOf(const QByteArray& component) {
    constexpr QByteArrayView name("\nUID:");
    const qsizetype begin = component.indexOf(name) + name.size();
    const qsizetype end = component.indexOf('\n', begin);
    const qsizetype nested = component.indexOf("\nBEGIN:");
    const auto isFolded = [&] {
        return end + 1 < component.size() && (component[end + 1] == ' ' || component[end + 1] == '\t');
    };
    // Nearly every one can be told without taking the component apart.
    if (begin >= name.size() && end >= 0 && (nested < 0 || begin < nested) && !isFolded()) {
        const QByteArrayView value = QByteArrayView(component).sliced(begin, end - begin).trimmed();
        if (!value.contains('\\'))
            return value.toByteArray();
    }
    const auto parsed = Component::parse(component, "\r\n");
    const auto uid = parsed ? parsed->view().property("UID") : std::nullopt;
    return uid ? icalendar::unescapedText(uid->value.trimmed()).toUtf8() : QByteArray();
}

QByteArray withServerVersionOf(const QByteArray& present, const QByteArray& component) {
    auto result = Component::parse(component, "\r\n");
    const auto known = Component::parse(present, "\r\n");
    if (!result || !known)
        return component;
    if (const auto version = known->view().property(serverVersion))
        result->set(*version, "\r\n");
    else
        result->remove(serverVersion);
    return result->view().text();
}

QByteArray withoutServerVersion(const QByteArray& text) {
    QByteArray result;
    qsizetype from = 0;
    for (auto note = serverVersionAfter(text, 0); !note.isEmpty(); note = serverVersionAfter(text, from)) {
        const qsizetype begin = note.data() - text.constData();
        result.append(QByteArrayView(text).sliced(from, begin - from));
        from = begin + note.size();
    }
    return result.append(QByteArrayView(text).sliced(from));
}

QByteArray yearlyBirthday(QByteArray component) {
    return component.replace("\nRRULE:FREQ=YEARLY;BYMONTHDAY=-1\r",
                             "\nRRULE:FREQ=YEARLY;BYMONTHDAY=-1;BYMONTH=2\r");
}

QByteArray fileOf(std::vector<QByteArray> components, const std::vector<QByteArray>& zones) {
    if (components.size() > 1)
        std::stable_sort(components.begin(), components.end(),
                         [](const QByteArray& a, const QByteArray& b) { return dateIn(a) < dateIn(b); });
    QByteArray result("BEGIN:VCALENDAR\r\nVERSION:2.0\r\n");
    for (const auto* parts : {&zones, &std::as_const(components)}) {
        for (const QByteArray& part : *parts)
            result.append(part);
    }
    return result.append("END:VCALENDAR\r\n");
}

std::set<QByteArray> obscureZones(QByteArrayView components) {
    constexpr QByteArrayView parameter(";TZID=");
    std::set<QByteArray> names;
    for (qsizetype at = components.indexOf(parameter); at >= 0; at = components.indexOf(parameter, at)) {
        at += parameter.size();
        const bool isQuoted = at < components.size() && components[at] == '"';
        qsizetype end = at + (isQuoted ? 1 : 0);
        while (end < components.size() && components[end] != '\n' &&
               (isQuoted ? components[end] != '"' : components[end] != ':' && components[end] != ';'))
            ++end;
        names.insert(components.sliced(at, end - at).toByteArray().replace("\"", ""));
        at = end;
    }
    static const Document nothing = Document::make();
    std::erase_if(names,
                  [](const QByteArray& name) { return icalendar::zoneNamed(name, nothing).has_value(); });
    return names;
}

ServiceChange changeBetween(const Document& before, const Document& after, QByteArrayView name) {
    ServiceChange result;
    const auto present = partsOf(before, name);
    const auto wanted = partsOf(after, name);
    std::copy_if(present.begin(), present.end(), std::back_inserter(result.removed),
                 [&](const ServicePart& part) { return !findDate(wanted, part.date); });
    for (const ServicePart& part : wanted) {
        const ServicePart* const old = findDate(present, part.date);
        ServicePart written = part;
        if (old)
            written.text = withServerVersionOf(old->text, part.text);
        else if (!present.empty())
            written.text = withServerVersionOf(present.front().text, part.text);
        // The service leaves out each date that is removed; the series then says by itself which ones it
        // lacks.
        const bool isSeriesOfRemoved = part.date.isEmpty() && !result.removed.empty();
        if (!old || old->text != written.text || isSeriesOfRemoved)
            result.written.push_back(std::move(written));
    }
    std::vector<QByteArray> known;
    for (const ComponentView& zone : before.components("VTIMEZONE"))
        known.push_back(zone.text());
    for (const ComponentView& zone : after.components("VTIMEZONE")) {
        if (QByteArray text = zone.text(); std::find(known.begin(), known.end(), text) == known.end())
            result.zones.push_back(std::move(text));
    }
    return result;
}

}  // namespace kestrant::evolution
