#include "cli/RecapOutput.h"

#include "cli/CommandLineOutput.h"
#include "recap/RecapTexts.h"

#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>
#include <array>
#include <utility>

namespace kestrant {
namespace {

/// One period with the lists its completions were in, as far as they are known.
struct PrintedRecap {
    Recap recap;
    std::vector<ListCount> lists;
};

/// Columns of the longest bar.
constexpr int barLength = 30;

QString rawValue(RecapKind kind) {
    constexpr std::array names{"day", "week", "month", "year"};
    return QLatin1String(names[static_cast<std::size_t>(kind)]);
}

QDate today(const OutputContext& context) {
    return context.zone.dayOf(context.now);
}

QString isoDay(QDate day) {
    return day.toString(Qt::ISODate);
}

QString withCapital(QString name) {
    if (!name.isEmpty())
        name[0] = name[0].toUpper();
    return name;
}

/// The label and the number of each bar: the days that have begun of a week or a month, the months of a
/// year.
std::vector<std::pair<QString, int>> barsOf(const Recap& recap, const OutputContext& context) {
    std::vector<std::pair<QString, int>> bars;
    const RecapPeriod& period = recap.period;
    for (int index = 0; index < recap.elapsedDays && period.kind != RecapKind::day; ++index) {
        const QDate day = period.first.addDays(index);
        const int count = recap.days[static_cast<std::size_t>(index)];
        const bool isYear = period.kind == RecapKind::year;
        if (!isYear || day.day() == 1)
            bars.emplace_back(withCapital(isYear ? context.dates.standaloneMonthName(day.month())
                                                 : context.dates.toString(day, QStringLiteral("ddd d"))),
                              0);
        bars.back().second += count;
    }
    return bars;
}

QStringList summary(const Recap& recap, const OutputContext& context) {
    return {recapTitle(recap.period, today(context), context.language, context.dates),
            QString::number(recap.completed),
            recapSentence(recap, today(context), context.language, context.dates)};
}

/// The recap of a period. Dates are local days; "days" has one number for each of the period's.
QJsonObject recapAsJson(const PrintedRecap& printed, Qt::DayOfWeek firstDayOfWeek) {
    const Recap& recap = printed.recap;
    QJsonArray days;
    for (const int count : recap.days)
        days.append(count);
    QJsonArray lists;
    for (const ListCount& list : printed.lists)
        lists.append(
            QJsonObject{{QStringLiteral("title"), list.list}, {QStringLiteral("count"), list.count}});
    QJsonObject json{
        {QStringLiteral("kind"), rawValue(recap.period.kind)},
        {QStringLiteral("firstDay"), isoDay(recap.period.first)},
        {QStringLiteral("lastDay"), isoDay(recap.period.last)},
        {QStringLiteral("completed"), recap.completed},
        {QStringLiteral("days"), days},
        {QStringLiteral("elapsedDays"), recap.elapsedDays},
        {QStringLiteral("quietDays"), recap.quietDays},
        {QStringLiteral("bestDay"), recap.bestDay ? QJsonValue(isoDay(*recap.bestDay)) : QJsonValue()},
        {QStringLiteral("bestCount"), recap.bestCount},
        {QStringLiteral("usualHour"), recap.usualHour ? QJsonValue(*recap.usualHour) : QJsonValue()},
        {QStringLiteral("streak"), recap.streak},
        {QStringLiteral("longestStreak"), recap.longestStreak},
        {QStringLiteral("completedBefore"), recap.completedBefore},
        {QStringLiteral("lists"), lists},
    };
    if (recap.period.kind == RecapKind::week) {
        const WeekNumber number = weekNumberOf(recap.period.first, firstDayOfWeek);
        json.insert(QStringLiteral("week"), number.week);
        json.insert(QStringLiteral("weekYear"), number.year);
    }
    return json;
}

/// A line for each: title, number, sentence.
QString recapsAsTable(const std::vector<PrintedRecap>& recaps, const OutputContext& context) {
    TextRows rows;
    for (const PrintedRecap& each : recaps)
        rows.push_back(summary(each.recap, context));
    return alignedText(rows);
}

/// One in full: its number and sentence, the days of a week or the months of a year with bars, and the lists.
QString recapAsText(const PrintedRecap& printed, const OutputContext& context) {
    QString result = alignedText({summary(printed.recap, context)});
    TextRows rows;
    std::vector<std::pair<QString, int>> bars;
    if (printed.recap.completed > 0)
        bars = barsOf(printed.recap, context);
    int most = 1;
    for (const auto& [name, count] : bars)
        most = std::max(most, count);
    for (const auto& [name, count] : bars) {
        const int length = count == 0 ? 0 : std::max(1, count * barLength / most);
        rows.push_back({name, QString::number(count), QString(length, QChar(u'█'))});
    }
    if (!rows.empty())
        result += u'\n' + alignedText(rows);
    rows.clear();
    for (const ListCount& list : printed.lists)
        rows.push_back({list.list, QString::number(list.count)});
    if (!rows.empty())
        result += u'\n' + alignedText(rows, {0}, context.lineWidth);
    return result;
}

}  // namespace

void printRecap(CommandRun& run, const std::vector<CompletionRecord>& records) {
    const OutputContext context = run.outputContext();
    const std::vector<CompletedDay> days = completedDays(records, context.zone, context.now);
    const QDate today = context.zone.dayOf(context.now);
    const Qt::DayOfWeek firstDay = run.environment.systemLocale.firstDayOfWeek();
    const auto listOf = [&run](const QString& identifier) -> std::optional<QString> {
        const EKReminderRef reminder = run.eventStore.calendarItem(identifier);
        const auto list = reminder ? run.eventStore.calendarWithIdentifier(reminder->data.calendarIdentifier)
                                   : std::nullopt;
        return list ? std::optional(list->title) : std::nullopt;
    };
    const auto recapOfKind = [&](RecapKind kind) {
        const RecapPeriod period = periodContaining(kind, today, firstDay);
        return PrintedRecap{recapOf(period, days, today),
                            completedByList(records, period, context.zone, context.now, listOf)};
    };
    if (const auto kind = run.arguments.recapKind) {
        const PrintedRecap recap = recapOfKind(*kind);
        if (run.arguments.json)
            run.printJson(recapAsJson(recap, firstDay));
        else
            run.print(recapAsText(recap, context));
    } else {
        std::vector<PrintedRecap> recaps;
        QJsonArray json;
        for (const RecapKind each : {RecapKind::day, RecapKind::week, RecapKind::month, RecapKind::year}) {
            recaps.push_back(recapOfKind(each));
            json.append(recapAsJson(recaps.back(), firstDay));
        }
        if (run.arguments.json)
            run.printJson(json);
        else
            run.print(recapsAsTable(recaps, context));
    }
    run.finishReading();
}

}  // namespace kestrant
