#pragma once

#include "services/LaunchAtLoginManager.h"

#include <QString>
#include <QStringList>

namespace kestrant {

/// Starting with the session by way of a desktop entry in the autostart folder, as the freedesktop.org
/// Desktop Application Autostart Specification 0.5 has it. The person's own entry overrides those of the
/// system. Switching off hides the entry instead of removing it, so that what somebody changed in it stays.
/// Thread: main.
class AutostartEntry final : public LoginItem {
  public:
    /// Entries are looked for as `fileName` in `folder`, which is the person's and need not exist, then in
    /// each of `systemFolders`. `program` is the absolute path of what is to be started.
    AutostartEntry(QString fileName, QString folder, QStringList systemFolders, QString program);
    /// In the folders that the environment names ($XDG_CONFIG_HOME, $XDG_CONFIG_DIRS), for the running
    /// program.
    [[nodiscard]] static AutostartEntry ofThisProgram();

    [[nodiscard]] bool isEnabled() const override;
    [[nodiscard]] tl::expected<void, TextPair> setEnabled(bool enabled) override;

  private:
    [[nodiscard]] QString path() const;
    [[nodiscard]] QByteArray newEntry() const;

    QString fileName_;
    QString folder_;
    QStringList systemFolders_;
    QString program_;
};

}  // namespace kestrant
