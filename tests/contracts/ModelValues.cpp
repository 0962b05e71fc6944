#include "ModelValues.h"

#include "foundation/DateComponents.h"
#include "foundation/TimeZone.h"

#include <algorithm>
#include <array>

namespace kestrant::model {
namespace {

using namespace std::chrono_literals;

constexpr std::array properties{"title", "notes", "location", "url",       "priority", "flag",
                                "due",   "alarm", "rule",     "completed", "list"};

Instant instantOf(const QString& text) {
    return paris.instantAt(QDate::fromString(text.left(10), Qt::ISODate),
                           QTime::fromString(text.mid(11), "HH:mm"));
}

void changeDue(EKReminderData& data, unsigned value) {
    const QDate day = today.addDays(static_cast<int>(value % 20) - 10);
    if (value % 7 == 6)
        data.dueDateComponents.reset();
    else if (value % 2 == 0)
        data.dueDateComponents = DateComponents::fromDate(day);
    else
        data.dueDateComponents = DateComponents::fromDateTime(day, {2, 30}, TimeZone::named("Europe/Paris"));
}

/// An alarm that rings at the same moment already stays the one that it is.
void changeAlarm(EKReminderData& data, unsigned value) {
    const Instant at = morning + value % 5 * 24h;
    if (value % 3 == 2)
        data.alarms.clear();
    else if (data.alarms.empty() || data.alarms.front().absoluteDate != at)
        data.alarms = {EKAlarm::at(at)};
}

void changeRule(EKReminderData& data, unsigned value) {
    data.recurrenceRules.clear();
    if (value % 4 == 3)
        return;
    data.recurrenceRules = {EKRecurrenceRule::parse(value % 2 ? "FREQ=DAILY" : "FREQ=WEEKLY")};
    if (!data.dueDateComponents)
        data.dueDateComponents = DateComponents::fromDate(today);
}

}  // namespace

QString textOf(Instant instant, const char* timeFormat) {
    return paris.dayOf(instant).toString(Qt::ISODate) + ' ' + paris.timeOf(instant).toString(timeFormat);
}
Values without(Values values, const char* property) {
    values.erase(property);
    return values;
}

QString shown(const Values& values) {
    QStringList result;
    for (const auto& [property, value] : values)
        result.append(property + '=' + value);
    return '{' + result.join(", ").replace('\n', "\\n") + '}';
}

QString valueOf(const Values& values, const char* property) {
    const auto found = values.find(property);
    return found == values.end() ? QString() : found->second;
}

QString shownCode(const Code& code) {
    if (!code)
        return "done";
    switch (*code) {
    case EKError::Code::conflict:
        return "conflict";
    case EKError::Code::itemNotFound:
        return "not found";
    default:
        return QStringLiteral("error %1").arg(static_cast<int>(*code));
    }
}
EventKey keyOf(const EKEventData& data) {
    return {data.calendarItemIdentifier, data.occurrenceDate ? textOf(*data.occurrenceDate) : QString()};
}

std::optional<Values> merged(const Values& base, const Values& edited, Values current) {
    Values keys = base;
    keys.insert(edited.begin(), edited.end());
    const auto value = [](const Values& values, const QString& key) {
        const auto found = values.find(key);
        return found == values.end() ? QString() : found->second;
    };
    for (const auto& [key, ignored] : keys) {
        const QString wanted = value(edited, key);
        const QString read = value(base, key);
        const QString present = value(current, key);
        if (wanted == read)
            continue;
        if (present != read && present != wanted)
            return std::nullopt;
        if (wanted.isEmpty())
            current.erase(key);
        else
            current[key] = wanted;
    }
    return current;
}

std::optional<Values> completed(Values& values) {
    if (!values.contains("rule") || !values.contains("due"))
        return std::nullopt;
    const int interval = values["rule"].contains("DAILY") ? 1 : 7;
    const QDate from = QDate::fromString(values["due"].left(10), Qt::ISODate);
    QDate next = from.addDays(interval);
    while (from < today && next < today)
        next = next.addDays(interval);
    Values copy = without(without(values, "rule"), "alarm");
    values["due"].replace(0, 10, next.toString(Qt::ISODate));
    if (values.contains("alarm")) {
        const Instant alarm = instantOf(values["alarm"]);
        values["alarm"] =
            textOf(paris.instantAt(paris.dayOf(alarm).addDays(from.daysTo(next)), paris.timeOf(alarm)));
    }
    values.erase("completed");
    values.erase("completed at");
    return copy;
}

void change(EKReminderData& data, unsigned property, unsigned value) {
    static const std::vector<QString> texts{"milk", "pain; \"bio\", 日本\\语", "two\nlines", "two  spaces",
                                            QString(75, 'x')};
    const auto setText = [&](CompactOptional<QString>& text) {
        if (value % 4 == 3)
            text.reset();
        else
            text = oneOf(texts, value);
    };
    const QString name = properties[property % (properties.size() - 2)];
    if (name == "title")
        data.title = oneOf(texts, value);
    else if (name == "notes")
        setText(data.notes);
    else if (name == "location")
        setText(data.location);
    else if (name == "url")
        data.url = QStringLiteral("https://example.org/?a=%1,c;d").arg(value % 3);
    else if (name == "priority")
        data.priority = static_cast<int>(value % 10);
    else if (name == "flag")
        data.isFlagged = !data.isFlagged;
    else if (name == "due")
        changeDue(data, value);
    else if (name == "alarm")
        changeAlarm(data, value);
    else
        changeRule(data, value);
}

void change(EKEventData& data, unsigned property, unsigned value) {
    if (property % 3 == 0) {
        data.title = QStringLiteral("event %1").arg(value % 5);
    } else if (property % 3 == 1) {
        data.notes = QStringLiteral("notes\n%1").arg(value % 5);
    } else {
        data.startDate += (value % 5) * 1h;
        data.endDate += (value % 5 + value % 2) * 1h;
    }
}

Values World::valuesOf(const EKReminderData& data) const {
    Values values{{"title", data.title},
                  {"priority", QString::number(data.priority)},
                  {"list", QString::number(std::find(lists.begin(), lists.end(), data.calendarIdentifier) -
                                           lists.begin())}};
    const auto noteValue = [&](const char* property, const QString& value) {
        if (!value.isEmpty())
            values[property] = value;
    };
    noteValue("notes", data.notes.value_or(QString()));
    noteValue("location", data.location.value_or(QString()));
    noteValue("url", data.url.value_or(QString()));
    noteValue("flag", data.isFlagged ? "yes" : "");
    noteValue("completed", data.isCompleted ? "yes" : "");
    if (data.completionDate)
        noteValue("completed at", textOf(*data.completionDate, "HH:mm:ss"));
    if (const auto& due = data.dueDateComponents)
        noteValue("due", due->date().toString(Qt::ISODate) +
                             (due->includesTime() ? due->time().toString(" HH:mm") : QString()));
    if (!data.alarms.empty())
        noteValue("alarm", textOf(data.alarms.front().absoluteDate.value_or(Instant{})));
    if (!data.recurrenceRules.empty())
        noteValue("rule", data.recurrenceRules.front().text);
    return values;
}

Values World::valuesOf(const EKEventData& data) const {
    Values values{
        {"title", data.title},
        {"time", textOf(data.startDate) + " to " + textOf(data.endDate)},
        {"calendar", QString::number(std::find(calendars.begin(), calendars.end(), data.calendarIdentifier) -
                                     calendars.begin())}};
    if (data.notes)
        values["notes"] = *data.notes;
    if (data.isDetached)
        values["detached"] = "yes";
    return values;
}

}  // namespace kestrant::model
