#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
#include <QMap>
#include <QObject>
#include <QString>
#include <QVariantMap>

namespace kestrant {

/// The appearance that the desktop's settings ask of programs.
struct AppearanceSettings {
    bool reducedMotion = false;
    bool highContrast = false;
    /// Of text, 1 is the usual size.
    double textScale = 1.0;
    bool operator==(const AppearanceSettings&) const = default;
};

/// What the settings of a desktop, by namespace and key, ask for. Desktops say the same under various names;
/// what is missing or of another type asks for nothing.
[[nodiscard]] AppearanceSettings readAppearance(const QMap<QString, QVariantMap>& settings);

/// Follows the desktop's settings through its portal (org.freedesktop.portal.Settings); asks for nothing
/// where there is none. Thread: main; never waits.
class DesktopAppearance : public QObject {
    Q_OBJECT

  public:
    explicit DesktopAppearance(const QDBusConnection& bus = QDBusConnection::sessionBus(),
                               QObject* parent = nullptr);

    [[nodiscard]] const AppearanceSettings& appearance() const { return appearance_; }

  Q_SIGNALS:
    void changed();

  private Q_SLOTS:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

  private:
    void update();

    QDBusConnection bus_;
    QMap<QString, QVariantMap> settings_;
    AppearanceSettings appearance_;
};

}  // namespace kestrant
