#include "speech/Vocabulary.h"

#include <QHash>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>
#include <unordered_map>

namespace kestrant::speech {
namespace {

constexpr std::array<const char*, static_cast<std::size_t>(Sense::count)> senseNames{
    "number",       "article",      "ordinal",      "ordinalEnding",
    "fraction",     "fractionMark", "weekday",      "weekdays",
    "month",        "unit",         "part",         "clock",
    "dayEnd",       "meridiem",     "oclock",       "ish",
    "past",         "to",           "minus",        "today",
    "todayPart",    "this",         "coming",       "next",
    "afterNext",    "last",         "former",       "ago",
    "begin",        "middle",       "end",          "in",
    "fromNow",      "inTime",       "before",       "after",
    "eve",          "morrow",       "at",           "lead",
    "from",         "between",      "of",           "the",
    "and",          "or",           "range",        "until",
    "duration",     "hedge",        "every",        "other",
    "outOf",        "frequency",    "workdays",     "times",
    "once",         "except",       "starting",     "spanEnd",
    "feast",        "weekOut",      "connector",    "forbidsDay",
    "forbidsClock", "determiner",   "name",         "priority",
    "priorityWord", "flag",         "alert",        "place",
    "dayBefore",    "verse",        "genitive",     "author",
    "otherWord",    "company",      "priorityName", "negation",
    "work",         "zeroMinute",   "allDay",       "per",
    "on",           "region",       "zoneTime",     "timeOf"};

struct Hash {
    std::size_t operator()(QStringView text) const { return qHash(text); }
};

/// Words that may follow the first one, and what all of them mean.
struct Entry {
    QStringList rest;
    Word word;
};

class Vocabulary {
  public:
    Vocabulary() {
        add(englishWords, Language::english);
        add(frenchWords, Language::french);
        for (auto& [first, entries] : entries_)
            std::stable_sort(entries.begin(), entries.end(),
                             [](const Entry& a, const Entry& b) { return a.rest.size() > b.rest.size(); });
    }

    [[nodiscard]] const std::vector<Entry>* startingWith(QStringView word) const {
        if (const auto found = entries_.find(word); found != entries_.end())
            return &found->second;
        return nullptr;
    }
    /// The same for a long word that is one slip away from a known one: a letter too many, too few, or two
    /// exchanged; one letter for another only in the longest words, since others are words of their own.
    [[nodiscard]] const std::vector<Entry>* nearly(QStringView word) const {
        if (word.size() < 5 || word.size() > 11)
            return nullptr;
        for (const QString& known : long_) {
            if (isOneSlip(word, known))
                return startingWith(known);
        }
        return nullptr;
    }

  private:
    static bool isOneSlip(QStringView typed, QStringView known) {
        const qsizetype difference = typed.size() - known.size();
        if (difference < -1 || difference > 1 || typed[0] != known[0])
            return false;
        qsizetype i = 0;
        while (i < std::min(typed.size(), known.size()) && typed[i] == known[i])
            ++i;
        if (difference == 0) {
            const bool isExchanged = i + 1 < typed.size() && typed[i] == known[i + 1] &&
                                     typed[i + 1] == known[i] && typed.mid(i + 2) == known.mid(i + 2);
            return isExchanged || (known.size() >= 8 && typed.mid(i + 1) == known.mid(i + 1));
        }
        if (difference < 0)
            return i + 1 < known.size() && typed.mid(i) == known.mid(i + 1);
        // A plural is a word of its own.
        const bool isPlural = i == known.size() && typed[i] == u's';
        return !isPlural && typed.mid(i + 1) == known.mid(i);
    }

    static int leadBits(const QString& letters) {
        int bits = 0;
        for (const QChar letter : letters)
            bits |= 1 << QStringView(u"DTSPBCA").indexOf(letter);
        return bits;
    }

    void add(std::string_view text, Language language) {
        for (const QString& line : QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()))
                                       .split(u'\n', Qt::SkipEmptyParts)) {
            const qsizetype colon = line.indexOf(u':');
            QString name = line.left(colon).section(u' ', 0, 0);
            const QString start = line.left(colon).section(u' ', 1, 1);
            const bool isShort = name.endsWith(u'~');
            if (isShort)
                name.chop(1);
            const auto sense = static_cast<Sense>(
                std::find(senseNames.begin(), senseNames.end(), name.toStdString()) - senseNames.begin());
            Q_ASSERT_X(sense != Sense::count, "vocabulary", qPrintable(line));
            bool isNumber = false;
            int value = start.toInt(&isNumber);
            if (!isNumber)
                value = leadBits(start);
            for (const QString& same : line.mid(colon + 1).split(u',')) {
                for (const QString& each : same.split(u'|')) {
                    QStringList words = each.simplified().split(u' ', Qt::SkipEmptyParts);
                    if (!words.isEmpty() && words.front() != u"_")
                        insert(words, {sense, value, language, isShort});
                }
                ++value;
            }
        }
    }
    void insert(QStringList words, const Word& word) {
        const QString first = words.takeFirst();
        const bool isNamed = word.sense == Sense::weekday || word.sense == Sense::month ||
                             (word.sense == Sense::today && word.value >= 0);
        const auto [entry, isNew] = entries_.try_emplace(keep(first));
        if (isNamed && !word.isShort && words.isEmpty() && first.size() >= 6)
            long_.push_back(first);
        entry->second.push_back({words, word});
    }
    QStringView keep(const QString& text) {
        kept_.push_back(std::make_unique<QString>(text));
        return *kept_.back();
    }

    std::vector<std::unique_ptr<QString>> kept_;
    std::unordered_map<QStringView, std::vector<Entry>, Hash> entries_;
    std::vector<QString> long_;
};

const Vocabulary& vocabulary() {
    static const Vocabulary result;
    return result;
}

}  // namespace

Senses::Senses(const Tokens& tokens, Language language) {
    const Vocabulary& known = vocabulary();
    const int size = tokens.size();
    size_ = index(size);
    first_.reserve(index(size) + 1);
    mask_.resize(index(size), {0, 0});
    found_.reserve(index(size) * 2);
    for (int i = 0; i < size; ++i) {
        first_.push_back(static_cast<std::uint32_t>(found_.size()));
        const Token& token = tokens[i];
        if (token.kind != Token::Kind::word)
            continue;
        const std::vector<Entry>* entries = known.startingWith(token.text);
        if (!entries && !tokens.isGlued(i))
            entries = known.nearly(token.text);
        if (!entries)
            continue;
        // "à" without its accent is an English article.
        const bool isArticle = token.text == u"a" && !token.isAccented && language == Language::english;
        for (const Entry& entry : *entries) {
            const bool isFrench = entry.word.language == Language::french;
            if ((isArticle && isFrench) || (token.isAccented && !isFrench))
                continue;
            int end = i + 1;
            for (const QString& word : entry.rest) {
                if (end >= size || tokens[end].text != word || tokens[end].gap == Token::Gap::none) {
                    end = 0;
                    break;
                }
                ++end;
            }
            if (end == 0)
                continue;
            found_.push_back({entry.word, end});
            mask_[index(i)][index(entry.word.sense) / 64] |= std::uint64_t{1}
                                                             << (index(entry.word.sense) % 64);
        }
    }
    first_.push_back(static_cast<std::uint32_t>(found_.size()));
}

const Found* Senses::find(int i, Sense sense) const {
    if (!has(i, sense))
        return nullptr;
    return std::find_if(begin(i), end(i), [&](const Found& found) { return found.word.sense == sense; });
}

bool Senses::endsWith(int i, Sense sense) const {
    for (int start = i - 1; start >= 0 && start >= i - 4; --start) {
        if (has(start, sense) && std::any_of(begin(start), end(start), [&](const Found& found) {
                return found.word.sense == sense && found.end == i;
            }))
            return true;
    }
    return false;
}

}  // namespace kestrant::speech
