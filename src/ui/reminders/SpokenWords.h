#pragma once

#include "speech/Line.h"
#include "ui/panel/Localizer.h"

#include <QString>
#include <QStringList>
#include <QVariantList>

#include <optional>
#include <vector>

namespace kestrant {

/// The name of a kind of words in the views: "list", "due", "priority", "flag", "alert", "repeat", "zone",
/// "link", "notes" and "place".
[[nodiscard]] const QString& kindOf(speech::Piece::Kind kind);

/// {kind, start, length} each, counted in UTF-16 units. Neighbouring words of one kind are one.
[[nodiscard]] QVariantList coloredWords(const QString& line, const std::vector<speech::Piece>& pieces);

/// The places of words in a line, of those that it still has.
[[nodiscard]] std::vector<speech::TextRange> rangesOf(const QStringList& words, const QString& line);

/// The time in the zone that a line names, as it is typed: "9:00 AM JST". Empty without one.
[[nodiscard]] QString zoneText(const std::optional<QTime>& time, const QString& zone,
                               const Localizer& localizer);

/// The first letters of a list's name at the end of a line, behind "#"; empty for none.
[[nodiscard]] QString begunList(const QString& line);
/// The line where it may be the beginning of a title typed before; empty where it is too short or says more.
[[nodiscard]] QString begunTitle(const QString& line, const std::vector<speech::Piece>& pieces);
/// What is missing of a name that begins with these letters, on one line; empty for another name.
[[nodiscard]] QString restOf(const QString& name, const QString& begun);

}  // namespace kestrant
