#pragma once

namespace kestrant {

/// Looks for newer versions of the program by itself once started. Where a package manager does that, there
/// is nothing to start. Thread: main; never waits.
class UpdaterController {
  public:
    virtual ~UpdaterController() = default;
    virtual void startUpdater() = 0;
};

/// For programs that a package manager keeps up to date.
class PackagedUpdates final : public UpdaterController {
  public:
    void startUpdater() override {}
};

/// Starts the updates once in a process, however often it is asked. Thread: main.
class AppUpdater {
  public:
    /// The controller must outlive this object.
    explicit AppUpdater(UpdaterController& controller) : controller_(controller) {}

    [[nodiscard]] bool hasStarted() const { return hasStarted_; }
    void start() {
        if (hasStarted_)
            return;
        hasStarted_ = true;
        controller_.startUpdater();
    }

  private:
    UpdaterController& controller_;
    bool hasStarted_ = false;
};

}  // namespace kestrant
