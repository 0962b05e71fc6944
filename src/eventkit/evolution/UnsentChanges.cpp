#include "eventkit/evolution/UnsentChanges.h"

#include <sqlite3.h>

#include <memory>

namespace kestrant::evolution {

std::optional<bool> hasUnsentChanges(const QByteArray& cacheFolder) {
    if (cacheFolder.isEmpty())
        return std::nullopt;
    constexpr int patienceInMilliseconds = 2'000;
    sqlite3* opened = nullptr;
    const int status = sqlite3_open_v2((cacheFolder + "/cache.db").constData(), &opened,
                                       SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX, nullptr);
    const std::unique_ptr<sqlite3, decltype(&sqlite3_close)> database(opened, sqlite3_close);
    if (status != SQLITE_OK)
        return std::nullopt;
    sqlite3_busy_timeout(database.get(), patienceInMilliseconds);
    sqlite3_stmt* prepared = nullptr;
    if (sqlite3_prepare_v2(database.get(),
                           "SELECT EXISTS(SELECT 1 FROM ECacheObjects WHERE ECacheState <> 0)", -1, &prepared,
                           nullptr) != SQLITE_OK)
        return std::nullopt;
    const std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)> query(prepared, sqlite3_finalize);
    if (sqlite3_step(query.get()) != SQLITE_ROW)
        return std::nullopt;
    return sqlite3_column_int(query.get(), 0) != 0;
}

}  // namespace kestrant::evolution
