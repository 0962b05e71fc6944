#include "ui/settings/DataStoreViewModel.h"

#include "preferences/PreferenceKeys.h"
#include "preferences/Preferences.h"
#include "ui/panel/Localizer.h"

#include <QDir>
#include <QFileInfo>

namespace kestrant {
namespace {

const QString defaultKind = QStringLiteral("default");
const QString folderKind = QStringLiteral("folder");
const QString evolutionKind = QStringLiteral("evolution");

}  // namespace

tl::expected<QString, TextPair> usableFolder(const QString& typed) {
    QString path = typed.trimmed();
    if (path == u'~' || path.startsWith(u"~/"))
        path.replace(0, 1, QDir::homePath());
    if (!QDir::isAbsolutePath(path))
        return tl::unexpected(
            text("Write the whole path, from / or ~ on.", "Écrivez le chemin entier, depuis / ou ~."));
    path = QDir::cleanPath(path);
    // A folder that does not exist can be made if its nearest existing ancestor is writable.
    QFileInfo nearest(path);
    while (!nearest.exists() && !nearest.isRoot())
        nearest = QFileInfo(nearest.path());
    if (!nearest.isDir())
        return tl::unexpected(
            TextPair{QStringLiteral("“%1” is not a folder.").arg(nearest.filePath()),
                     QStringLiteral("« %1 » n’est pas un dossier.").arg(nearest.filePath())});
    if (!nearest.isWritable() || !nearest.isReadable() || !nearest.isExecutable())
        return tl::unexpected(TextPair{
            QStringLiteral("You may not write in “%1”.").arg(nearest.filePath()),
            QStringLiteral("Vous n’avez pas le droit d’écrire dans « %1 ».").arg(nearest.filePath())});
    return path;
}

DataStoreViewModel::DataStoreViewModel(Preferences& preferences, Localizer& localizer,
                                       DataStoreServices services, QObject* parent)
    : QObject(parent)
    , preferences_(preferences)
    , localizer_(localizer)
    , services_(std::move(services))
    , subscription_(preferences.observeChanges([this](const QString& key) {
        if (key == preferenceKeys::eventStore)
            Q_EMIT changed();
    })) {
    connect(&localizer, &Localizer::languageChanged, this, &DataStoreViewModel::changed);
}

EventStoreLocation DataStoreViewModel::location() const {
    if (const auto stored = preferences_.defaults().string(preferenceKeys::eventStore)) {
        if (const auto chosen = EventStoreLocation::parse(*stored))
            return *chosen;
    }
    return services_.inUse ? services_.inUse() : EventStoreLocation{services_.defaultFolder};
}

void DataStoreViewModel::choose(const EventStoreLocation& location) {
    awaitsFolder_ = false;
    problem_.reset();
    preferences_.defaults().set(preferenceKeys::eventStore, location.toString());
}

QString DataStoreViewModel::kind() const {
    if (awaitsFolder_)
        return folderKind;
    const EventStoreLocation shown = location();
    if (shown.kind == EventStoreLocation::Kind::evolution)
        return evolutionKind;
    return shown.folder == services_.defaultFolder ? defaultKind : folderKind;
}

QVariantList DataStoreViewModel::kinds() const {
    QVariantList kinds;
    const auto offer = [&](const QString& kind, const TextPair& title) {
        kinds.append(
            QVariantMap{{QStringLiteral("rawValue"), kind}, {QStringLiteral("title"), localizer_(title)}});
    };
    offer(defaultKind, text("In Kestrant’s own folder", "Dans le dossier de Kestrant"));
    offer(folderKind, text("In another folder", "Dans un autre dossier"));
    if (!evolutionIsThere_)
        evolutionIsThere_ = services_.evolutionIsAvailable && services_.evolutionIsAvailable();
    if (*evolutionIsThere_ || kind() == evolutionKind)
        offer(evolutionKind, text("In this desktop’s calendar", "Dans le calendrier du bureau"));
    return kinds;
}

void DataStoreViewModel::setKind(const QString& kind) {
    if (kind == this->kind())
        return;
    if (kind == defaultKind) {
        choose({services_.defaultFolder});
    } else if (kind == evolutionKind) {
        choose(EventStoreLocation::evolution());
    } else {
        // Stored once the folder is known.
        awaitsFolder_ = true;
        problem_.reset();
    }
    Q_EMIT changed();  // NOLINT(readability-misleading-indentation): the macro is empty
}

QString DataStoreViewModel::folder() const {
    QString path = awaitsFolder_ ? QString() : location().folder;
    const QString home = QDir::homePath();
    if (path == home || path.startsWith(home + u'/'))
        path.replace(0, home.size(), QStringLiteral("~"));
    return path;
}

QString DataStoreViewModel::problem() const {
    return problem_ ? localizer_(*problem_) : QString();
}

void DataStoreViewModel::chooseFolder(const QString& path) {
    if (const auto usable = usableFolder(path))
        choose({*usable});
    else
        problem_ = usable.error();
    Q_EMIT changed();
}

bool DataStoreViewModel::settle(const QString& written) {
    if (kind() != folderKind)
        return true;
    if (written.trimmed().isEmpty()) {
        problem_ = text("Write which folder, or choose another place.",
                        "Indiquez le dossier, ou choisissez un autre emplacement.");
        Q_EMIT changed();
    } else if (awaitsFolder_ || problem_ || written != folder()) {
        chooseFolder(written);
    }
    return !problem_;
}

void DataStoreViewModel::pickFolder() {
    const QString start = usableFolder(folder()).value_or(QDir::homePath());
    services_.pickFolder(start, [this](const tl::expected<QString, TextPair>& picked) {
        if (picked) {
            chooseFolder(*picked);
        } else {
            problem_ = picked.error();
            Q_EMIT changed();
        }
    });
}

void DataStoreViewModel::refresh() {
    evolutionIsThere_.reset();
    awaitsFolder_ = false;
    problem_.reset();
    Q_EMIT changed();
}

}  // namespace kestrant
