#pragma once

#include <QByteArray>
#include <QTemporaryDir>

#include <libecal/libecal.h>
#include <sys/types.h>

namespace kestrant {

/// The desktop's calendar service on a message bus of its own, with folders of its own, for one test program.
/// It must be there before anything else asks for a bus.
class EvolutionService {
  public:
    /// Started by the first call.
    static EvolutionService& instance();
    EvolutionService(const EvolutionService&) = delete;
    EvolutionService& operator=(const EvolutionService&) = delete;
    ~EvolutionService();

    /// Takes every list and calendar away that was made.
    void removeAll();
    [[nodiscard]] QString folder() const { return folder_.path(); }
    /// What other programs use.
    [[nodiscard]] ESourceRegistry* registry() const { return registry_; }
    /// Ends a process of the service by its name on the bus (its beginning); the bus starts it again when it
    /// is asked for. Returns when the process is gone.
    void kill(const char* busName);
    /// Lets the items of a local list be read only.
    void makeReadOnly(const QByteArray& list);
    /// The process that has a name on the bus.
    [[nodiscard]] pid_t processOf(const char* busName);

  private:
    EvolutionService();
    void startBus();

    QTemporaryDir folder_;
    pid_t bus_ = 0;
    ESourceRegistry* registry_ = nullptr;
};

}  // namespace kestrant
