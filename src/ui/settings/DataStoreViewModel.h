#pragma once

#include "eventkit/model/EventStoreLocation.h"
#include "foundation/Subscription.h"
#include "foundation/Text.h"

#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <QVariantList>

#include <tl/expected.hpp>

#include <functional>
#include <optional>

namespace kestrant {

class Localizer;
class Preferences;

/// Services for choosing the place of reminders and events. Functions may be empty: what they do is then not
/// offered.
struct DataStoreServices {
    /// The program's own folder. Empty when the place cannot be chosen at all.
    QString defaultFolder;
    /// The database in use while none was chosen; the default folder where this is empty.
    std::function<EventStoreLocation()> inUse;
    /// Whether this desktop's own calendar service is there; asked once each time the choices are shown.
    std::function<bool()> evolutionIsAvailable;
    /// Lets the person pick a folder, starting in one, and tells which, or why that cannot be; nothing when
    /// they change their mind. Not called after the view model is gone.
    std::function<void(const QString& start,
                       std::function<void(tl::expected<QString, TextPair> folder)> done)>
        pickFolder;
};

/// The absolute path of a folder that was typed, if a folder of files can be there: it exists and can be
/// written to, or can be made. Fails with a sentence for the person. Looks at the disk.
[[nodiscard]] tl::expected<QString, TextPair> usableFolder(const QString& typed);

/// Where reminders and events live: the program's own folder, another one, or the desktop's calendar service.
/// The choice is stored at once, and whoever uses the database follows it. Thread: main.
class DataStoreViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(bool isOffered READ isOffered CONSTANT)
    /// {rawValue, title} each; raw values are "default", "folder" and "evolution".
    Q_PROPERTY(QVariantList kinds READ kinds NOTIFY changed)
    /// Of the kind "folder" also while no folder was given yet; nothing is stored then.
    Q_PROPERTY(QString kind READ kind WRITE setKind NOTIFY changed)
    /// As it is shown: the home folder is "~". Empty while none was given.
    Q_PROPERTY(QString folder READ folder NOTIFY changed)
    /// Why the folder that was last given cannot be used; empty for none.
    Q_PROPERTY(QString problem READ problem NOTIFY changed)
    Q_PROPERTY(bool canPick READ canPick CONSTANT)

  public:
    /// Everything must outlive the view model.
    DataStoreViewModel(Preferences& preferences, Localizer& localizer, DataStoreServices services,
                       QObject* parent = nullptr);

    [[nodiscard]] bool isOffered() const { return !services_.defaultFolder.isEmpty(); }
    [[nodiscard]] QVariantList kinds() const;
    [[nodiscard]] QString kind() const;
    void setKind(const QString& kind);
    [[nodiscard]] QString folder() const;
    [[nodiscard]] QString problem() const;
    [[nodiscard]] bool canPick() const { return bool(services_.pickFolder); }

    /// Takes a folder over if it can be used; else the problem says why not, and nothing changes.
    Q_INVOKABLE void chooseFolder(const QString& path);
    /// Takes over what is written where the folder is given, as chooseFolder() does. False when a folder was
    /// asked for and none can be used; the problem then says what is missing.
    Q_INVOKABLE bool settle(const QString& written);
    /// Lets the person pick the folder.
    Q_INVOKABLE void pickFolder();
    /// Begins anew: forgets a choice that was begun and not made, and what the desktop has.
    Q_INVOKABLE void refresh();

  Q_SIGNALS:
    void changed();

  private:
    /// The chosen database, else the one in use.
    [[nodiscard]] EventStoreLocation location() const;
    void choose(const EventStoreLocation& location);

    Preferences& preferences_;
    Localizer& localizer_;
    DataStoreServices services_;
    mutable std::optional<bool> evolutionIsThere_;
    bool awaitsFolder_ = false;
    std::optional<TextPair> problem_;
    Subscription subscription_;
};

}  // namespace kestrant
