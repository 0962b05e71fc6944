#include "calendar/CalendarError.h"

namespace kestrant {

CalendarError CalendarError::from(const EKError& error) {
    const bool isUnknown = error.code == EKError::Code::outcomeUnknown;
    return {isUnknown ? Code::outcomeUnknown : Code::database, error.message};
}

TextPair CalendarError::message() const {
    switch (code) {
    case Code::notAuthorized:
        return text("Calendar access is not authorized.", "L’accès au calendrier n’est pas autorisé.");
    case Code::emptyTitle:
        return text("Event title cannot be empty.", "Le titre de l’événement ne peut pas être vide.");
    case Code::itemNotFound:
        return text("This event is no longer available.", "Cet événement n’est plus disponible.");
    case Code::invalidDateRange:
        return text("The end must be after the start.", "La fin doit être après le début.");
    case Code::calendarUnavailable:
        return text("This calendar is no longer available.", "Ce calendrier n’est plus disponible.");
    case Code::outcomeUnknown:
    case Code::database:
        break;
    }
    return underlying.value_or(
        text("The calendar could not be changed.", "Le calendrier n’a pas pu être modifié."));
}

}  // namespace kestrant
