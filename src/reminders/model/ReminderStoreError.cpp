#include "reminders/model/ReminderStoreError.h"

#include "preferences/ProgramNames.h"

namespace kestrant {
namespace {

QString withDetail(const QString& sentence, const QString& detail) {
    return detail.isEmpty() ? sentence : sentence + QLatin1Char(' ') + detail;
}

}  // namespace

ReminderStoreError ReminderStoreError::from(const EKError& error) {
    switch (error.code) {
    case EKError::Code::itemNotFound:
        return {Code::reminderNotFound, {}};
    case EKError::Code::calendarNotFound:
        return {Code::listUnavailable, {}};
    case EKError::Code::conflict:
        return {Code::changedElsewhere, error.message};
    case EKError::Code::outcomeUnknown:
        return {Code::outcomeUnknown, error.message};
    default:
        return {Code::database, error.message};
    }
}

TextPair ReminderStoreError::message() const {
    TextPair detail = underlying.value_or(TextPair{});
    switch (code) {
    case Code::unableToCreateInitialList: {
        const TextPair sentence = programTexts::firstListFailed();
        return {withDetail(sentence.english, detail.english), withDetail(sentence.french, detail.french)};
    }
    case Code::reminderNotFound:
        return text("This reminder is no longer available.", "Ce rappel n’est plus disponible.");
    case Code::emptyTitle:
        return text("The reminder title cannot be empty.", "Le titre du rappel ne peut pas être vide.");
    case Code::dueDateRequired:
        return text("Choose a due date for the time or notification.",
                    "Choisissez une échéance pour l’heure ou la notification.");
    case Code::repeatRequiresDueDate:
        return text("Choose a due date for the repetition.", "Choisissez une échéance pour la répétition.");
    case Code::listUnavailable:
        return programTexts::listUnavailable();
    case Code::flagNotUpdated:
        return text("The flag could not be updated.", "Le drapeau n’a pas pu être modifié.");
    case Code::changedElsewhere:
    case Code::outcomeUnknown:
    case Code::database:
        return detail;
    }
    return detail;
}

}  // namespace kestrant
