#include "eventkit/evolution/EvolutionClient.h"
#include "eventkit/evolution/ServiceErrors.h"
#include "eventkit/model/EKErrors.h"

#include <utility>
#include <variant>

// Writing single items and many at once, and what is said where that fails.

namespace kestrant::evolution {

using items::WriteError;

namespace {

Ref<ICalComponent> componentFrom(const QByteArray& text) {
    return Ref<ICalComponent>(i_cal_component_new_from_string(text.constData()));
}

EKError refused(const TextPair& reason) {
    const TextPair pair = text("The desktop’s calendar service could not write it: %1.",
                               "Le service d’agenda du bureau n’a pas pu l’enregistrer : %1.");
    return {EKError::Code::storage, {pair.english.arg(reason.english), pair.french.arg(reason.french)}};
}

EKError notUnderstood() {
    return refused(text("the item cannot be read", "l’élément est illisible"));
}

EKError alreadyThere(const QString& title, const QString& list) {
    const TextPair pair = text("“%1” is in “%2” already. Nothing was written.",
                               "« %1 » est déjà dans « %2 ». Rien n’a été enregistré.");
    return invalidItemError({pair.english.arg(title, list), pair.french.arg(title, list)});
}

WriteError partlyWritten(const QString& title) {
    const TextPair pair =
        text("“%1” was changed elsewhere meanwhile. Only a part of the change was written.",
             "« %1 » a été modifié ailleurs entre-temps. Une partie seulement du changement "
             "a été enregistrée.");
    return EKError{EKError::Code::conflict, {pair.english.arg(title), pair.french.arg(title)}};
}

}  // namespace

WriteError EvolutionClient::failure(const Error& error, const QString& title) {
    if (meansDisconnection(error)) {
        state_->isLost = true;
        state_->observer.lost();
        return noAnswerError(title_);
    }
    if (meansConflict(error)) {
        // The service keeps a copy of what is on the server, and has just learned that it is an old one.
        refresh();
        return conflictError(title);
    }
    if (error.is(E_CAL_CLIENT_ERROR, E_CAL_CLIENT_ERROR_OBJECT_NOT_FOUND))
        return items::ChangedMeanwhile{};
    if (error.is(E_CAL_CLIENT_ERROR, E_CAL_CLIENT_ERROR_OBJECT_ID_ALREADY_EXISTS))
        return alreadyThere(title, title_);
    if (error.is(E_CLIENT_ERROR, E_CLIENT_ERROR_PERMISSION_DENIED)) {
        // So the service says, too, of a list whose server it has not reached yet.
        const bool isKnown = !list_.isOnServer() || list_.isConnected();
        return isKnown ? readOnlyError(title_) : noAnswerError(title_);
    }
    return refused(reasonIn(error));
}

WriteError EvolutionClient::writeFailure(const Error& error, const QString& title) {
    const bool isOpen = meansDisconnection(error) || leavesOutcomeOpen(error);
    WriteError result = failure(error, title);
    return isOpen ? outcomeUnknownError(title, title_) : std::move(result);
}

std::optional<WriteError> EvolutionClient::addZones(const ServiceChange& change) {
    for (const QByteArray& definition : change.zones) {
        const Ref<ICalComponent> component = componentFrom(definition);
        const Ref<ICalTimezone> zone(i_cal_timezone_new());
        if (!component || !i_cal_timezone_set_component(zone.get(), component.get()))
            continue;
        Error error;
        const auto waiting = call();
        // Any other failure does not matter: the times are read by the zone's name all the same.
        if (!e_cal_client_add_timezone_sync(calendar(), zone.get(), waiting.cancellable(), error.out()) &&
            meansDisconnection(error))
            return failure(error, {});
    }
    return std::nullopt;
}

std::optional<WriteError> EvolutionClient::write(const QByteArray& uid, const ServiceChange& change,
                                                 const QString& title) {
    if (auto failed = addZones(change))
        return failed;
    CallTimeout::noteWrite();
    int steps = 0;
    Error error;
    const auto failed = [&] {
        WriteError reason = writeFailure(error, title);
        const auto* const known = std::get_if<EKError>(&reason);
        const bool saysNothingWasWritten = !known || known->code == EKError::Code::conflict;
        return steps > 0 && saysNothingWasWritten ? partlyWritten(title) : std::move(reason);
    };
    // The service notes by itself that the dates are left out; what the item itself then says comes after it.
    for (const ServicePart& part : change.removed) {
        const Ref<ICalComponent> component = componentFrom(part.text);
        const Text date(component ? e_cal_util_component_get_recurid_as_string(component.get()) : nullptr);
        const auto waiting = call();
        if (!e_cal_client_remove_object_sync(calendar(), uid.constData(), date.get(), E_CAL_OBJ_MOD_THIS,
                                             E_CAL_OPERATION_FLAG_CONFLICT_FAIL, waiting.cancellable(),
                                             error.out()) &&
            !error.is(E_CAL_CLIENT_ERROR, E_CAL_CLIENT_ERROR_OBJECT_NOT_FOUND))
            return failed();
        ++steps;
    }
    for (const ServicePart& part : change.written) {
        QByteArray text = part.text;
        if (steps > 0) {
            // The step before gave the item another version on the server.
            const auto present = componentsOf(uid, error);
            if (!present)
                return failed();
            if (!present->empty())
                text = withServerVersionOf(present->front(), text);
        }
        const Ref<ICalComponent> component = componentFrom(text);
        if (!component)
            return notUnderstood();
        const auto waiting = call();
        if (!e_cal_client_modify_object_sync(
                calendar(), component.get(), part.date.isEmpty() ? E_CAL_OBJ_MOD_ALL : E_CAL_OBJ_MOD_THIS,
                E_CAL_OPERATION_FLAG_CONFLICT_FAIL, waiting.cancellable(), error.out()))
            return failed();
        ++steps;
    }
    return std::nullopt;
}

bool EvolutionClient::writeAll(const std::vector<ServiceChange>& changes) {
    std::vector<Ref<ICalComponent>> components;
    for (const ServiceChange& change : changes) {
        // Single dates of an item are written by themselves.
        if (!change.removed.empty() || change.written.size() != 1 || !change.written.front().date.isEmpty())
            return false;
        components.push_back(componentFrom(change.written.front().text));
        if (!components.back())
            return false;
        if (addZones(change))
            return false;
    }
    CallTimeout::noteWrite();
    GSList* list = nullptr;
    for (auto component = components.rbegin(); component != components.rend(); ++component)
        list = g_slist_prepend(list, component->get());
    Error error;
    const auto waiting = call();
    const bool isDone = e_cal_client_modify_objects_sync(calendar(), list, E_CAL_OBJ_MOD_ALL,
                                                         E_CAL_OPERATION_FLAG_CONFLICT_FAIL,
                                                         waiting.cancellable(), error.out());
    g_slist_free(list);
    return isDone;
}

std::optional<WriteError> EvolutionClient::remove(const QByteArray& uid, const QString& title) {
    CallTimeout::noteWrite();
    Error error;
    {
        const auto waiting = call();
        if (e_cal_client_remove_object_sync(calendar(), uid.constData(), nullptr, E_CAL_OBJ_MOD_ALL,
                                            E_CAL_OPERATION_FLAG_CONFLICT_FAIL, waiting.cancellable(),
                                            error.out()))
            return std::nullopt;
    }
    return writeFailure(error, title);
}

EvolutionClient::Answer<QByteArray>
EvolutionClient::create(const QByteArray& uid, const ServiceChange& content, const QString& title) {
    if (auto failed = addZones(content))
        return tl::unexpected(std::move(*failed));
    CallTimeout::noteWrite();
    QByteArray result = uid;
    bool isFirst = true;
    for (const ServicePart& part : content.written) {
        const Ref<ICalComponent> component = componentFrom(part.text);
        if (!component)
            return tl::unexpected(WriteError(notUnderstood()));
        Error error;
        gchar* given = nullptr;
        const auto send = [&] {
            const auto waiting = call();
            return isFirst ? e_cal_client_create_object_sync(calendar(), component.get(),
                                                             E_CAL_OPERATION_FLAG_NONE, &given,
                                                             waiting.cancellable(), error.out())
                           : e_cal_client_modify_object_sync(calendar(), component.get(), E_CAL_OBJ_MOD_THIS,
                                                             E_CAL_OPERATION_FLAG_NONE, waiting.cancellable(),
                                                             error.out());
        };
        const bool isDone = send();
        const Text owned(given);
        if (!isDone) {
            WriteError reason = writeFailure(error, title);
            // Half of an item does not stay.
            if (!isFirst)
                (void)remove(result, title);
            return tl::unexpected(std::move(reason));
        }
        if (isFirst && given && *given)
            result = given;
        isFirst = false;
    }
    return result;
}

}  // namespace kestrant::evolution
