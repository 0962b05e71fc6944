#pragma once

#include <QObject>

#include <functional>
#include <memory>

class QSocketNotifier;

namespace kestrant {

/// Turns SIGTERM, SIGINT and SIGHUP into one call on the main thread, so that the program can end in order. A
/// second signal ends the process at once. One object per process. Thread: main.
class TerminationSignals : public QObject {
  public:
    explicit TerminationSignals(std::function<void()> handler, QObject* parent = nullptr);
    ~TerminationSignals() override;

  private:
    std::unique_ptr<QSocketNotifier> notifier_;
    int descriptor_ = -1;
};

}  // namespace kestrant
