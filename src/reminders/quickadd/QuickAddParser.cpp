#include "reminders/quickadd/QuickAddParser.h"

#include "reminders/quickadd/QuickAddDates.h"
#include "reminders/quickadd/QuickAddTokens.h"

#include <QRegularExpression>

#include <algorithm>
#include <utility>

namespace kestrant {
namespace {

using quickadd::DayPart;
using quickadd::Phrase;
using quickadd::Token;

/// Stands where something was taken out.
constexpr QChar gap(0x0001);

bool isFree(const TextRange& range, const std::vector<TextRange>& taken) {
    return std::none_of(taken.begin(), taken.end(),
                        [&](const TextRange& other) { return range.overlaps(other); });
}

struct Moment {
    std::optional<QDate> day;
    std::optional<QTime> time;
};

/// Puts an hour of twelve into the half of the day that is meant.
Moment resolved(const Phrase& clock, std::optional<QDate> day, std::optional<DayPart> part) {
    const QTime time = *clock.time;
    if (!part && clock.isVagueHour && time.hour() >= 1 && time.hour() <= 7)
        return {day, time.addSecs(12 * 3600)};
    if (!part || !clock.isOfTwelve)
        return {day, time};
    if (*part == DayPart::morning)
        return {day, time.hour() == 12 ? time.addSecs(12 * 3600) : time};
    if (*part == DayPart::afternoon)
        return {day, time.hour() < 12 ? time.addSecs(12 * 3600) : time};
    // The small hours of an evening are those of the next day.
    const bool isAfterMidnight = time.hour() == 12 || time.hour() <= 4;
    if (!isAfterMidnight)
        return {day, time.addSecs(12 * 3600)};
    return {day ? std::optional(day->addDays(1)) : day, time.hour() == 12 ? time.addSecs(12 * 3600) : time};
}

class Reader {
  public:
    Reader(const QString& line, const QuickAddContext& context, const std::vector<TextRange>& refused)
        : line_(line)
        , context_(context)
        , taken_(refused) {}

    QuickAddLine read() {
        readList();
        readPriority();
        readMoment();
        std::sort(result_.pieces.begin(), result_.pieces.end(),
                  [](const auto& a, const auto& b) { return a.range.start < b.range.start; });
        result_.title = title();
        return std::move(result_);
    }

  private:
    void take(QuickAddPiece::Kind kind, const TextRange& range) {
        result_.pieces.push_back({kind, range});
        taken_.push_back(range);
    }
    [[nodiscard]] bool isBlankAt(qsizetype place) const {
        return place < 0 || place >= line_.size() || line_[place].isSpace();
    }
    /// Whether a name that ends here is not a part of a longer word.
    [[nodiscard]] bool endsName(qsizetype place) const {
        return isBlankAt(place) || QStringLiteral(",;:.!?)").contains(line_[place]);
    }

    void readList() {
        for (qsizetype at = line_.lastIndexOf(QLatin1Char('#')); at >= 0;
             at = at == 0 ? -1 : line_.lastIndexOf(QLatin1Char('#'), at - 1)) {
            if (!isBlankAt(at - 1))
                continue;
            const ReminderList* best = nullptr;
            qsizetype end = at;
            for (const ReminderList& list : context_.lists) {
                for (const QString& name : spellings(list.title)) {
                    if (const auto nameEnd = endOfName(name, at + 1); nameEnd > end) {
                        best = &list;
                        end = *nameEnd;
                    }
                }
            }
            const TextRange range{at, end - at};
            if (!best || !isFree(range, taken_))
                continue;
            result_.listID = best->id;
            take(QuickAddPiece::Kind::list, range);
            return;
        }
    }
    /// How a list's title may be written behind "#".
    static QStringList spellings(const QString& title) {
        QString joined = title;
        joined.remove(QLatin1Char(' '));
        QString hyphenated = title;
        hyphenated.replace(QLatin1Char(' '), QLatin1Char('-'));
        return {title, joined, hyphenated, QLatin1Char('"') + title + QLatin1Char('"')};
    }
    /// Where a name that begins here ends; absent when it is another one.
    [[nodiscard]] std::optional<qsizetype> endOfName(const QString& name, qsizetype at) const {
        const QString wanted = quickadd::normalized(name);
        QString seen;
        qsizetype end = at;
        while (end < line_.size() && seen.size() < wanted.size())
            seen = quickadd::normalized(line_.mid(at, ++end - at));
        while (end < line_.size() && line_[end].isMark())
            ++end;
        return !wanted.isEmpty() && seen == wanted && endsName(end) ? std::optional(end) : std::nullopt;
    }

    void readPriority() {
        struct Mark {
            const char* text;
            NewReminderPriority priority;
        };
        static constexpr Mark marks[] = {
            {"!!!", NewReminderPriority::high},        {"!!", NewReminderPriority::normal},
            {"!high", NewReminderPriority::high},      {"!haute", NewReminderPriority::high},
            {"!1", NewReminderPriority::high},         {"!normal", NewReminderPriority::normal},
            {"!normale", NewReminderPriority::normal}, {"!medium", NewReminderPriority::normal},
            {"!moyenne", NewReminderPriority::normal}, {"!2", NewReminderPriority::normal},
            {"!low", NewReminderPriority::low},        {"!basse", NewReminderPriority::low},
            {"!3", NewReminderPriority::low},          {"!", NewReminderPriority::low},
        };
        qsizetype end = line_.size();
        while (end > 0) {
            qsizetype start = end;
            while (start > 0 && !line_[start - 1].isSpace())
                --start;
            const QString chunk = line_.mid(start, end - start).toLower();
            const TextRange range{start, end - start};
            for (const Mark& mark : marks) {
                // In French an exclamation mark has a space before it.
                const bool isMark = chunk == QLatin1String(mark.text) &&
                                    (chunk.size() > 1 || context_.language == Language::english);
                if (!isMark || !isFree(range, taken_))
                    continue;
                result_.priority = mark.priority;
                take(QuickAddPiece::Kind::priority, range);
                return;
            }
            end = start - 1;
        }
    }

    void readMoment() {
        const std::vector<Token> tokens = quickadd::tokenize(line_);
        const auto rangeOf = [&](const Phrase& phrase) {
            const qsizetype start = tokens[phrase.begin].start;
            return TextRange{start, tokens[phrase.end - 1].end - start};
        };
        std::optional<Phrase> day;
        std::optional<Phrase> clock;
        std::optional<Phrase> part;
        for (const Phrase& phrase :
             quickadd::findPhrases(tokens, {context_.now, context_.zone, context_.language})) {
            if (!isFree(rangeOf(phrase), taken_))
                continue;
            if (phrase.day)
                day = phrase;
            else if (phrase.part && phrase.time == quickadd::usualTime(*phrase.part) && !phrase.isOfTwelve)
                part = phrase;
            else
                clock = phrase;
        }
        if (day)
            take(QuickAddPiece::Kind::day, rangeOf(*day));
        if (clock)
            take(QuickAddPiece::Kind::time, rangeOf(*clock));
        if (part)
            take(QuickAddPiece::Kind::time, rangeOf(*part));
        setMoment(day, clock, part);
    }

    void setMoment(const std::optional<Phrase>& day, const std::optional<Phrase>& clock,
                   const std::optional<Phrase>& part) {
        std::optional<DayPart> half = clock ? clock->part : std::nullopt;
        if (!half && part)
            half = part->part;
        if (!half && day)
            half = day->part;
        Moment moment{day ? day->day : std::nullopt, std::nullopt};
        if (clock)
            moment = resolved(*clock, moment.day, half);
        else if (part)
            moment.time = part->time;
        else if (day)
            moment.time = day->time;
        if (moment.time && !moment.day) {
            const QDate today = context_.zone.dayOf(context_.now);
            const bool isOver = *moment.time <= context_.zone.timeOf(context_.now);
            moment.day = today.addDays(isOver ? 1 : 0);
        }
        result_.day = moment.day;
        result_.time = moment.time;
    }

    /// The line with gaps where pieces were, and without the punctuation that hung on them.
    [[nodiscard]] QString title() const {
        if (result_.pieces.empty())
            return line_.trimmed();
        QString text;
        qsizetype from = 0;
        for (const QuickAddPiece& piece : result_.pieces) {
            text += QStringView(line_).mid(from, piece.range.start - from);
            text += gap;
            from = piece.range.end();
        }
        text += QStringView(line_).mid(from);
        static const QRegularExpression inBrackets(QStringLiteral("[(\\[]\\s*\\x01[\\s\\x01]*[)\\]]"));
        static const QRegularExpression atStart(QStringLiteral("^[\\s\\x01,;:–—-]*\\x01[\\s\\x01,;:–—-]*"));
        static const QRegularExpression atEnd(QStringLiteral("[\\s\\x01,;:–—-]*\\x01[\\s\\x01,;:.–—-]*$"));
        static const QRegularExpression beforeSign(QStringLiteral("\\s*\\x01(?=[,;.?!])"));
        static const QRegularExpression between(QStringLiteral("\\s*\\x01[\\s\\x01]*"));
        text.replace(inBrackets, gap);
        text.remove(atStart);
        text.remove(atEnd);
        text.remove(beforeSign);
        text.replace(between, QStringLiteral(" "));
        // The "!" left of "tomorrow!" is no title.
        const bool isNothing =
            std::all_of(text.begin(), text.end(), [](QChar c) { return c.isSpace() || c.isPunct(); });
        return isNothing ? QString() : text.trimmed();
    }

    const QString& line_;
    const QuickAddContext& context_;
    /// Refused, or understood already.
    std::vector<TextRange> taken_;
    QuickAddLine result_;
};

}  // namespace

QuickAddLine parseQuickAdd(const QString& line, const QuickAddContext& context,
                           const std::vector<TextRange>& refused) {
    return Reader(line, context, refused).read();
}

}  // namespace kestrant
