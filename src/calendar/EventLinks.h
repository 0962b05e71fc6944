#pragma once

#include "eventkit/model/EKEvent.h"

#include <QString>
#include <QStringList>
#include <QStringView>

namespace kestrant {

/// The addresses in a text that a person may open, in order, each once: http, https, mailto and tel, nothing
/// else. What ends a sentence or closes a bracket around an address is not part of it.
[[nodiscard]] QStringList linksIn(const QString& text);

/// Whether an address is one of those, whole.
[[nodiscard]] bool isLink(const QString& address);

/// Where the meeting of an event takes place on the network; empty for none: an address in its URL, its
/// location or its notes that looks like a meeting's or whose line speaks of one, else any in its URL or its
/// location. Notes link to anything.
[[nodiscard]] QString meetingLink(const EKEventData& event);

}  // namespace kestrant
