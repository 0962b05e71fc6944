#include "reminders/model/ReminderFiltering.h"

#include "reminders/model/ReminderDueText.h"
#include "support/ReminderBuilders.h"

#include <gmock/gmock.h>

#include <chrono>

namespace kestrant {
namespace {

using namespace std::chrono_literals;

ReminderTask dueAt(Instant instant, bool timed) {
    ReminderTask task;
    task.dueDate = instant;
    task.dueDateIncludesTime = timed;
    return task;
}

constexpr auto paris = "Europe/Paris";
constexpr auto saoPaulo = "America/Sao_Paulo";

TEST(ReminderFiltering, TodayAndOverdueFollowTheCalendarsDays) {
    struct Case {
        const char* what;
        const char* zone;
        QDate day;
        QTime now;
        QDate dueDay;
        std::optional<QTime> dueTime;
        bool today;
        bool overdue;
    };
    const std::vector<Case> cases{
        {"date-only today", paris, {2026, 3, 27}, {23, 59}, {2026, 3, 27}, {}, true, false},
        {"date-only yesterday", paris, {2026, 3, 27}, {0, 0}, {2026, 3, 26}, {}, false, true},
        {"date-only tomorrow", paris, {2026, 3, 27}, {23, 59}, {2026, 3, 28}, {}, false, false},
        {"a minute ago", paris, {2026, 3, 27}, {9, 1}, {2026, 3, 27}, QTime(9, 0), true, true},
        {"this very moment", paris, {2026, 3, 27}, {9, 0}, {2026, 3, 27}, QTime(9, 0), true, false},
        {"later today", paris, {2026, 3, 27}, {9, 0}, {2026, 3, 27}, QTime(23, 59), true, false},
        {"midnight ends the day", paris, {2026, 3, 27}, {9, 0}, {2026, 3, 28}, QTime(0, 0), false, false},
        {"end of a day of 25 hours",
         paris,
         {2026, 10, 25},
         {0, 30},
         {2026, 10, 25},
         QTime(23, 30),
         true,
         false},
        {"after a day of 23 hours", paris, {2026, 3, 29}, {12, 0}, {2026, 3, 30}, QTime(0, 30), false, false},
        {"a day without midnight", saoPaulo, {2018, 11, 4}, {1, 0}, {2018, 11, 4}, {}, true, false},
        {"the day before it", saoPaulo, {2018, 11, 4}, {1, 0}, {2018, 11, 3}, {}, false, true},
    };
    for (const Case& param : cases) {
        const TimeZone zone(*TimeZone::named(param.zone));
        const auto present = ReminderTimeContext::at(zone.instantAt(param.day, param.now), zone);
        const ReminderTask task = param.dueTime ? dueAt(zone.instantAt(param.dueDay, *param.dueTime), true)
                                                : dueAt(zone.startOfDay(param.dueDay), false);
        EXPECT_EQ(isDueToday(task, present), param.today) << param.what;
        EXPECT_EQ(isOverdue(task, present), param.overdue) << param.what;
    }
}

TEST(ReminderFiltering, EveryFilterThatIsOnMustPassAndEachCountsByItself) {
    const TimeZone zone(*TimeZone::named(paris));
    const auto present = ReminderTimeContext::at(at(paris, {2026, 3, 27}, {12, 0}), zone);
    ReminderTask todayOverdueFlagged = dueAt(at(paris, {2026, 3, 27}, {9, 0}), true);
    todayOverdueFlagged.isFlagged = true;
    const std::vector tasks{todayOverdueFlagged, dueAt(at(paris, {2026, 3, 27}), false),
                            dueAt(at(paris, {2026, 3, 1}), false), ReminderTask{}};
    EXPECT_EQ(filterCounts(tasks, present), (ReminderFilterCounts{.today = 2, .overdue = 2, .flagged = 1}));
    const auto passing = [&](const ReminderFilters& filters) {
        return std::count_if(tasks.begin(), tasks.end(),
                             [&](const ReminderTask& task) { return passes(task, filters, present); });
    };
    EXPECT_EQ(passing({}), 4);
    EXPECT_EQ(passing({.todayOnly = true}), 2);
    EXPECT_EQ(passing({.todayOnly = true, .overdueOnly = true}), 1);
    EXPECT_EQ(passing({.overdueOnly = true}), 2);
    EXPECT_EQ(passing({.flaggedOnly = true}), 1);
}

TEST(ReminderFiltering, SearchTrimsTheQueryAndIgnoresLetterCase) {
    const TextCollation collation(QLocale(QLocale::French, QLocale::France));
    std::vector<ReminderTask> tasks(3);
    tasks[0].title = QStringLiteral("Écrire à Zoé");
    tasks[1].title = QStringLiteral("lire");
    tasks[2].title = QStringLiteral("courir");
    const ReminderTaskList list(std::make_shared<const std::vector<ReminderTask>>(tasks), {0, 1, 2});
    const auto count = [&](const char* query) {
        return searched(list, QString::fromUtf8(query), collation).size();
    };
    EXPECT_EQ(count("  ZOÉ\n"), 1U);
    EXPECT_EQ(count("CRI"), 1U);
    EXPECT_EQ(count("ire"), 2U);
    EXPECT_EQ(count("à z"), 1U);
    EXPECT_EQ(count(" \t\n"), 3U);
    EXPECT_EQ(count("absent"), 0U);
}

TEST(ReminderFiltering, TheAnswersNextChangeWhenATaskFallsDueOrTheDayEnds) {
    const TimeZone zone(*TimeZone::named(paris));
    const auto present = ReminderTimeContext::at(at(paris, {2026, 3, 28}, {12, 0}), zone);
    const Instant midnight = at(paris, {2026, 3, 29});
    EXPECT_EQ(nextFilterChange({}, present), midnight);
    const std::vector tasks{dueAt(at(paris, {2026, 3, 28}, {11, 0}), true),
                            dueAt(at(paris, {2026, 3, 28}, {18, 0}), true),
                            dueAt(at(paris, {2026, 3, 28}), false)};
    const Instant next = nextFilterChange(tasks, present);
    EXPECT_TRUE(isOverdue(tasks[1], ReminderTimeContext::at(next, zone)));
    EXPECT_FALSE(isOverdue(tasks[1], ReminderTimeContext::at(next - 1us, zone)));
}

TEST(ReminderDueText, SaysDaysInWordsInBothLanguages) {
    struct Case {
        QDate day;
        std::optional<QTime> time;
        const char* english;
        const char* french;
    };
    const std::vector<Case> cases{
        {{2026, 11, 21}, {}, "Today", "Aujourd’hui"},
        {{2026, 11, 21}, QTime(17, 0), "Today 17:00", "Aujourd’hui 17:00"},
        {{2026, 11, 22}, QTime(9, 0), "Tomorrow 09:00", "Demain 09:00"},
        {{2026, 11, 20}, {}, "Yesterday", "Hier"},
        {{2026, 11, 23}, {}, "Mon 23 Nov", "Lun. 23 nov."},
        {{2026, 12, 5}, {}, "Sat 5 Dec", "Sam. 5 déc."},
        {{2026, 12, 5}, QTime(8, 5), "Sat 5 Dec 08:05", "Sam. 5 déc. 08:05"},
        {{2026, 12, 6}, {}, "Sun 6 Dec", "Dim. 6 déc."},
        {{2026, 11, 7}, {}, "Sat 7 Nov", "Sam. 7 nov."},
        {{2027, 1, 1}, {}, "Fri 1 Jan 2027", "Ven. 1 janv. 2027"},
    };
    const TimeZone zone(*TimeZone::named(paris));
    const Instant now = at(paris, {2026, 11, 21}, {14, 30});
    for (const Case& expected : cases) {
        const Instant due = at(paris, expected.day, expected.time.value_or(QTime(0, 0)));
        const bool timed = expected.time.has_value();
        EXPECT_EQ(reminderDueText(due, timed, now, zone, Language::english).toStdString(), expected.english);
        EXPECT_EQ(reminderDueText(due, timed, now, zone, Language::french).toStdString(), expected.french);
    }
}

}  // namespace
}  // namespace kestrant
