#include "eventkit/icalendar/ContentLine.h"

#include <QString>

#include <algorithm>
#include <utility>

namespace kestrant::icalendar {
namespace {

constexpr qsizetype foldWidth = 75;

/// The length of the line end before and at a line feed.
qsizetype lineEndStart(QByteArrayView raw, qsizetype lineFeed) {
    return lineFeed > 0 && raw[lineFeed - 1] == '\r' ? lineFeed - 1 : lineFeed;
}

QByteArrayView withoutLineEnd(QByteArrayView raw) {
    if (!raw.endsWith('\n'))
        return raw;
    return raw.first(lineEndStart(raw, raw.size() - 1));
}

bool startsWithName(QByteArrayView content, QByteArrayView name) {
    // Most names differ in their first letter already.
    return content.size() >= name.size() && ((content.front() ^ name.front()) & ~0x20) == 0 &&
           content.first(name.size()).compare(name, Qt::CaseInsensitive) == 0;
}

/// The text behind "keyword:", trimmed; empty for any other keyword.
QByteArrayView argumentOf(QByteArrayView keyword, QByteArrayView content) {
    if (!startsWithName(content, keyword) || content.size() <= keyword.size() ||
        content[keyword.size()] != ':')
        return {};
    return content.sliced(keyword.size() + 1).trimmed();
}

/// Behind the quoted text that begins at `start` (RFC 5545, 3.2), or behind its quote where no other one ends
/// it: such a quote is a character like any other.
qsizetype quotedEnd(QByteArrayView content, qsizetype start) {
    const qsizetype quote = content.indexOf('"', start + 1);
    const qsizetype end = quote + 1;
    const bool isQuoted = quote >= 0 && (end == content.size() || content[end] == ':' ||
                                         content[end] == ';' || content[end] == ',');
    return isQuoted ? end : start + 1;
}

/// The values of a parameter without the quotes that do not enclose one.
QByteArray withoutStrayQuotes(QByteArrayView values) {
    QByteArray result;
    qsizetype position = 0;
    while (position < values.size()) {
        const bool mayBegin = values[position] == '"' && (position == 0 || values[position - 1] == ',');
        const qsizetype end = mayBegin ? quotedEnd(values, position) : position + 1;
        if (end > position + 1 || values[position] != '"')
            result.append(values.sliced(position, end - position));
        position = end;
    }
    return result;
}

bool isContinuationByte(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

}  // namespace

Line::Line(QByteArray raw) : raw_(std::move(raw)) {
    const QByteArrayView text = withoutLineEnd(raw_);
    rawSize_ = text.size();
    qsizetype done = 0;
    for (qsizetype feed = text.indexOf('\n'); feed >= 0; feed = text.indexOf('\n', feed + 1)) {
        unfolded_.append(text.sliced(done, lineEndStart(text, feed) - done));
        done = feed + 2;
    }
    if (done > 0)
        unfolded_.append(text.sliced(done));
    if (!argumentOf("BEGIN", content()).isEmpty())
        kind_ = Kind::begin;
    else if (!argumentOf("END", content()).isEmpty())
        kind_ = Kind::end;
}

Line Line::make(QByteArrayView content, QByteArrayView lineEnd) {
    QByteArray raw;
    qsizetype room = foldWidth;
    while (content.size() > room) {
        qsizetype cut = room;
        while (cut > room - 3 && isContinuationByte(content[cut]))
            --cut;
        raw.append(content.first(cut)).append(lineEnd).append(' ');
        content = content.sliced(cut);
        room = foldWidth - 1;
    }
    raw.append(content).append(lineEnd);
    return Line(std::move(raw));
}

QByteArrayView Line::content() const {
    return unfolded_.isNull() ? QByteArrayView(raw_).first(rawSize_) : QByteArrayView(unfolded_);
}

bool Line::isNamed(QByteArrayView name) const {
    const QByteArrayView text = content();
    return startsWithName(text, name) &&
           (text.size() == name.size() || text[name.size()] == ':' || text[name.size()] == ';');
}

QByteArray Line::componentName() const {
    return argumentOf(kind_ == Kind::begin ? "BEGIN" : "END", content()).toByteArray().toUpper();
}

Property Property::parse(QByteArrayView content) {
    Property result;
    const auto isDelimiter = [](char c) { return c == ':' || c == ';'; };
    const auto* const nameEnd = std::find_if(content.begin(), content.end(), isDelimiter);
    qsizetype position = nameEnd - content.begin();
    result.name = content.first(position).trimmed().toByteArray().toUpper();
    while (position < content.size() && content[position] == ';') {
        const qsizetype start = ++position;
        while (position < content.size() && !isDelimiter(content[position])) {
            const bool mayBegin =
                content[position] == '"' && (content[position - 1] == '=' || content[position - 1] == ',');
            position = mayBegin ? quotedEnd(content, position) : position + 1;
        }
        const QByteArrayView whole = content.sliced(start, position - start);
        const qsizetype equals = whole.indexOf('=');
        Parameter parameter;
        parameter.name = (equals < 0 ? whole : whole.first(equals)).trimmed().toByteArray().toUpper();
        if (equals >= 0)
            parameter.value = withoutStrayQuotes(whole.sliced(equals + 1));
        const bool isOneQuoted = parameter.value.size() >= 2 && parameter.value.startsWith('"') &&
                                 parameter.value.endsWith('"') && parameter.value.count('"') == 2;
        if (isOneQuoted)
            parameter.value = parameter.value.sliced(1, parameter.value.size() - 2);
        result.parameters.push_back(std::move(parameter));
    }
    if (position < content.size())
        result.value = content.sliced(position + 1).toByteArray();
    return result;
}

QByteArray Property::toContent() const {
    QByteArray content = name;
    for (const Parameter& parameter : parameters) {
        content.append(';').append(parameter.name).append('=');
        const QByteArray written = withoutStrayQuotes(parameter.value);
        const bool isList = written.contains('"');
        const bool needsQuotes = !isList && std::any_of(written.begin(), written.end(), [](char c) {
            return c == ':' || c == ';' || c == ',';
        });
        if (needsQuotes)
            content.append('"').append(written).append('"');
        else
            content.append(written);
    }
    return content.append(':').append(value);
}

std::optional<QByteArray> Property::parameter(QByteArrayView parameterName) const {
    const auto found = std::find_if(parameters.begin(), parameters.end(), [&](const Parameter& parameter) {
        return parameter.name == parameterName;
    });
    return found == parameters.end() ? std::nullopt : std::optional(found->value);
}

void Property::removeParameter(QByteArrayView parameterName) {
    std::erase_if(parameters, [&](const Parameter& parameter) { return parameter.name == parameterName; });
}

QString unescapedText(QByteArrayView value) {
    if (!value.contains('\\'))
        return QString::fromUtf8(value);
    QByteArray result;
    result.reserve(value.size());
    for (qsizetype i = 0; i < value.size(); ++i) {
        const char next = i + 1 < value.size() ? value[i + 1] : '\0';
        if (value[i] != '\\') {
            result.append(value[i]);
        } else if (next == 'n' || next == 'N') {
            result.append('\n');
            ++i;
        } else if (next == ',' || next == ';' || next == '\\') {
            result.append(next);
            ++i;
        } else {
            result.append('\\');
        }
    }
    return QString::fromUtf8(result);
}

QByteArray escapedText(const QString& text) {
    const auto isControl = [](char byte) {
        return (byte >= 0 && byte < ' ' && byte != '\t') || byte == 0x7f;
    };
    QByteArray result;
    for (const char byte : text.toUtf8()) {
        if (byte == '\n')
            result.append("\\n");
        else if (byte == ',' || byte == ';' || byte == '\\')
            result.append('\\').append(byte);
        else if (!isControl(byte))
            result.append(byte);
    }
    return result;
}

}  // namespace kestrant::icalendar
