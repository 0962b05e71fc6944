#include "eventkit/model/EKErrors.h"
#include "eventkit/vdir/VdirStorage.h"
#include "foundation/AtomicFile.h"

#include <QFile>

#include <cerrno>
#include <optional>
#include <utility>

namespace kestrant::vdir {

using items::StorageContents;

namespace {

/// Letters and digits of a title that every file system takes, other characters
/// as hyphens.
QByteArray folderNameFrom(const QString& title) {
    QByteArray name;
    for (const QChar character : title.normalized(QString::NormalizationForm_KD).toLower()) {
        const char16_t unit = character.unicode();
        const bool isPlain = (unit >= u'a' && unit <= u'z') || (unit >= u'0' && unit <= u'9');
        if (isPlain)
            name.append(static_cast<char>(unit));
        else if (!character.isMark() && !name.isEmpty() && !name.endsWith('-'))
            name.append('-');
        if (name.size() == 40)
            break;
    }
    while (name.endsWith('-'))
        name.chop(1);
    return name.isEmpty() ? "list" : name;
}

std::optional<EKError> writeMetadata(const QByteArray& folder, const char* name, const QString& value) {
    const auto written = writeFileAtomically(QFile::decodeName(folder + '/' + name), value.toUtf8());
    if (written)
        return std::nullopt;
    return storageError(written.error().path, written.error().description);
}

}  // namespace

tl::expected<QByteArray, EKError> VdirStorage::makeCollection(const QString& title,
                                                              const Color& color) const {
    if (const auto created = createFolder(QFile::decodeName(root_)); !created)
        return tl::unexpected(storageError(created.error().path, created.error().description));
    const QByteArray wanted = folderNameFrom(title);
    QByteArray name = wanted;
    for (int number = 2;; ++number) {
        const auto made = createFolderWithFiles(QFile::decodeName(root_ + '/' + name),
                                                {{QStringLiteral("displayname"), title.toUtf8()},
                                                 {QStringLiteral("color"), color.toString().toUtf8()}});
        if (made)
            return name;
        if (made.error().errorNumber != EEXIST)
            return tl::unexpected(storageError(made.error().path, made.error().description));
        name = wanted + '-' + QByteArray::number(number);
    }
}

tl::expected<QByteArray, EKError> VdirStorage::saveCollection(const StorageContents& contents,
                                                              const EKCalendar& calendar) {
    if (calendar.calendarIdentifier.isEmpty())
        return makeCollection(calendar.title, calendar.color.value_or(items::unusedColor(contents)));
    const QByteArray name = QFile::encodeName(calendar.calendarIdentifier);
    const auto locked = lock({name});
    if (!locked)
        return tl::unexpected(locked.error());
    const QByteArray folder = root_ + '/' + name;
    const auto& present = contents.collections.find(name)->second;
    std::optional<EKError> error;
    if (present.title != calendar.title)
        error = writeMetadata(folder, "displayname", calendar.title);
    if (!error && calendar.color && present.color != calendar.color)
        error = writeMetadata(folder, "color", calendar.color->toString());
    if (error)
        return tl::unexpected(std::move(*error));
    return name;
}

}  // namespace kestrant::vdir
