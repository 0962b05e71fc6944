#include "notch/NotchPanelController.h"
#include "recap/RecapShareLink.h"
#include "ui/PanelProgram.h"
#include "ui/recap/RecapViewModel.h"

#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QImage>

#include <gtest/gtest.h>

using namespace kestrant;
using namespace kestrant::test;

namespace {

/// A program in which three reminders were completed this week, two of them today, one of which the database
/// knows no more, and one last month.
struct LivedProgram : PanelProgram {
    LivedProgram() {
        EKReminderData data;
        data.title = QStringLiteral("Water the plants");
        data.calendarIdentifier = home;
        data.isCompleted = true;
        data.completionDate = parseIso8601(u"2026-11-21T07:40:00+01:00");
        database.putReminder(data);
        const auto completed = [](const char* when) {
            return ReminderCompletionState::completed(parseIso8601(QString::fromUtf8(when)));
        };
        EXPECT_TRUE(ledger.reconcile({{QStringLiteral("gone"), completed("2026-11-21T09:10:00+01:00")},
                                      {QStringLiteral("monday"), completed("2026-11-16T23:59:59+01:00")},
                                      {QStringLiteral("october"), completed("2026-10-31T12:00:00+01:00")}},
                                     {}, time.now()));
    }
    void toggleRecap() { press(Qt::Key_R, {}, Qt::ControlModifier); }
    void openRecap() {
        expand();
        toggleRecap();
        settle();
    }
};

TEST(Recap, OpensAndClosesByKeysAndHoldsThePanelOpenMeanwhile) {
    LivedProgram program;
    program.openRecap();
    EXPECT_TRUE(program.shows("This week"));
    EXPECT_TRUE(program.shows("Water the plants")) << "what was completed today";
    program.interaction.pointerExited();
    program.settle();
    EXPECT_TRUE(program.panel.isExpanded());

    program.press(Qt::Key_Right);
    program.press(Qt::Key_Return);
    EXPECT_EQ(program.recap.view(), QStringLiteral("week"));
    // From Saturday to Monday, which opens.
    program.press(Qt::Key_Left);
    for (int day = 5; day > 0; --day)
        program.press(Qt::Key_Left);
    program.press(Qt::Key_Return);
    EXPECT_EQ(program.recap.view(), QStringLiteral("day"));
    EXPECT_EQ(program.recap.card().label, QStringLiteral("Mon 16 Nov"));
    program.press(Qt::Key_Escape);
    EXPECT_EQ(program.recap.view(), QStringLiteral("overview"));
    program.press(Qt::Key_Escape);
    EXPECT_FALSE(program.recap.isOpen());
    EXPECT_TRUE(program.panel.isExpanded());

    program.toggleRecap();
    EXPECT_TRUE(program.recap.isOpen());
    program.toggleRecap();
    EXPECT_FALSE(program.recap.isOpen());
    program.click("Recap");
    EXPECT_TRUE(program.recap.isOpen());
    program.notifications.post(notifications::newReminder);
    QCoreApplication::processEvents();
    EXPECT_FALSE(program.recap.isOpen());
    EXPECT_TRUE(program.isOpen("quickAdd"));
    program.interaction.dismissOverlays();
    program.recap.open();
    program.interaction.collapse(false);
    EXPECT_FALSE(program.recap.isOpen());
}

TEST(Recap, TellsOfEachPeriodAndOfThoseBefore) {
    LivedProgram program;
    program.openRecap();
    struct Case {
        const char* view;
        const char* english;
        const char* french;
        const char* labelBefore;
        int countBefore;
    };
    for (const Case& each : {
             Case{"day", "Today (Sat 21 Nov): 2 reminders completed. ",
                  "Aujourd’hui (Sam. 21 nov.): 2 rappels terminés. ", "Fri 20 Nov", 0},
             Case{"week", "This week (16 – 22 Nov): 3 reminders completed. Best day: Saturday, with 2.",
                  "Cette semaine (16 – 22 nov.): 3 rappels terminés. Meilleur jour : samedi, avec 2.",
                  "9 – 15 Nov", 0},
             Case{"month",
                  "November (November 2026): 3 reminders completed. Best day: Sat 21, with 2. On 2 of 21 "
                  "days something got done.",
                  "Novembre (Novembre 2026): 3 rappels terminés. Meilleur jour : sam. 21, avec 2. Quelque "
                  "chose "
                  "de fait 2 jours sur 21.",
                  "October 2026", 1},
             Case{"year",
                  "2026: 4 reminders completed. Best day: 21 November, with 2. Busiest month: November, 3 "
                  "· most on Saturdays.",
                  "2026: 4 rappels terminés. Meilleur jour : 21 novembre, avec 2. Mois le plus rempli : "
                  "novembre, 3 · surtout le samedi.",
                  "2026", 4},
         }) {
        program.recap.setView(QString::fromUtf8(each.view));
        EXPECT_EQ(program.recap.card().plainText().trimmed(), QString::fromUtf8(each.english).trimmed());
        EXPECT_FALSE(program.recap.hasNext());
        program.recap.showPrevious();
        EXPECT_EQ(program.recap.card().label, QString::fromUtf8(each.labelBefore));
        EXPECT_EQ(program.recap.card().count(), each.countBefore);
        program.recap.setView(QString::fromUtf8(each.view));
        program.preferences.setLanguage(Language::french);
        EXPECT_EQ(program.recap.card().plainText().trimmed(), QString::fromUtf8(each.french).trimmed());
        program.preferences.setLanguage(Language::english);
    }
}

TEST(Recap, NamesWhatWasCompletedAsFarAsTheDatabaseKnows) {
    LivedProgram program;
    program.openRecap();
    program.recap.setView(QStringLiteral("day"));
    program.settle();
    const QVariantList rows = program.recap.rows();
    ASSERT_EQ(rows.size(), 2);
    EXPECT_EQ(rows[0].toMap()[QStringLiteral("title")], QStringLiteral("Water the plants"));
    EXPECT_EQ(rows[0].toMap()[QStringLiteral("list")], QStringLiteral("Home"));
    EXPECT_EQ(rows[1].toMap()[QStringLiteral("isKnown")], false);
    program.recap.setView(QStringLiteral("month"));
    program.settle();
    EXPECT_EQ(program.recap.dayHint(20)[QStringLiteral("spokenText")],
              QStringLiteral("Sat 21 Nov: 2 completed. Water the plants, 1 more"));
    EXPECT_EQ(program.recap.dayHint(21)[QStringLiteral("spokenText")], QStringLiteral("Sun 22 Nov: to come"));
    program.recap.showDay(21);
    EXPECT_EQ(program.recap.view(), QStringLiteral("month")) << "a day to come has nothing to show";
}

TEST(Recap, SavesAndCopiesACard) {
    LivedProgram program;
    program.openRecap();
    RecapSharing& sharing = *program.recap.sharing();
    sharing.begin(program.recap.card());
    QTemporaryDir folder;
    sharing.setPictureFolder(folder.path());
    const auto save = [&] {
        sharing.savePicture();
        program.settle();
    };
    save();
    save();
    EXPECT_EQ(
        QDir(folder.path()).entryList(QDir::Files),
        (QStringList{QStringLiteral("Kestrant 2026-W47 (2).png"), QStringLiteral("Kestrant 2026-W47.png")}));
    const QImage picture(folder.filePath(QStringLiteral("Kestrant 2026-W47.png")));
    EXPECT_EQ(picture.size(), QSize(720, 900)) << "two pixels a point";
    EXPECT_FALSE(sharing.hasFailed());

    QFile inTheWay(folder.filePath(QStringLiteral("file")));
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    sharing.setPictureFolder(inTheWay.fileName() + QStringLiteral("/below"));
    save();
    EXPECT_TRUE(sharing.hasFailed());

    sharing.copyPicture();
    EXPECT_EQ(QGuiApplication::clipboard()->image().size(), picture.size());
    sharing.copyText();
    EXPECT_EQ(QGuiApplication::clipboard()->text(), program.recap.card().plainText());
}

TEST(Recap, SharesALinkThatCanBeForgotten) {
    LivedProgram program;
    program.openRecap();
    program.click("Share this card");
    EXPECT_TRUE(program.isOpen("recapShare"));
    const QUrl link(program.recap.sharing()->link());
    EXPECT_EQ(link.host(), QStringLiteral("recap.example.org"));
    const auto shared = readRecapFragment(link.fragment().toLatin1());
    ASSERT_TRUE(shared);
    EXPECT_EQ(shared->days, (std::vector{1, 0, 0, 0, 0, 2}));
    program.press(Qt::Key_Return);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), link.toString());
    program.press(Qt::Key_Escape);
    program.click("Share this card");
    ASSERT_EQ(program.recap.sharing()->madeLinks().size(), 1) << "one link is remembered once";
    EXPECT_EQ(program.recap.sharing()->madeLinks()[0].toMap()[QStringLiteral("title")],
              QStringLiteral("16 – 22 Nov"));
    program.recap.sharing()->forgetLink(link.toString());
    EXPECT_TRUE(program.recap.sharing()->madeLinks().isEmpty());
}

TEST(Recap, BeginsWithAnEmptyYear) {
    PanelProgram program;
    program.expand();
    program.recap.open();
    program.settle();
    EXPECT_TRUE(program.shows("Your year starts here"));
    for (const char* view : {"day", "week", "month", "year"}) {
        program.recap.setView(QString::fromUtf8(view));
        program.settle();
        EXPECT_EQ(program.recap.card().number, QStringLiteral("0"));
        EXPECT_FALSE(program.recap.hasPrevious());
    }
}

}  // namespace
