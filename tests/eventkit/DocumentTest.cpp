#include "eventkit/icalendar/Document.h"

#include <QByteArrayList>
#include <QString>

#include <gmock/gmock.h>

namespace kestrant::icalendar {
namespace {

using ::testing::ElementsAre;

/// A file with much in it that this program does not understand.
const QByteArray foreignFile =
    "BEGIN:VCALENDAR\r\n"
    "VERSION:2.0\r\n"
    "PRODID:-//Elsewhere//1.0//EN\r\n"
    "X-WR-CALNAME;X-P=\"a:b;c\":Tasks\r\n"
    "BEGIN:VTIMEZONE\r\nTZID:Europe/Paris\r\nBEGIN:STANDARD\r\nDTSTART:19701025T030000\r\n"
    "TZOFFSETFROM:+0200\r\nTZOFFSETTO:+0100\r\nEND:STANDARD\r\nEND:VTIMEZONE\r\n"
    "BEGIN:VTODO\r\n"
    "UID:1\r\n"
    "DTSTAMP:20260101T000000Z\r\n"
    "x-lower-case;B=2;A=1:kept\r\n"
    "SUMMARY;LANGUAGE=fr;ALTREP=\"cid:x\":Un titre plutôt long qui est plié au mil\r\n"
    " ieu d’un mot\r\n"
    "STYLED-DESCRIPTION;FMTTYPE=text/html:<b>x</b>\r\n"
    "BEGIN:VALARM\r\nACTION:DISPLAY\r\nTRIGGER:-PT15M\r\nSUMMARY:not the title\r\n"
    "BEGIN:VLOCATION\r\nNAME:Home\r\nEND:VLOCATION\r\nEND:VALARM\r\n"
    "END:VTODO\r\n"
    "BEGIN:X-SOMETHING\r\nX-A:1\r\nEND:X-SOMETHING\r\n"
    "END:VCALENDAR\r\n";

Document parsed(const QByteArray& text) {
    auto document = Document::parse(text);
    EXPECT_TRUE(document.has_value()) << (document ? "" : qPrintable(document.error().english));
    return std::move(document).value();
}

TEST(DocumentTest, KeepsEveryFileByteForByte) {
    QByteArray lineFeeds = foreignFile;
    lineFeeds.replace("\r\n", "\n");
    QByteArray mixed = foreignFile;
    mixed.replace("UID:1\r\n", "UID:1\n");
    for (const QByteArray& text :
         {foreignFile, lineFeeds, mixed, "\xEF\xBB\xBF" + foreignFile, foreignFile.chopped(2),
          foreignFile + "\r\n\r\n", "\r\n" + foreignFile, foreignFile + foreignFile,
          QByteArray("begin:vcalendar\nend:vcalendar"),
          QByteArray("BEGIN:VCALENDAR\r\nNO COLON\r\n\xFF\xFE:\xC3(\r\nEND:VCALENDAR\r\n")})
        EXPECT_EQ(parsed(text).text(), text);
}

TEST(DocumentTest, ReplacesOnlyTheLinesOfTheChangedProperty) {
    for (const QByteArray lineEnd : {"\r\n", "\n"}) {
        QByteArray text = foreignFile;
        text.replace("\r\n", lineEnd);
        Document document = parsed(text);
        Component todo(document.components("VTODO")[0].lines());
        todo.set(Property{"SUMMARY", {}, "New"}, document.lineEnd());
        document.replace(0, todo);

        QByteArray expected = text;
        const qsizetype start = expected.indexOf("SUMMARY;LANGUAGE");
        expected.replace(start, expected.indexOf("STYLED") - start, "SUMMARY:New" + lineEnd);
        EXPECT_EQ(document.text(), expected);
    }
}

TEST(DocumentTest, AddsAndRemovesPropertiesOfTheComponentItself) {
    const Document document = parsed(foreignFile);
    Component todo(document.components("VTODO")[0].lines());
    todo.append(Property{"LOCATION", {}, "Here"}, "\r\n");
    todo.remove("SUMMARY");
    const QByteArray text = todo.view().text();
    EXPECT_TRUE(text.contains("<b>x</b>\r\nLOCATION:Here\r\nBEGIN:VALARM\r\n"));
    EXPECT_TRUE(text.contains("SUMMARY:not the title"));
    EXPECT_FALSE(text.contains("SUMMARY;LANGUAGE"));
}

TEST(DocumentTest, RefusesWhatIsNoWholeCalendarFile) {
    const QByteArray cases[] = {"",
                                " \r\n\r\n",
                                QByteArray("\x7F"
                                           "ELF\0\0\0",
                                           7),
                                "BEGIN:VCARD\r\nEND:VCARD\r\n",
                                foreignFile.first(foreignFile.size() / 2),
                                foreignFile.chopped(15),
                                "BEGIN:VCALENDAR\nBEGIN:VTODO\nEND:VCALENDAR\nEND:VTODO\n",
                                "BEGIN:VCALENDAR\nEND:VCALENDAR\nEND:VCALENDAR\n"};
    for (const QByteArray& text : cases) {
        const auto document = Document::parse(text);
        ASSERT_FALSE(document.has_value()) << text.constData();
        EXPECT_FALSE(document.error().english.isEmpty() || document.error().french.isEmpty());
    }
}

TEST(ContentLineTest, FoldsAtSeventyFiveOctetsBetweenCharacters) {
    const QString contents[] = {QString(74, 'x'),
                                QString(75, 'x'),
                                QString(76, 'x'),
                                QString(300, 'x'),
                                QString(40, u'é'),
                                QString(60, u'日'),
                                QString::fromUtf8("🎉").repeated(50)};
    for (const QString& content : contents) {
        const QByteArray bytes = "X:" + content.toUtf8();
        const Line line = Line::make(bytes, "\r\n");
        EXPECT_EQ(line.content(), bytes);
        EXPECT_EQ(Line(line.raw()).content(), bytes);
        for (const QByteArray& part : line.raw().chopped(2).split('\n')) {
            EXPECT_LE(part.size() - (part.endsWith('\r') ? 1 : 0), 75);
            EXPECT_EQ(QString::fromUtf8(part).toUtf8(), part) << "a character was torn apart";
        }
    }
}

TEST(ContentLineTest, UnfoldsHoweverOthersFold) {
    EXPECT_EQ(Line("SUMM\r\n ARY:a\n\tb\r\n  c\r\n").content(), QByteArray("SUMMARY:ab c"));
    EXPECT_TRUE(Line("sum\n mary;x=1:a\n").isNamed("SUMMARY"));
    EXPECT_FALSE(Line("SUMMARYX:a\n").isNamed("SUMMARY"));
}

TEST(ContentLineTest, TakesAPropertyApartAndPutsItTogether) {
    const QByteArray content =
        "ATTENDEE;CN=\"Doe; Jane: x\";MEMBER=\"a:b\",\"c:d\";ROLE=CHAIR:mailto:j@example.org";
    const Property property = Property::parse(content);
    EXPECT_EQ(property.name, "ATTENDEE");
    EXPECT_EQ(property.parameter("CN"), QByteArray("Doe; Jane: x"));
    EXPECT_EQ(property.parameter("MEMBER"), QByteArray("\"a:b\",\"c:d\""));
    EXPECT_EQ(property.value, "mailto:j@example.org");
    EXPECT_EQ(property.toContent(), content);

    EXPECT_EQ(Property::parse("NOTHING").value, "");
    EXPECT_EQ(Property::parse("x;broken=\"a:b").name, "X");
}

TEST(ContentLineTest, EscapesTextSoThatItReadsBackTheSame) {
    for (const char* text :
         {"", "plain", "a,b;c\\d", "two\nlines\n", "\\n is not a line", "日本 🎉", "a:b\"c"})
        EXPECT_EQ(unescapedText(escapedText(QString::fromUtf8(text))), QString::fromUtf8(text));
    EXPECT_EQ(unescapedText("a\\Nb\\;c\\,d\\x"), "a\nb;c,d\\x");
    EXPECT_EQ(escapedText("a\r\nb\tc\x1b[1m\x7f"), "a\\nb\tc[1m") << "a text has no other control characters";
}

TEST(PropertyTest, TakesAQuoteThatDoesNotCloseForACharacter) {
    struct Case {
        const char* line;
        const char* parameter;
        const char* value;
        const char* written;
    };
    const Case cases[] = {
        {"DUE;X-A=\"b:c;d,e\":1", "b:c;d,e", "1", "DUE;X-A=\"b:c;d,e\":2"},
        {"DUE;X-A=\"b\",\"c:d\":1", "\"b\",\"c:d\"", "1", "DUE;X-A=\"b\",\"c:d\":2"},
        {"DUE;X-A=\"b:1", "b", "1", "DUE;X-A=b:2"},
        {"DUE;X-A=b\":1", "b", "1", "DUE;X-A=b:2"},
        {"DUE;X-A=b\"c\"d:1", "bcd", "1", "DUE;X-A=bcd:2"},
        {"DUE;X-A=\"b:a \"word\", x", "b", "a \"word\", x", "DUE;X-A=b:2"},
        {"DUE;X-A=\"\"\":1", "", "1", "DUE;X-A=:2"},
        {"DUE;X-A=\"b:\"c\":1", "b", "\"c\":1", "DUE;X-A=b:2"},
        {"DUE;X-A=\"\":1", "", "1", "DUE;X-A=:2"},
        {"DUE;X-A:1", "", "1", "DUE;X-A=:2"},
    };
    for (const Case& each : cases) {
        Property property = Property::parse(each.line);
        EXPECT_EQ(property.parameter("X-A"), QByteArray(each.parameter)) << each.line;
        EXPECT_EQ(property.value, each.value) << each.line;
        property.value = "2";
        EXPECT_EQ(property.toContent(), each.written) << each.line;
        EXPECT_EQ(Property::parse(property.toContent()).value, "2") << each.line;
    }
    const Property made{"DUE", {{"X-A", "b\"c:d"}}, "2"};
    EXPECT_EQ(made.toContent(), "DUE;X-A=\"bc:d\":2");
}

}  // namespace
}  // namespace kestrant::icalendar
