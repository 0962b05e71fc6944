#include "ModelReminders.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace kestrant::model {

Code ModelReminders::savedInModel(int number, const Values& base, const Values& edited, Record& record,
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
        (*wanted)["completed at"] = textOf(world_.scheduler.now(), "HH:mm:ss");
    if (!current.contains("completed") && wanted->contains("completed"))
        copy = completed(*wanted);
    if (*wanted != current)
        record.items.push_back({number, found->second.identifier, current, wanted});
    current = *wanted;
    return std::nullopt;
}

QString ModelReminders::judge(const InHand& hand, const Values& base, const Values& edited,
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
            world_.log.last() += " (not found)";
            return {};
        }
        return QStringLiteral("answered %1 in place of %2").arg(shownCode(given), shownCode(expected));
    }
    world_.log.last() += " (" + shownCode(given) + ")";
    if (!answer)
        return {};
    if (answer->completedCopyIdentifier.has_value() != copy.has_value())
        return "a copy more or less than expected";
    identifierBecame(hand.number, answer->calendarItemIdentifier);
    if (copy) {
        const int number = addToModel(*answer->completedCopyIdentifier, *copy);
        record.items.push_back({number, *answer->completedCopyIdentifier, std::nullopt, copy});
    }
    if (const Values inHand = world_.valuesOf(hand.reminder->data);
        inHand != without(items_[hand.number].values, "unknown"))
        return "in hand after saving: " + shown(inHand) + "; expected " + shown(items_[hand.number].values);
    keep(*answer, std::move(record));
    return {};
}

void ModelReminders::keep(const EKSaveResult& result, Record record) {
    if (!result.change || record.items.empty())
        return;
    record.result = result;
    records_.push_back(std::move(record));
}

int ModelReminders::addToModel(const QString& identifier, const Values& values) {
    items_[nextNumber_] = {identifier, values};
    return nextNumber_++;
}

template <typename Ask>
auto ModelReminders::answerOf(int number, const Ask& ask) {
    if (interruption_ > 0 && items_.contains(number))
        world_.others.interruptWith([this, number] { rewriteByOthers(number, interruption_); });
    auto answer = ask();
    world_.others.interruptWith({});
    return answer;
}

void ModelReminders::identifierBecame(int number, const QString& identifier) {
    if (std::exchange(items_[number].identifier, identifier) == identifier)
        return;
    // Who still has it in hand by another name finds it no more.
    if (inHand_.number == number)
        inHand_ = {};
}

bool ModelReminders::isMovedUnnoticed(int number) const {
    return world_.isUnsettled && std::find(moved_.begin(), moved_.end(), number) != moved_.end();
}

ModelReminders::InHand ModelReminders::pick(unsigned which) {
    if (items_.empty())
        return {};
    auto found = items_.begin();
    std::advance(found, which % items_.size());
    return {world_.store.calendarItem(found->second.identifier), found->first};
}

QString ModelReminders::save(const InHand& hand) {
    const Values base = world_.valuesOf(*hand.reminder->stored());
    const Values edited = world_.valuesOf(hand.reminder->data);
    world_.note(QStringLiteral("save %1: %2 -> %3").arg(hand.number).arg(shown(base), shown(edited)));
    return judge(hand, base, edited,
                 answerOf(hand.number, [&] { return world_.driver.save(hand.reminder); }));
}

QString ModelReminders::saveMany(const Step& step) {
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
        edits.emplace_back(world_.valuesOf(*hand.reminder->stored()), world_.valuesOf(hand.reminder->data));
    }
    world_.note("save together:");
    const auto answers =
        answerOf(hands.empty() ? -1 : hands.front().number, [&] { return world_.driver.saveAll(reminders); });
    for (std::size_t i = 0; i < hands.size(); ++i) {
        world_.note(QStringLiteral("  %1: %2 -> %3")
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

QString ModelReminders::remove(const InHand& hand) {
    world_.note(QStringLiteral("remove %1").arg(hand.number));
    const auto answer = answerOf(hand.number, [&] { return world_.driver.remove(hand.reminder); });
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

Code ModelReminders::takenBackInModel(const Record& record, Record& reverse) {
    auto items = items_;
    for (const ItemRecord& each : record.items) {
        const bool isCopy = &each != &record.items.front();
        const auto found = items.find(each.number);
        if (each.after && (found == items.end() || (isCopy && found->second.identifier != each.identifier))) {
            if (isCopy)
                continue;
            return EKError::Code::itemNotFound;
        }
        if (!each.after) {
            items[each.number] = {each.identifier, *each.before};
            reverse.items.push_back({each.number, each.identifier, std::nullopt, each.before});
        } else if (!each.before) {
            // Marks of programs rather than something that was said.
            const auto said = [](const Values& values) {
                return without(without(values, "flag"), "unknown");
            };
            if (said(*each.after) != said(found->second.values))
                return EKError::Code::conflict;
            reverse.items.push_back(
                {each.number, found->second.identifier, found->second.values, std::nullopt});
            items.erase(found);
        } else {
            const auto restored = merged(*each.after, *each.before, found->second.values);
            if (!restored)
                return EKError::Code::conflict;
            reverse.items.push_back({each.number, found->second.identifier, found->second.values, restored});
            found->second.values = *restored;
        }
    }
    items_ = std::move(items);
    return std::nullopt;
}

QString ModelReminders::takeBack(unsigned which) {
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
    world_.note(what);
    EKSaveResult asked = record.result;
    asked.calendarItemIdentifier = present == items_.end() ? first.identifier : present->second.identifier;
    const auto answer = answerOf(first.number, [&] { return world_.driver.revert(asked); });
    Record reverse;
    const auto before = items_;
    const Code expected = takenBackInModel(record, reverse);
    if (codeOf(answer) != expected) {
        if (!expected && isMovedUnnoticed(first.number)) {
            items_ = before;
            return {};
        }
        return QStringLiteral("answered %1 in place of %2")
            .arg(shownCode(codeOf(answer)), shownCode(expected));
    }
    world_.log.last() += " (" + shownCode(expected) + ")";
    if (!answer)
        return {};
    for (ItemRecord& each : reverse.items) {
        const bool isCopy = &each != &reverse.items.front();
        if (!each.after)
            continue;
        if (isCopy && !answer->completedCopyIdentifier)
            return "the copy is not named";
        each.identifier = isCopy ? *answer->completedCopyIdentifier : answer->calendarItemIdentifier;
        identifierBecame(each.number, each.identifier);
    }
    keep(*answer, std::move(reverse));
    return {};
}

QString ModelReminders::takeWithItem(const Step& step, const InHand& hand) {
    if (!hand.reminder)
        return {};
    if (step.kind == Kind::remove)
        return remove(hand);
    if (step.kind == Kind::complete)
        hand.reminder->data.isCompleted = !hand.reminder->data.isCompleted;
    else if (step.kind == Kind::move)
        hand.reminder->data.calendarIdentifier = oneOf(world_.lists, step.value);
    else
        change(hand.reminder->data, step.property, step.value);
    return save(hand);
}

void ModelReminders::takeItemByOthers(const Step& step, int number, Item& item) {
    const auto changed = [&](const char* what, const auto& edit) {
        world_.others.change(item.identifier, [&](EKReminderData& data) {
            edit(data);
            const QString unknown = valueOf(item.values, "unknown");
            item.values = world_.valuesOf(data);
            if (!unknown.isEmpty())
                item.values["unknown"] = unknown;
        });
        world_.note(QStringLiteral("others %1 %2: %3").arg(what).arg(number).arg(shown(item.values)));
    };
    world_.isUnsettled = true;
    if (step.kind == Kind::othersChange) {
        changed("change", [&](EKReminderData& data) { change(data, step.property, step.value); });
    } else if (step.kind == Kind::othersMove) {
        changed("move",
                [&](EKReminderData& data) { data.calendarIdentifier = oneOf(world_.lists, step.value); });
        moved_.push_back(number);
    } else if (step.kind == Kind::othersRemove) {
        world_.note(QStringLiteral("others remove %1").arg(number));
        world_.others.remove(item.identifier);
        items_.erase(number);
    } else if (step.kind == Kind::othersJoin) {
        // With a change that shows: nothing else would tell that it has been noticed.
        auto& [otherNumber, other] = *std::next(items_.begin(), step.value % static_cast<int>(items_.size()));
        const unsigned priority = 1 + valueOf(other.values, "priority").toUInt() % 9;
        if (world_.others.join(item.identifier, other.identifier) &&
            world_.others.rewrite(other.identifier, priority)) {
            world_.note(QStringLiteral("others put %1 into the file of %2").arg(otherNumber).arg(number));
            other.values["priority"] = other.values["unknown"] = QString::number(priority);
        }
    } else {
        rewriteByOthers(number, step.kind == Kind::othersTouch ? 0 : 1 + step.value % 9);
    }
}

void ModelReminders::rewriteByOthers(int number, unsigned priority) {
    Item& item = items_.at(number);
    if (!world_.others.rewrite(item.identifier, priority))
        return;
    world_.note(QStringLiteral("others rewrite %1").arg(number));
    world_.isUnsettled = true;
    if (priority > 0)
        item.values["priority"] = item.values["unknown"] = QString::number(priority);
}

QString ModelReminders::add(const Step& step) {
    EKReminderData data;
    data.calendarIdentifier = oneOf(world_.lists, step.which);
    data.title = QStringLiteral("item %1").arg(nextNumber_);
    change(data, step.property, step.value);
    change(data, step.property / 16, step.value / 16);
    const auto reminder = std::make_shared<EKReminder>(world_.store);
    reminder->data = data;
    world_.note(QStringLiteral("add %1: %2").arg(nextNumber_).arg(shown(world_.valuesOf(data))));
    const auto answer = world_.driver.save(reminder);
    if (!answer)
        return "not added";
    const int number = addToModel(answer->calendarItemIdentifier, world_.valuesOf(data));
    keep(*answer, {{}, {{number, answer->calendarItemIdentifier, std::nullopt, world_.valuesOf(data)}}});
    return {};
}

QString ModelReminders::take(const Step& step) {
    interruption_ = step.isInterrupted ? 1 + step.value % 9 : 0;
    switch (step.kind) {
    case Kind::add:
        return add(step);
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
    default:
        return takeWithItem(step, pick(step.which));
    }
}

void ModelReminders::takeByOthers(const Step& step) {
    if (step.kind == Kind::othersAdd) {
        EKReminderData data;
        data.calendarIdentifier = oneOf(world_.lists, step.which);
        data.title = QStringLiteral("others' item %1").arg(nextNumber_);
        change(data, step.property, step.value);
        const Values values = world_.valuesOf(data);
        world_.note(QStringLiteral("others add %1: %2").arg(nextNumber_).arg(shown(values)));
        addToModel(world_.others.add(data), values);
        world_.isUnsettled = true;
    } else if (!items_.empty()) {
        auto found = items_.begin();
        std::advance(found, step.which % items_.size());
        takeItemByOthers(step, found->first, found->second);
    }
}

std::map<QString, Values> ModelReminders::byIdentifier() const {
    std::map<QString, Values> result;
    for (const auto& [number, item] : items_)
        result[item.identifier] = item.values;
    return result;
}

std::map<QString, QString> ModelReminders::unknown() const {
    std::map<QString, QString> result;
    for (const auto& [number, item] : items_) {
        if (const QString value = valueOf(item.values, "unknown"); !value.isEmpty())
            result[item.identifier] = value;
    }
    return result;
}

}  // namespace kestrant::model
