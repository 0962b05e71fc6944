#include "reminders/scripting/Script.h"

#include <algorithm>
#include <map>
#include <utility>

namespace kestrant::scripting {
namespace {

struct Token {
    enum class Kind { word, text, number, symbol, lineEnd, end };
    Kind kind = Kind::end;
    /// A word in small letters; a text without quotes and escapes.
    QString text;
    int line = 0;
};

ScriptError syntaxError(int line, const QString& what) {
    return {ScriptError::Code::failed, QStringLiteral("line %1: %2").arg(line).arg(what)};
}

class Tokenizer {
  public:
    explicit Tokenizer(const QString& source) : source_(source) {}

    tl::expected<std::vector<Token>, ScriptError> tokens() {
        while (position_ < source_.size()) {
            const QChar c = source_[position_];
            if (c == QLatin1Char('\n')) {
                add(Token::Kind::lineEnd, {});
                ++line_;
                ++position_;
            } else if (c.isSpace()) {
                ++position_;
            } else if (c == QLatin1Char('"')) {
                if (!addText())
                    return tl::unexpected(syntaxError(line_, QStringLiteral("a text without an end")));
            } else if (c == QLatin1Char('(') || c == QLatin1Char(')')) {
                add(Token::Kind::symbol, c);
                ++position_;
            } else if (c.isDigit()) {
                add(Token::Kind::number, take([](QChar next) { return next.isDigit(); }));
            } else if (c.isLetter() || c == QLatin1Char('_')) {
                add(Token::Kind::word, take([](QChar next) {
                                           return next.isLetterOrNumber() || next == QLatin1Char('_');
                                       }).toLower());
            } else {
                return tl::unexpected(syntaxError(line_, QStringLiteral("“%1” is not understood").arg(c)));
            }
        }
        add(Token::Kind::lineEnd, {});
        add(Token::Kind::end, {});
        return std::move(tokens_);
    }

  private:
    void add(Token::Kind kind, const QString& text) { tokens_.push_back({kind, text, line_}); }

    template <typename Accepts>
    QString take(Accepts accepts) {
        const auto start = position_;
        while (position_ < source_.size() && accepts(source_[position_]))
            ++position_;
        return source_.mid(start, position_ - start);
    }

    /// A text may go over several lines.
    bool addText() {
        const int firstLine = line_;
        QString text;
        for (++position_; position_ < source_.size(); ++position_) {
            QChar c = source_[position_];
            if (c == QLatin1Char('"')) {
                ++position_;
                tokens_.push_back({Token::Kind::text, text, firstLine});
                return true;
            }
            if (c == QLatin1Char('\\') && position_ + 1 < source_.size()) {
                c = source_[++position_];
                static const std::map<QChar, QChar> controls{
                    {QLatin1Char('n'), QLatin1Char('\n')},
                    {QLatin1Char('r'), QLatin1Char('\r')},
                    {QLatin1Char('t'), QLatin1Char('\t')},
                };
                if (const auto control = controls.find(c); control != controls.end())
                    c = control->second;
                else if (c != QLatin1Char('\\') && c != QLatin1Char('"'))
                    return false;
            } else if (c == QLatin1Char('\n')) {
                ++line_;
            }
            text.append(c);
        }
        return false;
    }

    const QString& source_;
    qsizetype position_ = 0;
    int line_ = 1;
    std::vector<Token> tokens_;
};

/// Recursive descent; the first error ends it.
class Parser {
  public:
    explicit Parser(std::vector<Token> tokens) : tokens_(std::move(tokens)) {}

    tl::expected<Block, ScriptError> script() {
        Block block = statements();
        if (!error_ && next().kind != Token::Kind::end)
            fail(QStringLiteral("a statement"));
        if (error_)
            return tl::unexpected(*error_);
        return block;
    }

  private:
    [[nodiscard]] const Token& next() const { return tokens_[position_]; }
    [[nodiscard]] bool isNext(const char* word) const {
        return next().kind == Token::Kind::word && next().text == QLatin1String(word);
    }
    bool take(const char* word) {
        if (error_ || !isNext(word))
            return false;
        ++position_;
        return true;
    }
    void expect(const char* words) {
        for (const QString& word : QString::fromLatin1(words).split(QLatin1Char(' '))) {
            if (!take(word.toLatin1().constData()))
                fail(QLatin1Char('"') + word + QLatin1Char('"'));
        }
    }
    bool takeSymbol(char symbol) {
        if (error_ || next().kind != Token::Kind::symbol || next().text != QLatin1Char(symbol))
            return false;
        ++position_;
        return true;
    }
    QString expect(Token::Kind kind, const char* what) {
        if (!error_ && next().kind == kind)
            return tokens_[position_++].text;
        fail(QString::fromLatin1(what));
        return {};
    }
    void expectLineEnd() {
        if (!error_ && next().kind == Token::Kind::lineEnd)
            ++position_;
        else
            fail(QStringLiteral("the end of the line"));
    }
    void fail(const QString& expected) {
        if (!error_)
            error_ = syntaxError(next().line, QStringLiteral("expected %1").arg(expected));
    }

    Block statements() {
        Block block;
        while (!error_) {
            if (next().kind == Token::Kind::lineEnd) {
                ++position_;
                continue;
            }
            if (isNext("end") || next().kind == Token::Kind::end)
                break;
            const int line = next().line;
            Statement statement = this->statement();
            statement.line = line;
            block.push_back(std::move(statement));
        }
        return block;
    }
    /// The lines up to "end" and this word.
    Block body(const char* word) {
        expectLineEnd();
        Block block = statements();
        expect("end");
        expect(word);
        expectLineEnd();
        return block;
    }

    Statement statement() {
        if (take("with"))
            return withTimeout();
        if (take("tell")) {
            expect("application");
            const QString name = expect(Token::Kind::text, "a name");
            return {TellApplication{name, body("tell")}};
        }
        if (take("try"))
            return {Try{body("try")}};
        if (take("repeat")) {
            expect("with");
            const QString variable = expect(Token::Kind::word, "a variable");
            expect("in");
            ExpressionRef list = expression();
            return {RepeatWith{variable, std::move(list), body("repeat")}};
        }
        if (take("return")) {
            ExpressionRef value;
            if (next().kind != Token::Kind::lineEnd)
                value = expression();
            expectLineEnd();
            return {Return{std::move(value)}};
        }
        if (take("set"))
            return assignment();
        fail(QStringLiteral("a statement"));
        return {Return{}};
    }

    Statement withTimeout() {
        expect("timeout of");
        const QString number = expect(Token::Kind::number, "a number");
        bool fits = false;
        const int seconds = number.toInt(&fits);
        if (!error_ && !fits)
            fail(QStringLiteral("a smaller number"));
        if (!take("second"))
            expect("seconds");
        return {WithTimeout{seconds, body("timeout")}};
    }

    Statement assignment() {
        const auto property = reminderProperty();
        if (property && tokens_[position_ + 1].text == QLatin1String("of")) {
            ++position_;
            expect("of");
            PropertyOf target{*property, expression()};
            expect("to");
            ExpressionRef value = expression();
            expectLineEnd();
            return {SetProperty{std::move(target), std::move(value)}};
        }
        const QString name = expect(Token::Kind::word, "a variable or a property");
        expect("to");
        ExpressionRef value = expression();
        expectLineEnd();
        return {SetVariable{name, std::move(value)}};
    }

    /// The property that the next word names, without taking it.
    [[nodiscard]] std::optional<ReminderProperty> reminderProperty() const {
        if (isNext("id"))
            return ReminderProperty::id;
        if (isNext("flagged"))
            return ReminderProperty::flagged;
        if (isNext("completed"))
            return ReminderProperty::completed;
        return std::nullopt;
    }

    ExpressionRef make(Expression expression) {
        return std::make_shared<const Expression>(std::move(expression));
    }

    ExpressionRef expression() {
        if (const auto property = reminderProperty()) {
            ++position_;
            expect("of");
            return make({PropertyOf{*property, expression()}});
        }
        if (isNext("every") || isNext("first")) {
            ReminderQuery query{.onlyFirst = isNext("first")};
            ++position_;
            expect("reminder");
            if (take("of"))
                query.list = primary();
            if (take("whose"))
                query.conditions = conditions();
            return make({std::move(query)});
        }
        return primary();
    }

    ExpressionRef primary() {
        if (takeSymbol('(')) {
            ExpressionRef inner = expression();
            if (!takeSymbol(')'))
                fail(QStringLiteral("\")\""));
            return inner;
        }
        if (!error_ && next().kind == Token::Kind::text)
            return make({TextLiteral{tokens_[position_++].text}});
        if (take("true"))
            return make({BooleanLiteral{true}});
        if (take("false"))
            return make({BooleanLiteral{false}});
        if (take("lists"))
            return make({AllLists{}});
        if (take("list"))
            return make({ListNamed{primary()}});
        return make({Variable{expect(Token::Kind::word, "a value")}});
    }

    std::vector<Condition> conditions() {
        std::vector<Condition> result;
        do {
            const auto property = reminderProperty();
            if (!property) {
                fail(QStringLiteral("a property of reminders"));
                break;
            }
            ++position_;
            Condition condition{.property = *property};
            if (take("ends")) {
                expect("with");
                condition.operation = Condition::Operator::endsWith;
            } else {
                expect("is");
            }
            condition.value = primary();
            result.push_back(std::move(condition));
        } while (take("and"));
        return result;
    }

    std::vector<Token> tokens_;
    std::size_t position_ = 0;
    std::optional<ScriptError> error_;
};

}  // namespace

tl::expected<Block, ScriptError> parseScript(const QString& source) {
    auto tokens = Tokenizer(source).tokens();
    if (!tokens)
        return tl::unexpected(std::move(tokens.error()));
    return Parser(std::move(*tokens)).script();
}

}  // namespace kestrant::scripting
