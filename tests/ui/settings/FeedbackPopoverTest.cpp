#include "network/EventLoop.h"
#include "network/HttpTestServer.h"
#include "ui/PanelProgram.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

using namespace kestrant;
using namespace kestrant::test;

namespace {

/// The panel with the form open, its messages going to a server that answers as told.
struct OpenForm : PanelProgram {
    OpenForm() {
        expand();
        view.overlays().present(QStringLiteral("feedback"), QStringLiteral("FeedbackPopover.qml"),
                                view.contentItem(), {{QStringLiteral("form"), QVariant::fromValue(&form)}});
        QCoreApplication::processEvents();
    }
    void write(const QString& text) {
        for (const QChar letter : text)
            press(letter.toUpper().unicode(), letter);
    }
    void pressTab() { press(Qt::Key_Tab); }
    [[nodiscard]] QJsonObject sent() const {
        return QJsonDocument::fromJson(server.requests().back().body()).object();
    }

    Answer answer = Answer::status(200, "{\"ok\":true}");
    HttpTestServer server{[this](const auto&) { return answer; }};
    FeedbackAPIClient client{
        InformationDictionary({{InformationDictionary::feedbackBaseUrlKey, server.url()}}), session};
    FeedbackViewModel form{[this]() -> FeedbackAPIClient& { return client; }, localizer};
};

TEST(FeedbackPopover, SendsWhatIsTypedAndIsLeftByTheDoneButton) {
    OpenForm program;
    EXPECT_FALSE(program.form.canSend());
    EXPECT_TRUE(program.shows("0/4000"));
    program.write(QStringLiteral("hello"));
    program.pressTab();
    program.write(QStringLiteral("me@example"));
    EXPECT_FALSE(program.form.emailProblem().isEmpty());
    EXPECT_FALSE(program.form.canSend());
    program.write(QStringLiteral(".com"));
    EXPECT_TRUE(program.form.emailProblem().isEmpty());
    program.press(Qt::Key_Return);
    ASSERT_TRUE(turnUntil([&] { return program.form.didSend(); }));
    EXPECT_EQ(
        program.sent(),
        QJsonObject({{"category", "suggestion"}, {"message", "hello"}, {"replyEmail", "me@example.com"}}));
    program.press(Qt::Key_Space, QStringLiteral(" "));
    EXPECT_FALSE(program.isOpen("feedback"));
}

TEST(FeedbackPopover, KeepsTheWordsWhenTheServiceRefusesThem) {
    OpenForm program;
    program.answer = Answer::status(429, "{\"code\":\"rate_limited\"}");
    program.write(QStringLiteral("hello"));
    program.form.send();
    EXPECT_TRUE(program.form.isSending());
    EXPECT_TRUE(program.shows("Send")) << "while sending, too";
    ASSERT_TRUE(turnUntil([&] { return !program.form.isSending(); }));
    EXPECT_EQ(program.form.errorText(),
              QStringLiteral("A few messages were sent recently. Please try again later."));
    program.preferences.setLanguage(Language::french);
    EXPECT_EQ(program.form.errorText(),
              QString::fromUtf8("Plusieurs messages ont été envoyés récemment. Réessayez un peu plus tard."));
    EXPECT_EQ(program.form.message(), QStringLiteral("hello"));
    program.press(Qt::Key_Escape);
    EXPECT_FALSE(program.isOpen("feedback"));
    EXPECT_TRUE(program.form.message().isEmpty()) << "nothing is kept between openings";
}

TEST(FeedbackPopover, KeepsItsButtonsOnTheScreenBelowPagesOfAServer) {
    OpenForm program;
    const double usual = findText(&program.keyItem(), QStringLiteral("Send"))->mapToScene({0, 0}).y();
    const QString pages = QStringLiteral("<h1>no</h1>\n").repeated(2'000);
    program.answer =
        Answer::status(400, QJsonDocument(QJsonObject{{"error", pages}}).toJson(QJsonDocument::Compact));
    program.write(QStringLiteral("hello"));
    program.form.send();
    ASSERT_TRUE(turnUntil([&] { return !program.form.isSending(); }));
    program.settle();
    ASSERT_TRUE(program.form.errorText().startsWith(QStringLiteral("<h1>no</h1>")));
    const double low = findText(&program.keyItem(), QStringLiteral("Send"))->mapToScene({0, 0}).y();
    EXPECT_GT(low, usual);
    EXPECT_LT(low, usual + 130);
}

TEST(FeedbackPopover, IsReachedFromTheSettingsWhereThereIsAServiceToWriteTo) {
    PanelProgram program;
    program.expand();
    FeedbackViewModel nowhere({}, program.localizer);
    SettingsViewModel without(program.preferences, program.localizer, nowhere);
    for (SettingsViewModel* settings : {&without, &program.settings}) {
        program.view.overlays().present(QStringLiteral("settings"), QStringLiteral("SettingsPopover.qml"),
                                        program.view.contentItem(),
                                        {{QStringLiteral("settings"), QVariant::fromValue(settings)}});
        program.settle();
        EXPECT_EQ(program.shows("Send feedback"), settings == &program.settings);
        if (settings == &without) {
            program.view.overlays().dismissAll();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
    }
    auto* entry = program.keyItem().findChild<QQuickItem*>(QStringLiteral("settings.feedback"));
    ASSERT_NE(entry, nullptr);
    entry->forceActiveFocus(Qt::TabFocusReason);
    program.settle();
    QTest::mouseMove(&program.view, entry->mapToScene({10, 10}).toPoint());
    EXPECT_TRUE(turnUntil([&] { return program.shows("Send feedback from Kestrant"); }));
}

}  // namespace
