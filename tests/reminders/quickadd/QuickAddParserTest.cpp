#include "reminders/quickadd/QuickAddParser.h"

#include "support/ReminderBuilders.h"

#include <QFile>

#include <gmock/gmock.h>

#include <map>
#include <random>
#include <string>

namespace kestrant {
namespace {

using Kind = QuickAddPiece::Kind;
using testing::ElementsAre;

/// Friday 27 March 2026, noon, in Paris.
QuickAddContext context(Language language) {
    QuickAddContext result{.now = at("Europe/Paris", {2026, 3, 27}, {12, 0}),
                           .zone = *TimeZone::named("Europe/Paris"),
                           .language = language};
    for (const char* title : {"Groceries", "Home", "Home office", "Été à la plage", "C++"})
        result.lists.push_back({.id = QString::fromUtf8(title).toLower(), .title = QString::fromUtf8(title)});
    return result;
}

TEST(QuickAddParser, UnderstandsTheListedLinesAndLeavesWhatMayBeMeantOtherwise) {
    QFile file(QStringLiteral(QUICK_ADD_PHRASES));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QuickAddContext present = context(Language::english);
    std::map<Language, int> count;
    for (const QString& row : QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts)) {
        if (row.startsWith(u"# "))
            continue;
        if (row.startsWith(u"= ")) {
            present = context(row == u"= French" ? Language::french : Language::english);
            continue;
        }
        ++count[present.language];
        const QStringList columns = row.split(u'\t');
        const QuickAddLine read = parseQuickAdd(columns[0], present);
        const QStringList understood{read.title, read.day ? read.day->toString(Qt::ISODate) : QString(),
                                     read.time ? read.time->toString(QStringLiteral("HH:mm")) : QString()};
        EXPECT_EQ(understood, (QStringList{columns.value(1, columns[0]), columns.value(2), columns.value(3)}))
            << row.toStdString();
        EXPECT_EQ(read.pieces.empty(), columns.size() == 1) << row.toStdString();
    }
    EXPECT_GE(count[Language::english], 120);
    EXPECT_GE(count[Language::french], 120);
    EXPECT_EQ(parseQuickAdd(QStringLiteral("   "), present).title, QString());
}

/// Each piece as it stands in the line.
std::vector<std::string> pieces(const QString& line, const QuickAddLine& read) {
    std::vector<std::string> result;
    for (const QuickAddPiece& piece : read.pieces)
        result.push_back(std::to_string(static_cast<int>(piece.kind)) +
                         line.mid(piece.range.start, piece.range.length).toStdString());
    return result;
}

TEST(QuickAddParser, TellsWhereItUnderstoodWhat) {
    const QString line = QStringLiteral("Call Bob by friday at 5pm !!! #home office");
    const QuickAddLine read = parseQuickAdd(line, context(Language::english));
    EXPECT_THAT(pieces(line, read), ElementsAre("0by friday", "1at 5pm", "2!!!", "3#home office"));
    EXPECT_EQ(read.title, QStringLiteral("Call Bob"));
    EXPECT_EQ(read.priority, NewReminderPriority::high);
    EXPECT_EQ(read.listID, QStringLiteral("home office"));
}

TEST(QuickAddParser, LeavesInTheTitleWhatThePersonRefuses) {
    const QString line = QStringLiteral("Read tomorrow morning !! #Groceries");
    const auto readRefusing = [&](const char* words) {
        const QString refused = QString::fromUtf8(words);
        return parseQuickAdd(line, context(Language::english), {{line.indexOf(refused), refused.size()}});
    };
    QuickAddLine read = readRefusing("tomorrow");
    EXPECT_EQ(read.title, QStringLiteral("Read tomorrow"));
    EXPECT_EQ(read.day, QDate(2026, 3, 28)) << "the morning that comes";
    EXPECT_EQ(read.time, QTime(9, 0));
    read = readRefusing("morning");
    EXPECT_EQ(read.title, QStringLiteral("Read morning"));
    EXPECT_EQ(read.time, std::nullopt);
    read = readRefusing("!!");
    EXPECT_EQ(read.title, QStringLiteral("Read !!"));
    EXPECT_EQ(read.priority, std::nullopt);
    read = readRefusing("#Groceries");
    EXPECT_EQ(read.title, QStringLiteral("Read #Groceries"));
    EXPECT_EQ(read.listID, std::nullopt);
    const QString two = QStringLiteral("send tomorrow or next friday");
    read = parseQuickAdd(two, context(Language::english), {{two.indexOf(QStringLiteral("next")), 11}});
    EXPECT_EQ(read.title, QStringLiteral("send or next friday"));
    EXPECT_EQ(read.day, QDate(2026, 3, 28)) << "the other one counts then";
}

TEST(QuickAddParser, KnowsPriorityMarks) {
    struct Mark {
        const char* line;
        const char* title;
        std::optional<NewReminderPriority> english;
        std::optional<NewReminderPriority> french;
    };
    using Priority = NewReminderPriority;
    const Mark marks[] = {
        {"pay !!!", "pay", Priority::high, Priority::high},
        {"!! pay", "pay", Priority::normal, Priority::normal},
        {"pay !high", "pay", Priority::high, Priority::high},
        {"pay !Basse", "pay", Priority::low, Priority::low},
        {"pay !1 now", "pay now", Priority::high, Priority::high},
        {"pay!!!", "pay!!!", {}, {}},
        {"pay !!!!", "pay !!!!", {}, {}},
        {"pay !important", "pay !important", {}, {}},
    };
    for (const Mark& mark : marks) {
        for (const Language language : {Language::english, Language::french}) {
            const QuickAddLine read = parseQuickAdd(QString::fromUtf8(mark.line), context(language));
            EXPECT_EQ(read.priority, language == Language::english ? mark.english : mark.french) << mark.line;
            EXPECT_EQ(read.title, QString::fromUtf8(mark.title));
        }
    }
    EXPECT_EQ(parseQuickAdd(QStringLiteral("pay !"), context(Language::english)).priority, Priority::low);
    EXPECT_EQ(parseQuickAdd(QStringLiteral("payer !"), context(Language::french)).priority, std::nullopt);
}

TEST(QuickAddParser, KnowsListsByTheirNames) {
    struct Name {
        const char* line;
        const char* list;
        const char* title;
    };
    const Name names[] = {
        {"milk #groceries", "groceries", "milk"},
        {"#GROCERIES milk", "groceries", "milk"},
        {"sweep #home", "home", "sweep"},
        {"sweep #home office today", "home office", "sweep"},
        {"sweep #HomeOffice", "home office", "sweep"},
        {"sweep #home-office.", "home office", "sweep"},
        {"sweep #\"Home office\"", "home office", "sweep"},
        {"parasol #ete a la plage", "été à la plage", "parasol"},
        {"parasol #e\xCC\x81te\xCC\x81 à la plage", "été à la plage", "parasol"},
        {"learn #C++", "c++", "learn"},
        {"fix bug #123", "", "fix bug #123"},
        {"milk #grocer", "", "milk #grocer"},
        {"milk#groceries", "", "milk#groceries"},
        {"milk # groceries", "", "milk # groceries"},
        {"note #home #groceries", "groceries", "note #home"},
    };
    for (const Name& name : names) {
        const QuickAddLine read = parseQuickAdd(QString::fromUtf8(name.line), context(Language::english));
        EXPECT_EQ(read.listID.value_or(QString()), QString::fromUtf8(name.list)) << name.line;
        EXPECT_EQ(read.title, QString::fromUtf8(name.title));
    }
}

TEST(QuickAddParser, KeepsItsWordWhateverIsTyped) {
    const QStringList words =
        QStringLiteral(
            "call tomorrow demain friday lundi 27 mars march 3rd 1er at à 5 5pm 18h 9:30 in dans 3 days "
            "jours next prochain # #home ! !! !!! , . - ( ) \" ’ @ @5 27/3 2026-04-01 the le of du 🎉 é "
            "end fin eod noon midi morning soir sun may half past quarter to and et \x01")
            .split(QLatin1Char(' '));
    std::mt19937 random(1);
    for (int n = 0; n < 3000; ++n) {
        QString line;
        for (unsigned count = random() % 12; count > 0; --count) {
            line += words[static_cast<qsizetype>(random() % static_cast<unsigned>(words.size()))];
            line += QString(static_cast<qsizetype>(random() % 3), QLatin1Char(' '));
        }
        const QuickAddContext present = context(n % 2 == 0 ? Language::english : Language::french);
        std::vector<TextRange> refused;
        for (int round = 0;; ++round) {
            const QuickAddLine read = parseQuickAdd(line, present, refused);
            qsizetype end = 0;
            for (const QuickAddPiece& piece : read.pieces) {
                ASSERT_GE(piece.range.start, end) << line.toStdString();
                ASSERT_GT(piece.range.length, 0) << line.toStdString();
                end = piece.range.end();
                refused.push_back(piece.range);
            }
            ASSERT_LE(end, line.size()) << line.toStdString();
            EXPECT_EQ(read.time && !read.day, false) << line.toStdString();
            if (read.pieces.empty()) {
                EXPECT_EQ(read.title, line.trimmed());
                break;
            }
            ASSERT_LT(round, 20) << line.toStdString();
        }
    }
}

TEST(QuickAddParser, CountsHoursAcrossAChangeOfClocks) {
    QuickAddContext night = context(Language::english);
    night.now = at("Europe/Paris", {2026, 3, 29}, {1, 30}) + std::chrono::seconds(20);
    const QuickAddLine read = parseQuickAdd(QStringLiteral("x in 2 hours"), night);
    EXPECT_EQ(read.day, QDate(2026, 3, 29));
    EXPECT_EQ(read.time, QTime(4, 31));
}

}  // namespace
}  // namespace kestrant
