#pragma once

#include <QString>
#include <QStringView>

#include <cstdint>
#include <vector>

namespace kestrant::speech {

/// A word, a number or a sign of a line.
struct Token {
    enum class Kind : std::uint8_t {
        /// Letters without a gap.
        word,
        /// Digits without a gap.
        number,
        /// One character of punctuation.
        sign,
        /// Text that is only text: a quotation, an address, anything unknown.
        opaque,
        /// An address of the web.
        link,
    };
    /// What stands between a token and the one before it.
    enum class Gap : std::uint8_t { none, space, hyphen, apostrophe };

    Kind kind = Kind::opaque;
    Gap gap = Gap::space;
    /// The first letter of a word is a capital; all of at least two are.
    bool isCapital = false;
    bool isAllCapitals = false;
    /// A letter of the word has an accent.
    bool isAccented = false;
    /// In the line, counted in UTF-16 units.
    qsizetype start = 0;
    qsizetype end = 0;
    /// Of a number with at most eight digits, else -1.
    int number = -1;
    int digits = 0;
    /// The character of a sign.
    char16_t sign = 0;
    /// A word in small letters without accents, or the digits of a number.
    QStringView text;
};

/// The tokens of a line, which must outlive them. Linear in the line's length.
class Tokens {
  public:
    explicit Tokens(const QString& line);
    Tokens(const Tokens&) = delete;
    Tokens& operator=(const Tokens&) = delete;

    [[nodiscard]] int size() const { return static_cast<int>(tokens_.size()); }
    [[nodiscard]] const Token& operator[](int i) const { return tokens_[static_cast<std::size_t>(i)]; }

    [[nodiscard]] bool isKind(int i, Token::Kind kind) const {
        return i >= 0 && i < size() && (*this)[i].kind == kind;
    }
    [[nodiscard]] bool isSign(int i, char16_t sign) const {
        return isKind(i, Token::Kind::sign) && (*this)[i].sign == sign;
    }
    /// Whether a token touches the one before it.
    [[nodiscard]] bool isGlued(int i) const {
        return i > 0 && i < size() && (*this)[i].gap == Token::Gap::none;
    }
    /// Whether a phrase can begin here: not within a longer word, number or name.
    [[nodiscard]] bool begins(int i) const;
    /// Whether a phrase can end before the i-th token.
    [[nodiscard]] bool ends(int i) const;
    /// Whether nothing more is said at the i-th token: the end of the line, or punctuation.
    [[nodiscard]] bool isStop(int i) const;

  private:
    std::vector<Token> tokens_;
    QString folded_;
};

/// In small letters, without accents, with straight apostrophes.
[[nodiscard]] QString folded(QStringView text);

}  // namespace kestrant::speech
