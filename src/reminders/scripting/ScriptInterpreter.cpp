#include "reminders/scripting/ScriptInterpreter.h"

#include "reminders/scripting/Script.h"

#include <algorithm>
#include <map>
#include <utility>

namespace kestrant::scripting {
namespace {

using Kind = ScriptDatabase::Kind;
using Reminder = ScriptDatabase::Reminder;

struct ListValue {
    QString id;
};
struct ReminderValue {
    Reminder reminder;
    Kind kind = Kind::open;
};
/// The empty one is what a statement without a value gives.
struct Value {
    std::variant<std::monostate, bool, QString, ListValue, ReminderValue, std::vector<Value>> content;
};

template <typename Result>
using Expected = tl::expected<Result, ScriptError>;

tl::unexpected<ScriptError> failure(const QString& message) {
    return tl::unexpected(ScriptError{ScriptError::Code::failed, message});
}

bool isSameText(const QString& a, const QString& b) {
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

QString scriptedID(const Reminder& reminder) {
    return QLatin1String(reminderScheme) + reminder.id;
}

bool endsWithAsAWhole(const Reminder& reminder, const QString& suffix) {
    const QString id = scriptedID(reminder);
    return id.endsWith(suffix, Qt::CaseInsensitive) &&
           (id.size() == suffix.size() || id[id.size() - suffix.size() - 1] == QLatin1Char('/'));
}

/// A condition whose value is known.
struct Test {
    ReminderProperty property = ReminderProperty::id;
    Condition::Operator operation = Condition::Operator::is;
    QString text;
    bool boolean = false;

    [[nodiscard]] bool holds(const Reminder& reminder, Kind kind) const {
        switch (property) {
        case ReminderProperty::flagged:
            return reminder.isFlagged == boolean;
        case ReminderProperty::completed:
            return (kind == Kind::completed) == boolean;
        case ReminderProperty::id:
            break;
        }
        return operation == Condition::Operator::endsWith
                   ? scriptedID(reminder).endsWith(text, Qt::CaseInsensitive)
                   : isSameText(scriptedID(reminder), text);
    }
};

class Interpreter {
  public:
    explicit Interpreter(ScriptDatabase& database) : database_(database) {}

    /// True when the script has returned.
    Expected<bool> run(const Block& block) {
        for (const Statement& statement : block) {
            auto returned = std::visit([this](const auto& node) { return execute(node); }, statement.node);
            if (!returned || *returned)
                return returned;
        }
        return false;
    }
    [[nodiscard]] const Value& result() const { return result_; }

  private:
    Expected<bool> execute(const WithTimeout& statement) {
        if (std::exchange(hasTimeLimit_, true))
            return failure(QStringLiteral("there is a time limit already"));
        database_.beginTimeLimit(statement.seconds);
        auto returned = run(statement.body);
        database_.endTimeLimit();
        hasTimeLimit_ = false;
        return returned;
    }
    Expected<bool> execute(const TellApplication& statement) {
        if (!isSameText(statement.name, QStringLiteral("Reminders")))
            return failure(QStringLiteral("there is no application “%1”").arg(statement.name));
        const bool before = std::exchange(isTelling_, true);
        auto returned = run(statement.body);
        isTelling_ = before;
        return returned;
    }
    Expected<bool> execute(const Try& statement) {
        auto returned = run(statement.body);
        if (!returned && returned.error().code == ScriptError::Code::failed)
            return false;
        return returned;
    }
    Expected<bool> execute(const RepeatWith& statement) {
        const auto values = evaluate(statement.list);
        if (!values)
            return tl::unexpected(values.error());
        const auto* list = std::get_if<std::vector<Value>>(&values->content);
        if (!list)
            return failure(QStringLiteral("only a list can be gone through"));
        for (const Value& value : *list) {
            variables_[statement.variable] = value;
            auto returned = run(statement.body);
            if (!returned || *returned)
                return returned;
        }
        return false;
    }
    Expected<bool> execute(const Return& statement) {
        result_ = {};
        if (statement.value) {
            auto value = evaluate(statement.value);
            if (!value)
                return tl::unexpected(std::move(value.error()));
            result_ = std::move(*value);
        }
        return true;
    }
    Expected<bool> execute(const SetVariable& statement) {
        auto value = evaluate(statement.value);
        if (!value)
            return tl::unexpected(std::move(value.error()));
        variables_[statement.name] = std::move(*value);
        return false;
    }
    Expected<bool> execute(const SetProperty& statement) {
        const auto owner = evaluate(statement.target.owner);
        if (!owner)
            return tl::unexpected(owner.error());
        const auto value = evaluate(statement.value);
        if (!value)
            return tl::unexpected(value.error());
        const auto* reminder = std::get_if<ReminderValue>(&owner->content);
        const auto* flag = std::get_if<bool>(&value->content);
        if (!reminder || !flag || statement.target.property != ReminderProperty::flagged)
            return failure(QStringLiteral("only the flag of a reminder can be set, to true or false"));
        if (auto set = database_.setFlagged(reminder->reminder.id, *flag); !set)
            return tl::unexpected(std::move(set.error()));
        reminders_.clear();
        return false;
    }

    Expected<Value> evaluate(const ExpressionRef& expression) {
        return std::visit([this](const auto& node) { return value(node); }, expression->node);
    }
    Expected<Value> value(const TextLiteral& literal) { return Value{literal.text}; }
    Expected<Value> value(const BooleanLiteral& literal) { return Value{literal.value}; }
    Expected<Value> value(const Variable& variable) {
        const auto found = variables_.find(variable.name);
        if (found == variables_.end())
            return failure(QStringLiteral("“%1” is not defined").arg(variable.name));
        return found->second;
    }
    Expected<Value> value(const AllLists&) {
        const auto known = lists();
        if (!known)
            return tl::unexpected(known.error());
        std::vector<Value> result;
        for (const ScriptDatabase::List& list : *known)
            result.push_back({ListValue{list.id}});
        return Value{std::move(result)};
    }
    Expected<Value> value(const ListNamed& named) {
        const auto name = evaluate(named.name);
        if (!name)
            return tl::unexpected(name.error());
        const auto* text = std::get_if<QString>(&name->content);
        const auto known = lists();
        if (!known)
            return tl::unexpected(known.error());
        for (const ScriptDatabase::List& list : *known) {
            if (text && isSameText(list.name, *text))
                return Value{ListValue{list.id}};
        }
        return failure(QStringLiteral("there is no such list"));
    }
    Expected<Value> value(const PropertyOf& property) {
        const auto owner = evaluate(property.owner);
        if (!owner)
            return tl::unexpected(owner.error());
        return propertyOf(property.property, *owner);
    }
    Expected<Value> propertyOf(ReminderProperty property, const Value& owner) {
        if (const auto* reminder = std::get_if<ReminderValue>(&owner.content)) {
            switch (property) {
            case ReminderProperty::id:
                return Value{scriptedID(reminder->reminder)};
            case ReminderProperty::flagged:
                return Value{reminder->reminder.isFlagged};
            case ReminderProperty::completed:
                return Value{reminder->kind == Kind::completed};
            }
        }
        const auto* owners = std::get_if<std::vector<Value>>(&owner.content);
        if (!owners)
            return failure(QStringLiteral("only reminders have this property"));
        std::vector<Value> result;
        result.reserve(owners->size());
        for (const Value& each : *owners) {
            auto value = propertyOf(property, each);
            if (!value)
                return value;
            result.push_back(std::move(*value));
        }
        return Value{std::move(result)};
    }

    Expected<Value> value(const ReminderQuery& query) {
        std::optional<QString> listID;
        if (query.list) {
            const auto list = evaluate(query.list);
            if (!list)
                return tl::unexpected(list.error());
            const auto* value = std::get_if<ListValue>(&list->content);
            if (!value)
                return failure(QStringLiteral("only lists have reminders"));
            listID = value->id;
        }
        std::vector<Test> tests;
        for (const Condition& condition : query.conditions) {
            auto test = this->test(condition);
            if (!test)
                return tl::unexpected(std::move(test.error()));
            tests.push_back(std::move(*test));
        }
        return matching(tests, listID, query.onlyFirst);
    }

    Expected<Test> test(const Condition& condition) {
        const auto value = evaluate(condition.value);
        if (!value)
            return tl::unexpected(value.error());
        Test result{.property = condition.property, .operation = condition.operation};
        const auto* text = std::get_if<QString>(&value->content);
        const auto* boolean = std::get_if<bool>(&value->content);
        const bool isAboutText = condition.property == ReminderProperty::id;
        if (isAboutText ? !text : (!boolean || condition.operation == Condition::Operator::endsWith))
            return failure(QStringLiteral("a property is compared with something of another kind"));
        if (text)
            result.text = *text;
        if (boolean)
            result.boolean = *boolean;
        return result;
    }

    Expected<Value> matching(const std::vector<Test>& tests, const std::optional<QString>& listID,
                             bool onlyFirst) {
        const bool onlyOpen = std::any_of(tests.begin(), tests.end(), [](const Test& test) {
            return test.property == ReminderProperty::completed && !test.boolean;
        });
        std::vector<Value> found;
        // What is open is looked at first, because there is less of it.
        std::vector<Kind> kinds{Kind::open};
        if (!onlyOpen)
            kinds.push_back(Kind::completed);
        for (const bool asAWhole : {true, false}) {
            for (const Kind kind : kinds) {
                const auto reminders = this->reminders(kind);
                if (!reminders)
                    return tl::unexpected(reminders.error());
                if (asAWhole && !looksForEndOf(tests, **reminders))
                    continue;
                for (const Reminder& reminder : **reminders) {
                    if ((listID && reminder.listID != *listID) ||
                        !std::all_of(tests.begin(), tests.end(), [&](const Test& test) {
                            return test.holds(reminder, kind) &&
                                   (!asAWhole || test.operation != Condition::Operator::endsWith ||
                                    endsWithAsAWhole(reminder, test.text));
                        }))
                        continue;
                    if (onlyFirst)
                        return Value{ReminderValue{reminder, kind}};
                    found.push_back({ReminderValue{reminder, kind}});
                }
                if (asAWhole)
                    return onlyFirst ? Expected<Value>(failure(QStringLiteral("there is no such reminder")))
                                     : Value{std::move(found)};
            }
        }
        if (onlyFirst)
            return failure(QStringLiteral("there is no such reminder"));
        return Value{std::move(found)};
    }
    /// Whether these reminders, in whichever list, have one whose id ends with the wanted text as a whole.
    static bool looksForEndOf(const std::vector<Test>& tests, const std::vector<Reminder>& reminders) {
        const auto end = std::find_if(tests.begin(), tests.end(), [](const Test& test) {
            return test.operation == Condition::Operator::endsWith;
        });
        return end != tests.end() &&
               std::any_of(reminders.begin(), reminders.end(),
                           [&](const Reminder& reminder) { return endsWithAsAWhole(reminder, end->text); });
    }

    Expected<std::vector<ScriptDatabase::List>> lists() {
        if (!isTelling_)
            return failure(QStringLiteral("no application is being told"));
        return database_.lists();
    }
    Expected<const std::vector<Reminder>*> reminders(Kind kind) {
        if (!isTelling_)
            return failure(QStringLiteral("no application is being told"));
        auto known = reminders_.find(kind);
        if (known == reminders_.end()) {
            auto read = database_.reminders(kind);
            if (!read)
                return tl::unexpected(std::move(read.error()));
            known = reminders_.emplace(kind, std::move(*read)).first;
        }
        return &known->second;
    }

    ScriptDatabase& database_;
    bool isTelling_ = false;
    bool hasTimeLimit_ = false;
    std::map<QString, Value> variables_;
    /// What has been read, until the script changes something.
    std::map<Kind, std::vector<Reminder>> reminders_;
    Value result_;
};

Expected<QStringList> texts(const Value& value) {
    if (std::holds_alternative<std::monostate>(value.content))
        return QStringList{};
    if (const auto* text = std::get_if<QString>(&value.content))
        return QStringList{*text};
    if (const auto* boolean = std::get_if<bool>(&value.content))
        return QStringList{*boolean ? QStringLiteral("true") : QStringLiteral("false")};
    const auto* values = std::get_if<std::vector<Value>>(&value.content);
    if (!values)
        return failure(QStringLiteral("the script returned something that is no text"));
    QStringList result;
    result.reserve(static_cast<qsizetype>(values->size()));
    for (const Value& each : *values) {
        auto part = texts(each);
        if (!part)
            return part;
        result += *part;
    }
    return result;
}

}  // namespace

Expected<QStringList> runScript(const QString& source, ScriptDatabase& database) {
    const auto script = parseScript(source);
    if (!script)
        return tl::unexpected(script.error());
    Interpreter interpreter(database);
    if (const auto returned = interpreter.run(*script); !returned)
        return tl::unexpected(returned.error());
    return texts(interpreter.result());
}

}  // namespace kestrant::scripting
