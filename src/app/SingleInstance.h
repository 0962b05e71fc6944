#pragma once

#include "app/InstanceRequest.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>

namespace kestrant {

/// The one panel per person and machine, which holds a lock in the runtime folder (or the person's own).
/// Other starts and the desktop reach it by its name on the session bus as an org.freedesktop.Application
/// (Desktop Entry Specification 1.5), or by a local socket where they have no bus. Thread: main.
class SingleInstance : public QObject {
    Q_OBJECT

  public:
    using Handler = std::function<void(const InstanceRequest&)>;

    enum class Claim {
        /// This process is the one; it now answers other starts.
        first,
        /// Another process is running.
        taken,
        /// Neither bus nor socket could be used; this process runs unknown to others.
        unavailable,
    };

    explicit SingleInstance(QObject* parent = nullptr);
    ~SingleInstance() override;

    /// Tries to become the one; others can reach it a moment later. `handler` is called for each request.
    [[nodiscard]] Claim claim(Handler handler);

    /// Sends a request to the running program; false when none is running or it does not answer within two
    /// seconds. Blocks; for a process that has no window.
    [[nodiscard]] static bool send(const InstanceRequest& request);

    /// The file that is locked by the running program, in the folder of the session.
    [[nodiscard]] static QString lockPath();

  Q_SIGNALS:
    /// After claim() has said `first`: a program with another runtime folder, in a sandbox for instance, has
    /// the name on the bus.
    void takenOnBus();

  private:
    [[nodiscard]] Claim claimOnBus(const Handler& handler);
    [[nodiscard]] bool listen(const Handler& handler);

    struct Private;
    std::unique_ptr<Private> d_;
};

}  // namespace kestrant
