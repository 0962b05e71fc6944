#include "speech/Grammar.h"

#include <algorithm>

namespace kestrant::speech {

using Gap = Token::Gap;
using Kind = Token::Kind;

std::optional<Grammar::Number> Grammar::number(int i) const {
    if (tokens_.isKind(i, Kind::number)) {
        const Token& token = tokens_[i];
        if (token.digits > 4 || token.number < 0)
            return std::nullopt;
        return Number{token.number, i + 1, token.digits};
    }
    const Found* found = senses_.find(i, Sense::number);
    if (!found)
        return std::nullopt;
    Number result{found->word.value, found->end, 0};
    if (result.value < 20 || result.value > 90 || result.value % 10 != 0)
        return result;
    const int rest = senses_.past(result.end, Sense::and_);
    const Found* ones = senses_.find(rest, Sense::number);
    const int most = result.value == 60 || result.value == 80 ? 19 : 9;
    // "and" belongs to the number only in front of a one: "vingt et un".
    if (ones && ones->word.value >= 1 && ones->word.value <= most &&
        ones->word.language == found->word.language && (rest == result.end || ones->word.value % 10 == 1)) {
        result.value += ones->word.value;
        result.end = ones->end;
    }
    return result;
}

std::optional<Grammar::Number> Grammar::amountInQuarters(int i) const {
    if (const Found* part = senses_.find(i, Sense::fraction)) {
        int end = part->end;
        end = senses_.past(end, Sense::of);
        end = senses_.past(end, Sense::article);
        return Number{part->word.value, end, 0};
    }
    std::optional<Number> result = number(i);
    // "3/4 d'heure"
    if (result && result->digits == 1 && tokens_.isSign(i + 1, u'/') && tokens_.isGlued(i + 1) &&
        tokens_.isGlued(i + 2) && tokens_.isKind(i + 2, Kind::number) &&
        (tokens_[i + 2].number == 2 || tokens_[i + 2].number == 4) && result->value < tokens_[i + 2].number) {
        const int end = senses_.past(senses_.past(i + 3, Sense::of), Sense::article);
        return Number{result->value * 4 / tokens_[i + 2].number, end, 1};
    }
    if (!result) {
        const Found* article = senses_.find(i, Sense::article);
        if (!article)
            return std::nullopt;
        if (const Found* part = senses_.find(article->end, Sense::fraction))
            return Number{part->word.value, senses_.past(part->end, Sense::of), 0};
        return Number{4, article->end, 0};
    }
    result->value *= 4;
    if (result->value == 4 && senses_.has(result->end, Sense::fraction))
        return Number{senses_.find(result->end, Sense::fraction)->word.value,
                      senses_.past(senses_.past(result->end, Sense::fraction), Sense::of), 0};
    const int sign = result->end;
    if (result->digits > 0 && (tokens_.isSign(sign, u'.') || tokens_.isSign(sign, u',')) &&
        tokens_.isGlued(sign) && tokens_.isGlued(sign + 1) && tokens_.isKind(sign + 1, Kind::number) &&
        tokens_[sign + 1].digits <= 2) {
        const Token& decimals = tokens_[sign + 1];
        result->value += (decimals.number * (decimals.digits == 1 ? 10 : 1) * 4 + 50) / 100;
        result->end = sign + 2;
    } else if (const Found* mark = senses_.find(result->end, Sense::fractionMark);
               mark && unitAt(mark->end)) {
        result->value += mark->word.value;
        result->end = mark->end;
    }
    return result;
}

const Found* Grammar::unitAt(int i) const {
    if (!senses_.has(i, Sense::unit))
        return nullptr;
    // Letters are units only in one piece with their number.
    const bool isInOnePiece = tokens_.isGlued(i) && tokens_.isKind(i - 1, Kind::number);
    if (tokens_[i].gap == Gap::none && !isInOnePiece)
        return nullptr;
    const Found* unit = std::find_if(senses_.begin(i), senses_.end(i), [&](const Found& found) {
        return found.word.sense == Sense::unit && (isInOnePiece || !found.word.isShort);
    });
    return unit == senses_.end(i) ? nullptr : unit;
}

std::optional<Grammar::Number> Grammar::ordinal(int i) const {
    if (tokens_.isKind(i, Kind::number) && tokens_[i].digits <= 2) {
        if (tokens_.isGlued(i + 1) && senses_.has(i + 1, Sense::ordinalEnding) &&
            (!tokens_.isGlued(i + 2) || tokens_.isKind(i + 2, Kind::sign)))
            return Number{tokens_[i].number, i + 2, tokens_[i].digits};
        return std::nullopt;
    }
    if (const Found* found = senses_.find(i, Sense::ordinal))
        return Number{found->word.value, found->end, 0};
    return std::nullopt;
}

/// A day of the month as a number or an ordinal; `digits` is 0 for an ordinal.
std::optional<Grammar::Number> Grammar::dayOfMonth(int i) const {
    std::optional<Number> result = ordinal(i);
    if (result)
        result->digits = 0;
    else
        result = number(i);
    const bool isOne = result && result->digits == 0 && result->value == 1 && senses_.has(i, Sense::number);
    if (!result || isOne || result->value < 1 || result->value > 31 || result->digits > 2)
        return std::nullopt;
    return result;
}

std::optional<Grammar::Number> Grammar::year(int i) const {
    int at = tokens_.isSign(i, u',') ? i + 1 : i;
    if (tokens_.isKind(at, Kind::number) && tokens_[at].digits == 4 && tokens_[at].gap != Gap::none &&
        tokens_[at].number >= 2000 && tokens_[at].number <= 2199 && tokens_.ends(at + 1))
        return Number{tokens_[at].number, at + 1, 4};
    return std::nullopt;
}

}  // namespace kestrant::speech
