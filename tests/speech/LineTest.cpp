#include "speech/Line.h"

#include <QFile>

#include <gmock/gmock.h>

#include <random>
#include <string>
#include <utility>
#include <vector>

namespace kestrant::speech {
namespace {

using Kind = Piece::Kind;
using testing::ElementsAre;

/// Friday 27 March 2026, noon, in Paris.
Context context(Language language, Purpose purpose = Purpose::reminder) {
    const TimeZone zone = *TimeZone::named("Europe/Paris");
    return {.present = {.now = zone.instantAt({2026, 3, 27}, {12, 0}),
                        .zone = zone,
                        .language = language,
                        .order = language == Language::english ? DateOrder::monthFirst : DateOrder::dayFirst,
                        .hasTwelveHours = language == Language::english},
            .purpose = purpose,
            .lists = {QStringLiteral("Groceries"), QStringLiteral("Home"), QStringLiteral("Home office"),
                      QStringLiteral("Work"), QStringLiteral("Été à la plage"), QStringLiteral("C++")}};
}

/// What is said, in the columns of the tables.
QStringList columns(const Line& line) {
    const QString time = QStringLiteral("HH:mm");
    QStringList end;
    if (line.endDay && (line.endDay != line.day || !line.endTime))
        end.append(line.endDay->toString(Qt::ISODate));
    if (line.endTime)
        end.append(line.endTime->toString(time));
    QStringList more;
    const auto add = [&](const char* name, const QString& value) {
        if (!value.isEmpty())
            more.append(QLatin1String(name) + value);
    };
    add("", line.rule);
    add("priority=", line.priority ? QString::number(*line.priority) : QString());
    add("flag", line.isFlagged ? QStringLiteral(" ") : QString());
    add("link=", line.link);
    add("note=", line.note);
    add("place=", line.place);
    add("list=", line.list ? QString::number(*line.list) : QString());
    add("new list=", line.newList);
    if (line.alert)
        add("alert=", line.alert->time ? QStringLiteral("%1d ").arg(line.alert->daysBefore) +
                                             line.alert->time->toString(time)
                                       : QStringLiteral("%1m").arg(line.alert->minutesBefore));
    return {line.title, line.day ? line.day->toString(Qt::ISODate) : QString(),
            line.time ? line.time->toString(time) : QString(), end.join(u' '), more.join(u' ').simplified()};
}

TEST(SpokenLine, UnderstandsTheListedLinesAndLeavesWhatMayBeMeantOtherwise) {
    for (const auto& [name, language] :
         {std::pair("en", Language::english), std::pair("fr", Language::french)}) {
        QFile file(QStringLiteral(SPEECH_PHRASES "/phrases.%1.tsv").arg(QLatin1String(name)));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        Context present = context(language);
        for (const QString& row : QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts)) {
            if (row.startsWith(u"# ") || row.startsWith(u"##")) {
                present.purpose =
                    row == u"# Events" || row == u"# Événements" ? Purpose::event : Purpose::reminder;
                continue;
            }
            const QStringList wanted = row.split(u'\t');
            QString read = columns(readLine(wanted[0], present)).join(u'\t');
            while (read.endsWith(u'\t'))
                read.chop(1);
            const QString said = wanted.size() > 1 ? row.section(u'\t', 1) : row;
            EXPECT_EQ(read.toStdString(), said.toStdString()) << row.toStdString();
        }
    }
}

TEST(SpokenLine, UnderstandsBothLanguagesInEither) {
    for (const Language language : {Language::english, Language::french}) {
        EXPECT_EQ(
            columns(readLine(QStringLiteral("call mum next friday at 5pm"), context(language))).mid(0, 3),
            (QStringList{QStringLiteral("call mum"), QStringLiteral("2026-04-03"), QStringLiteral("17:00")}));
        EXPECT_EQ(columns(readLine(QStringLiteral("appeler maman demain 9h"), context(language))).mid(0, 3),
                  (QStringList{QStringLiteral("appeler maman"), QStringLiteral("2026-03-28"),
                               QStringLiteral("09:00")}));
    }
}

TEST(SpokenLine, TakesOrderAndHoursFromTheCustomsOfThePlace) {
    Context british = context(Language::english);
    british.present.order = DateOrder::dayFirst;
    british.present.hasTwelveHours = false;
    EXPECT_EQ(readLine(QStringLiteral("dentist 5/6"), british).day, QDate(2026, 6, 5));
    EXPECT_EQ(readLine(QStringLiteral("dentist 5/6"), context(Language::english)).day, QDate(2026, 5, 6));
    EXPECT_EQ(readLine(QStringLiteral("call at 5:30"), british).time, QTime(5, 30));
    EXPECT_EQ(readLine(QStringLiteral("call at 5:30"), context(Language::english)).time, QTime(17, 30));
}

/// Each piece as it stands in the line.
std::vector<std::string> pieces(const QString& line, const Line& read) {
    std::vector<std::string> result;
    for (const Piece& piece : read.pieces)
        result.push_back(line.mid(piece.range.start, piece.range.length).toStdString());
    return result;
}

TEST(SpokenLine, TellsWhereItUnderstoodWhat) {
    const QString line = QStringLiteral("Call Bob by friday at 5pm !!! #home office");
    const Line read = readLine(line, context(Language::english));
    EXPECT_THAT(pieces(line, read), ElementsAre("by friday", "at 5pm", "!!!", "#home office"));
    const QString repeating = QStringLiteral("Water the plants every 3 days at 8am ! #home");
    EXPECT_THAT(pieces(repeating, readLine(repeating, context(Language::english))),
                ElementsAre("every 3 days", "at 8am", "!", "#home"));
}

TEST(SpokenLine, LeavesInTheTitleWhatThePersonRefusesAndTakesWhatThePersonAccepts) {
    const QString line = QStringLiteral("Read tomorrow at 9 !! #Groceries");
    const auto rangeOf = [](const QString& text, const char* words) {
        return TextRange{text.indexOf(QString::fromUtf8(words)), qsizetype(std::string(words).size())};
    };
    const auto titleWithout = [&](const char* words) {
        return readLine(line, context(Language::english), {rangeOf(line, words)}).title.toStdString();
    };
    EXPECT_EQ(titleWithout("tomorrow"), "Read tomorrow");
    EXPECT_EQ(titleWithout("at 9"), "Read at 9");
    EXPECT_EQ(titleWithout("!!"), "Read !!");
    EXPECT_EQ(titleWithout("#Groceries"), "Read #Groceries");

    const QString unsure = QStringLiteral("notes from Monday");
    const Line offering = readLine(unsure, context(Language::english));
    EXPECT_EQ(offering.day, std::nullopt);
    ASSERT_EQ(offering.offers.size(), 1u);
    EXPECT_EQ(offering.offers[0].day, QDate(2026, 3, 30));
    EXPECT_EQ(readLine(unsure, context(Language::english), {}, {offering.offers[0].range}).day,
              QDate(2026, 3, 30));
}

TEST(SpokenLine, KnowsListsByTheirNames) {
    struct Name {
        const char* line;
        int list;
        const char* title;
    };
    const Name names[] = {
        {"#GROCERIES milk", 0, "milk"},
        {"sweep #home office today", 2, "sweep"},
        {"sweep #home-office.", 2, "sweep"},
        {"sweep #\"Home office\"", 2, "sweep"},
        {"parasol #ete a la plage", 4, "parasol"},
        {"parasol #e\xCC\x81te\xCC\x81 à la plage", 4, "parasol"},
        {"learn #C++", 5, "learn"},
        {"milk#groceries", -1, "milk#groceries"},
        {"milk # groceries", -1, "milk # groceries"},
        {"note #home #groceries", 0, "note #home"},
    };
    for (const Name& name : names) {
        const Line read = readLine(QString::fromUtf8(name.line), context(Language::english));
        EXPECT_EQ(read.list ? int(*read.list) : -1, name.list) << name.line;
        EXPECT_EQ(read.title.toStdString(), name.title);
    }
}

TEST(SpokenLine, KeepsItsWordWhateverIsTyped) {
    const QStringList words =
        QStringLiteral(
            "call tomorrow demain friday lundi 27 mars march 3rd 1er at à 5 5pm 18h 9:30 in dans 3 days "
            "jours next prochain # #home ! !! !!! , . - ( ) \" ’ @ @5 27/3 2026-04-01 the le of du 🎉 é "
            "end fin eod noon midi morning soir sun may half past quarter to and et every tous les until "
            "from "
            "de entre + // p1 JST before la veille 99999999 \x01 \u0301")
            .split(QLatin1Char(' '));
    std::mt19937 random(1);
    for (int n = 0; n < 3000; ++n) {
        QString line;
        for (unsigned count = random() % 14; count > 0; --count) {
            line += words[static_cast<qsizetype>(random() % static_cast<unsigned>(words.size()))];
            line += QString(static_cast<qsizetype>(random() % 3), QLatin1Char(' '));
        }
        const Context present = context(n % 2 == 0 ? Language::english : Language::french,
                                        n % 3 == 0 ? Purpose::event : Purpose::reminder);
        std::vector<TextRange> refused;
        for (int round = 0;; ++round) {
            const Line read = readLine(line, present, refused);
            qsizetype end = 0;
            for (const Piece& piece : read.pieces) {
                ASSERT_GE(piece.range.start, end) << line.toStdString();
                ASSERT_GT(piece.range.length, 0) << line.toStdString();
                end = piece.range.end();
                refused.push_back(piece.range);
            }
            ASSERT_LE(end, line.size()) << line.toStdString();
            EXPECT_TRUE(read.day || (!read.time && !read.endDay && read.rule.isEmpty()))
                << line.toStdString();
            if (read.endDay && read.day) {
                EXPECT_GE(*read.endDay, *read.day) << line.toStdString();
            }
            if (read.pieces.empty()) {
                EXPECT_EQ(read.title, line.trimmed());
                break;
            }
            ASSERT_LT(round, 24) << line.toStdString();
        }
    }
}

TEST(SpokenLine, CountsHoursAcrossAChangeOfClocks) {
    Context night = context(Language::english);
    night.present.now = night.present.zone.instantAt({2026, 3, 29}, {1, 30}) + std::chrono::seconds(20);
    const Line read = readLine(QStringLiteral("x in 2 hours"), night);
    EXPECT_EQ(read.day, QDate(2026, 3, 29));
    EXPECT_EQ(read.time, QTime(4, 31));
}

}  // namespace
}  // namespace kestrant::speech
