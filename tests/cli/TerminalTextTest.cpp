#include "cli/TerminalText.h"

#include "cli/CommandLineOutput.h"

#include <gtest/gtest.h>

#include <clocale>
#include <utility>

namespace kestrant {
namespace {

TEST(TerminalText, TakesTheColumnsThatATerminalGivesItWhateverTheLocale) {
    const std::pair<const char*, int> cases[] = {
        {"", 0},
        {"milk", 4},
        {"Ärger", 5},
        {"A\u0308rger", 5},
        {"q\u0323\u0307\u0301\u0302", 1},
        {"仕事", 4},
        {"ＡＢ", 4},
        {"ｱｲ", 2},
        {"한국", 4},
        {"\u1112\u1161\u11ab", 2},
        {"नमस्ते", 4},
        {"שלום", 4},
        {"🎂", 2},
        {"👍🏽", 2},
        {"👨‍👩‍👧‍👦", 2},
        {"🏳️‍🌈", 2},
        {"🇫🇷🇩🇪", 4},
        {"🇫x", 2},
        {"❤", 1},
        {"❤️", 2},
        {"1️⃣", 2},
        {"✓ ⚑ ↻ …", 7},
        {"zero\u200bwidth\ufeff", 9},
        {"soft\u00adhyphen", 11},
        {"𠀀", 2},
    };
    for (const char* locale : {"C", "POSIX", "C.UTF-8", ""}) {
        std::setlocale(LC_ALL, locale);
        for (const auto& [text, columns] : cases)
            EXPECT_EQ(columnsOf(QString::fromUtf8(text)), columns) << text << " in " << locale;
    }
}

struct CutCase {
    const char* text;
    int columns;
    const char* cut;
};

TEST(TerminalText, IsCutBetweenWhatIsDrawnAsOneCharacter) {
    const CutCase cases[] = {
        {"milk", 4, "milk"},
        {"milk", 3, "mi…"},
        {"milk", 1, "…"},
        {"仕事場", 5, "仕事…"},
        {"仕事場", 4, "仕…"},
        {"仕事場", 6, "仕事場"},
        {"👨‍👩‍👧x👨‍👩‍👧", 4, "👨‍👩‍👧x…"},
        {"e\u0301e\u0301e\u0301", 2, "e\u0301…"},
    };
    for (const CutCase& testCase : cases)
        EXPECT_EQ(cutToColumns(QString::fromUtf8(testCase.text), testCase.columns),
                  QString::fromUtf8(testCase.cut))
            << testCase.text << " to " << testCase.columns;
}

TEST(TerminalText, StandsInColumnsWhateverItsCharacters) {
    EXPECT_EQ(alignedText({{"é", "a"}, {"仕事", "b"}, {"❤️", "c"}, {"", ""}}),
              "é     a\n仕事  b\n❤️    c\n\n");
}

}  // namespace
}  // namespace kestrant
