#pragma once

#include <QByteArray>
#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QStringList>

#include <optional>

class QProcess;

namespace kestrant {

/// The source of the touchpads' scrolling direction under a compositor, where X11's devices do not tell it.
struct TouchpadQuestion {
    /// The program that is asked, with its arguments; empty for KWin, which is asked over the bus.
    QStringList command;
    /// Whether a desktop of this kind was recognised at all.
    bool isKnown = false;
};

/// For the desktops that XDG_CURRENT_DESKTOP names.
[[nodiscard]] TouchpadQuestion touchpadQuestion(const QByteArray& currentDesktop);

/// Whether the content follows the fingers, read from the answer of such a program: a boolean of gsettings,
/// the option of hyprctl or the inputs of swaymsg (both JSON). Absent where the answer does not say.
[[nodiscard]] std::optional<bool> touchpadAnswer(const QByteArray& answer);

/// The direction in which the compositor has touchpads scroll, read from its own settings and followed.
/// Thread: main; never waits.
class TouchpadDirection : public QObject {
    Q_OBJECT

  public:
    explicit TouchpadDirection(const QByteArray& currentDesktop = qgetenv("XDG_CURRENT_DESKTOP"),
                               const QDBusConnection& bus = QDBusConnection::sessionBus(),
                               QObject* parent = nullptr);

    /// Absent until it is known, and where it cannot be read.
    [[nodiscard]] std::optional<bool> isNatural() const { return isNatural_; }
    /// Asks again, for settings that nothing announces.
    void refresh();

  Q_SIGNALS:
    void changed();

  private Q_SLOTS:
    /// The desktop's settings service has written something.
    void settingsWritten(const QString& prefix, const QStringList& changes, const QString& tag);

  private:
    void askProgram();
    void askKWin();
    void learn(std::optional<bool> isNatural);

    QDBusConnection bus_;
    TouchpadQuestion question_;
    QProcess* asking_ = nullptr;
    std::optional<bool> isNatural_;
};

}  // namespace kestrant
