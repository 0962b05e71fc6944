#pragma once

#include "reminders/ScriptHost.h"

#include <QString>

#include <tl/expected.hpp>

#include <memory>
#include <optional>
#include <variant>
#include <vector>

namespace kestrant::scripting {

// The part of the scripting language that is understood, as a tree. Words of the language are read in any
// letter case; names of variables too.

struct Expression;
using ExpressionRef = std::shared_ptr<const Expression>;

enum class ReminderProperty { id, flagged, completed };

/// "flagged is true", "id ends with x".
struct Condition {
    enum class Operator { is, endsWith };
    ReminderProperty property = ReminderProperty::id;
    Operator operation = Operator::is;
    ExpressionRef value;
};

struct TextLiteral {
    QString text;
};
struct BooleanLiteral {
    bool value = false;
};
struct Variable {
    QString name;
};
/// "lists": all of them.
struct AllLists {};
/// "list x".
struct ListNamed {
    ExpressionRef name;
};
/// "every reminder of x whose ...", "first reminder of x whose ..."; without a list, of all lists.
struct ReminderQuery {
    bool onlyFirst = false;
    ExpressionRef list;
    /// All of them must hold.
    std::vector<Condition> conditions;
};
/// "id of x".
struct PropertyOf {
    ReminderProperty property = ReminderProperty::id;
    ExpressionRef owner;
};

struct Expression {
    std::variant<TextLiteral, BooleanLiteral, Variable, AllLists, ListNamed, ReminderQuery, PropertyOf> node;
};

struct Statement;
using Block = std::vector<Statement>;

/// "with timeout of n seconds".
struct WithTimeout {
    int seconds = 0;
    Block body;
};
struct TellApplication {
    QString name;
    Block body;
};
struct Try {
    Block body;
};
/// "repeat with x in y".
struct RepeatWith {
    QString variable;
    ExpressionRef list;
    Block body;
};
/// "return", "return x".
struct Return {
    ExpressionRef value;
};
struct SetVariable {
    QString name;
    ExpressionRef value;
};
/// "set flagged of x to y".
struct SetProperty {
    PropertyOf target;
    ExpressionRef value;
};

struct Statement {
    std::variant<WithTimeout, TellApplication, Try, RepeatWith, Return, SetVariable, SetProperty> node;
    /// From 1.
    int line = 0;
};

/// Reads a script. The error names the line and what was expected there.
[[nodiscard]] tl::expected<Block, ScriptError> parseScript(const QString& source);

}  // namespace kestrant::scripting
