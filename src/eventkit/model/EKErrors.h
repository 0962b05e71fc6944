#pragma once

#include "eventkit/model/EKTypes.h"

namespace kestrant {

// The sentences with which every implementation of the database refuses.

[[nodiscard]] EKError itemNotFoundError();
[[nodiscard]] EKError calendarNotFoundError();
[[nodiscard]] EKError accessDeniedError();
/// `name` is the list's title or the file's name.
[[nodiscard]] EKError readOnlyError(const QString& name);
[[nodiscard]] EKError conflictError(const QString& title);
[[nodiscard]] EKError invalidItemError(const TextPair& reason);
[[nodiscard]] EKError noSuchDateError();
/// `list` is the title of a list whose source did not answer, so that nothing was sent.
[[nodiscard]] EKError noAnswerError(const QString& list);
/// The same for a change that was sent; `title` is the item's.
[[nodiscard]] EKError outcomeUnknownError(const QString& title, const QString& list);
/// `detail` is the system's own description.
[[nodiscard]] EKError storageError(const QString& path, const QString& detail);
[[nodiscard]] EKError storageError(const QString& path, const TextPair& detail);

}  // namespace kestrant
