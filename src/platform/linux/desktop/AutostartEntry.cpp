#include "platform/linux/desktop/AutostartEntry.h"

#include "foundation/AtomicFile.h"
#include "foundation/StandardFolders.h"

#include <QByteArrayList>
#include <QCoreApplication>
#include <QFile>
#include <QStandardPaths>

#include <cerrno>
#include <optional>
#include <utility>

namespace kestrant {

namespace {

constexpr qint64 entrySizeLimit = 64 * 1024;
/// Everything but this group is for other readers of the file.
const QByteArray mainGroup = QByteArrayLiteral("[Desktop Entry]");
const QByteArray hiddenKey = QByteArrayLiteral("Hidden");
/// Written by session managers that let a person switch entries off.
const QByteArray sessionKey = QByteArrayLiteral("X-GNOME-Autostart-enabled");

/// The line that begins the main group; -1 in what is no desktop entry.
int mainGroupLine(const QByteArrayList& lines) {
    for (int number = 0; number < lines.size(); ++number) {
        if (lines[number].trimmed() == mainGroup)
            return number;
    }
    return -1;
}

bool isAnEntry(const QByteArray& text) {
    return mainGroupLine(text.split('\n')) >= 0;
}

/// The line of the main group that sets a key.
std::optional<int> lineOf(const QByteArrayList& lines, const QByteArray& key) {
    bool inGroup = false;
    for (int number = 0; number < lines.size(); ++number) {
        const QByteArray line = lines[number].trimmed();
        if (line.startsWith('['))
            inGroup = line == mainGroup;
        else if (inGroup && line.left(line.indexOf('=')).trimmed() == key && line.contains('='))
            return number;
    }
    return {};
}

std::optional<QByteArray> valueOf(const QByteArray& entry, const QByteArray& key) {
    const QByteArrayList lines = entry.split('\n');
    const auto number = lineOf(lines, key);
    if (!number)
        return {};
    const QByteArray& line = lines[*number];
    return line.mid(line.indexOf('=') + 1).trimmed();
}

/// Sets a key of the main group, or takes its line out; every other line stays as it is.
QByteArray withValue(const QByteArray& entry, const QByteArray& key, const std::optional<QByteArray>& value) {
    QByteArrayList lines = entry.split('\n');
    if (const auto number = lineOf(lines, key)) {
        if (value)
            lines[*number] = key + '=' + *value;
        else
            lines.removeAt(*number);
    } else if (value) {
        lines.insert(mainGroupLine(lines) + 1, key + '=' + *value);
    }
    return lines.join('\n');
}

bool startsSomething(const QByteArray& entry) {
    return isAnEntry(entry) && valueOf(entry, hiddenKey) != QByteArrayLiteral("true") &&
           valueOf(entry, sessionKey) != QByteArrayLiteral("false");
}

/// A text as the value of a key.
QByteArray asValue(QByteArray text) {
    text.replace('\\', "\\\\");
    return text.replace('\n', "\\n").replace('\r', "\\r").replace('\t', "\\t");
}

/// A path as one argument of an Exec line: quoted, then escaped as any value.
QByteArray asArgument(const QString& path) {
    QByteArray quoted = "\"";
    for (const char character : path.toUtf8()) {
        if (character == '"' || character == '`' || character == '$' || character == '\\')
            quoted += '\\';
        quoted += character;
        if (character == '%')
            quoted += '%';
    }
    return asValue(quoted + '"');
}

TextPair sentence(const FileError& error) {
    return {
        QStringLiteral("Starting at login could not be changed: %1: %2").arg(error.path, error.description),
        QStringLiteral("L’ouverture avec la session n’a pas pu être modifiée : %1 : %2")
            .arg(error.path, error.description)};
}

}  // namespace

AutostartEntry::AutostartEntry(QString fileName, QString folder, QStringList systemFolders, QString program)
    : fileName_(std::move(fileName))
    , folder_(std::move(folder))
    , systemFolders_(std::move(systemFolders))
    , program_(std::move(program)) {}

AutostartEntry AutostartEntry::ofThisProgram() {
    QStringList folders = QStandardPaths::standardLocations(QStandardPaths::GenericConfigLocation);
    for (QString& folder : folders)
        folder += QStringLiteral("/autostart");
    const QString own = folders.isEmpty() ? QString() : folders.takeFirst();
    return {desktopIdentifier + QStringLiteral(".desktop"), own, folders,
            QCoreApplication::applicationFilePath()};
}

QString AutostartEntry::path() const {
    return folder_ + u'/' + fileName_;
}

QByteArray AutostartEntry::newEntry() const {
    return mainGroup + "\nType=Application\nName=Kestrant\nIcon=" + desktopIdentifier.toUtf8() +
           "\nExec=" + asArgument(program_) + "\nTryExec=" + asValue(program_.toUtf8()) +
           "\nTerminal=false\n";
}

bool AutostartEntry::isEnabled() const {
    QStringList folders = systemFolders_;
    folders.prepend(folder_);
    for (const QString& folder : std::as_const(folders)) {
        if (const auto entry = readFile(folder + u'/' + fileName_, entrySizeLimit))
            return startsSomething(*entry);
    }
    return false;
}

tl::expected<void, TextPair> AutostartEntry::setEnabled(bool enabled) {
    if (enabled == isEnabled())
        return {};
    auto present = readFile(path(), entrySizeLimit);
    if (!present && present.error().errorNumber != ENOENT)
        return tl::unexpected(sentence(present.error()));
    if (present && !isAnEntry(*present)) {
        if (const auto aside = setFileAside(path()); !aside)
            return tl::unexpected(sentence(aside.error()));
        present = tl::unexpected(FileError{});
    }

    QByteArray entry = present.value_or(newEntry());
    if (enabled) {
        entry = withValue(entry, hiddenKey, {});
        entry = withValue(entry, sessionKey, {});
        if (!valueOf(entry, "Exec"))
            entry = newEntry();
    } else {
        entry = withValue(entry, hiddenKey, QByteArrayLiteral("true"));
    }

    if (const auto folder = createFolder(folder_); !folder)
        return tl::unexpected(sentence(folder.error()));
    return writeFileAtomically(path(), entry).map_error(sentence);
}

}  // namespace kestrant
