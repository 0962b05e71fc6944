#include "ModelHouses.h"

#include <QStringList>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>
#include <random>

// Random sequences of changes by the person and by other programs on the same data, compared with a model
// after each step and with a fresh read of the data. A failing sequence is shrunk and printed.
//
// KESTRANT_MODEL_RUNS=500 makes that many runs of 60 steps for each database, beginning with the seed
// KESTRANT_MODEL_SEED (1 when absent); without it there are a few short ones.

namespace kestrant {
namespace {

using namespace std::chrono_literals;

/// What is seen of an item, by property; a property without a value is absent.
using Values = std::map<QString, QString>;

const ZoneCalendar paris{*TimeZone::named("Europe/Paris")};
const QDate today{2026, 3, 27};
constexpr std::array properties{"title", "notes", "location", "url",       "priority", "flag",
                                "due",   "alarm", "rule",     "completed", "list"};

template <typename T>
const T& oneOf(const std::vector<T>& values, unsigned choice) {
    return values[choice % values.size()];
}

QString textOf(Instant instant, const char* timeFormat = "HH:mm") {
    return paris.dayOf(instant).toString(Qt::ISODate) + ' ' + paris.timeOf(instant).toString(timeFormat);
}
Instant instantOf(const QString& text) {
    return paris.instantAt(QDate::fromString(text.left(10), Qt::ISODate),
                           QTime::fromString(text.mid(11), "HH:mm"));
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

/// An item of the model.
struct Item {
    QString identifier;
    Values values;
};

/// What a change did to one item, for taking it back. Without `before` it was made, without `after` removed.
struct ItemRecord {
    int number;
    /// What the item was called then.
    QString identifier;
    std::optional<Values> before;
    std::optional<Values> after;
};
struct Record {
    EKSaveResult result;
    std::vector<ItemRecord> items;
};

/// The property-by-property merge of an edit with what is there now; absent where both changed the same.
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

enum class Kind {
    add,
    edit,
    complete,
    remove,
    move,
    take,
    editInHand,
    saveInHand,
    saveMany,
    takeBack,
    othersChange,
    othersRemove,
    othersAdd,
    othersTouch,
    othersMove,
    othersNote,
    addEvent,
    editEvent,
    moveEvent,
    removeEvent,
    removeSeries,
    takeEvent,
    saveEventInHand,
    othersChangeEvent,
    othersRemoveEvent,
};
constexpr int kinds = static_cast<int>(Kind::othersRemoveEvent) + 1;

/// A step; the numbers choose among what there is when it is taken.
struct Step {
    Kind kind;
    unsigned which;
    unsigned property;
    unsigned value;
    /// The next step comes before the change is noticed.
    bool isUnnoticed;
};

std::vector<Step> stepsOf(unsigned seed, std::size_t count) {
    std::mt19937 random(seed);
    // Not a distribution, whose numbers differ between libraries.
    const auto below = [&](unsigned limit) { return static_cast<unsigned>(random() % limit); };
    std::vector<Step> result;
    for (std::size_t i = 0; i < count; ++i) {
        // An empty database shows little: it begins with some items.
        const auto kind = i < 3 ? Kind::add : i == 3 ? Kind::addEvent : static_cast<Kind>(below(kinds));
        result.push_back({kind, below(1000), below(1000), below(1000), below(3) == 0});
    }
    return result;
}

/// One sequence of steps on one database and on the model.
template <typename House>
class Run {
  public:
    /// What went wrong, or an empty text.
    QString of(const std::vector<Step>& steps) {
        if (driver_.requestAccess())
            return "no access";
        for (const char* title : {"A", "B"}) {
            lists_.push_back(driver_.addList(title));
            calendars_.push_back(
                driver_.saveCalendar({.title = title, .allowsReminders = false, .allowsEvents = true})
                    ->calendarIdentifier);
        }
        for (std::size_t i = 0; i < steps.size(); ++i) {
            QString failure = take(steps[i]);
            const bool isLast = i + 1 == steps.size();
            if (failure.isEmpty() && (isLast || !steps[i].isUnnoticed || !isUnsettled_))
                failure = settle();
            if (failure.isEmpty() && (isLast || others_.readsFast))
                failure = compareWithFreshRead();
            if (!failure.isEmpty()) {
                length_ = i + 1;
                return failure;
            }
        }
        return {};
    }
    [[nodiscard]] QString log() const { return log_.join("\n"); }
    /// How many steps were taken until it went wrong.
    [[nodiscard]] std::size_t length() const { return length_; }

  private:
    struct InHand {
        EKReminderRef reminder;
        int number;
    };
    /// An occurrence of the model: its event's identifier, and the start the rule gives it.
    using EventKey = std::pair<QString, QString>;
    struct EventInHand {
        EKEventRef event;
        EventKey key;
    };
    using Code = std::optional<EKError::Code>;

    // What is seen of an item.

    [[nodiscard]] Values valuesOf(const EKReminderData& data) const {
        Values values{
            {"title", data.title},
            {"priority", QString::number(data.priority)},
            {"list", QString::number(std::find(lists_.begin(), lists_.end(), data.calendarIdentifier) -
                                     lists_.begin())}};
        const auto note = [&](const char* property, const QString& value) {
            if (!value.isEmpty())
                values[property] = value;
        };
        note("notes", data.notes.value_or(QString()));
        note("location", data.location.value_or(QString()));
        note("url", data.url.value_or(QString()));
        note("flag", data.isFlagged ? "yes" : "");
        note("completed", data.isCompleted ? "yes" : "");
        if (data.completionDate)
            note("completed at", textOf(*data.completionDate, "HH:mm:ss"));
        if (const auto& due = data.dueDateComponents)
            note("due", due->date().toString(Qt::ISODate) +
                            (due->includesTime() ? due->time().toString(" HH:mm") : QString()));
        if (!data.alarms.empty())
            note("alarm", textOf(data.alarms.front().absoluteDate.value_or(Instant{})));
        if (!data.recurrenceRules.empty())
            note("rule", data.recurrenceRules.front().text);
        return values;
    }
    [[nodiscard]] Values valuesOf(const EKEventData& data) const {
        Values values{{"title", data.title},
                      {"time", textOf(data.startDate) + " to " + textOf(data.endDate)},
                      {"calendar", QString::number(std::find(calendars_.begin(), calendars_.end(),
                                                             data.calendarIdentifier) -
                                                   calendars_.begin())}};
        if (data.notes)
            values["notes"] = *data.notes;
        if (data.isDetached)
            values["detached"] = "yes";
        return values;
    }
    [[nodiscard]] static EventKey keyOf(const EKEventData& data) {
        return {data.calendarItemIdentifier, data.occurrenceDate ? textOf(*data.occurrenceDate) : QString()};
    }

    // Changes of values.

    /// Gives a property another value, or takes it away.
    void change(EKReminderData& data, unsigned property, unsigned value) const {
        static const std::vector<QString> texts{"milk", "pain; \"bio\", 日本\\语", "two\nlines",
                                                "two  spaces", QString(75, 'x')};
        const auto setText = [&](Rare<QString>& text) {
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
            data.alarms =
                value % 3 == 2 ? std::vector<EKAlarm>() : std::vector{EKAlarm::at(morning + value % 5 * 24h)};
        else
            changeRule(data, value);
    }
    static void changeDue(EKReminderData& data, unsigned value) {
        const QDate day = today.addDays(static_cast<int>(value % 20) - 10);
        if (value % 7 == 6)
            data.dueDateComponents.reset();
        else if (value % 2 == 0)
            data.dueDateComponents = DateComponents::fromDate(day);
        else
            data.dueDateComponents =
                DateComponents::fromDateTime(day, {2, 30}, TimeZone::named("Europe/Paris"));
    }
    static void changeRule(EKReminderData& data, unsigned value) {
        data.recurrenceRules.clear();
        if (value % 4 == 3)
            return;
        data.recurrenceRules = {EKRecurrenceRule::parse(value % 2 ? "FREQ=DAILY" : "FREQ=WEEKLY")};
        if (!data.dueDateComponents)
            data.dueDateComponents = DateComponents::fromDate(today);
    }

    /// Carries a completion out: a series goes on, and the copy of what was completed is returned.
    static std::optional<Values> completed(Values& values) {
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

    // The person's changes of reminders.

    /// What saving has to come to: the model's values change, or the reason why not.
    Code savedInModel(int number, const Values& base, const Values& edited, Record& record,
                      std::optional<Values>& copy) {
        const auto found = items_.find(number);
        if (found == items_.end())
            return EKError::Code::itemNotFound;
        Values& current = found->second.values;
        auto wanted = merged(base, edited, current);
        const bool completes = edited.contains("completed") && !base.contains("completed");
        if (!wanted || (completes && base.contains("rule") && !current.contains("completed") &&
                        valueOf(current, "due") != valueOf(base, "due")))
            return EKError::Code::conflict;
        if (!wanted->contains("completed"))
            wanted->erase("completed at");
        else if (!current.contains("completed") && !wanted->contains("completed at"))
            (*wanted)["completed at"] = textOf(house_.scheduler.now(), "HH:mm:ss");
        if (!current.contains("completed") && wanted->contains("completed"))
            copy = completed(*wanted);
        if (*wanted != current)
            record.items.push_back({number, found->second.identifier, current, wanted});
        current = *wanted;
        return std::nullopt;
    }
    [[nodiscard]] static QString valueOf(const Values& values, const char* property) {
        const auto found = values.find(property);
        return found == values.end() ? QString() : found->second;
    }
    /// Compares what the database answered to a save with what the model says.
    QString judge(const InHand& hand, const Values& base, const Values& edited,
                  const EventStoreDriver::SaveAnswer& answer) {
        Record record;
        std::optional<Values> copy;
        const auto before = items_;
        const Code expected = savedInModel(hand.number, base, edited, record, copy);
        const Code given = codeOf(answer);
        if (given != expected) {
            // Where an item went to that others have moved is not known before that is noticed.
            if (!expected && given == EKError::Code::itemNotFound && isMovedUnnoticed(hand.number)) {
                items_ = before;
                log_.last() += " (not found)";
                return {};
            }
            return QStringLiteral("answered %1 in place of %2").arg(shownCode(given), shownCode(expected));
        }
        log_.last() += " (" + shownCode(given) + ")";
        if (!answer)
            return {};
        if (answer->completedCopyIdentifier.has_value() != copy.has_value())
            return "a copy more or less than expected";
        items_[hand.number].identifier = answer->calendarItemIdentifier;
        if (copy) {
            const int number = addToModel(*answer->completedCopyIdentifier, *copy);
            record.items.push_back({number, *answer->completedCopyIdentifier, std::nullopt, copy});
        }
        if (const Values inHand = valuesOf(hand.reminder->data); inHand != items_[hand.number].values)
            return "in hand after saving: " + shown(inHand) + "; expected " +
                   shown(items_[hand.number].values);
        keep(*answer, std::move(record));
        return {};
    }
    void keep(const EKSaveResult& result, Record record) {
        if (!result.change || record.items.empty())
            return;
        record.result = result;
        records_.push_back(std::move(record));
    }
    int addToModel(const QString& identifier, const Values& values) {
        items_[nextNumber_] = {identifier, values};
        return nextNumber_++;
    }
    [[nodiscard]] bool isMovedUnnoticed(int number) const {
        return isUnsettled_ && std::find(moved_.begin(), moved_.end(), number) != moved_.end();
    }
    /// An item of the model that the store shows; empty where there is none.
    InHand pick(unsigned which) {
        if (items_.empty())
            return {};
        auto found = items_.begin();
        std::advance(found, which % items_.size());
        return {house_.store.calendarItem(found->second.identifier), found->first};
    }
    QString save(const InHand& hand) {
        const Values base = valuesOf(*hand.reminder->stored());
        const Values edited = valuesOf(hand.reminder->data);
        note(QStringLiteral("save %1: %2 -> %3").arg(hand.number).arg(shown(base), shown(edited)));
        return judge(hand, base, edited, driver_.save(hand.reminder));
    }
    QString saveMany(const Step& step) {
        std::vector<InHand> hands;
        std::vector<EKReminderRef> reminders;
        std::vector<std::pair<Values, Values>> edits;
        for (unsigned i = 0; i < 2 + step.value % 3; ++i) {
            const InHand hand = pick(step.which + i * (step.value % 2));
            if (!hand.reminder)
                continue;
            if ((step.value + i) % 5 == 4)
                hand.reminder->data.isCompleted = !hand.reminder->data.isCompleted;
            else
                change(hand.reminder->data, step.property + i, step.value + i);
            hands.push_back(hand);
            reminders.push_back(hand.reminder);
            edits.emplace_back(valuesOf(*hand.reminder->stored()), valuesOf(hand.reminder->data));
        }
        note("save together:");
        const auto answers = driver_.saveAll(reminders);
        for (std::size_t i = 0; i < hands.size(); ++i) {
            note(QStringLiteral("  %1: %2 -> %3")
                     .arg(hands[i].number)
                     .arg(shown(edits[i].first), shown(edits[i].second)));
            // The first of two edits of one reminder does not know what the second made of it.
            const bool isLast =
                std::none_of(hands.begin() + static_cast<std::ptrdiff_t>(i) + 1, hands.end(),
                             [&](const InHand& other) { return other.number == hands[i].number; });
            QString failure = judge(hands[i], edits[i].first, edits[i].second, answers[i]);
            if (!failure.isEmpty() && (isLast || !failure.startsWith("in hand")))
                return failure;
        }
        return {};
    }
    QString remove(const InHand& hand) {
        note(QStringLiteral("remove %1").arg(hand.number));
        const auto answer = driver_.remove(hand.reminder);
        const auto found = items_.find(hand.number);
        const Code expected = found == items_.end() ? Code(EKError::Code::itemNotFound) : std::nullopt;
        if (codeOf(answer) != expected) {
            if (codeOf(answer) == EKError::Code::itemNotFound && isMovedUnnoticed(hand.number))
                return {};
            return QStringLiteral("answered %1 in place of %2")
                .arg(shownCode(codeOf(answer)), shownCode(expected));
        }
        if (!answer)
            return {};
        keep(*answer, {{}, {{hand.number, found->second.identifier, found->second.values, std::nullopt}}});
        items_.erase(found);
        return {};
    }

    /// What taking back has to come to.
    Code takenBackInModel(const Record& record, Record& reverse) {
        auto items = items_;
        for (const ItemRecord& each : record.items) {
            const bool isCopy = &each != &record.items.front();
            const auto found = items.find(each.number);
            if (each.after &&
                (found == items.end() || (isCopy && found->second.identifier != each.identifier))) {
                if (isCopy)
                    continue;
                return EKError::Code::itemNotFound;
            }
            if (!each.after) {
                items[each.number] = {each.identifier, *each.before};
                reverse.items.push_back({each.number, each.identifier, std::nullopt, each.before});
            } else if (!each.before) {
                // Flags are marks of programs rather than something that was said.
                if (without(*each.after, "flag") != without(found->second.values, "flag"))
                    return EKError::Code::conflict;
                reverse.items.push_back(
                    {each.number, found->second.identifier, found->second.values, std::nullopt});
                items.erase(found);
            } else {
                const auto restored = merged(*each.after, *each.before, found->second.values);
                if (!restored)
                    return EKError::Code::conflict;
                reverse.items.push_back(
                    {each.number, found->second.identifier, found->second.values, restored});
                found->second.values = *restored;
            }
        }
        items_ = std::move(items);
        return std::nullopt;
    }
    /// Whether taking a move back would find the item in the list it came from; that may be refused.
    [[nodiscard]] static bool isInPlaceAlready(const ItemRecord& record, const std::map<int, Item>& items) {
        const auto found = items.find(record.number);
        return record.before && record.after && found != items.end() &&
               record.before->at("list") != record.after->at("list") &&
               record.before->at("list") == found->second.values.at("list");
    }
    QString takeBack(unsigned which) {
        if (records_.empty())
            return {};
        // Mostly the latest one, as a person does.
        const std::size_t position = records_.size() - 1 - (which % 3 ? 0 : which / 3 % records_.size());
        const Record record = records_[position];
        records_.erase(records_.begin() + static_cast<std::ptrdiff_t>(position));
        const ItemRecord& first = record.items.front();
        const auto present = items_.find(first.number);
        QString what = QStringLiteral("take back");
        for (const ItemRecord& each : record.items)
            what += QStringLiteral(" %1: %2 -> %3")
                        .arg(each.number)
                        .arg(shown(each.after.value_or(Values())), shown(each.before.value_or(Values())));
        note(what);
        EKSaveResult asked = record.result;
        asked.calendarItemIdentifier =
            present == items_.end() ? first.identifier : present->second.identifier;
        const auto answer = driver_.revert(asked);
        Record reverse;
        const auto before = items_;
        const Code expected = takenBackInModel(record, reverse);
        if (codeOf(answer) != expected) {
            if (!expected && (isMovedUnnoticed(first.number) || isInPlaceAlready(first, before))) {
                items_ = before;
                return {};
            }
            return QStringLiteral("answered %1 in place of %2")
                .arg(shownCode(codeOf(answer)), shownCode(expected));
        }
        log_.last() += " (" + shownCode(expected) + ")";
        if (!answer)
            return {};
        for (ItemRecord& each : reverse.items) {
            const bool isCopy = &each != &reverse.items.front();
            if (!each.after)
                continue;
            if (isCopy && !answer->completedCopyIdentifier)
                return "the copy is not named";
            each.identifier = isCopy ? *answer->completedCopyIdentifier : answer->calendarItemIdentifier;
            items_[each.number].identifier = each.identifier;
            // Who still has it in hand by another name finds it no more.
            if (inHand_.number == each.number)
                inHand_ = {};
        }
        keep(*answer, std::move(reverse));
        return {};
    }

    // The person's changes of events.

    [[nodiscard]] std::vector<EKEventRef> shownEvents() {
        return driver_.events(at("Europe/Paris", {2026, 3, 1}), at("Europe/Paris", {2026, 5, 1}));
    }
    EventInHand pickEvent(unsigned which) {
        if (events_.empty())
            return {};
        auto found = events_.begin();
        std::advance(found, which % events_.size());
        for (const EKEventRef& event : shownEvents()) {
            if (keyOf(event->data) == found->first)
                return {event, found->first};
        }
        return {};
    }
    void addEvent(const Step& step) {
        EKEventData data;
        data.title = "event";
        data.calendarIdentifier = oneOf(calendars_, step.which);
        data.timeZone = TimeZone::named("Europe/Paris");
        data.startDate = at("Europe/Paris", today.addDays(static_cast<int>(step.value % 4)), {9, 0});
        data.endDate = data.startDate + 1h;
        if (step.property % 3) {
            data.recurrenceRules = {EKRecurrenceRule::parse("FREQ=DAILY;COUNT=4")};
        }
        note("add an event");
        const EKEventRef event = driver_.add(data);
        for (int i = 0; i < (data.recurrenceRules.empty() ? 1 : 4); ++i) {
            EKEventData occurrence = event->data;
            const QDate day = paris.dayOf(data.startDate).addDays(i);
            occurrence.startDate = at("Europe/Paris", day, {9, 0});
            occurrence.endDate = at("Europe/Paris", day, {10, 0});
            if (!data.recurrenceRules.empty())
                occurrence.occurrenceDate = occurrence.startDate;
            events_[keyOf(occurrence)] = valuesOf(occurrence);
        }
    }
    static void change(EKEventData& data, unsigned property, unsigned value) {
        if (property % 3 == 0) {
            data.title = QStringLiteral("event %1").arg(value % 5);
        } else if (property % 3 == 1) {
            data.notes = QStringLiteral("notes\n%1").arg(value % 5);
        } else {
            data.startDate += (value % 5) * 1h;
            data.endDate += (value % 5 + value % 2) * 1h;
        }
    }
    QString saveEvent(const EventInHand& hand) {
        const Values base = valuesOf(*hand.event->stored());
        const Values edited = valuesOf(hand.event->data);
        note(QStringLiteral("save the event %1: %2 -> %3").arg(hand.key.second, shown(base), shown(edited)));
        const auto answer = driver_.save(hand.event);
        const auto found = events_.find(hand.key);
        Code expected;
        std::optional<Values> wanted;
        if (found == events_.end())
            expected = EKError::Code::itemNotFound;
        else if (wanted = merged(without(base, "detached"), without(edited, "detached"), found->second);
                 !wanted)
            expected = EKError::Code::conflict;
        if (codeOf(answer) != expected)
            return QStringLiteral("answered %1 in place of %2")
                .arg(shownCode(codeOf(answer)), shownCode(expected));
        log_.last() += " (" + shownCode(expected) + ")";
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
        if (stored == events_.end() || valuesOf(hand.event->data) != stored->second)
            return "in hand after saving: " + shown(valuesOf(hand.event->data));
        return {};
    }
    QString removeEvent(const EventInHand& hand) {
        note("remove the event " + hand.key.second);
        const auto answer = driver_.remove(hand.event);
        const Code expected = events_.contains(hand.key) ? std::nullopt : Code(EKError::Code::itemNotFound);
        if (codeOf(answer) != expected)
            return QStringLiteral("answered %1 in place of %2")
                .arg(shownCode(codeOf(answer)), shownCode(expected));
        events_.erase(hand.key);
        return {};
    }
    QString removeSeries(const QString& identifier) {
        for (const EKEventRef& event : shownEvents()) {
            if (event->data.calendarItemIdentifier != identifier)
                continue;
            if (QString failure = removeEvent({event, keyOf(event->data)}); !failure.isEmpty())
                return failure;
        }
        return {};
    }

    // The steps.

    QString take(const Step& step) {
        switch (step.kind) {
        case Kind::add: {
            EKReminderData data;
            data.calendarIdentifier = oneOf(lists_, step.which);
            data.title = QStringLiteral("item %1").arg(nextNumber_);
            change(data, step.property, step.value);
            change(data, step.property / 16, step.value / 16);
            const auto reminder = std::make_shared<EKReminder>(house_.store);
            reminder->data = data;
            note(QStringLiteral("add %1: %2").arg(nextNumber_).arg(shown(valuesOf(data))));
            const auto answer = driver_.save(reminder);
            if (!answer)
                return "not added";
            const int number = addToModel(answer->calendarItemIdentifier, valuesOf(data));
            keep(*answer, {{}, {{number, answer->calendarItemIdentifier, std::nullopt, valuesOf(data)}}});
            return {};
        }
        case Kind::take:
            if (const InHand hand = pick(step.which); hand.reminder)
                inHand_ = hand;
            return {};
        case Kind::editInHand:
            if (inHand_.reminder)
                change(inHand_.reminder->data, step.property, step.value);
            return {};
        case Kind::saveInHand:
            return inHand_.reminder ? save(inHand_) : QString();
        case Kind::saveMany:
            return saveMany(step);
        case Kind::takeBack:
            return takeBack(step.which);
        case Kind::addEvent:
            addEvent(step);
            return {};
        case Kind::takeEvent:
            eventInHand_ = pickEvent(step.which);
            return {};
        case Kind::saveEventInHand:
            if (!eventInHand_.event)
                return {};
            change(eventInHand_.event->data, step.property, step.value);
            return saveEvent(eventInHand_);
        case Kind::edit:
        case Kind::complete:
        case Kind::remove:
        case Kind::move:
            return takeWithItem(step, pick(step.which));
        case Kind::editEvent:
        case Kind::moveEvent:
        case Kind::removeEvent:
        case Kind::removeSeries:
            return takeWithEvent(step, pickEvent(step.which));
        default:
            takeByOthers(step);
            return {};
        }
    }
    QString takeWithItem(const Step& step, const InHand& hand) {
        if (!hand.reminder)
            return {};
        if (step.kind == Kind::remove)
            return remove(hand);
        if (step.kind == Kind::complete)
            hand.reminder->data.isCompleted = !hand.reminder->data.isCompleted;
        else if (step.kind == Kind::move)
            hand.reminder->data.calendarIdentifier = oneOf(lists_, step.value);
        else
            change(hand.reminder->data, step.property, step.value);
        return save(hand);
    }
    QString takeWithEvent(const Step& step, const EventInHand& hand) {
        if (!hand.event)
            return {};
        if (step.kind == Kind::removeEvent)
            return removeEvent(hand);
        if (step.kind == Kind::removeSeries)
            return removeSeries(hand.key.first);
        if (step.kind == Kind::moveEvent)
            hand.event->data.calendarIdentifier = oneOf(calendars_, step.value);
        change(hand.event->data, step.property, step.value);
        return saveEvent(hand);
    }
    void takeByOthers(const Step& step) {
        if (step.kind == Kind::othersAdd) {
            EKReminderData data;
            data.calendarIdentifier = oneOf(lists_, step.which);
            data.title = QStringLiteral("others' item %1").arg(nextNumber_);
            change(data, step.property, step.value);
            note(QStringLiteral("others add %1: %2").arg(nextNumber_).arg(shown(valuesOf(data))));
            addToModel(others_.add(data), valuesOf(data));
            isUnsettled_ = true;
        } else if (step.kind == Kind::othersChangeEvent || step.kind == Kind::othersRemoveEvent) {
            takeEventByOthers(step);
        } else if (!items_.empty()) {
            auto found = items_.begin();
            std::advance(found, step.which % items_.size());
            takeItemByOthers(step, found->first, found->second);
        }
    }
    void takeItemByOthers(const Step& step, int number, Item& item) {
        const auto changed = [&](const char* what, const auto& edit) {
            others_.change(item.identifier, [&](EKReminderData& data) {
                edit(data);
                item.values = valuesOf(data);
            });
            note(QStringLiteral("others %1 %2: %3").arg(what).arg(number).arg(shown(item.values)));
        };
        isUnsettled_ = true;
        if (step.kind == Kind::othersChange) {
            changed("change", [&](EKReminderData& data) { change(data, step.property, step.value); });
        } else if (step.kind == Kind::othersMove) {
            changed("move",
                    [&](EKReminderData& data) { data.calendarIdentifier = oneOf(lists_, step.value); });
            moved_.push_back(number);
        } else if (step.kind == Kind::othersRemove) {
            note(QStringLiteral("others remove %1").arg(number));
            others_.remove(item.identifier);
            items_.erase(number);
        } else if (others_.rewrite(item.identifier,
                                   step.kind == Kind::othersTouch ? 0 : 1 + step.value % 9)) {
            note(QStringLiteral("others rewrite %1").arg(number));
            if (step.kind == Kind::othersNote)
                item.values["priority"] = QString::number(1 + step.value % 9);
        }
    }
    void takeEventByOthers(const Step& step) {
        if (events_.empty())
            return;
        auto found = events_.begin();
        std::advance(found, step.which % events_.size());
        const bool removes = step.kind == Kind::othersRemoveEvent;
        note(
            QStringLiteral("others %1 the event %2").arg(removes ? "remove" : "change", found->first.second));
        const bool isDone =
            others_.changeEvent([&](const EKEventData& data) { return keyOf(data) == found->first; },
                                [&](EKEventData& data) {
                                    if (removes)
                                        return false;
                                    const Values before = valuesOf(data);
                                    change(data, step.property, step.value);
                                    data.isDetached =
                                        data.isDetached || (data.occurrenceDate && valuesOf(data) != before);
                                    found->second = valuesOf(data);
                                    return true;
                                });
        if (isDone && removes)
            events_.erase(found);
        isUnsettled_ = true;
    }

    // Comparison.

    template <typename Reminders, typename Events>
    QString difference(const Reminders& reminders, const Events& events) const {
        std::map<QString, Values> expected;
        for (const auto& [number, item] : items_)
            expected[item.identifier] = item.values;
        for (const auto& each : reminders) {
            const auto found = expected.find(each.calendarItemIdentifier);
            if (found == expected.end())
                return "not in the model: " + shown(valuesOf(each));
            if (found->second != valuesOf(each))
                return "shown " + shown(valuesOf(each)) + "; expected " + shown(found->second);
            expected.erase(found);
        }
        if (!expected.empty())
            return "missing: " + shown(expected.begin()->second);
        auto expectedEvents = events_;
        for (const EKEventData& each : events) {
            const auto found = expectedEvents.find(keyOf(each));
            if (found == expectedEvents.end())
                return "not in the model: the event " + shown(valuesOf(each));
            if (found->second != valuesOf(each))
                return "shown " + shown(valuesOf(each)) + "; expected " + shown(found->second);
            expectedEvents.erase(found);
        }
        return expectedEvents.empty() ? QString()
                                      : "missing: the event " + shown(expectedEvents.begin()->second);
    }
    QString compare() {
        std::vector<EKReminderData> reminders;
        for (const auto& predicate : {EKEventStore::predicateForIncompleteReminders({}, {}, {}),
                                      EKEventStore::predicateForCompletedReminders({}, {}, {})}) {
            for (const EKReminderRef& reminder : driver_.fetch(predicate))
                reminders.push_back(reminder->data);
        }
        std::vector<EKEventData> events;
        for (const EKEventRef& event : shownEvents())
            events.push_back(event->data);
        return difference(reminders, events);
    }
    /// Waits until the store shows what others did; the person's own changes show at once.
    QString settle() {
        // What is told while the comparison waits for its answers counts too.
        bool told = false;
        const Subscription subscription = house_.store.observeChanges([&] { told = true; });
        QString failure = compare();
        auto& scheduler = house_.scheduler;
        for (int i = 0; i < 100 && isUnsettled_ && !failure.isEmpty(); ++i) {
            if (!scheduler.runUntil([&] { return told || scheduler.pendingCount() > 0; }))
                break;
            scheduler.advance(1s);
            told = false;
            failure = compare();
        }
        isUnsettled_ = false;
        moved_.clear();
        return failure;
    }
    QString compareWithFreshRead() {
        const auto read = others_.read();
        const QString failure = read ? difference(read->reminders, read->events) : QString();
        return failure.isEmpty() ? failure : "after a fresh read: " + failure;
    }

    static QString shownCode(const Code& code) {
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
    void note(const QString& line) { log_.append(line); }

    House house_;
    EventStoreDriver driver_{house_.store, house_.scheduler};
    Others<House> others_{house_};
    std::vector<QString> lists_;
    std::vector<QString> calendars_;
    std::map<int, Item> items_;
    std::map<EventKey, Values> events_;
    std::vector<Record> records_;
    InHand inHand_{};
    EventInHand eventInHand_{};
    int nextNumber_ = 0;
    /// Others have changed something that the store may not have noticed yet.
    bool isUnsettled_ = false;
    std::vector<int> moved_;
    QStringList log_;
    std::size_t length_ = 0;
};

/// Leaves steps out, as many at once as will do, while it goes on failing; absent where it does not fail
/// again.
template <typename House>
std::optional<QString> shrunk(std::vector<Step> steps) {
    QString report;
    const auto fails = [&](const std::vector<Step>& tried) {
        Run<House> run;
        const QString failure = run.of(tried);
        if (!failure.isEmpty()) {
            report = run.log() + "\n" + failure;
            steps.assign(tried.begin(), tried.begin() + static_cast<std::ptrdiff_t>(run.length()));
        }
        return !failure.isEmpty();
    };
    if (!fails(std::vector<Step>(steps)))
        return std::nullopt;
    for (std::size_t size = steps.size() / 2; size > 0;) {
        const std::size_t before = steps.size();
        for (std::size_t first = 0; first + size <= steps.size();) {
            std::vector<Step> fewer = steps;
            fewer.erase(fewer.begin() + static_cast<std::ptrdiff_t>(first),
                        fewer.begin() + static_cast<std::ptrdiff_t>(first + size));
            if (!fails(fewer))
                first += size;
        }
        if (steps.size() == before)
            size /= 2;
    }
    return report;
}

template <typename House>
class Model : public ::testing::Test {};
TYPED_TEST_SUITE(Model, Houses);

TYPED_TEST(Model, AgreesWithTheDatabaseAfterEveryStep) {
    const auto number = [](const char* name) {
        const char* text = std::getenv(name);
        return text ? static_cast<unsigned>(std::strtoul(text, nullptr, 10)) : 0U;
    };
    const unsigned first = std::max(1U, number("KESTRANT_MODEL_SEED"));
    const unsigned asked = number("KESTRANT_MODEL_RUNS");
    const unsigned runs = asked ? asked : Others<TypeParam>::runs;
    for (unsigned seed = first; seed < first + runs; ++seed) {
        const auto steps = stepsOf(seed, asked ? 60 : Others<TypeParam>::steps);
        QString failure;
        QString log;
        {
            Run<TypeParam> run;
            failure = run.of(steps);
            log = run.log();
        }
        ASSERT_TRUE(failure.isEmpty())
            << "seed " << seed << ": " << qPrintable(failure) << "\n"
            << qPrintable(shrunk<TypeParam>(steps).value_or("It does not fail again.\n" + log));
    }
}

}  // namespace
}  // namespace kestrant
