#include "speech/Marks.h"

#include <algorithm>
#include <utility>

namespace kestrant::speech {
namespace {

using Gap = Token::Gap;
using Kind = Token::Kind;
using PieceKind = Piece::Kind;

class MarkReader {
  public:
    MarkReader(const QString& line, const Tokens& tokens, const Senses& senses, const Context& context,
               std::vector<bool>& taken, Line& result)
        : line_(line)
        , tokens_(tokens)
        , senses_(senses)
        , context_(context)
        , taken_(taken)
        , result_(result) {}

    void read() {
        readNote();
        readLink();
        readList();
        readPriorityAndFlag();
    }

  private:
    [[nodiscard]] bool isTaken(int begin, int end) const {
        return std::any_of(taken_.begin() + begin, taken_.begin() + end, [](bool taken) { return taken; });
    }
    bool take(PieceKind kind, int begin, int end) {
        if (isTaken(begin, end))
            return false;
        const qsizetype start = tokens_[begin].start;
        result_.pieces.push_back({kind, {start, tokens_[end - 1].end - start}});
        std::fill(taken_.begin() + begin, taken_.begin() + end, true);
        return true;
    }
    /// Whether a chunk between blanks begins here.
    [[nodiscard]] bool beginsChunk(int i) const { return i == 0 || tokens_[i].gap == Gap::space; }
    [[nodiscard]] bool endsChunk(int i) const { return i >= tokens_.size() || tokens_[i].gap == Gap::space; }

    void readNote() {
        for (int i = 0; i + 1 < tokens_.size(); ++i) {
            if (!tokens_.isSign(i, u'/') || !tokens_.isSign(i + 1, u'/') || !tokens_.isGlued(i + 1) ||
                !beginsChunk(i) || !endsChunk(i + 2) || taken_[static_cast<std::size_t>(i)])
                continue;
            const QString note = line_.mid(tokens_[i + 1].end).trimmed();
            if (note.isEmpty() || i == 0)
                return;
            if (take(PieceKind::note, i, tokens_.size()))
                result_.note = note;
            return;
        }
    }

    void readLink() {
        for (int i = 0; i < tokens_.size(); ++i) {
            if (!tokens_.isKind(i, Kind::link) || !take(PieceKind::link, i, i + 1))
                continue;
            result_.link = line_.mid(tokens_[i].start, tokens_[i].end - tokens_[i].start);
            if (result_.link.startsWith(u"www.", Qt::CaseInsensitive))
                result_.link.prepend(QStringLiteral("https://"));
            return;
        }
    }

    void readList() {
        for (int i = tokens_.size() - 2; i >= 0; --i) {
            if (!tokens_.isSign(i, u'#') || !beginsChunk(i) || !tokens_.isGlued(i + 1))
                continue;
            std::size_t best = 0;
            int end = 0;
            for (std::size_t list = 0; list < static_cast<std::size_t>(context_.lists.size()); ++list) {
                const int nameEnd = endOfName(context_.lists[static_cast<qsizetype>(list)], i + 1);
                if (nameEnd > end) {
                    best = list;
                    end = nameEnd;
                }
            }
            if (end > 0 && take(PieceKind::list, i, end)) {
                result_.list = best;
                return;
            }
        }
        for (int i = tokens_.size() - 2; i >= 0; --i) {
            if (!tokens_.isSign(i, u'#') || !beginsChunk(i) || !tokens_.isGlued(i + 1) ||
                !(tokens_.isKind(i + 1, Kind::word) || tokens_.isKind(i + 1, Kind::opaque)))
                continue;
            int end = i + 2;
            while (!endsChunk(end) && !tokens_.isStop(end))
                ++end;
            if (!take(PieceKind::list, i, end))
                continue;
            const qsizetype start = tokens_[i + 1].start;
            result_.newList = line_.mid(start, tokens_[end - 1].end - start);
            const auto isQuote = [](QChar c) { return QStringView(u"\"“”«»„").contains(c) || c.isSpace(); };
            while (!result_.newList.isEmpty() && isQuote(result_.newList.front()))
                result_.newList.remove(0, 1);
            while (!result_.newList.isEmpty() && isQuote(result_.newList.back()))
                result_.newList.chop(1);
            return;
        }
    }
    /// Behind a list's name written at a token, in any letter case and with or without its blanks; 0 where it
    /// is another one.
    [[nodiscard]] int endOfName(const QString& title, int at) const {
        const auto bare = [](QStringView text) {
            QString result;
            for (const QChar c : folded(text)) {
                if (!c.isSpace() && c != u'-' && c != u'"')
                    result.append(c);
            }
            return result;
        };
        const QString wanted = bare(title);
        const qsizetype start = tokens_[at].start;
        int found = 0;
        QString seen;
        for (int i = at; i < tokens_.size() && seen.size() < wanted.size(); ++i) {
            seen += bare(QStringView(line_).mid(i == at ? start : tokens_[i - 1].end,
                                                tokens_[i].end - (i == at ? start : tokens_[i - 1].end)));
            if (seen == wanted && !wanted.isEmpty() && tokens_.ends(i + 1))
                found = i + 1;
        }
        return found;
    }

    void readPriorityAndFlag() {
        for (int i = tokens_.size() - 1; i >= 0; --i) {
            if (taken_[static_cast<std::size_t>(i)])
                continue;
            if (!result_.isFlagged && isFlag(i))
                result_.isFlagged = true;
            if (!result_.priority)
                readPriority(i);
        }
    }
    bool isFlag(int i) {
        const QStringView text = QStringView(line_).mid(tokens_[i].start, tokens_[i].end - tokens_[i].start);
        if (text == u"⚑" || text == u"🚩")
            return take(PieceKind::flag, i, i + 1);
        return tokens_.isSign(i, u'!') && beginsChunk(i) && tokens_.isGlued(i + 1) &&
               senses_.has(i + 1, Sense::flag) && endsChunk(i + 2) && take(PieceKind::flag, i, i + 2);
    }
    void readPriority(int i) {
        const auto priority = [&](int value, int begin, int end) {
            if (take(PieceKind::priority, begin, end))
                result_.priority = value;
        };
        if (tokens_.isSign(i, u'!') && beginsChunk(i)) {
            int signs = 1;
            while (tokens_.isGlued(i + signs) && tokens_.isSign(i + signs, u'!'))
                ++signs;
            // In French an exclamation mark has a space before it.
            const bool isMark = signs <= 3 && (signs > 1 || context_.present.language == Language::english);
            if (endsChunk(i + signs)) {
                if (isMark)
                    priority(signs == 3 ? 1 : signs == 2 ? 5 : 9, i, i + signs);
                return;
            }
            if (signs != 1)
                return;
            if (tokens_.isKind(i + 1, Kind::number) && endsChunk(i + 2) && tokens_[i + 1].number >= 1 &&
                tokens_[i + 1].number <= 3)
                priority(4 * tokens_[i + 1].number - 3, i, i + 2);
            else if (const Found* word = senses_.find(i + 1, Sense::priorityWord);
                     word && endsChunk(word->end))
                priority(4 * word->word.value + 1, i, word->end);
            return;
        }
        // "p1"
        if (tokens_.isKind(i, Kind::word) && beginsChunk(i) && tokens_[i].text == u"p" &&
            tokens_.isGlued(i + 1) && tokens_.isKind(i + 1, Kind::number) && tokens_[i + 1].digits == 1 &&
            tokens_[i + 1].number >= 1 && tokens_[i + 1].number <= 3 && tokens_.ends(i + 2)) {
            priority(4 * tokens_[i + 1].number - 3, i, i + 2);
            return;
        }
        // "high priority", "prio haute"
        if (!tokens_.isKind(i, Kind::word))
            return;
        if (!senses_.has(i, Sense::priorityName))
            return;
        if (const Found* value = senses_.find(i + 1, Sense::priorityWord);
            value && tokens_.ends(value->end)) {
            priority(4 * (value->word.value) + 1, i, value->end);
            return;
        }
        for (const Found* value = i > 0 ? senses_.begin(i - 1) : nullptr;
             value && value != senses_.end(i - 1); ++value) {
            if (value->word.sense == Sense::priorityWord && value->end == i && tokens_.isStop(i + 1))
                priority(4 * value->word.value + 1, i - 1, i + 1);
        }
    }

    const QString& line_;
    const Tokens& tokens_;
    const Senses& senses_;
    const Context& context_;
    std::vector<bool>& taken_;
    Line& result_;
};

}  // namespace

void readMarks(const QString& line, const Tokens& tokens, const Senses& senses, const Context& context,
               std::vector<bool>& taken, Line& result) {
    MarkReader(line, tokens, senses, context, taken, result).read();
}

std::optional<SpokenAlert> findAlert(const Grammar& grammar, const std::vector<bool>& taken) {
    const Tokens& tokens = grammar.tokens();
    const Senses& senses = grammar.senses();
    for (int i = 0; i < tokens.size(); ++i) {
        if (taken[static_cast<std::size_t>(i)] || !tokens.begins(i))
            continue;
        const Found* named = senses.find(i, Sense::alert);
        int at = named ? named->end : i;
        if (tokens.isSign(at, u':'))
            ++at;
        SpokenAlert result{.begin = i, .isNamed = named != nullptr};
        if (const auto length = grammar.length(at)) {
            const Found* before = senses.find(length->end, Sense::before);
            const bool isEnd =
                before && (tokens.isStop(before->end) ||
                           taken[static_cast<std::size_t>(std::min(before->end, tokens.size() - 1))]);
            // "alert 15 minutes"
            const bool isSaid = !before && named && tokens.isStop(length->end);
            if ((isEnd || isSaid) && length->length.months == 0) {
                result.alert.minutesBefore =
                    static_cast<int>(length->length.minutes + length->length.days * 1440LL);
                result.end = isEnd ? before->end : length->end;
                return result;
            }
        }
        if (const Found* eve = senses.find(at, Sense::dayBefore)) {
            const int from = senses.past(senses.past(eve->end, Sense::lead), Sense::the);
            const auto clock = grammar.clock(from);
            const bool isFollowed = !clock && !tokens.isStop(eve->end);
            if (isFollowed)
                continue;
            result.end = clock ? clock->end : eve->end;
            result.alert.daysBefore = 1;
            const int minute = clock ? minuteOfDay(clock->meaning) : 9 * 60;
            result.alert.time = QTime(0, 0).addSecs(minute % 1440 * 60);
            return result;
        }
    }
    return std::nullopt;
}

std::optional<SpokenPlace> findPlace(const Tokens& tokens, const Senses& senses,
                                     const std::vector<bool>& taken, int phraseEnd) {
    // The values of the language files.
    enum { onlyOfNames, behindTheTime, partOfTheName };
    for (int i = tokens.size() - 2; i >= 1; --i) {
        const bool isSign = tokens.isSign(i, u'@') && tokens.begins(i);
        const Found* word = senses.find(i, Sense::place);
        if (taken[static_cast<std::size_t>(i)] || !(isSign || (word && tokens[i].gap == Gap::space)))
            continue;
        const int at = isSign ? i + 1 : word->end;
        if (at >= tokens.size() || taken[static_cast<std::size_t>(at)])
            continue;
        int named = at;
        while (named + 1 < tokens.size() &&
               (senses.has(named, Sense::the) || senses.has(named, Sense::determiner)))
            ++named;
        const int kind = isSign ? partOfTheName : word->word.value;
        const bool isProper =
            kind == onlyOfNames && (tokens[named].isCapital || tokens.isKind(named, Kind::number));
        const bool isBehind = phraseEnd > 0 && i >= phraseEnd;
        if (kind != partOfTheName && !isProper && !isBehind)
            continue;
        int end = at;
        while (end < tokens.size() && !taken[static_cast<std::size_t>(end)]) {
            const bool isCompany =
                tokens[end].gap == Gap::space && end > at && senses.has(end, Sense::company);
            if (isCompany || (tokens.isSign(end, u';') && tokens.ends(end)))
                break;
            ++end;
        }
        while (end > at && tokens.isKind(end - 1, Kind::sign) && tokens.isStop(end - 1) &&
               !tokens.isSign(end - 1, u')'))
            --end;
        if (end > at)
            return SpokenPlace{.begin = i, .name = kind == partOfTheName && !isSign ? i : at, .end = end};
    }
    return std::nullopt;
}

QString withoutRanges(const QString& line, const std::vector<TextRange>& ranges) {
    const auto isHanging = [](QChar c) { return c.isSpace() || QStringView(u",;:–—-").contains(c); };
    QString result;
    qsizetype from = 0;
    bool isCut = false;
    const auto append = [&](QStringView part, bool isLast) {
        if (!isCut) {
            result += part;
            return;
        }
        while (!result.isEmpty() && result.back().isSpace())
            result.chop(1);
        const bool isParted = !part.isEmpty() && part.front().isSpace();
        part = part.trimmed();
        if (result.isEmpty()) {
            while (!part.isEmpty() && isHanging(part.front()))
                part = part.mid(1);
            result += part;
            return;
        }
        const QChar last = result.back();
        if (!part.isEmpty() &&
            ((last == u'(' && part.front() == u')') || (last == u'[' && part.front() == u']'))) {
            result.chop(1);
            part = part.mid(1);
            while (!result.isEmpty() && result.back().isSpace())
                result.chop(1);
            part = part.trimmed();
        }
        // One mark stays where there was one on either side: "a - friday - b", "a, friday, b".
        if (!part.isEmpty() && part.size() > 1 && isHanging(part.front()) && isHanging(result.back())) {
            while (!result.isEmpty() && isHanging(result.back()))
                result.chop(1);
            if (isParted)
                result += u' ';
            result += part;
            return;
        }
        const bool isNothing =
            std::all_of(part.begin(), part.end(), [&](QChar c) { return isHanging(c) || c == u'.'; });
        if (isNothing) {
            if (isLast) {
                while (!result.isEmpty() && isHanging(result.back()))
                    result.chop(1);
            }
            return;
        }
        if (isParted || !QStringView(u",;.?!").contains(part.front()))
            result += u' ';
        result += part;
    };
    for (const TextRange& range : ranges) {
        if (range.start < from)
            continue;
        append(QStringView(line).mid(from, range.start - from), false);
        from = range.end();
        isCut = true;
    }
    append(QStringView(line).mid(from), true);
    const bool isNothing =
        std::all_of(result.begin(), result.end(), [](QChar c) { return c.isSpace() || c.isPunct(); });
    return isNothing && isCut ? QString() : result.trimmed();
}

}  // namespace kestrant::speech
