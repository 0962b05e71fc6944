#include "foundation/ControlCharacters.h"

#include <gtest/gtest.h>

namespace kestrant {
namespace {

TEST(ControlCharacters, AreSeenInsteadOfCarriedOut) {
    const QString text =
        QString::fromUtf8("a\tb\nc\r\x1B[2J\x7F\xC2\x9B\xC2\x85\xE2\x80\xA8\xE2\x80\xAEz é仕🎂") + QChar(0);
    EXPECT_EQ(withoutControlCharacters(text), QString::fromUtf8("a b\nc ␛[2J␡\uFFFD  z é仕🎂␀"));
    EXPECT_EQ(onOneLine(text), QString::fromUtf8("a b c ␛[2J␡\uFFFD  z é仕🎂␀"));
}

TEST(ControlCharacters, LeaveOrdinaryTextAsItIs) {
    const QString text = QStringLiteral("שלום\u200f, 👨‍👩‍👧 naïve — “quoted”");
    EXPECT_EQ(onOneLine(text), text);
}

}  // namespace
}  // namespace kestrant
