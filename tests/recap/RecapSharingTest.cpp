#include "recap/QrCode.h"
#include "recap/RecapShareLink.h"
#include "recap/RecapShareLinks.h"
#include "support/MemoryUserDefaults.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <random>

namespace kestrant {
namespace {

using testing::ElementsAre;
using namespace std::chrono_literals;

QJsonArray knownLinks() {
    QFile file(QStringLiteral(KESTRANT_KNOWN_LINKS));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return QJsonDocument::fromJson(file.readAll()).array();
}

SharedRecap randomRecap(std::mt19937& random) {
    const auto weekday = Qt::DayOfWeek(1 + random() % 7);
    const QDate day = QDate(1971, 1, 1).addDays(qint64(random() % 60'000));
    SharedRecap recap{periodContaining(RecapKind(random() % 4), day, weekday), weekday, {}};
    recap.days.resize(random() % unsigned(recap.period.dayCount() + 1));
    const unsigned most = 1U << random() % 20;
    for (int& count : recap.days)
        count = int(random() % most);
    return recap;
}

// The page in resources/share reads the same links.
TEST(RecapShareLink, IsTheOneThatThePageReads) {
    const QJsonArray links = knownLinks();
    EXPECT_GE(links.size(), 5);
    for (const QJsonValue& known : links) {
        const auto weekday = Qt::DayOfWeek(known["firstDayOfWeek"].toInt());
        const QDate first = QDate::fromString(known["first"].toString(), Qt::ISODate);
        SharedRecap recap{periodContaining(RecapKind(known["kind"].toInt()), first, weekday), weekday, {}};
        for (const QJsonValue& count : known["days"].toArray())
            recap.days.push_back(count.toInt());
        EXPECT_EQ(recapFragment(recap), known["fragment"].toString().toLatin1());
    }
}

TEST(RecapShareLink, IsReadAsItWasMadeAndNotWithoutItsEnd) {
    std::mt19937 random(11);
    for (int round = 0; round < 500; ++round) {
        const SharedRecap recap = randomRecap(random);
        const QByteArray fragment = recapFragment(recap).value();
        ASSERT_EQ(readRecapFragment(fragment), recap);
        ASSERT_LT(fragment.size(), 30 + recap.days.size() * 10 / 3);
        for (qsizetype cut = 0; cut < fragment.size(); cut += 1 + fragment.size() / 20)
            ASSERT_EQ(readRecapFragment(fragment.first(cut)), std::nullopt) << cut;
        ASSERT_EQ(readRecapFragment(fragment + 'A'), std::nullopt);
        // Every other text that can be read is the text of exactly one recap.
        QByteArray other = fragment;
        other[qsizetype(random() % unsigned(other.size()))] = "AZaz09-_=%\0"[random() % 11];
        const auto read = readRecapFragment(other);
        ASSERT_TRUE(!read || recapFragment(*read) == other);
    }
}

TEST(RecapShareLink, IsMadeForAnAddressThatProtectsIt) {
    const SharedRecap recap{
        periodContaining(RecapKind::week, QDate(2026, 11, 22), Qt::Monday), Qt::Monday, {3, 5, 2, 6, 3, 4}};
    EXPECT_EQ(recapShareLink(QStringLiteral("https://recap.example.org/r"), recap),
              QUrl(QStringLiteral("https://recap.example.org/r#") +
                   QString::fromLatin1(recapFragment(recap).value())));
    for (const char* unusable : {"", "recap.example.org", "http://recap.example.org/r",
                                 "https://recap.example.org/r?a=b", "javascript:alert(1)"})
        EXPECT_EQ(recapShareLink(QString::fromUtf8(unusable), recap), std::nullopt) << unusable;
    EXPECT_EQ(recapFragment({{RecapKind::day, QDate(1969, 12, 31), QDate(1969, 12, 31)}, Qt::Monday, {1}}),
              std::nullopt);
}

TEST(QrCode, IsReadByAScannerAsItsText) {
    std::mt19937 random(5);
    SharedRecap year{periodContaining(RecapKind::year, QDate(2028, 5, 1), Qt::Monday), Qt::Monday, {}};
    for (int day = 0; day < 366; ++day)
        year.days.push_back(int(random() % 40));
    const QString base = QStringLiteral("https://recap.example.org/r");
    const QByteArray longest = recapShareLink(base, year)->toEncoded();
    for (const QByteArray& text : {QByteArray("https://a.example/#AQ"), longest}) {
        const QrCode code = qrCodeOf(text).value();
        constexpr int quiet = 4;
        constexpr int moduleSize = 4;
        const int side = (code.size + 2 * quiet) * moduleSize;
        QByteArray picture =
            QByteArrayLiteral("P5 ") + QByteArray::number(side) + ' ' + QByteArray::number(side) + " 255\n";
        for (int pixel = 0; pixel < side * side; ++pixel) {
            const int row = pixel / side / moduleSize - quiet;
            const int column = pixel % side / moduleSize - quiet;
            const bool isInside = std::min(row, column) >= 0 && std::max(row, column) < code.size;
            picture.append(isInside && code.isDark(row, column) ? '\0' : '\xFF');
        }
        const QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("code.pgm")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(picture) == picture.size());
        file.close();
        QProcess scanner;
        scanner.start(QStringLiteral("zbarimg"),
                      {QStringLiteral("--quiet"), QStringLiteral("--raw"), file.fileName()});
        ASSERT_TRUE(scanner.waitForFinished(120'000));
        EXPECT_EQ(scanner.readAllStandardOutput(), text + '\n');
    }
    EXPECT_FALSE(qrCodeOf(QByteArray(3'000, 'a')));
    EXPECT_FALSE(qrCodeOf(QByteArray()));
}

TEST(RecapShareLinks, AreRememberedUntilForgotten) {
    MemoryUserDefaults defaults;
    RecapShareLinks links(defaults);
    const QUrl one(QStringLiteral("https://recap.example.org/r#AQ"));
    const QUrl two(QStringLiteral("https://recap.example.org/r#Ag"));
    const Instant now{1'790'000'000s};
    links.remember(one, now);
    links.remember(two, now + 1s);
    links.remember(one, now + 2s);
    EXPECT_THAT(RecapShareLinks(defaults).links(),
                ElementsAre(MadeShareLink{one, now + 2s}, MadeShareLink{two, now + 1s}));
    links.forget(one);
    EXPECT_THAT(links.links(), ElementsAre(MadeShareLink{two, now + 1s}));
    links.forget(two);
    EXPECT_TRUE(defaults.values().isEmpty());

    for (int made = 0; made < 120; ++made)
        links.remember(QUrl(QStringLiteral("https://recap.example.org/r#%1").arg(made)), now + made * 1s);
    EXPECT_EQ(links.links().size(), 100U);
    EXPECT_EQ(links.links().front().made, now + 119s);
    links.forgetAll();
    EXPECT_TRUE(links.links().empty());

    defaults.set(QStringLiteral("kestrant.recap.share-links.v1"),
                 QJsonArray{7, QJsonObject{{QStringLiteral("link"), 1}},
                            QJsonObject{{QStringLiteral("link"), one.toString()},
                                        {QStringLiteral("made"), 800'000'000}}});
    EXPECT_EQ(links.links().size(), 1U);
}

}  // namespace
}  // namespace kestrant
