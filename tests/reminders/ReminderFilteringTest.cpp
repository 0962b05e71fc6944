#include "reminders/ReminderFiltering.h"

#include "reminders/ReminderDueText.h"
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

struct DayCase {
    const char* what;
    const char* zone;
    QDate day;
    QTime now;
    QDate dueDay;
    std::optional<QTime> dueTime;
    bool today;
    bool overdue;
};

void PrintTo(const DayCase& testCase, std::ostream* out) {
    *out << testCase.what;
}

class ReminderDays : public testing::TestWithParam<DayCase> {};

TEST_P(ReminderDays, DecideWhatIsDueTodayAndWhatIsOverdue) {
    const DayCase& param = GetParam();
    const ZoneCalendar calendar((QTimeZone(param.zone)));
    const auto present = ReminderPresent::at(calendar.instantAt(param.day, param.now), calendar);
    const ReminderTask task = param.dueTime ? dueAt(calendar.instantAt(param.dueDay, *param.dueTime), true)
                                            : dueAt(calendar.startOfDay(param.dueDay), false);
    EXPECT_EQ(isDueToday(task, present), param.today);
    EXPECT_EQ(isOverdue(task, present), param.overdue);
}

constexpr auto paris = "Europe/Paris";
constexpr auto saoPaulo = "America/Sao_Paulo";
INSTANTIATE_TEST_SUITE_P(
    All, ReminderDays,
    testing::Values(
        DayCase{"date-only today", paris, {2026, 3, 27}, {23, 59}, {2026, 3, 27}, {}, true, false},
        DayCase{"date-only yesterday", paris, {2026, 3, 27}, {0, 0}, {2026, 3, 26}, {}, false, true},
        DayCase{"date-only tomorrow", paris, {2026, 3, 27}, {23, 59}, {2026, 3, 28}, {}, false, false},
        DayCase{"a minute ago", paris, {2026, 3, 27}, {9, 1}, {2026, 3, 27}, QTime(9, 0), true, true},
        DayCase{"this very moment", paris, {2026, 3, 27}, {9, 0}, {2026, 3, 27}, QTime(9, 0), true, false},
        DayCase{"later today", paris, {2026, 3, 27}, {9, 0}, {2026, 3, 27}, QTime(23, 59), true, false},
        DayCase{
            "midnight ends the day", paris, {2026, 3, 27}, {9, 0}, {2026, 3, 28}, QTime(0, 0), false, false},
        DayCase{"last hour of a day of 25",
                paris,
                {2026, 10, 25},
                {0, 30},
                {2026, 10, 25},
                QTime(23, 30),
                true,
                false},
        DayCase{"first hour after a day of 23",
                paris,
                {2026, 3, 29},
                {12, 0},
                {2026, 3, 30},
                QTime(0, 30),
                false,
                false},
        DayCase{"day without midnight", saoPaulo, {2018, 11, 4}, {1, 0}, {2018, 11, 4}, {}, true, false},
        DayCase{"day before one without midnight",
                saoPaulo,
                {2018, 11, 4},
                {1, 0},
                {2018, 11, 3},
                {},
                false,
                true}));

TEST(ReminderFiltering, TasksWithoutADueDateAreNeitherTodaysNorOverdue) {
    const auto present = ReminderPresent::at(Instant(1000h), ZoneCalendar(QTimeZone::utc()));
    EXPECT_FALSE(isDueToday({}, present));
    EXPECT_FALSE(isOverdue({}, present));
}

TEST(ReminderFiltering, EveryFilterThatIsOnMustPassAndEachCountsByItself) {
    const ZoneCalendar calendar((QTimeZone(paris)));
    const auto present = ReminderPresent::at(at(paris, {2026, 3, 27}, {12, 0}), calendar);
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
    const ZoneCalendar calendar((QTimeZone(paris)));
    const auto present = ReminderPresent::at(at(paris, {2026, 3, 28}, {12, 0}), calendar);
    const Instant midnight = at(paris, {2026, 3, 29});
    EXPECT_EQ(nextFilterChange({}, present), midnight);
    const std::vector tasks{dueAt(at(paris, {2026, 3, 28}, {11, 0}), true),
                            dueAt(at(paris, {2026, 3, 28}, {18, 0}), true),
                            dueAt(at(paris, {2026, 3, 28}), false)};
    const Instant next = nextFilterChange(tasks, present);
    EXPECT_TRUE(isOverdue(tasks[1], ReminderPresent::at(next, calendar)));
    EXPECT_FALSE(isOverdue(tasks[1], ReminderPresent::at(next - 1us, calendar)));
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
        {{2026, 11, 23}, {}, "Mon 23 Nov", "lun. 23 nov."},
        {{2026, 12, 5}, {}, "In 2 weeks", "Dans 2 semaines"},
        {{2026, 12, 5}, QTime(8, 5), "Sat 5 Dec 08:05", "sam. 5 déc. 08:05"},
        {{2026, 12, 6}, {}, "Sun 6 Dec", "dim. 6 déc."},
        {{2026, 11, 7}, {}, "Sat 7 Nov", "sam. 7 nov."},
        {{2027, 1, 1}, {}, "Fri 1 Jan 2027", "ven. 1 janv. 2027"},
    };
    const ZoneCalendar calendar((QTimeZone(paris)));
    const Instant now = at(paris, {2026, 11, 21}, {14, 30});
    for (const Case& expected : cases) {
        const Instant due = at(paris, expected.day, expected.time.value_or(QTime(0, 0)));
        const bool timed = expected.time.has_value();
        EXPECT_EQ(reminderDueText(due, timed, now, calendar, Language::english).toStdString(),
                  expected.english);
        EXPECT_EQ(reminderDueText(due, timed, now, calendar, Language::french).toStdString(),
                  expected.french);
    }
}

}  // namespace
}  // namespace kestrant
