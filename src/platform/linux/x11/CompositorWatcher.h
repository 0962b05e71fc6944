#pragma once

#include "platform/linux/x11/X11Connection.h"

#include <QAbstractNativeEventFilter>
#include <QObject>

namespace kestrant {

/// Whether a compositor blends windows, so that transparent parts of a window show what lies below. Follows
/// compositors that start or stop while the program runs. Thread: main.
class CompositorWatcher : public QObject, public QAbstractNativeEventFilter {
    Q_OBJECT

  public:
    CompositorWatcher();
    ~CompositorWatcher() override;

    [[nodiscard]] bool isCompositing() const { return compositing_; }

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

  Q_SIGNALS:
    void changed();

  private:
    void update();

    X11Connection server_;
    xcb_atom_t selection_;
    uint8_t firstEvent_ = 0;
    bool compositing_ = false;
};

}  // namespace kestrant
