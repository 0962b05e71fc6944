#include "foundation/CurrentTimeZone.h"
#include "ui/PanelProgram.h"
#include "ui/WithCalendars.h"

#include <QTest>

#include <gmock/gmock.h>

#include <chrono>
#include <utility>

using namespace kestrant;
using namespace kestrant::test;
using testing::ElementsAre;

namespace {

/// The expanded panel with an event of today, 15:00 to 16:00, and a reminder due at 18:00.
struct Editing : WithCalendars<PanelProgram> {
    Editing() {
        putEvent("Piano", QTime(15, 0), QTime(16, 0));
        reminder = add(QStringLiteral("Plants"), 0, QTime(18, 0));
        expand();
        settle();
    }

    /// Calls what the calendar and the cards call.
    void act(const char* function, const QVariant& subject) {
        auto* content = view.rootObject()->property("content").value<QQuickItem*>();
        for (QObject* child : content->children()) {
            if (QByteArray(child->metaObject()->className()).contains("EditActions"))
                QMetaObject::invokeMethod(child, function, Q_ARG(QVariant, subject),
                                          Q_ARG(QVariant, QVariant::fromValue(content)));
        }
        settle();
    }
    void edit(const char* title) { act("editRow", shown(title)); }
    void remove(const char* title) { act("removeRow", shown(title)); }

    void type(const QString& text) {
        for (const QChar letter : text)
            press(letter.toUpper().unicode(), letter);
    }
    /// Presses Tab until what has the focus bears this name.
    void tabTo(const char* spokenName) {
        for (int presses = 0; presses < 20; ++presses) {
            if (focusedName() == QString::fromUtf8(spokenName))
                return;
            press(Qt::Key_Tab);
        }
        ADD_FAILURE() << "Tab does not lead to " << spokenName;
    }
    /// The name of the control that has the focus; of a text field, that of its frame.
    [[nodiscard]] QString focusedName() {
        for (QQuickItem* item = view.activeFocusItem(); item; item = item->parentItem()) {
            for (const char* property : {"spokenName", "label"}) {
                if (const QString name = item->property(property).toString(); !name.isEmpty())
                    return name;
            }
            if (const QString text = item->property("text").toString();
                !text.isEmpty() && item->metaObject()->indexOfSignal("clicked()") >= 0)
                return text;
        }
        return {};
    }

    /// When the reminder with this title is due.
    [[nodiscard]] std::optional<Instant> dueDate(const char* title) {
        for (const EKReminderData& data : database.reminders()) {
            if (data.title == QString::fromUtf8(title) && data.dueDateComponents)
                return currentZone.zone().instantFrom(*data.dueDateComponents);
        }
        return std::nullopt;
    }

    /// Lets reloads pass and the views follow.
    void settle() {
        WithCalendars::settle();
        view.grabWindow();
        QCoreApplication::processEvents();
    }

    QString reminder;
};

TEST(EditingViews, EditAnEventByKeyboardAlone) {
    Editing program;
    program.edit("Piano");
    ASSERT_TRUE(program.isOpen("edit"));
    EXPECT_TRUE(program.shows("Edit event"));
    program.type(QStringLiteral(" lesson"));
    program.tabTo("Starts, time");
    program.press(Qt::Key_A, QStringLiteral("9"));
    program.tabTo("Location");
    program.type(QStringLiteral("Paris"));
    program.press(Qt::Key_Return);
    program.settle();
    EXPECT_FALSE(program.isOpen("edit"));
    EXPECT_EQ(program.onlyEvent().title, QStringLiteral("Piano lesson"));
    EXPECT_EQ(program.onlyEvent().location, QStringLiteral("Paris"));
}

TEST(EditingViews, ShowWhatAnEventSaysAndOpenItsLinksAlone) {
    Editing program;
    EKEventData lesson = anEvent("Lesson")
                             .in(qPrintable(program.personal))
                             .lasting(program.today({14, 45}), program.today({15, 45}));
    lesson.notes = QStringLiteral("<b>Join</b> https://meet.example.org/x or javascript:alert(1)");
    lesson.location = QStringLiteral("8 Mill Lane");
    lesson.alarms = {EKAlarm::at(lesson.startDate - std::chrono::minutes(10))};
    program.database.putEvent(lesson);
    program.settle();
    QStringList opened;
    QObject::connect(&program.eventDetails, &EventDetailsViewModel::linkRequested, &program.view,
                     [&](const QUrl& link) { opened.append(link.toString()); });

    program.act("showDetails", program.shown("Lesson"));
    ASSERT_TRUE(program.isOpen("details"));
    for (const char* words :
         {"Lesson", "Today 14:45 – 15:45", "8 Mill Lane", "10 min before", "Private", "meet.example.org/x",
          "<b>Join</b> https://meet.example.org/x or javascript:alert(1)"})
        EXPECT_TRUE(program.shows(words)) << words;
    EXPECT_FALSE(program.row("Lesson").canBeJoined) << "a quarter of an hour before";
    EXPECT_EQ(program.eventDetails.joinLink(), QString());
    program.click("https://meet.example.org/x");
    program.eventDetails.open(QStringLiteral("javascript:alert(1)"));
    EXPECT_THAT(opened, ElementsAre(QStringLiteral("https://meet.example.org/x")));

    program.time.advance(std::chrono::minutes(5));
    program.days.refreshPresent();
    program.eventDetails.refreshPresent();
    EXPECT_TRUE(program.row("Lesson").canBeJoined);
    EXPECT_TRUE(program.shows("in 10 min"));
    program.click("Join the meeting");
    EXPECT_EQ(opened.size(), 2);
    program.click("Edit");
    EXPECT_FALSE(program.isOpen("details"));
    EXPECT_TRUE(program.isOpen("edit"));
}

TEST(EditingViews, ReachEveryControlOfTheEventByTab) {
    Editing program;
    program.edit("Piano");
    QStringList names;
    do {
        names.append(program.focusedName());
        program.press(Qt::Key_Tab);
    } while (program.focusedName() != names.first() && names.size() < 30);
    EXPECT_THAT(names,
                ElementsAre(QStringLiteral("Event title"), QStringLiteral("All day"),
                            QStringLiteral("Starts, Sat 21 Nov"), QStringLiteral("Starts, time"),
                            QStringLiteral("Ends, Sat 21 Nov"), QStringLiteral("Ends, time"),
                            QStringLiteral("Calendar, Private"), QStringLiteral("Location"),
                            QStringLiteral("Notes"), QStringLiteral("Cancel"), QStringLiteral("Save")));
}

TEST(EditingViews, LeaveEverythingAsItWasOnEscape) {
    Editing program;
    const EKEventData before = program.onlyEvent();
    program.edit("Piano");
    program.type(QStringLiteral("s"));
    program.press(Qt::Key_Escape);
    program.settle();
    EXPECT_FALSE(program.isOpen("edit"));
    EXPECT_EQ(program.onlyEvent(), before);
    EXPECT_TRUE(program.panel.isExpanded());
}

TEST(EditingViews, ShowAFailureInThePopoverThatStaysOpenAndGrowsForIt) {
    Editing program;
    program.edit("Piano");
    program.type(QStringLiteral(" lesson"));
    const int height = program.keyItem().height();
    program.database.dropEvent(QStringLiteral("Piano"));
    program.settle();
    program.press(Qt::Key_Return);
    program.settle();
    EXPECT_TRUE(program.isOpen("edit"));
    EXPECT_TRUE(program.shows("This event is no longer available."));
    EXPECT_TRUE(program.shows("Piano lesson"));
    EXPECT_GT(program.keyItem().height(), height);
    program.preferences.setLanguage(Language::french);
    EXPECT_TRUE(program.shows("Cet événement n’est plus disponible."));
}

TEST(EditingViews, ShowWhatCanBeChosenInTheFormsPlace) {
    Editing program;
    program.edit("Piano");
    const OverlayHost& overlays = program.view.overlays();
    const QQuickItem& form = *overlays.surface(QStringLiteral("edit"));
    for (const auto& [opener, page] :
         {std::pair("Starts, Sat 21 Nov", "day"), std::pair("Calendar, Private", "choice")}) {
        program.tabTo(opener);
        program.press(Qt::Key_Space, QStringLiteral(" "));
        ASSERT_TRUE(program.isOpen(page));
        ASSERT_EQ(overlays.surfaces().size(), 1U) << page;
        EXPECT_EQ(overlays.surfaces().front().frame.topLeft(), form.position()) << page;
        EXPECT_EQ(overlays.surfaces().front().frame.width(), form.width()) << page;
        program.click("Back");
        EXPECT_FALSE(program.isOpen(page));
        EXPECT_TRUE(program.isOpen("edit"));
    }
}

TEST(EditingViews, PickADayByKeyboardAndGoBackToTheOldOneOnEscape) {
    Editing program;
    program.edit("Piano");
    program.tabTo("Starts, Sat 21 Nov");
    program.press(Qt::Key_Space, QStringLiteral(" "));
    program.press(Qt::Key_Right);
    program.press(Qt::Key_PageDown);
    program.press(Qt::Key_Escape);
    EXPECT_FALSE(program.isOpen("day"));
    EXPECT_EQ(program.calendarEdit.times()->startDay()->isoDay(), program.isoDay(0));

    program.press(Qt::Key_Space, QStringLiteral(" "));
    program.press(Qt::Key_Down);
    program.press(Qt::Key_Return);
    EXPECT_FALSE(program.isOpen("day"));
    EXPECT_TRUE(program.isOpen("edit"));
    program.press(Qt::Key_Tab);
    program.press(Qt::Key_Return);
    program.settle();
    EXPECT_EQ(program.onlyEvent().startDate, at("Europe/Paris", program.day(7), {15, 0}));
}

TEST(EditingViews, DeleteAnEventOnlyAfterAsking) {
    Editing program;
    program.remove("Piano");
    EXPECT_TRUE(program.shows("Delete event?"));
    EXPECT_TRUE(program.shows("This will delete the event from “Private”."));
    EXPECT_TRUE(program.shows("Piano"));
    // The keyboard begins on Cancel, which is seen as soon as a key may act on it.
    program.appearance.setShowsFocus(false);
    program.press(Qt::Key_Shift);
    EXPECT_FALSE(program.appearance.showsFocus());
    program.press(Qt::Key_F10);
    EXPECT_TRUE(program.appearance.showsFocus());
    program.press(Qt::Key_Return);
    program.settle();
    EXPECT_FALSE(program.isOpen("confirm"));
    EXPECT_EQ(program.database.allEvents().size(), 1u);

    program.fillDisk();
    program.remove("Piano");
    program.press(Qt::Key_Tab);
    program.press(Qt::Key_Return);
    program.settle();
    EXPECT_TRUE(program.isOpen("confirm"));
    EXPECT_TRUE(program.shows("Disk full."));

    program.clearDisk();
    program.press(Qt::Key_Return);
    program.settle();
    EXPECT_FALSE(program.isOpen("confirm"));
    EXPECT_TRUE(program.database.allEvents().empty());
}

TEST(EditingViews, TakeAReminderOutOfTheCalendarOnlyAfterAsking) {
    Editing program;
    program.preferences.setLanguage(Language::french);
    program.remove("Plants");
    EXPECT_TRUE(program.shows("Retirer le rappel du calendrier ?"));
    EXPECT_TRUE(program.shows("L’échéance sera effacée dans vos rappels. Le rappel restera dans sa liste."));
    EXPECT_TRUE(program.shows("Détacher"));
    program.press(Qt::Key_Tab);
    program.press(Qt::Key_Return);
    program.settle();
    EXPECT_FALSE(program.isOpen("confirm"));
    EXPECT_EQ(program.database.reminder(program.reminder)->dueDateComponents, std::nullopt);
}

TEST(EditingViews, EditAReminderFromItsRowAndFromItsCard) {
    Editing program;
    program.edit("Plants");
    EXPECT_TRUE(program.shows("Edit reminder"));
    program.type(QStringLiteral(" and herbs"));
    program.tabTo("Notes");
    program.type(QStringLiteral("a"));
    program.press(Qt::Key_Return, QStringLiteral("\n"));
    program.type(QStringLiteral("b"));
    program.tabTo("Save");
    program.press(Qt::Key_Space, QStringLiteral(" "));
    program.settle();
    EXPECT_FALSE(program.isOpen("edit"));
    EXPECT_EQ(program.database.reminder(program.reminder)->title, QStringLiteral("Plants and herbs"));
    EXPECT_EQ(program.database.reminder(program.reminder)->notes, QStringLiteral("a\nb"));

    program.press(Qt::Key_Return);
    EXPECT_TRUE(program.isOpen("edit"));
    EXPECT_TRUE(program.shows("Plants and herbs"));
}

TEST(EditingViews, KeepWhatWasWrittenWhenThePanelFolds) {
    Editing program;
    program.edit("Plants");
    program.type(QStringLiteral(" and"));
    program.view.overlays().dismissAll();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    program.edit("Plants");
    EXPECT_TRUE(program.shows("Plants and"));
    EXPECT_TRUE(program.shows("Unsaved changes restored"));
    program.press(Qt::Key_Escape);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    program.edit("Plants");
    EXPECT_FALSE(program.shows("Plants and"));
    program.press(Qt::Key_Escape);

    program.call("openQuickAdd");
    program.type(QStringLiteral("Call"));
    program.view.overlays().dismissAll();
    program.settle();
    program.call("openQuickAdd");
    EXPECT_EQ(program.quickAdd.title(), QStringLiteral("Call"));
    program.press(Qt::Key_Escape);
    EXPECT_EQ(program.quickAdd.title(), QString());
}

TEST(EditingViews, MoveADueDateByKeyboardInOneStepOfTheHistory) {
    Editing program;
    const auto before = program.dueDate("Plants");
    program.press(Qt::Key_D);
    ASSERT_TRUE(program.isOpen("due"));
    EXPECT_THAT(program.interaction.presentedOverlayIDs(), testing::Contains(QStringLiteral("due")));
    program.press(Qt::Key_Right);
    program.press(Qt::Key_Return);
    program.settle();
    EXPECT_FALSE(program.isOpen("due"));
    EXPECT_EQ(program.dueDate("Plants"), at("Europe/Paris", program.day(1), {18, 0}));
    EXPECT_EQ(program.history.undoText(), QStringLiteral("Undo: Reschedule reminder"));

    program.press(Qt::Key_D);
    program.tabTo("No date");
    program.press(Qt::Key_Space);
    program.tabTo("Save");
    program.press(Qt::Key_Space);
    program.settle();
    EXPECT_EQ(program.dueDate("Plants"), std::nullopt);
    program.history.undo();
    program.settle();
    program.history.undo();
    program.settle();
    EXPECT_EQ(program.dueDate("Plants"), before);

    program.press(Qt::Key_D);
    program.press(Qt::Key_Down);
    program.press(Qt::Key_Escape);
    program.settle();
    EXPECT_EQ(program.dueDate("Plants"), before);
}

TEST(EditingViews, GiveACardWithoutADateTheDayThatIsToday) {
    Editing program;
    program.add(QStringLiteral("Undated"));
    program.settle();
    program.press(Qt::Key_End);
    program.press(Qt::Key_D);
    program.tabTo("Time, empty for the whole day");
    program.type(QStringLiteral("20:15"));
    program.press(Qt::Key_Return);
    program.settle();
    EXPECT_EQ(program.dueDate("Undated"), at("Europe/Paris", program.day(0), {20, 15}));
}

TEST(EditingViews, OpenTheDueDateOnAClickOnWhatItSays) {
    Editing program;
    const QPointF card(26, 44);
    program.click(card + QPointF(45, 57));
    EXPECT_TRUE(program.isOpen("due"));
    program.press(Qt::Key_Escape);
    program.click(card + QPointF(200, 57));
    EXPECT_FALSE(program.isOpen("due"));
}

TEST(EditingViews, ClearADateByItsCrossAndChooseAnotherBesideIt) {
    Editing program;
    const auto dateChip = [&]() -> QQuickItem& {
        const QString day = program.reminderEdit.dueDay()->isoDay();
        const QString says =
            day.isEmpty() ? QStringLiteral("Add a date") : program.reminderEdit.dueDay()->text();
        QQuickItem* chip = findText(&program.keyItem(), QStringLiteral("Due, ") + says, "spokenName");
        EXPECT_NE(chip, nullptr) << says.toStdString();
        return chip ? *chip : program.keyItem();
    };
    const auto clickChip = [&](double fromTheRight) {
        QQuickItem& chip = dateChip();
        program.click(chip.mapToScene({chip.width() - fromTheRight, chip.height() / 2}));
        program.settle();
    };
    program.act("editReminder", program.reminder);
    ASSERT_TRUE(dateChip().property("showsCross").toBool());
    clickChip(15);
    EXPECT_EQ(program.view.overlays().topmost(), QStringLiteral("edit")) << "nothing else opens";
    EXPECT_EQ(program.reminderEdit.dueDay()->isoDay(), QString());
    EXPECT_FALSE(dateChip().property("showsCross").toBool());
    clickChip(15);
    EXPECT_NE(program.view.overlays().topmost(), QStringLiteral("edit"));
}

TEST(EditingViews, OpenTheReminderOnADoubleClickOnItsCard) {
    Editing program;
    const QPoint card(146, 84);
    program.click(card);
    EXPECT_FALSE(program.isOpen("edit"));
    QTest::mouseDClick(&program.view, Qt::LeftButton, {}, card);
    EXPECT_TRUE(program.isOpen("edit"));
}

TEST(EditingViews, AddAnEventFromTheOtherTabAndComeBackToIt) {
    Editing program;
    program.call("openQuickAdd");
    program.type(QStringLiteral("Dinner"));
    program.press(Qt::Key_Backtab);
    program.press(Qt::Key_Right);
    EXPECT_EQ(program.newEvent.title(), QStringLiteral("Dinner"));
    program.tabTo("Starts, time");
    program.press(Qt::Key_Return);
    program.settle();
    EXPECT_FALSE(program.isOpen("quickAdd"));
    ASSERT_EQ(program.database.allEvents().size(), 2u);
    EXPECT_EQ(program.titles(), QStringList{QStringLiteral("Plants")});

    program.call("openQuickAdd");
    EXPECT_TRUE(program.shows("Event title"));
    program.fillDisk();
    program.type(QStringLiteral("Cinema"));
    program.press(Qt::Key_Return);
    program.settle();
    EXPECT_TRUE(program.isOpen("quickAdd"));
    EXPECT_TRUE(program.shows("Disk full."));
}

}  // namespace
