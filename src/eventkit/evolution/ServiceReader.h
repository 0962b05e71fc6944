#pragma once

#include "eventkit/evolution/Glib.h"
#include "eventkit/model/EKTypes.h"

#include <QByteArray>

#include <memory>
#include <optional>
#include <vector>

namespace kestrant::evolution {

/// Reads a list of the service in the text in which the service hands it over. The client library would take
/// that apart first, which takes longer than everything else together, and it would have to be put together
/// again. Thread: any one at a time; blocks for the service.
class ServiceReader {
  public:
    /// For a list that the client library has opened. Null where the service does not answer as expected.
    [[nodiscard]] static std::unique_ptr<ServiceReader> open(EKEntityType type, const QByteArray& listUid,
                                                             GCancellable* cancellable);
    ServiceReader(const ServiceReader&) = delete;
    ServiceReader& operator=(const ServiceReader&) = delete;
    ~ServiceReader();

    /// The text of every component. Absent with an error. Goes over a connection of its own, because a
    /// connection keeps as much memory as its longest message took.
    [[nodiscard]] std::optional<std::vector<QByteArray>> readAll(GCancellable* cancellable, Error& error);
    /// Whether items may be written now. Absent when the service did not answer.
    [[nodiscard]] std::optional<bool> isWritable(GCancellable* cancellable) const;
    /// The text of every component of one item. Absent with an error, which is that of the client library
    /// where there is no such item.
    [[nodiscard]] std::optional<std::vector<QByteArray>> read(const QByteArray& uid,
                                                              GCancellable* cancellable, Error& error);

  private:
    ServiceReader(EKEntityType type, QByteArray listUid, Ref<GDBusConnection> bus, QByteArray busName,
                  QByteArray objectPath);
    [[nodiscard]] static std::unique_ptr<ServiceReader> openOver(Ref<GDBusConnection> bus, EKEntityType type,
                                                                 const QByteArray& listUid,
                                                                 GCancellable* cancellable);
    [[nodiscard]] std::optional<std::vector<QByteArray>> list(GCancellable* cancellable, Error& error);
    [[nodiscard]] GVariant* call(const char* method, GVariant* arguments, const char* answerType,
                                 GCancellable* cancellable, GError** error) const;

    EKEntityType type_;
    QByteArray listUid_;
    Ref<GDBusConnection> bus_;
    QByteArray busName_;
    QByteArray objectPath_;
};

}  // namespace kestrant::evolution
