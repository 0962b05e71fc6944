#include "eventkit/EKErrors.h"
#include "eventkit/vdir/VdirStorage.h"
#include "foundation/AtomicFile.h"

#include <QFile>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace kestrant::vdir {

using items::Library;

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

tl::expected<QByteArray, EKError> VdirStorage::makeCollection(const QString& title) const {
    if (const auto created = createFolder(QFile::decodeName(root_)); !created)
        return tl::unexpected(storageError(created.error().path, created.error().description));
    const QByteArray wanted = folderNameFrom(title);
    QByteArray name = wanted;
    int number = 1;
    while (::mkdir((root_ + '/' + name).constData(), 0777) != 0) {
        const int error = errno;
        if (error != EEXIST)
            return tl::unexpected(
                storageError(QFile::decodeName(root_ + '/' + name),
                             QString::fromStdString(std::generic_category().message(error))));
        name = wanted + '-' + QByteArray::number(++number);
    }
    return name;
}

tl::expected<QByteArray, EKError> VdirStorage::saveCollection(const Library& library,
                                                              const EKCalendar& calendar) {
    const bool isNew = calendar.calendarIdentifier.isEmpty();
    const auto name = isNew ? makeCollection(calendar.title) : QFile::encodeName(calendar.calendarIdentifier);
    if (!name)
        return name;
    const Color color = calendar.color.value_or(items::unusedColor(library));
    const QByteArray folder = root_ + '/' + *name;
    const auto present = library.collections.find(*name);
    std::optional<EKError> error;
    if (isNew || present->second.title != calendar.title)
        error = writeMetadata(folder, "displayname", calendar.title);
    const bool hasColor = !isNew && (!calendar.color || present->second.color == calendar.color);
    if (!error && !hasColor)
        error = writeMetadata(folder, "color", color.toString());
    if (error) {
        if (isNew) {
            ::unlink((folder + "/displayname").constData());
            ::rmdir(folder.constData());
        }
        return tl::unexpected(std::move(*error));
    }
    return name;
}

}  // namespace kestrant::vdir
