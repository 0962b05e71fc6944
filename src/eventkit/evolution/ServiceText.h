#pragma once

#include "eventkit/icalendar/Document.h"
#include "eventkit/items/StorageContents.h"

#include <QByteArray>

#include <optional>
#include <set>
#include <vector>

namespace kestrant::evolution {

// The service keeps the components of an item one by one; a file is all of them together.

/// One component of an item.
struct ServicePart {
    /// RECURRENCE-ID as it stands; empty for the item itself.
    QByteArray date;
    QByteArray text;
};

/// The components of this name.
[[nodiscard]] std::vector<ServicePart> partsOf(const icalendar::Document& document, QByteArrayView name);

/// Tells one text of an item from another.
[[nodiscard]] items::Version versionOf(const QByteArray& text);

/// The UID of a component as the service knows it, without escapes; empty where it has none.
[[nodiscard]] QByteArray uidOf(const QByteArray& component);

/// `component` with the version on the server that the service has noted in `present`.
[[nodiscard]] QByteArray withServerVersionOf(const QByteArray& present, const QByteArray& component);

/// The text of an item without the versions on the server that the service has noted in it.
[[nodiscard]] QByteArray withoutServerVersion(const QByteArray& text);

/// A birthday or an anniversary as it is meant: of those on 29 February the service says that they are on the
/// last day of every month, and means that one.
[[nodiscard]] QByteArray yearlyBirthday(QByteArray component);

/// The file made of these components, in an order that depends on nothing but what is in them, with these
/// definitions of zones.
[[nodiscard]] QByteArray fileOf(std::vector<QByteArray> components, const std::vector<QByteArray>& zones);
/// The names of zones that components use and that mean nothing without a definition.
[[nodiscard]] std::set<QByteArray> obscureZones(QByteArrayView components);

/// The calls that a change of a file takes.
struct ServiceChange {
    /// The item itself, then single dates of it.
    std::vector<ServicePart> written;
    std::vector<ServicePart> removed;
    /// Definitions of zones that are new.
    std::vector<QByteArray> zones;
};
/// Properties that the service itself writes stay as in `before`.
[[nodiscard]] ServiceChange changeBetween(const icalendar::Document& before, const icalendar::Document& after,
                                          QByteArrayView name);

}  // namespace kestrant::evolution
