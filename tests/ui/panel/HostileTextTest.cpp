#include "network/EventLoop.h"
#include "network/HttpTestServer.h"
#include "ui/PanelProgram.h"
#include "ui/WithEvents.h"
#include "ui/panel/SealedEngine.h"

#include <QDirIterator>
#include <QGuiApplication>
#include <QQmlComponent>
#include <QQuickWindow>
#include <QRegularExpression>

#include <gmock/gmock.h>
#include <sys/stat.h>

using namespace kestrant;
using namespace kestrant::test;

namespace {

constexpr int plainText = 0;

/// Calls back for every item of every window.
void visitItems(const std::function<void(QQuickItem&)>& visit) {
    const std::function<void(QQuickItem*)> descend = [&](QQuickItem* item) {
        visit(*item);
        for (QQuickItem* child : item->childItems())
            descend(child);
    };
    for (QWindow* window : QGuiApplication::allWindows()) {
        if (auto* view = qobject_cast<QQuickWindow*>(window)) {
            view->grabWindow();
            descend(view->contentItem());
        }
    }
}

/// A program full of texts that ask for pictures of a server and of files.
struct HostileProgram : WithEvents<PanelProgram> {
    HostileProgram() {
        const QString long10k(10'000, u'W');
        markup = QStringLiteral("<b>m</b>&amp;<img src=\"%1/x.png\"><img src='%1/y.svg'>"
                                "<img src=\"file://%2\"><a href=\"%1\">a</a>\n<table background=\"%1\">")
                     .arg(server.url(), fifo());
        list = database.putCalendar({.calendarIdentifier = markup,
                                     .title = markup,
                                     .color = Color{0x30, 0xd1, 0x58},
                                     .allowsEvents = true});
        for (const QString& text : {markup, markup + QStringLiteral(" 2"), long10k}) {
            EKReminderData reminder;
            reminder.title = text;
            reminder.notes = text;
            reminder.location = text;
            reminder.calendarIdentifier = list;
            reminder.dueDateComponents = DateComponents::fromDate(day(0));
            database.putReminder(reminder);
            EKEventData event =
                EventBuilder(anEvent(qPrintable(text.left(200))).titled(text).in(qPrintable(list)))
                    .lasting(at("Europe/Paris", day(0), QTime(15, 0)), std::chrono::hours(1));
            event.location = text;
            event.notes = text;
            database.putEvent(event);
        }
        database.setProblems({{markup, markup}});
        expand();
        reminders.setSelectedListId(list);
        settle();
    }
    /// A file that nobody writes to: whoever opens it waits for ever.
    QString fifo() const {
        const QString path = folder.filePath(QStringLiteral("fifo.png"));
        (void)::mkfifo(qPrintable(path), 0600);
        return path;
    }
    void invoke(const char* function, std::initializer_list<QVariant> values) {
        const QList<QVariant> given = values;
        QQuickItem* content = view.rootObject()->property("content").value<QQuickItem*>();
        const auto argument = [&](int index) { return Q_ARG(QVariant, given[index]); };
        if (given.size() == 1)
            QMetaObject::invokeMethod(content, function, argument(0));
        else
            QMetaObject::invokeMethod(content, function, argument(0), argument(1), argument(2));
        settle();
    }
    /// Checks what is on show, then closes what lies above the panel.
    void look(const char* what) {
        settle();
        visitItems([&](QQuickItem& item) {
            const QVariant format = item.property("textFormat");
            if (!format.isValid())
                return;
            ++seen;
            EXPECT_EQ(format.toInt(), plainText) << what << ": " << item.metaObject()->className();
        });
        view.overlays().dismissAll();
        settle();
    }
    /// In the middle of something that tells one of the texts when the pointer rests on it.
    QPointF placeWithTip() {
        QPointF place;
        visitItems([&](QQuickItem& item) {
            if (item.isVisible() && place.isNull() &&
                item.property("tip").toString().contains(QLatin1String("<img src")))
                place = item.mapToScene({item.width() / 2, item.height() / 2});
        });
        EXPECT_FALSE(place.isNull());
        return place;
    }
    QVariant firstEvent() {
        for (const CalendarEventItem& item : calendarStore.upcomingEvents()) {
            if (!item.isReminder)
                return QVariant::fromValue(item);
        }
        return {};
    }

    HttpTestServer server{[](const auto&) { return Answer::status(200, "x"); }};
    QString markup;
    QString list;
    int seen = 0;
};

TEST(HostileText, IsReadInEveryViewAndAsksForNothing) {
    HostileProgram program;
    EXPECT_TRUE(program.shows(qPrintable(program.markup)));
    program.look("the panel");
    for (const char* function : {"openLists", "openSort", "openQuickAdd", "openSettings", "openSearch"}) {
        program.call(function);
        program.look(function);
    }
    program.invoke("openCardMenu", {0, 40, 20});
    program.look("the menu of a card");
    program.invoke("openRowMenu", {1, 40, 20});
    program.look("the menu of a row");
    program.invoke("editCard", {0});
    program.look("the form of a reminder");
    program.invoke("editDueDate", {0});
    program.look("the due date");
    program.invoke("editRow", {program.firstEvent()});
    program.look("the form of an event");
    program.invoke("removeRow", {program.firstEvent()});
    program.look("the question whether to delete");
    program.invoke("showMessage", {program.markup});
    program.look("a message");
    Q_EMIT program.history.recorded(program.markup, QUuid());
    program.look("an offer");
    QTest::mouseMove(&program.view, program.placeWithTip().toPoint());
    EXPECT_TRUE(turnUntil([] {
        bool isShown = false;
        visitItems([&](QQuickItem& item) {
            isShown |= item.isVisible() && QByteArray(item.metaObject()->className()).startsWith("Tooltip");
        });
        return isShown;
    }));
    program.look("what lies under the pointer");
    program.days.setShowsAllEvents(true);
    program.look("the full calendar");
    program.database.setFailure(InMemoryEventStore::Operation::requestAccess,
                                EKError{EKError::Code::storage, {program.markup, program.markup}});
    program.reminderStore.systemDidWake();
    program.look("a failure");
    EXPECT_GT(program.seen, 300);
    EXPECT_TRUE(program.server.requests().empty());
    EXPECT_FALSE(program.server.hasPendingConnections());
}

const char* const asking = R"(
import QtQuick
Column {
    property string address
    property bool failed: picture.status === Image.Error
    Text { textFormat: Text.RichText; text: "<img src=\"" + parent.address + "/rich\">" }
    Text { textFormat: Text.StyledText; text: "<img src=\"" + parent.address + "/styled\">" }
    TextEdit { textFormat: TextEdit.RichText; text: "<img src=\"" + parent.address + "/edit\">" }
    Image { id: picture; source: parent.address + "/picture.png" }
    Loader { source: parent.address + "/View.qml" }
}
)";

/// What a view that asks for everything gets from an engine.
bool everythingFails(QQmlEngine& engine, const QString& address) {
    QQmlComponent component(&engine);
    component.setData(asking, QUrl(QStringLiteral("qrc:/asking.qml")));
    const std::unique_ptr<QObject> view(
        component.createWithInitialProperties({{QStringLiteral("address"), address}}));
    EXPECT_TRUE(view) << component.errorString().toStdString();
    QQuickWindow window;
    qobject_cast<QQuickItem*>(view.get())->setParentItem(window.contentItem());
    window.show();
    window.grabWindow();
    return turnUntil([&] { return view->property("failed").toBool(); });
}

TEST(SealedEngine, RefusesAddressesAndFilesWithoutARequest) {
    HttpTestServer server([](const auto&) { return Answer::status(404); });
    const QTemporaryDir folder;
    const QString fifo = folder.filePath(QStringLiteral("picture.png"));
    ASSERT_EQ(::mkfifo(qPrintable(fifo), 0600), 0);
    {
        QQmlEngine open;
        EXPECT_TRUE(everythingFails(open, server.url()));
        EXPECT_FALSE(server.requests().empty()) << "an engine that is not sealed does ask";
    }
    // Another one, since the first may still be asked by what has gone.
    HttpTestServer watched([](const auto&) { return Answer::status(404); });
    SealedEngine sealed;
    for (const QString& address : {watched.url(), QStringLiteral("file://") + folder.path(), folder.path()})
        EXPECT_TRUE(everythingFails(sealed, address)) << address.toStdString();
    EXPECT_TRUE(watched.requests().empty());
}

TEST(Views, ShowTextByTheOneComponentThatKnowsNoMarkup) {
    const QRegularExpression bareText(QStringLiteral("(?<![A-Za-z.])(Text|Label|TextArea|TextField)\\s*\\{"));
    const QRegularExpression edit(QStringLiteral("\\bTextEdit\\s*\\{"));
    const QRegularExpression format(QStringLiteral("textFormat\\s*:(?!\\s*Text(Edit)?\\.PlainText\\b)"));
    const QRegularExpression fetching(
        QStringLiteral("\\b(Image|AnimatedImage|BorderImage|FontLoader|XMLHttpRequest|WebSocket)\\b"));
    int files = 0;
    QDirIterator views(QStringLiteral(":/qt/qml/Kestrant"), {QStringLiteral("*.qml")}, QDir::Files);
    while (views.hasNext()) {
        const QString name = views.next();
        QFile file(name);
        ASSERT_TRUE(file.open(QFile::ReadOnly));
        const QString source = QString::fromUtf8(file.readAll());
        ++files;
        EXPECT_TRUE(name.endsWith(QLatin1String("/PlainText.qml")) || !source.contains(bareText))
            << name.toStdString();
        EXPECT_FALSE(source.contains(format)) << name.toStdString();
        EXPECT_FALSE(source.contains(fetching)) << name.toStdString();
        EXPECT_EQ(source.count(edit), source.count(QStringLiteral("textFormat: TextEdit.PlainText")))
            << name.toStdString();
    }
    EXPECT_GT(files, 60);
}

}  // namespace
