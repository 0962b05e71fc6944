#include "metrics/Sqlite.h"

#include <QDir>
#include <QFileInfo>

#include <sqlite3.h>

#include <cmath>
#include <stdexcept>

namespace kestrant {

QString scratchTemplate() {
    const QString memory = QStringLiteral("/dev/shm");
    return (QFileInfo(memory).isWritable() ? memory : QDir::tempPath()) + QStringLiteral("/kestrant-XXXXXX");
}

Sqlite::Sqlite(const QString& path) {
    if (sqlite3_open(path.toUtf8().constData(), &handle_) != SQLITE_OK)
        throw std::runtime_error(sqlite3_errmsg(handle_));
}

Sqlite::~Sqlite() {
    sqlite3_close(handle_);
}

std::vector<std::string> Sqlite::operator()(const char* sql) {
    std::vector<std::string> rows;
    while (*sql != '\0') {
        sqlite3_stmt* statement = nullptr;
        int result = sqlite3_prepare_v2(handle_, sql, -1, &statement, &sql);
        while (result == SQLITE_OK && statement != nullptr && sqlite3_step(statement) == SQLITE_ROW) {
            std::string row;
            for (int column = 0; column < sqlite3_column_count(statement); ++column) {
                row += column > 0 ? "|" : "";
                const int type = sqlite3_column_type(statement, column);
                if (type == SQLITE_FLOAT)
                    row += std::to_string(std::llround(sqlite3_column_double(statement, column)));
                else if (type == SQLITE_NULL)
                    row += "NULL";
                else
                    row += reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
            }
            rows.push_back(row);
        }
        if (result == SQLITE_OK)
            result = sqlite3_finalize(statement);
        if (result != SQLITE_OK)
            throw std::runtime_error(sqlite3_errmsg(handle_));
    }
    return rows;
}

}  // namespace kestrant
