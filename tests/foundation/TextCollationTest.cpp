#include "foundation/TextCollation.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <vector>

namespace kestrant {
namespace {

const QLocale english(QLocale::English, QLocale::UnitedStates);
const QLocale turkish(QLocale::Turkish, QLocale::Turkey);

struct ContainmentCase {
    const char* what;
    QLocale locale;
    const char* haystack;
    const char* needle;
    bool contained;
};

TEST(TextCollation, FindsTextWhateverItsLetterCaseAndEncoding) {
    const ContainmentCase cases[] = {
        {"letter case", english, "Buy MILK", "milk", true},
        {"letter case of the needle", english, "buy milk", "Milk", true},
        {"accented capitals", english, "ÉCOLE À MIDI", "école à", true},
        {"accents matter", english, "école", "ecole", false},
        {"composed in decomposed", english,
         "e\xCC\x81"
         "cole",
         "\xC3\xA9"
         "cole",
         true},
        {"decomposed in composed", english,
         "\xC3\xA9"
         "cole",
         "E\xCC\x81", true},
        {"sharp s", english, "STRASSE", "straße", true},
        {"final sigma", english, "ΟΔΟΣ", "οδος", true},
        {"outside the basic plane", english, "𐐀𐐁 😀", "𐐩 😀", true},
        {"empty needle", english, "", "", true},
        {"longer needle", english, "a", "ab", false},
        {"dotless i", turkish, "ISPARTA", "ısparta", true},
        {"dotless i is no i", turkish, "ISPARTA", "isparta", false},
        {"dotted capital", turkish, "İZMİR", "izmir", true},
        {"i elsewhere", english, "ISPARTA", "isparta", true},
    };
    for (const ContainmentCase& testCase : cases)
        EXPECT_EQ(TextCollation(testCase.locale)
                      .contains(QString::fromUtf8(testCase.haystack), QString::fromUtf8(testCase.needle)),
                  testCase.contained)
            << testCase.what;
}

TEST(TextCollation, DoesNotFindABaseLetterInADecomposedAccentedOne) {
    EXPECT_FALSE(TextCollation(english).contains(QString::fromUtf8("e\xCC\x81t"), QStringLiteral("et")));
    EXPECT_FALSE(TextCollation(english).contains(QString::fromUtf8("e\xCC\x81"), QStringLiteral("e")));
}

TEST(TextCollation, OrdersByLanguageWithoutRegardToLetterCase) {
    for (const QLocale& locale : {english, QLocale(QLocale::French, QLocale::France), QLocale::c()}) {
        const TextCollation collation(locale);
        std::vector<QString> texts{QStringLiteral("zebra"),  QStringLiteral("Éclair"),
                                   QStringLiteral("apple"),  QStringLiteral("Banana"),
                                   QStringLiteral("eclair"), QStringLiteral("édit")};
        const std::vector<QString> expected{QStringLiteral("apple"),  QStringLiteral("Banana"),
                                            QStringLiteral("eclair"), QStringLiteral("Éclair"),
                                            QStringLiteral("édit"),   QStringLiteral("zebra")};
        std::sort(texts.begin(), texts.end(),
                  [&](const QString& a, const QString& b) { return collation.compare(a, b) < 0; });
        EXPECT_EQ(texts, expected) << locale.name().toStdString();
        std::reverse(texts.begin(), texts.end());
        std::sort(texts.begin(), texts.end(), [&](const QString& a, const QString& b) {
            return collation.sortKey(a) < collation.sortKey(b);
        });
        EXPECT_EQ(texts, expected) << locale.name().toStdString();
        EXPECT_EQ(collation.compare(QStringLiteral("Milk"), QStringLiteral("mILK")), 0);
        EXPECT_EQ(
            collation.sortKey(QStringLiteral("Milk")).compare(collation.sortKey(QStringLiteral("mILK"))), 0);
    }
}

}  // namespace
}  // namespace kestrant
