#include "cli/ReminderRequests.h"

#include <QStringList>

#include <algorithm>
#include <iterator>

namespace kestrant {

namespace {

using Kind = QuickAddPiece::Kind;

tl::expected<void, TextPair> checkAlert(const std::optional<ReminderAlertSchedule>& alert,
                                        const std::optional<Instant>& due, bool dueIncludesTime) {
    if (!alert || !due || std::holds_alternative<RelativeToDueTime>(*alert) == dueIncludesTime)
        return {};
    if (dueIncludesTime)
        return tl::unexpected(
            text("--alert: with a due time it is a length before it, such as 15m, 1h or 1d.",
                 "--alert : avec une heure d’échéance, c’est une durée avant elle, comme "
                 "15m, 1h ou 1d."));
    return tl::unexpected(text("--alert: with a due day it is a time of day, such as 09:00 or “1d 18:00”.",
                               "--alert : avec un jour d’échéance, c’est une heure, comme 09:00 ou "
                               "« 1d 18:00 »."));
}

/// Whether an option says what a piece of the line is about.
bool isSaidByOption(Kind kind, const CommandLineArguments& arguments) {
    switch (kind) {
    case Kind::day:
    case Kind::time:
    case Kind::zone:
        return arguments.due.has_value();
    case Kind::priority:
        return arguments.priority.has_value();
    case Kind::list:
        return arguments.list.has_value();
    case Kind::repeat:
        return arguments.repeat || arguments.due;
    case Kind::alert:
        return arguments.alert || arguments.due;
    case Kind::flag:
    case Kind::link:
    case Kind::note:
    case Kind::place:
        break;
    }
    return false;
}

}  // namespace

tl::expected<QString, TextPair> listNamed(const QString& name, const std::vector<EKCalendar>& lists) {
    QStringList sameLetters;
    QStringList sameTitle;
    for (const EKCalendar& list : lists) {
        if (list.calendarIdentifier == name)
            return name;
        if (list.title == name)
            sameLetters.append(list.calendarIdentifier);
        if (list.title.compare(name, Qt::CaseInsensitive) == 0)
            sameTitle.append(list.calendarIdentifier);
    }
    const QStringList& found = sameLetters.isEmpty() ? sameTitle : sameLetters;
    if (found.size() == 1)
        return found.first();
    if (found.isEmpty()) {
        const TextPair message = text("There is no list “%1”; kestrant lists shows them.",
                                      "La liste « %1 » n’existe pas ; kestrant lists les affiche.");
        return tl::unexpected(TextPair{message.english.arg(name), message.french.arg(name)});
    }
    const TextPair message =
        text("Several lists are called “%1”; write the identifier of one of them: %2.",
             "Plusieurs listes s’appellent « %1 » ; écrivez l’identifiant de l’une d’elles : %2.");
    const QString identifiers = found.join(QStringLiteral(", "));
    return tl::unexpected(
        TextPair{message.english.arg(name, identifiers), message.french.arg(name, identifiers)});
}

tl::expected<QStringList, TextPair> remindersMeant(const QStringList& typed, const QStringList& known,
                                                   const TextPair& notFound) {
    constexpr qsizetype mostShown = 5;
    QStringList result;
    for (const QString& each : typed) {
        QStringList meant;
        if (known.contains(each))
            meant.append(each);
        else if (!each.isEmpty())
            std::copy_if(known.begin(), known.end(), std::back_inserter(meant),
                         [&](const QString& identifier) { return identifier.startsWith(each); });
        if (meant.isEmpty())
            return tl::unexpected(typed.size() > 1 ? about(each, notFound) : notFound);
        if (meant.size() > 1) {
            const TextPair message = text("“%1” is the beginning of several identifiers: %2.",
                                          "« %1 » est le début de plusieurs identifiants : %2.");
            meant.sort();
            QString shown = meant.mid(0, mostShown).join(QStringLiteral(", "));
            if (meant.size() > mostShown)
                shown += QStringLiteral(", …");
            return tl::unexpected(
                TextPair{message.english.arg(each, shown), message.french.arg(each, shown)});
        }
        if (!result.contains(meant.first()))
            result.append(meant.first());
    }
    return result;
}

TextPair about(const QString& identifier, const TextPair& message) {
    return {identifier + QStringLiteral(": ") + message.english,
            identifier + QStringLiteral(" : ") + message.french};
}

QuickAddLine readLineToAdd(const QString& typed, const CommandLineArguments& arguments,
                           const QuickAddContext& context) {
    QuickAddLine literal{.title = typed};
    if (arguments.isLiteral)
        return literal;
    // Words that are refused may uncover others of the same kind.
    std::vector<TextRange> refused;
    QString unknownList;
    while (true) {
        QuickAddLine line = parseQuickAdd(typed, context, refused);
        const std::size_t before = refused.size();
        // A list that does not exist is not made unasked.
        const bool isUnknown = !line.newListTitle.isEmpty() && !arguments.makesLists && !arguments.list;
        if (isUnknown)
            unknownList = line.newListTitle;
        for (const QuickAddPiece& piece : line.pieces) {
            if ((isUnknown && piece.kind == Kind::list) || isSaidByOption(piece.kind, arguments))
                refused.push_back(piece.range);
        }
        if (refused.size() != before)
            continue;
        // A line that is nothing but a date is a title.
        if (line.title.isEmpty())
            return literal;
        if (!unknownList.isEmpty())
            line.newListTitle = unknownList;
        return line;
    }
}

tl::expected<NewReminder, TextPair> reminderToAdd(const QuickAddLine& line,
                                                  const CommandLineArguments& arguments,
                                                  const std::optional<QString>& listID,
                                                  const TimeZone& zone) {
    NewReminder reminder{.title = line.title, .listID = listID ? listID : line.listID};
    if (const auto due = arguments.due ? *arguments.due : dateOf(line, zone)) {
        reminder.dueDate = due->instant;
        reminder.dueDateIncludesTime = due->includesTime;
    }
    const auto priority = arguments.priority ? *arguments.priority : line.priority;
    reminder.priority = priority.value_or(NewReminderPriority::normal);
    reminder.dueAlertSchedule = arguments.alert.value_or(line.alert);
    reminder.repeat = arguments.repeat.value_or(ReminderRepeat::none);
    if (!arguments.repeat && !arguments.due)
        reminder.rule = line.rule;
    if (arguments.makesLists)
        reminder.newListTitle = line.newListTitle;
    reminder.url = line.url;
    reminder.notes = line.notes;
    if (const auto fits =
            checkAlert(reminder.dueAlertSchedule, reminder.dueDate, reminder.dueDateIncludesTime);
        !fits)
        return tl::unexpected(fits.error());
    return reminder;
}

tl::expected<ReminderEditDetails, TextPair> editedDetails(const ReminderEditDetails& present,
                                                          const CommandLineArguments& arguments,
                                                          const std::optional<QString>& listID) {
    ReminderEditDetails details = present;
    if (arguments.title)
        details.title = *arguments.title;
    if (arguments.notes)
        details.notes = *arguments.notes;
    if (listID)
        details.listID = *listID;
    if (arguments.priority)
        details.priority = *arguments.priority ? servicePriority(**arguments.priority) : 0;
    if (arguments.due) {
        const std::optional<TypedDate>& due = *arguments.due;
        details.dueDate = due ? std::optional(due->instant) : std::nullopt;
        details.dueDateIncludesTime = due && due->includesTime;
        if (!due)
            details.dueAlertSchedule.reset();
    }
    if (arguments.alert) {
        details.dueAlertSchedule = *arguments.alert;
        if (const auto fits =
                checkAlert(details.dueAlertSchedule, details.dueDate, details.dueDateIncludesTime);
            !fits)
            return tl::unexpected(fits.error());
    }
    return details;
}

}  // namespace kestrant
