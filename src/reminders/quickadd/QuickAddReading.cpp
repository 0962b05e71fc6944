#include "reminders/quickadd/QuickAddReading.h"

#include "reminders/quickadd/QuickAddWords.h"

#include <algorithm>

namespace kestrant::quickadd {

bool isOneOf(const QString& word, std::initializer_list<const char*> words) {
    return std::any_of(words.begin(), words.end(),
                       [&](const char* each) { return word == QLatin1String(each); });
}

QString Reading::word(std::size_t i) const {
    return isKind(i, Token::Kind::word) ? tokens_[i].text : QString();
}

bool Reading::isSign(std::size_t i, const char* sign) const {
    return isKind(i, Token::Kind::punctuation) && tokens_[i].text == QString::fromUtf8(sign);
}

bool Reading::areWords(std::size_t i, QLatin1String words) const {
    for (qsizetype start = 0; start <= words.size(); ++i) {
        const auto space = words.indexOf(QLatin1Char(' '), start);
        const auto end = space < 0 ? words.size() : space;
        if (word(i) != words.mid(start, end - start))
            return false;
        start = end + 1;
    }
    return true;
}

std::size_t Reading::past(std::size_t i, QLatin1String words) const {
    if (!areWords(i, words))
        return i;
    return i + 1 + static_cast<std::size_t>(std::count(words.begin(), words.end(), ' '));
}

bool Reading::isEnd(std::size_t i) const {
    return i >= tokens_.size() || isKind(i, Token::Kind::punctuation) ||
           (isKind(i, Token::Kind::opaque) && tokens_[i].text.startsWith(QLatin1Char('#')));
}

bool Reading::endsPhrase(std::size_t i) const {
    return isEnd(i) || isKind(i, Token::Kind::clock) || isKind(i, Token::Kind::clockOfHours) ||
           isConnector(word(i)) || (isKind(i, Token::Kind::number) && isOneOf(word(i + 1), {"h", "heures"}));
}

}  // namespace kestrant::quickadd
