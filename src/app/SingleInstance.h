#pragma once

#include <QObject>
#include <QString>

#include <functional>
#include <memory>

namespace kestrant {

/// Commands that a second process may send to the running one.
enum class InstanceCommand {
    /// Bring the panel up (a second start).
    show,
    /// Open the panel, or close it when it is open.
    toggle,
};

/// One running program per person and machine, told by a lock in the runtime folder (or the person's own).
/// Other starts reach it by its name on the session bus, or by a local socket where they have no bus. Thread:
/// main.
class SingleInstance : public QObject {
    Q_OBJECT

  public:
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

    /// Tries to become the one; others can reach it a moment later. `handler` is called for each command
    /// another start sends.
    [[nodiscard]] Claim claim(std::function<void(InstanceCommand)> handler);

    /// Sends a command to the running program; false when none is running or it does not answer within two
    /// seconds. Blocks; for a process that has no window.
    [[nodiscard]] static bool send(InstanceCommand command);

    /// The file that is locked by the running program, in the folder of the session.
    [[nodiscard]] static QString lockPath();

  private:
    [[nodiscard]] Claim claimOnBus(const std::function<void(InstanceCommand)>& handler);
    [[nodiscard]] bool listen(const std::function<void(InstanceCommand)>& handler);

    struct Private;
    std::unique_ptr<Private> d_;
};

}  // namespace kestrant
