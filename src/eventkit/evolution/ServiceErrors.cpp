#include "eventkit/evolution/ServiceErrors.h"

#include <QLoggingCategory>

#include <libecal/libecal.h>

#include <algorithm>
#include <initializer_list>

namespace kestrant::evolution {

namespace {

Q_LOGGING_CATEGORY(logger, "kestrant.evolution", QtWarningMsg)

TextPair reasonOfClientError(int code) {
    switch (code) {
    case E_CLIENT_ERROR_AUTHENTICATION_FAILED:
    case E_CLIENT_ERROR_AUTHENTICATION_REQUIRED:
    case E_CLIENT_ERROR_UNSUPPORTED_AUTHENTICATION_METHOD:
        return text("the account asks for a password", "le compte demande un mot de passe");
    case E_CLIENT_ERROR_REPOSITORY_OFFLINE:
    case E_CLIENT_ERROR_OFFLINE_UNAVAILABLE:
        return text("the account is offline", "le compte est hors ligne");
    case E_CLIENT_ERROR_PERMISSION_DENIED:
    case E_CLIENT_ERROR_QUERY_REFUSED:
        return text("the server does not allow it", "le serveur ne l’autorise pas");
    case E_CLIENT_ERROR_NOT_SUPPORTED:
        return text("the server cannot do it", "le serveur ne sait pas le faire");
    case E_CLIENT_ERROR_TLS_NOT_AVAILABLE:
        return text("no secure connection to the server can be made",
                    "aucune connexion sécurisée au serveur n’est possible");
    case E_CLIENT_ERROR_BUSY:
        return text("the service is busy", "le service est occupé");
    case E_CLIENT_ERROR_CANCELLED:
        return noAnswerInTime();
    case E_CLIENT_ERROR_DBUS_ERROR:
    case E_CLIENT_ERROR_NOT_OPENED:
    case E_CLIENT_ERROR_SOURCE_NOT_LOADED:
        return text("the service cannot be reached", "le service est injoignable");
    default:
        return text("an error of its own", "une erreur de sa part");
    }
}

TextPair reasonOfCalendarError(int code) {
    switch (code) {
    case E_CAL_CLIENT_ERROR_NO_SUCH_CALENDAR:
        return text("the list is not there any more", "la liste n’existe plus");
    case E_CAL_CLIENT_ERROR_OBJECT_NOT_FOUND:
        return text("the item is not there any more", "l’élément n’existe plus");
    case E_CAL_CLIENT_ERROR_INVALID_OBJECT:
    case E_CAL_CLIENT_ERROR_INVALID_RANGE:
        return text("the server does not take such an item", "le serveur n’accepte pas un tel élément");
    case E_CAL_CLIENT_ERROR_OBJECT_ID_ALREADY_EXISTS:
        return text("the list has this item already", "la liste contient déjà cet élément");
    default:
        return text("an error of its own", "une erreur de sa part");
    }
}

TextPair reasonOfIoError(int code) {
    switch (code) {
    case G_IO_ERROR_CANCELLED:
    case G_IO_ERROR_TIMED_OUT:
        return noAnswerInTime();
    case G_IO_ERROR_NO_SPACE:
        return text("the disk is full", "le disque est plein");
    case G_IO_ERROR_PERMISSION_DENIED:
    case G_IO_ERROR_READ_ONLY:
        return text("it may not write there", "l’écriture y est interdite");
    case G_IO_ERROR_CONNECTION_REFUSED:
    case G_IO_ERROR_HOST_NOT_FOUND:
    case G_IO_ERROR_HOST_UNREACHABLE:
    case G_IO_ERROR_NETWORK_UNREACHABLE:
    case G_IO_ERROR_CONNECTION_CLOSED:
    case G_IO_ERROR_NOT_CONNECTED:
        return text("the server cannot be reached", "le serveur est injoignable");
    default:
        return text("an error of its own", "une erreur de sa part");
    }
}

}  // namespace

bool meansDisconnection(const Error& error) {
    return error.isIn(G_DBUS_ERROR) || error.is(E_CLIENT_ERROR, E_CLIENT_ERROR_DBUS_ERROR) ||
           error.is(E_CLIENT_ERROR, E_CLIENT_ERROR_CANCELLED) ||
           error.is(E_CLIENT_ERROR, E_CLIENT_ERROR_NOT_OPENED) || error.is(G_IO_ERROR, G_IO_ERROR_CLOSED) ||
           error.is(G_IO_ERROR, G_IO_ERROR_CANCELLED) || error.is(G_IO_ERROR, G_IO_ERROR_TIMED_OUT);
}

bool leavesOutcomeOpen(const Error& error) {
    const auto isAny = [&error](GQuark domain, std::initializer_list<int> codes) {
        return std::any_of(codes.begin(), codes.end(), [&](int code) { return error.is(domain, code); });
    };
    if (error.isIn(E_CAL_CLIENT_ERROR))
        return false;
    if (error.isIn(E_CLIENT_ERROR))
        return error.is(E_CLIENT_ERROR, E_CLIENT_ERROR_OTHER_ERROR);
    return !isAny(G_IO_ERROR, {G_IO_ERROR_NO_SPACE, G_IO_ERROR_PERMISSION_DENIED, G_IO_ERROR_READ_ONLY,
                               G_IO_ERROR_CONNECTION_REFUSED, G_IO_ERROR_HOST_NOT_FOUND,
                               G_IO_ERROR_HOST_UNREACHABLE, G_IO_ERROR_NETWORK_UNREACHABLE});
}

bool meansConflict(const Error& error) {
    return error.is(E_CLIENT_ERROR, E_CLIENT_ERROR_OUT_OF_SYNC);
}

TextPair noAnswerInTime() {
    return text("there was no answer in time", "pas de réponse à temps");
}

TextPair reasonIn(const Error& error) {
    qCInfo(logger, "%s", qUtf8Printable(error.message()));
    if (error.isIn(E_CLIENT_ERROR))
        return reasonOfClientError(error.code());
    if (error.isIn(E_CAL_CLIENT_ERROR))
        return reasonOfCalendarError(error.code());
    if (error.isIn(G_IO_ERROR))
        return reasonOfIoError(error.code());
    return text("the service cannot be reached", "le service est injoignable");
}

}  // namespace kestrant::evolution
