#include "eventkit/model/EKErrors.h"

namespace kestrant {
namespace {

TextPair withArgument(const TextPair& pair, const QString& argument) {
    return {pair.english.arg(argument), pair.french.arg(argument)};
}

}  // namespace

EKError itemNotFoundError() {
    return {EKError::Code::itemNotFound, text("This item is no longer in the database.",
                                              "Cet élément n’est plus dans la base de données.")};
}

EKError calendarNotFoundError() {
    return {EKError::Code::calendarNotFound, text("This list is no longer in the database.",
                                                  "Cette liste n’est plus dans la base de données.")};
}

EKError accessDeniedError() {
    return {EKError::Code::accessDenied, text("Kestrant has no access to the reminders and calendars.",
                                              "Kestrant n’a pas accès aux rappels et aux calendriers.")};
}

EKError readOnlyError(const QString& name) {
    return {EKError::Code::readOnly,
            withArgument(text("“%1” is read-only.", "« %1 » est en lecture seule."), name)};
}

EKError conflictError(const QString& title) {
    return {EKError::Code::conflict,
            withArgument(text("“%1” was changed elsewhere meanwhile. Nothing was written.",
                              "« %1 » a été modifié ailleurs entre-temps. Rien n’a été enregistré."),
                         title)};
}

EKError invalidItemError(const TextPair& reason) {
    return {EKError::Code::invalidItem, reason};
}

EKError noSuchDateError() {
    return invalidItemError(text("This date does not exist.", "Cette date n’existe pas."));
}

EKError noAnswerError(const QString& list) {
    return {EKError::Code::storage, withArgument(text("“%1” does not answer. Nothing was written.",
                                                      "« %1 » ne répond pas. Rien n’a été enregistré."),
                                                 list)};
}

EKError outcomeUnknownError(const QString& title, const QString& list) {
    const TextPair pair =
        text("“%1” does not answer. It is not known yet whether the change to “%2” was made.",
             "« %1 » ne répond pas. On ne sait pas encore si le changement de « %2 » a été fait.");
    return {EKError::Code::outcomeUnknown, {pair.english.arg(list, title), pair.french.arg(list, title)}};
}

EKError storageError(const QString& path, const QString& detail) {
    return storageError(path, TextPair{detail, detail});
}

EKError storageError(const QString& path, const TextPair& detail) {
    const TextPair pair = text("“%1” could not be written: %2", "« %1 » n’a pas pu être enregistré : %2");
    return {EKError::Code::storage,
            {pair.english.arg(path, detail.english), pair.french.arg(path, detail.french)}};
}

}  // namespace kestrant
