#pragma once

#include "cli/CommandLineArguments.h"
#include "eventkit/model/EKTypes.h"
#include "foundation/Text.h"
#include "reminders/model/ReminderTask.h"
#include "reminders/quickadd/QuickAddParser.h"

#include <QString>
#include <QStringList>

#include <tl/expected.hpp>

#include <optional>
#include <vector>

namespace kestrant {

// What the arguments of a command ask of a reminder. Failures are sentences for whoever typed them.

/// The identifier of the list that a person names: by its identifier, else by its title, in any letter case.
/// Fails when there is none, or more than one.
[[nodiscard]] tl::expected<QString, TextPair> listNamed(const QString& name,
                                                        const std::vector<EKCalendar>& lists);

/// The reminders that are meant, each once: an identifier by itself, else the only one among `known` that
/// begins with what was typed. Fails with `notFound` when there is none, and when there is more than one.
[[nodiscard]] tl::expected<QStringList, TextPair>
remindersMeant(const QStringList& typed, const QStringList& known, const TextPair& notFound);

/// A message that says which reminder it is about.
[[nodiscard]] TextPair about(const QString& identifier, const TextPair& message);

/// The title to add with what it says of day, time, priority, list and more. Words about what an option says
/// are left in the title, and so is a list that does not exist, unless lists are to be made: newListTitle
/// names it in any case.
[[nodiscard]] QuickAddLine readLineToAdd(const QString& typed, const CommandLineArguments& arguments,
                                         const QuickAddContext& context);

/// `listID` is the list that an option names. Fails when the alert does not fit the due date.
[[nodiscard]] tl::expected<NewReminder, TextPair> reminderToAdd(const QuickAddLine& line,
                                                                const CommandLineArguments& arguments,
                                                                const std::optional<QString>& listID,
                                                                const TimeZone& zone);

/// The present details with what the options change. Fails like reminderToAdd().
[[nodiscard]] tl::expected<ReminderEditDetails, TextPair> editedDetails(const ReminderEditDetails& present,
                                                                        const CommandLineArguments& arguments,
                                                                        const std::optional<QString>& listID);

}  // namespace kestrant
