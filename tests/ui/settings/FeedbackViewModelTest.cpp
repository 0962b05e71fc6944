#include "network/EventLoop.h"
#include "network/HttpTestServer.h"
#include "ui/Program.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <chrono>

using namespace kestrant;
using namespace kestrant::test;

namespace {

using Kind = FeedbackSubmissionError::Kind;
using Dictionary = InformationDictionary;

/// A form whose messages go to a server that answers as told.
struct FeedbackTest : ::testing::Test, Program {
    /// Sends and waits for the end; the error shown, in English, or nothing.
    QString send() {
        form.send();
        EXPECT_TRUE(form.isSending());
        EXPECT_FALSE(form.canSend()) << "one submission at a time";
        EXPECT_TRUE(turnUntil([this] { return !form.isSending(); }));
        return form.errorText();
    }
    [[nodiscard]] QJsonObject lastBody() const {
        return QJsonDocument::fromJson(server.requests().back().body()).object();
    }

    Answer answer = Answer::status(200, "{\"ok\":true}");
    HttpTestServer server{[this](const auto&) { return answer; }};
    Dictionary information{
        {{Dictionary::feedbackBaseUrlKey, server.url() + "/api"}, {Dictionary::shortVersionKey, "1.2"}}};
    FeedbackAPIClient client{information, session};
    FeedbackViewModel form{[this]() -> FeedbackAPIClient& { return client; }, localizer};
};

TEST_F(FeedbackTest, OneMessageIsOneRequestWithNothingElse) {
    form.setCategory("problem");
    form.setMessage(QString::fromUtf8("  Ça ne “marche” pas \n"));
    form.setReplyEmail(" me@example.com ");
    EXPECT_EQ(send(), "");
    EXPECT_TRUE(form.didSend());
    EXPECT_FALSE(form.canSend());
    form.send();
    ASSERT_EQ(server.requests().size(), 1U);
    const RecordedRequest& request = server.requests().front();
    EXPECT_EQ(request.requestLine(), "POST /api/v1/feedback HTTP/1.1");
    EXPECT_EQ(request.headers().at("content-type"), "application/json");
    EXPECT_EQ(request.headers().at("accept"), "application/json");
    EXPECT_EQ(lastBody(), QJsonObject({{"category", "problem"},
                                       {"message", QString::fromUtf8("Ça ne “marche” pas")},
                                       {"replyEmail", "me@example.com"},
                                       {"appVersion", "1.2"}}));
}

TEST_F(FeedbackTest, WhatIsAbsentHasNoKey) {
    FeedbackAPIClient bare(information.overlaidBy({{Dictionary::shortVersionKey, QJsonValue()}}), session);
    FeedbackViewModel empty([&]() -> FeedbackAPIClient& { return bare; }, localizer);
    empty.setMessage("Hello");
    empty.setReplyEmail("  ");
    empty.send();
    ASSERT_TRUE(turnUntil([&] { return empty.didSend(); }));
    EXPECT_EQ(lastBody(), QJsonObject({{"category", "suggestion"}, {"message", "Hello"}}));
}

TEST_F(FeedbackTest, AMessageNeedsOneToFourThousandCharacters) {
    const QString family = QString::fromUtf8("👨‍👩‍👧‍👦");
    struct Case {
        QString message;
        const char* counter;
        bool canBeSent;
    };
    for (const Case& c :
         {Case{"", "0/4000", false}, Case{" \n\t\u00a0\u2028 ", "6/4000", false}, Case{"x", "1/4000", true},
          Case{QString(4000, 'x'), "4000/4000", true}, Case{QString(4001, 'x'), "4001/4000", false},
          Case{QString(3999, 'x') + "  ", "4001/4000", false}, Case{family.repeated(4000), "4000/4000", true},
          Case{"e\u0301", "1/4000", true}}) {
        form.setMessage(c.message);
        EXPECT_EQ(form.messageCounter(), c.counter);
        EXPECT_EQ(form.canSend(), c.canBeSent) << c.counter;
    }
}

TEST_F(FeedbackTest, AnAddressIsEmptyOrLooksLikeOne) {
    form.setMessage("x");
    const QString longest = QString(244, 'x') + "@example.c";
    for (const QString& valid : {QString(), QString("  \n"), QString("a@b.c"), QString(" a@b.c "),
                                 QString("first.last+tag@mail.example.org"), longest}) {
        form.setReplyEmail(valid);
        EXPECT_EQ(form.emailProblem(), QString()) << valid.toStdString();
        EXPECT_TRUE(form.canSend());
    }
    for (const QString& invalid :
         {QString("a"), QString("a@b"), QString("@b.c"), QString("a@.c"), QString("a@b."), QString("a b@c.d"),
          QString("a@b c.d"), QString("a\u00a0@b.c"), QString("a@b@c.d"), QString("a@b.c\nd"),
          QString("x" + longest)}) {
        form.setReplyEmail(invalid);
        EXPECT_EQ(form.emailProblem(), "Enter a valid email address.") << invalid.toStdString();
        EXPECT_FALSE(form.canSend());
    }
}

TEST_F(FeedbackTest, EveryAnswerHasItsWords) {
    const auto invalid = "The feedback service returned an invalid response. Please try again.";
    const auto refused = "Couldn’t send feedback. Please try again.";
    const auto check = "Check your message and email address, then try again.";
    const std::pair<Answer, const char*> cases[] = {
        {Answer::status(200, "{\"ok\":false}"), invalid},
        {Answer::status(200, "{\"ok\":\"true\"}"), invalid},
        {Answer::status(204), invalid},
        {Answer::status(200, "<html>"), invalid},
        {Answer{"HTTP/1.1 200 OK\r\nContent-Length: 99999999\r\n\r\n", 99999999}, invalid},
        {Answer::status(429, R"({"code":"rate_limited","error":"slow down"})"),
         "A few messages were sent recently. Please try again later."},
        {Answer::status(422, R"({"code":"invalid_feedback"})"), check},
        {Answer::status(422, R"({"code":"invalid_email"})"), check},
        {Answer::status(404, R"({"code":"not_found"})"),
         "The feedback service isn’t available yet. Please try again later."},
        {Answer::status(400, R"({"code":"x","error":"Réservé <b>"})"), "Réservé <b>"},
        {Answer::status(500, "oops"), refused},
        {Answer::status(500, R"({"code":7,"error":"not shown"})"), refused},
        {Answer::status(500, R"({"code":null,"error":"  "})"), refused},
        {Answer::status(307, "", "Location: file:///etc/passwd\r\n"), refused},
        {Answer::cutOff(), "Couldn’t send feedback. Check your internet connection and try again."},
    };
    form.setMessage("Keep this");
    for (const auto& [reply, words] : cases) {
        answer = reply;
        EXPECT_EQ(send(), QString::fromUtf8(words)) << reply.bytes.toStdString();
        EXPECT_EQ(form.message(), "Keep this");
        EXPECT_FALSE(form.didSend());
        EXPECT_TRUE(form.canSend());
    }
    answer = Answer::status(200, R"({"ok":true,"more":1})");
    EXPECT_EQ(send(), "");
    EXPECT_EQ(server.requests().size(), std::size(cases) + 1) << "nothing is sent twice";
}

TEST_F(FeedbackTest, NoAnswerWithinTwentySecondsIsNone) {
    answer = Answer::silence();
    form.setMessage("x");
    form.send();
    ASSERT_TRUE(turnUntil([this] { return !server.requests().empty(); }));
    time.advance(std::chrono::seconds(20));
    EXPECT_FALSE(form.isSending());
    EXPECT_EQ(form.errorText(), FeedbackSubmissionError{Kind::unavailable}.description().english);
}

TEST_F(FeedbackTest, AMessageFollowsTheService) {
    HttpTestServer moved([](const auto&) { return Answer::status(200, "{\"ok\":true}"); });
    answer = Answer::status(308, "", "Location: " + moved.url().toLatin1() + "/new\r\n");
    form.setMessage("Hello");
    EXPECT_EQ(send(), "");
    ASSERT_EQ(moved.requests().size(), 1U);
    EXPECT_EQ(moved.requests().front().requestLine(), "POST /new HTTP/1.1");
    EXPECT_EQ(moved.requests().front().body(), server.requests().front().body());
}

TEST_F(FeedbackTest, AnAddressThatIsOneIsUsedAndAnyOtherIsTheDefaultOne) {
    const QUrl placeholder(FeedbackAPIClient::defaultBaseUrl);
    const std::pair<QJsonValue, QUrl> cases[] = {
        {"http://feedback.example", QUrl("http://feedback.example")},
        {"https://feedback.example/api?key=1", QUrl("https://feedback.example/api?key=1")},
        {"https://user@feedback.example", QUrl("https://user@feedback.example")},
        {"ftp://feedback.example", QUrl("ftp://feedback.example")},
        {QJsonValue(QJsonValue::Undefined), placeholder},
        {7, placeholder},
        {"", placeholder},
        {"::no url", placeholder},
        {"feedback.example", placeholder},
    };
    for (const auto& [value, used] : cases) {
        const Dictionary configured = Dictionary().overlaidBy({{Dictionary::feedbackBaseUrlKey, value}});
        EXPECT_EQ(FeedbackAPIClient(configured, session).feedbackBaseURL(), used);
        EXPECT_EQ(FeedbackAPIClient::isConfigured(configured), used != placeholder);
    }
    FeedbackAPIClient unusable(Dictionary().overlaidBy({{Dictionary::feedbackBaseUrlKey, "ftp://127.0.0.1"}}),
                               session);
    FeedbackViewModel nowhere([&]() -> FeedbackAPIClient& { return unusable; }, localizer);
    nowhere.setMessage("x");
    nowhere.send();
    ASSERT_TRUE(turnUntil([&] { return !nowhere.isSending(); }));
    EXPECT_EQ(nowhere.errorText(), FeedbackSubmissionError{Kind::unavailable}.description().english);
}

}  // namespace
