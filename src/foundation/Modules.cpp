#include "foundation/Modules.h"

#include <QCoreApplication>
#include <QFileInfo>

namespace kestrant {

std::optional<QString> moduleFile(const QString& name) {
    const QString folder = QCoreApplication::applicationDirPath();
    for (const char* where : {"/", "/../" KESTRANT_MODULE_FOLDER "/"}) {
        QString path = folder + QLatin1String(where) + name;
        if (QFileInfo::exists(path))
            return path;
    }
    return std::nullopt;
}

}  // namespace kestrant
