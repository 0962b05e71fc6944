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
    /// For "BEGIN:X" or "END:X" the X in capitals, else empty.
    [[nodiscard]] QByteArray begins() const { return argumentOf("BEGIN"); }
    [[nodiscard]] QByteArray ends() const { return argumentOf("END"); }

  private:
    [[nodiscard]] QByteArray argumentOf(QByteArrayView keyword) const;

    QByteArray raw_;
    QByteArray unfolded_;  // only of a folded line
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
