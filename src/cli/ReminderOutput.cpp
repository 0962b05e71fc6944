#include "cli/ReminderOutput.h"

#include "cli/TypedDate.h"
#include "foundation/ClockText.h"
#include "foundation/ControlCharacters.h"
#include "reminders/model/ReminderAlerts.h"
#include "reminders/model/ReminderDueText.h"

#include <QHash>

#include <algorithm>

namespace kestrant {

namespace {

/// Of the table of reminders.
constexpr std::size_t titleColumn = 2;
constexpr std::size_t listColumn = 3;

QString marks(const ReminderTask& task) {
    QString result;
    if (task.priority >= 1 && task.priority <= 9)
        result = QString(task.priority < 5 ? 3 : task.priority == 5 ? 2 : 1, u'!');
    if (task.isFlagged)
        result += u'⚑';
    if (task.isRecurring())
        result += u'↻';
    return result;
}

/// As the option names it, in French in French.
TextPair priorityWord(NewReminderPriority priority) {
    switch (priority) {
    case NewReminderPriority::high:
        return text("high", "haute");
    case NewReminderPriority::normal:
        return text("normal", "normale");
    case NewReminderPriority::low:
        return text("low", "basse");
    }
    return {};
}

QString dueText(const ReminderTask& task, const OutputContext& context) {
    if (!task.dueDate)
        return {};
    return reminderDueText(*task.dueDate, task.dueDateIncludesTime, context.now, context.zone,
                           context.language, context.hours);
}

QString listTitle(const QString& id, const std::vector<ReminderList>& lists) {
    const auto found =
        std::find_if(lists.begin(), lists.end(), [&](const ReminderList& list) { return list.id == id; });
    return found == lists.end() ? id : found->title;
}

QJsonValue scheduleAsJson(const std::optional<ReminderAlertSchedule>& schedule) {
    if (!schedule)
        return QJsonValue::Null;
    if (const auto* relative = std::get_if<RelativeToDueTime>(&*schedule))
        return QJsonObject{{QStringLiteral("relativeToDueTime"), relative->seconds}};
    const auto& day = std::get<DayRelativeToDueDate>(*schedule);
    return QJsonObject{
        {QStringLiteral("dayRelativeToDueDate"), QJsonArray{day.dayOffset, day.hour, day.minute}}};
}

QJsonObject taskAsJson(const ReminderTask& task, const TimeZone& zone) {
    const QJsonValue due = task.dueDate && !task.dueDateIncludesTime
                               ? QJsonValue(zone.dayOf(*task.dueDate).toString(Qt::ISODate))
                               : instantAsJson(task.dueDate);
    return {{QStringLiteral("id"), task.id},
            {QStringLiteral("title"), task.title},
            {QStringLiteral("dueDate"), due},
            {QStringLiteral("dueDateIncludesTime"), task.dueDateIncludesTime},
            {QStringLiteral("dueAlertSchedule"), scheduleAsJson(task.dueAlertSchedule)},
            {QStringLiteral("creationDate"), instantAsJson(task.creationDate)},
            {QStringLiteral("priority"), task.priority},
            {QStringLiteral("listID"), task.listID},
            {QStringLiteral("isFlagged"), task.isFlagged}};
}

QStringList recurrenceTexts(const EKReminderData& reminder) {
    QStringList rules;
    for (const EKRecurrenceRule& rule : reminder.recurrenceRules)
        rules.append(rule.text);
    return rules;
}

}  // namespace

QJsonArray tasksAsJson(const std::vector<ReminderTask>& tasks, const TimeZone& zone) {
    QJsonArray result;
    for (const ReminderTask& task : tasks)
        result.append(taskAsJson(task, zone));
    return result;
}

QString tasksAsTable(const std::vector<ReminderTask>& tasks, const std::vector<ReminderList>& lists,
                     const OutputContext& context) {
    if (tasks.empty())
        return text("No reminders.\n", "Aucun rappel.\n").in(context.language);
    QHash<QString, QString> titles;
    for (const ReminderList& list : lists)
        titles.insert(list.id, onOneLine(list.title));
    TextRows rows;
    rows.reserve(tasks.size());
    for (const ReminderTask& task : tasks)
        rows.push_back({dueText(task, context), marks(task), onOneLine(task.title),
                        titles.value(task.listID, onOneLine(task.listID)), onOneLine(task.id)});
    return alignedText(rows, {titleColumn, listColumn}, context.lineWidth);
}

QJsonObject reminderAsJson(const ReminderTask& task, const EKReminderData& reminder, const TimeZone& zone) {
    QJsonObject result = taskAsJson(task, zone);
    result.insert(QStringLiteral("isCompleted"), reminder.isCompleted);
    result.insert(QStringLiteral("completionDate"), instantAsJson(reminder.completionDate));
    result.insert(QStringLiteral("notes"), textAsJson(reminder.notes));
    result.insert(QStringLiteral("location"), textAsJson(reminder.location));
    result.insert(QStringLiteral("url"), textAsJson(reminder.url));
    result.insert(QStringLiteral("recurrenceRules"), QJsonArray::fromStringList(recurrenceTexts(reminder)));
    return result;
}

QString understoodAsTable(const QuickAddLine& line, const std::vector<ReminderList>& lists, bool makesLists,
                          const OutputContext& context) {
    TextRows rows;
    const auto add = [&](const char* english, const char* french, const QString& value) {
        rows.push_back({text(english, french).in(context.language), onOneLine(value)});
    };
    add("Title", "Titre", line.title);
    if (const auto due = dateOf(line, context.zone))
        add("Due", "Échéance",
            reminderDueText(due->instant, due->includesTime, context.now, context.zone, context.language,
                            context.hours));
    if (line.timeInZone)
        add("Elsewhere", "Ailleurs",
            clockText(*line.timeInZone, context.hours) + QLatin1Char(' ') + line.zone);
    if (line.priority)
        add("Priority", "Priorité", priorityWord(*line.priority).in(context.language));
    if (line.rule)
        add("Repeats", "Répétition", repeatInWords({*line.rule}, context.language));
    if (line.alert)
        add("Alert", "Alerte", label(*line.alert, context.hours).in(context.language));
    if (line.isFlagged)
        add("Flag", "Drapeau", QStringLiteral("⚑"));
    if (line.listID)
        add("List", "Liste", listTitle(*line.listID, lists));
    else if (makesLists && !line.newListTitle.isEmpty())
        add("New list", "Nouvelle liste", line.newListTitle);
    if (!line.url.isEmpty())
        add("Link", "Lien", line.url);
    if (!line.notes.isEmpty())
        add("Notes", "Notes", line.notes);
    return alignedText(rows);
}

QString reminderAsTable(const ReminderTask& task, const EKReminderData& reminder,
                        const std::vector<ReminderList>& lists, const OutputContext& context) {
    TextRows rows;
    const auto add = [&](const char* english, const char* french, const QString& value) {
        if (!value.isEmpty())
            rows.push_back({text(english, french).in(context.language), onOneLine(value)});
    };
    const auto moment = [&](const std::optional<Instant>& instant) {
        return instant ? reminderDueText(*instant, true, context.now, context.zone, context.language,
                                         context.hours)
                       : QString();
    };
    add("Title", "Titre", task.title);
    add("List", "Liste", listTitle(task.listID, lists));
    add("Due", "Échéance", dueText(task, context));
    if (task.dueAlertSchedule)
        add("Alert", "Alerte", label(*task.dueAlertSchedule, context.hours).in(context.language));
    add("Marks", "Marques", marks(task));
    if (task.isRecurring())
        add("Repeats", "Répétition", repeatInWords(reminder.recurrenceRules, context.language));
    if (reminder.isCompleted)
        add("Completed", "Terminé",
            reminder.completionDate ? moment(reminder.completionDate) : QStringLiteral("✓"));
    add("Created", "Créé", moment(task.creationDate));
    add("Location", "Lieu", reminder.location.value_or(QString()));
    add("Link", "Lien", reminder.url.value_or(QString()));
    const QStringList notes = reminder.notes.value_or(QString()).split(u'\n');
    add("Notes", "Notes", notes.first());
    for (qsizetype line = 1; line < notes.size(); ++line)
        rows.push_back({QString(), onOneLine(notes[line])});
    add("Identifier", "Identifiant", task.id);
    return alignedText(rows);
}

}  // namespace kestrant
