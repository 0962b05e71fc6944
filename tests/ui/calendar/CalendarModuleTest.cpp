#include "ui/PanelProgram.h"
#include "ui/WithEvents.h"

#include <QSignalSpy>

#include <gmock/gmock.h>

using namespace kestrant;
using namespace kestrant::test;
using testing::ElementsAre;

namespace {

/// The first visible item of a QML type.
QQuickItem* find(QQuickItem* item, const char* type) {
    if (!item->isVisible())
        return nullptr;
    if (QString::fromUtf8(item->metaObject()->className())
            .startsWith(QLatin1String(type) + QLatin1String("_QML")))
        return item;
    for (QQuickItem* child : item->childItems()) {
        if (QQuickItem* found = find(child, type))
            return found;
    }
    return nullptr;
}

struct CalendarPanel : WithEvents<PanelProgram> {
    [[nodiscard]] QQuickItem* module(const char* type) { return find(view.contentItem(), type); }
    [[nodiscard]] QQuickItem* calendarModule() { return module("CalendarModule"); }
    [[nodiscard]] QQuickItem* list() {
        for (QQuickItem* child : module("CalendarList")->childItems()) {
            if (child->inherits("QQuickListView"))
                return child;
        }
        return nullptr;
    }
    /// Lets every step of a load be laid out.
    void layOut() {
        for (int turn = 0; turn < 4; ++turn)
            settle();
    }
    void focusCalendar() {
        call("focusCalendar");
        settle();
    }
    [[nodiscard]] QString current() {
        return days.rows()->rowAt(list()->property("currentIndex").toInt()).title;
    }
    /// The title of the row that is marked as the one that the keyboard acts on.
    [[nodiscard]] QString marked() {
        QQuickItem* item = nullptr;
        QMetaObject::invokeMethod(list(), "itemAtIndex", Q_RETURN_ARG(QQuickItem*, item),
                                  Q_ARG(int, list()->property("currentIndex").toInt()));
        return item && item->property("isCurrent").toBool() ? current() : QString();
    }
    /// What is drawn at the upper edge below the heading that stays there, and how far it lies from the edge.
    [[nodiscard]] std::pair<QString, double> top() {
        QQuickItem* rows = list();
        const double y = rows->property("contentY").toDouble() + 30;
        int index = -1;
        QMetaObject::invokeMethod(rows, "indexAt", Q_RETURN_ARG(int, index), Q_ARG(double, 1.0),
                                  Q_ARG(double, y));
        QQuickItem* item = nullptr;
        QMetaObject::invokeMethod(rows, "itemAtIndex", Q_RETURN_ARG(QQuickItem*, item), Q_ARG(int, index));
        const CalendarRow row = days.rows()->rowAt(index);
        return {row.day + u' ' + row.title, item ? item->y() - y : -1};
    }
    void moveTo(QPointF place) {
        QTest::mouseMove(&view, place.toPoint());
        QCoreApplication::processEvents();
    }
    /// Takes the first card and carries it to a place, without letting go.
    void carryCardTo(QPointF place) {
        const QPointF from(150, 80);
        QTest::mousePress(&view, Qt::LeftButton, {}, from.toPoint());
        for (int step = 1; step <= 4; ++step)
            moveTo(from + (place - from) * step / 4);
    }
    void letGoAt(QPointF place) {
        QTest::mouseRelease(&view, Qt::LeftButton, {}, place.toPoint());
        QCoreApplication::processEvents();
    }
    /// The middle of the place of a day while a card is carried, in the window.
    [[nodiscard]] QPointF placeOfDay(int fromToday) {
        const QQuickItem* area = calendarModule();
        const double top = 11;
        return area->mapToScene({area->width() / 2, top + (area->height() - top) * (fromToday + 0.5) / 7});
    }
};

TEST(CalendarModule, SharesTheWidthAsThePersonHasSetIt) {
    CalendarPanel program;
    program.Program::add(QStringLiteral("a"));
    program.add("Piano", 0, {16, 0}, 60);
    program.expand();
    const auto shares = [&program] {
        const QQuickItem* cards = program.module("ReminderGrid");
        const QQuickItem* days = program.calendarModule();
        return std::pair(cards ? qRound(cards->width() / 8.88) : 0, days ? qRound(days->width() / 8.88) : 0);
    };
    EXPECT_EQ(shares(), std::pair(68, 28));
    EXPECT_LT(program.module("ReminderGrid")->x(), program.calendarModule()->x());
    EXPECT_EQ(program.module("ReminderGrid")->property("columns").toInt(), 3);

    program.preferences.moduleOrder.set(KestrantModuleOrder::calendarFirst);
    program.preferences.layoutRatio.set(KestrantLayoutRatio::r40_60);
    EXPECT_EQ(shares(), std::pair(58, 38));
    EXPECT_GT(program.module("ReminderGrid")->x(), program.calendarModule()->x());

    program.preferences.showCalendar.set(false);
    EXPECT_EQ(shares(), std::pair(100, 0));
    program.preferences.showCalendar.set(true);
    program.preferences.showReminders.set(false);
    EXPECT_EQ(shares(), std::pair(0, 100));
}

TEST(CalendarModule, MovesByRowsAndDaysWithTheArrows) {
    CalendarPanel program;
    program.addAllDay("Birthday", 0);
    program.add("Piano", 0, {16, 0}, 60);
    program.add("Run", 1, {10, 0}, 60);
    program.add("Lunch", 1, {12, 0}, 60);
    program.add("Planning", 3, {9, 0}, 60);
    program.expand();
    program.focusCalendar();
    QStringList visited{program.marked()};
    for (const int key : {Qt::Key_Down, Qt::Key_Down, Qt::Key_Down, Qt::Key_Right, Qt::Key_Right,
                          Qt::Key_Left, Qt::Key_Home, Qt::Key_End}) {
        program.press(key);
        visited.append(program.marked());
    }
    EXPECT_EQ(visited.join(u' '),
              QStringLiteral("Birthday Piano Run Lunch Planning Planning Run Birthday Planning"));
}

TEST(CalendarModule, TabsBetweenTheModules) {
    CalendarPanel program;
    program.Program::add(QStringLiteral("a"));
    program.add("Piano", 0, {16, 0}, 60);
    program.expand();
    EXPECT_TRUE(program.module("ReminderGrid")->hasActiveFocus());
    EXPECT_EQ(program.marked(), QString());
    program.press(Qt::Key_Tab);
    EXPECT_TRUE(program.calendarModule()->hasActiveFocus());
    EXPECT_EQ(program.current(), QStringLiteral("Piano"));
    program.press(Qt::Key_Backtab);
    EXPECT_TRUE(program.module("ReminderGrid")->hasActiveFocus());
    // Past the button below the rows, and once round.
    for (int round = 0; round < 2; ++round) {
        int steps = 0;
        do
            program.press(Qt::Key_Tab);
        while (program.marked() != QStringLiteral("Piano") && ++steps < 30);
        EXPECT_LT(steps, 30) << round;
        program.press(Qt::Key_Tab);
        EXPECT_NE(program.marked(), QStringLiteral("Piano"));
    }
}

TEST(CalendarModule, OpensTheFormByEnterAndAsksBeforeItDeletes) {
    CalendarPanel program;
    program.add("Piano", 0, {16, 0}, 60);
    program.expand();
    program.focusCalendar();
    program.press(Qt::Key_Return);
    EXPECT_TRUE(program.isOpen("edit"));
    program.press(Qt::Key_Escape);
    program.press(Qt::Key_Delete);
    ASSERT_TRUE(program.isOpen("confirm"));
    EXPECT_EQ(program.database.allEvents().size(), 1u);
    program.press(Qt::Key_Tab);
    program.press(Qt::Key_Return);
    program.settle();
    EXPECT_FALSE(program.isOpen("confirm"));
    EXPECT_EQ(program.database.allEvents().size(), 0u);
}

TEST(CalendarModule, OffersForARowWhatCanBeDoneToIt) {
    CalendarPanel program;
    program.add("Piano", 0, {16, 0}, 60);
    program.Program::add(QStringLiteral("Call"), 0, {17, 0});
    program.expand();
    program.focusCalendar();
    const auto entries = [&program] {
        program.press(Qt::Key_Menu);
        QStringList titles;
        QQuickItem* menu = find(&program.keyItem(), "MenuPopover");
        if (!menu)
            return QStringLiteral("no menu");
        for (const QVariant& entry : menu->property("entries").toList())
            titles.append(entry.toMap().value(QStringLiteral("title")).toString());
        program.press(Qt::Key_Escape);
        return titles.join(QStringLiteral(", "));
    };
    EXPECT_EQ(entries(), QStringLiteral("Edit details, Show details, Delete event"));
    program.press(Qt::Key_Down);
    EXPECT_EQ(entries(), QStringLiteral("Complete, Edit details, Remove reminder from calendar"));
    program.preferences.setLanguage(Language::french);
    program.settle();
    EXPECT_EQ(entries(), QStringLiteral("Terminer, Modifier les détails, Retirer le rappel du calendrier"));
}

TEST(CalendarModule, BeginsTheFullCalendarAtTodayAndLeadsBack) {
    CalendarPanel program;
    for (int day = -300; day < 300; ++day)
        program.add("Daily", day, {16, 0}, 60);
    program.expand();
    program.days.setShowsAllEvents(true);
    program.layOut();
    EXPECT_GT(program.days.rows()->count(), 1000);
    EXPECT_EQ(program.top().first, program.isoDay(0) + QStringLiteral(" Daily"));
    program.days.setShowsAllEvents(false);
    program.layOut();
    EXPECT_EQ(program.days.rows()->count(), 14);
    EXPECT_EQ(program.top().first, program.isoDay(0) + QStringLiteral(" Daily"));
}

TEST(CalendarModule, StaysWhereItIsWhileEarlierDaysAreLoaded) {
    CalendarPanel program;
    for (int day = -1400; day < 30; day += 2)
        program.add("Daily", day, {16, 0}, 60);
    program.expand();
    program.days.setShowsAllEvents(true);
    program.layOut();
    const int before = program.days.rows()->count();
    program.executor.hold();
    // Near the beginning, so that the days before it are asked for.
    QMetaObject::invokeMethod(program.list(), "positionViewAtBeginning");
    program.list()->setProperty("contentY", program.list()->property("contentY").toDouble() + 77);
    program.layOut();
    ASSERT_TRUE(program.days.isLoading());
    const auto place = program.top();
    program.executor.release();
    program.layOut();
    EXPECT_GT(program.days.rows()->count(), before + 500);
    EXPECT_EQ(program.top(), place);
}

TEST(CalendarModule, AsksBeforeItLoadsFurtherWhereNothingWasFound) {
    CalendarPanel program;
    program.add("Piano", 0, {16, 0}, 60);
    program.expand();
    program.days.setShowsAllEvents(true);
    program.layOut();
    EXPECT_TRUE(program.days.needsManualLoadEarlier());
    EXPECT_TRUE(program.days.needsManualLoadLater());
    const auto range = program.calendarStore.loadedCalendarStart();
    program.layOut();
    EXPECT_EQ(program.calendarStore.loadedCalendarStart(), range);
}

TEST(CalendarModule, KeepsTheCurrentRowWhenOthersComeAndGo) {
    CalendarPanel program;
    program.add("Piano", 0, {16, 0}, 60);
    const QString run = program.add("Run", 1, {10, 0}, 60);
    program.expand();
    program.focusCalendar();
    program.press(Qt::Key_Down);
    const QString lunch = program.add("Lunch", 0, {15, 0}, 30);
    program.settle();
    EXPECT_EQ(program.current(), QStringLiteral("Run"));
    program.database.dropEvent(lunch);
    program.settle();
    EXPECT_EQ(program.current(), QStringLiteral("Run"));
    program.database.dropEvent(run);
    program.settle();
    EXPECT_EQ(program.current(), QStringLiteral("Piano"));
}

TEST(CalendarModule, TakesACardThatIsLetGoOnADay) {
    CalendarPanel program;
    const QString id = program.Program::add(QStringLiteral("Call"), 0, {17, 0});
    program.expand();
    const QPointF place = program.placeOfDay(4);
    program.cues.heard.clear();
    program.carryCardTo(place);
    EXPECT_THAT(program.cues.heard, ElementsAre(Cue::dragStart, Cue::snap));
    EXPECT_EQ(program.interaction.activeReminderDragIDs(), QSet<QString>{id});
    EXPECT_EQ(program.calendarModule()->property("dropDay").toString(), program.isoDay(4));
    const QPointF global = program.geometry.panelFrame().topLeft() +
                           QPointF(place.x(), program.geometry.panelFrame().height() - place.y());
    EXPECT_TRUE(program.interaction.calendarWindowFrame().contains(global));
    program.interaction.collapse(false);
    EXPECT_TRUE(program.panel.isExpanded());

    program.letGoAt(place);
    EXPECT_EQ(program.cues.heard.back(), Cue::drop);
    program.settle();
    EXPECT_TRUE(program.interaction.activeReminderDragIDs().isEmpty());
    EXPECT_EQ(program.interaction.calendarWindowFrame(), QRectF());
    const auto due = program.database.reminder(id)->dueDateComponents;
    EXPECT_EQ(due->date(), program.day(4));
    EXPECT_EQ(due->time(), QTime(17, 0));
}

TEST(CalendarModule, LetsACardGoBackWhereItCameFrom) {
    struct Case {
        const char* what;
        std::function<void(CalendarPanel&)> end;
    };
    const std::vector<Case> cases{
        {"Escape",
         [](CalendarPanel& program) {
             program.carryCardTo(program.placeOfDay(4));
             program.press(Qt::Key_Escape);
             EXPECT_TRUE(program.interaction.activeReminderDragIDs().isEmpty());
             program.letGoAt(program.placeOfDay(4));
         }},
        {"beside the days",
         [](CalendarPanel& program) {
             program.carryCardTo(program.placeOfDay(4));
             program.moveTo({300, 200});
             EXPECT_EQ(program.calendarModule()->property("dropDay").toString(), QString());
             program.letGoAt({300, 200});
         }},
        {"on the day it is due",
         [](CalendarPanel& program) {
             program.carryCardTo(program.placeOfDay(0));
             program.letGoAt(program.placeOfDay(0));
         }},
    };
    for (const Case& c : cases) {
        CalendarPanel program;
        const QString id = program.Program::add(QStringLiteral("Call"), 0, {17, 0});
        program.expand();
        c.end(program);
        program.settle();
        EXPECT_EQ(program.database.reminder(id)->dueDateComponents->date(), program.day(0)) << c.what;
        EXPECT_TRUE(program.interaction.activeReminderDragIDs().isEmpty()) << c.what;
        EXPECT_TRUE(program.panel.isExpanded()) << c.what;
        EXPECT_NE(program.cues.heard.back(), Cue::drop) << c.what;
    }
}

TEST(CalendarModule, LeavesACardThatIsLetGoAmongTheOthersWhereItIs) {
    CalendarPanel program;
    for (const char* title : {"a", "b", "c"})
        program.Program::add(QString::fromUtf8(title));
    program.reminderStore.setSortMode(ReminderSortMode::title);
    program.expand();
    QSignalSpy recorded(&program.history, &HistoryViewModel::recorded);
    const QPointF behindB(436, 80);
    program.cues.heard.clear();
    program.carryCardTo(behindB);
    program.letGoAt(behindB);
    program.settle();
    EXPECT_THAT(program.cues.heard, ElementsAre(Cue::dragStart, Cue::snap, Cue::drop));
    EXPECT_EQ(program.titles(), (QStringList{"b", "a", "c"}));
    EXPECT_EQ(program.reminderStore.sortMode(), ReminderSortMode::manual);
    ASSERT_FALSE(recorded.empty());
    EXPECT_EQ(recorded.back().front().toString(), QStringLiteral("“a” moved · now in manual order"));
    program.history.undo();
    program.settle();
    EXPECT_EQ(program.titles(), (QStringList{"a", "b", "c"}));
    EXPECT_EQ(program.reminderStore.sortMode(), ReminderSortMode::title);
}

TEST(CalendarModule, TakesACardOnADayOfTheFullCalendar) {
    CalendarPanel program;
    const QString id = program.Program::add(QStringLiteral("Call"), 0, {17, 0});
    program.preferences.showRemindersInCalendar.set(false);
    for (int day = 0; day < 20; ++day)
        program.add("Daily", 2 * day, {16, 0}, 60);
    program.expand();
    program.days.setShowsAllEvents(true);
    program.layOut();
    const QPointF place = program.calendarModule()->mapToScene({100, 66});
    program.carryCardTo(place);
    EXPECT_EQ(program.calendarModule()->property("dropDay").toString(), program.isoDay(2));
    program.letGoAt(place);
    program.settle();
    EXPECT_EQ(program.database.reminder(id)->dueDateComponents->date(), program.day(2));
}

}  // namespace
