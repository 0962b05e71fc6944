#pragma once

#include "reminders/quickadd/QuickAddTokens.h"

#include <cstddef>
#include <initializer_list>
#include <vector>

namespace kestrant::quickadd {

[[nodiscard]] bool isOneOf(const QString& word, std::initializer_list<const char*> words);

/// The tokens of a line, looked at from any place, also beyond the end. Valid as long as the tokens.
class Reading {
  public:
    explicit Reading(const std::vector<Token>& tokens) : tokens_(tokens) {}

    [[nodiscard]] const Token& token(std::size_t i) const { return tokens_[i]; }
    [[nodiscard]] std::size_t size() const { return tokens_.size(); }
    [[nodiscard]] bool isKind(std::size_t i, Token::Kind kind) const {
        return i < tokens_.size() && tokens_[i].kind == kind;
    }
    /// Empty where there is no word.
    [[nodiscard]] QString word(std::size_t i) const;
    [[nodiscard]] QString wordBefore(std::size_t i) const { return i == 0 ? QString() : word(i - 1); }
    [[nodiscard]] bool isSign(std::size_t i, const char* sign) const;
    /// Whether these words, with spaces between them, stand there one after the other.
    [[nodiscard]] bool areWords(std::size_t i, QLatin1String words) const;
    /// Behind these words; where they would begin when they are not there.
    [[nodiscard]] std::size_t past(std::size_t i, QLatin1String words) const;
    /// Punctuation, a list's name, or nothing more.
    [[nodiscard]] bool isEnd(std::size_t i) const;
    /// Whether what came before cannot be the beginning of a name that goes on here.
    [[nodiscard]] bool endsPhrase(std::size_t i) const;

  private:
    const std::vector<Token>& tokens_;
};

}  // namespace kestrant::quickadd
