#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <optional>
#include <vector>

namespace kestrant::icalendar {

/// One content line (RFC 5545, 3.1) exactly as it stands in a file: with its folds and its line end.
class Line {
  public:
    explicit Line(QByteArray raw);
    /// A new line: folded at 75 octets on character borders, ended with `lineEnd`.
    static Line make(QByteArrayView content, QByteArrayView lineEnd);

    [[nodiscard]] const QByteArray& raw() const { return raw_; }
    /// The line without folds and line end.
    [[nodiscard]] QByteArrayView content() const;
    /// Whether it is a property of this name (given in capitals).
    [[nodiscard]] bool isNamed(QByteArrayView name) const;
    /// Whether it begins or ends a component.
    [[nodiscard]] bool isBegin() const { return kind_ == Kind::begin; }
    [[nodiscard]] bool isEnd() const { return kind_ == Kind::end; }
    /// The name of that component, in capitals.
    [[nodiscard]] QByteArray componentName() const;

  private:
    enum class Kind { property, begin, end };

    QByteArray raw_;
    QByteArray unfolded_;    // only of a folded line
    qsizetype rawSize_ = 0;  // without the line end
    Kind kind_ = Kind::property;
};

/// The parts of a content line. Parameter values are without quotes; the value is as written, escapes
/// included.
struct Property {
    struct Parameter {
        QByteArray name;
        QByteArray value;
    };
    QByteArray name;
    std::vector<Parameter> parameters;
    QByteArray value;

    /// Never fails: a line without a colon has an empty value.
    [[nodiscard]] static Property parse(QByteArrayView content);
    [[nodiscard]] QByteArray toContent() const;

    /// The first parameter of this name (given in capitals).
    [[nodiscard]] std::optional<QByteArray> parameter(QByteArrayView parameterName) const;
    void removeParameter(QByteArrayView parameterName);
};

/// TEXT (RFC 5545, 3.3.11): "\n", "\,", "\;" and "\\" undone; a backslash before anything else is kept.
[[nodiscard]] QString unescapedText(QByteArrayView value);
[[nodiscard]] QByteArray escapedText(const QString& text);

}  // namespace kestrant::icalendar
