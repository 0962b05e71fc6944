#pragma once

#include <QByteArray>
#include <QTemporaryDir>

#include <libecal/libecal.h>
#include <sys/types.h>

#include <functional>
#include <set>
#include <vector>

namespace kestrant {

/// The desktop's calendar service on a message bus of its own, with folders of its own, for one test program.
/// It must be there before anything else asks for a bus.
class EvolutionService {
  public:
    /// Started by the first call, and without any list or calendar.
    static EvolutionService& emptied();
    /// Tests end it when all have been run.
    static void end();
    EvolutionService(const EvolutionService&) = delete;
    EvolutionService& operator=(const EvolutionService&) = delete;
    ~EvolutionService();

    /// Takes every list and calendar away that was made.
    void removeAll();
    [[nodiscard]] QString folder() const { return folder_.path(); }
    /// Ends a process of the service by its name on the bus (its beginning); the bus starts it again when it
    /// is asked for. Returns when the process is gone.
    void kill(const char* busName);
    /// Changes the settings of a list or calendar; `change` may be applied more than once.
    static void changeSettings(const QString& list, const std::function<void(ESource*)>& change);
    /// Lets the items of a local list be read only.
    void makeReadOnly(const QString& list);
    /// The process that has a name on the bus.
    [[nodiscard]] pid_t processOf(const char* busName);

  private:
    EvolutionService();
    void startBus();

    QTemporaryDir folder_;
    pid_t bus_ = 0;
};

/// A list or calendar as another program has it open.
class ForeignList {
  public:
    ForeignList(const QString& list, ECalClientSourceType type);
    ForeignList(const ForeignList&) = delete;
    ForeignList& operator=(const ForeignList&) = delete;
    ~ForeignList();

    [[nodiscard]] ECalClient* client() const { return client_; }
    /// Lets the service know a zone by its definition.
    void addZone(const QByteArray& definition);
    /// Adds an item, or writes it (or a single date of it) in the place of what is there.
    void add(const QByteArray& component);
    void replace(const QByteArray& component);
    /// The components of an item, each as a set of unfolded lines, without what says when it was changed.
    [[nodiscard]] std::vector<std::multiset<QByteArray>> linesOf(const QByteArray& uid);

  private:
    ESourceRegistry* registry_ = nullptr;
    ESource* source_ = nullptr;
    ECalClient* client_ = nullptr;
};

}  // namespace kestrant
