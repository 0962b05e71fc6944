#include "metrics/MetricsDatabase.h"

#include <QFile>

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace kestrant::metrics {

namespace {

constexpr auto createStateTable = "CREATE TABLE IF NOT EXISTS aggregate_state (\n"
                                  "    singleton INTEGER PRIMARY KEY CHECK (singleton = 1),\n"
                                  "    pending_count INTEGER NOT NULL DEFAULT 0 CHECK (pending_count >= 0),\n"
                                  "    next_report_at REAL,\n"
                                  "    collection_epoch TEXT\n"
                                  ")";
constexpr auto createReportsTable =
    "CREATE TABLE IF NOT EXISTS reports (\n"
    "    report_id TEXT PRIMARY KEY,\n"
    "    count INTEGER NOT NULL CHECK (count BETWEEN 1 AND 10000),\n"
    "    created_day TEXT NOT NULL,\n"
    "    created_day_epoch REAL NOT NULL,\n"
    "    next_attempt_at REAL NOT NULL,\n"
    "    attempts INTEGER NOT NULL DEFAULT 0,\n"
    "    status TEXT NOT NULL DEFAULT 'pending' CHECK (status IN ('pending', 'rejected')),\n"
    "    rejection_code INTEGER\n"
    ")";
constexpr auto createPendingIndex =
    "CREATE UNIQUE INDEX IF NOT EXISTS one_pending_report ON reports (status) WHERE status = 'pending'";

constexpr int newestSchema = 2;
constexpr int busyMilliseconds = 250;

tl::unexpected<StoreError> unavailable() {
    return tl::unexpected(StoreError::unavailable);
}

StoreResult<> succeedIf(bool condition) {
    if (!condition)
        return unavailable();
    return {};
}

/// Makes a folder and what is missing above it; what it makes is for this user alone.
bool makePrivateFolder(const QString& path) {
    const QByteArray name = QFile::encodeName(path);
    if (::mkdir(name.constData(), S_IRWXU) == 0)
        return ::chmod(name.constData(), S_IRWXU) == 0;
    if (errno == ENOENT) {
        const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
        return slash > 0 && makePrivateFolder(path.left(slash)) && makePrivateFolder(path);
    }
    struct stat status {};
    return errno == EEXIST && ::stat(name.constData(), &status) == 0 && S_ISDIR(status.st_mode);
}

/// Makes an empty file where there is none; SQLite itself would have everybody read what it makes.
void makePrivateFile(const QByteArray& path) {
    const int file = ::open(path.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file < 0)
        return;
    ::fchmod(file, S_IRUSR | S_IWUSR);
    ::close(file);
}

int bind(sqlite3_stmt* statement, int position, const SQLValue& value) {
    struct Binder {
        sqlite3_stmt* statement;
        int position;
        int operator()(const QString& text) const {
            return sqlite3_bind_text(statement, position, text.toUtf8().constData(), -1, SQLITE_TRANSIENT);
        }
        int operator()(qint64 integer) const { return sqlite3_bind_int64(statement, position, integer); }
        int operator()(double real) const { return sqlite3_bind_double(statement, position, real); }
        int operator()(std::nullptr_t) const { return sqlite3_bind_null(statement, position); }
    };
    return std::visit(Binder{statement, position}, value);
}

}  // namespace

void Statement::Finalize::operator()(sqlite3_stmt* statement) const {
    sqlite3_finalize(statement);
}

StoreResult<bool> Statement::step() {
    switch (sqlite3_step(statement_.get())) {
    case SQLITE_ROW:
        return true;
    case SQLITE_DONE:
        return false;
    default:
        return unavailable();
    }
}

std::optional<QString> Statement::text(int column) const {
    const auto* bytes = sqlite3_column_text(statement_.get(), column);
    if (bytes == nullptr)
        return std::nullopt;
    return QString::fromUtf8(reinterpret_cast<const char*>(bytes),
                             sqlite3_column_bytes(statement_.get(), column));
}

std::optional<double> Statement::real(int column) const {
    if (sqlite3_column_type(statement_.get(), column) == SQLITE_NULL)
        return std::nullopt;
    return sqlite3_column_double(statement_.get(), column);
}

qint64 Statement::integer(int column) const {
    return sqlite3_column_int64(statement_.get(), column);
}

void MetricsDatabase::Close::operator()(sqlite3* handle) const {
    sqlite3_close_v2(handle);
}

QString MetricsDatabase::pathIn(const QString& folder) {
    return folder + QStringLiteral("/aggregate-completions-v1.sqlite");
}

StoreResult<MetricsDatabase> MetricsDatabase::open(const QString& folder) {
    if (!makePrivateFolder(folder))
        return unavailable();
    const QByteArray path = QFile::encodeName(pathIn(folder));
    makePrivateFile(path);
    sqlite3* handle = nullptr;
    const int opened =
        sqlite3_open_v2(path.constData(), &handle,
                        SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX, nullptr);
    MetricsDatabase database(handle);
    if (opened != SQLITE_OK)
        return unavailable();
    sqlite3_busy_timeout(handle, busyMilliseconds);
    const auto ready =
        database.configure()
            .and_then([&] { return database.check(); })
            .and_then([&](qint64 version) { return database.migrate(version); })
            .and_then([&] { return succeedIf(::chmod(path.constData(), S_IRUSR | S_IWUSR) == 0); });
    if (!ready)
        return unavailable();
    return database;
}

StoreResult<> MetricsDatabase::configure() {
    for (const char* pragma : {"PRAGMA journal_mode = DELETE", "PRAGMA synchronous = FULL",
                               "PRAGMA fullfsync = ON", "PRAGMA secure_delete = ON"}) {
        if (const auto result = execute(pragma); !result)
            return result;
    }
    return {};
}

StoreResult<qint64> MetricsDatabase::check() {
    auto version = prepare("PRAGMA user_version");
    if (!version || !version->step().value_or(false) || version->integer(0) > newestSchema)
        return unavailable();
    const qint64 found = version->integer(0);
    auto sound = prepare("PRAGMA quick_check(1)");
    if (!sound || !sound->step().value_or(false) || sound->text(0) != QLatin1String("ok"))
        return unavailable();
    return found;
}

StoreResult<> MetricsDatabase::migrate(qint64 version) {
    std::vector<const char*> steps{createStateTable};
    if (version == 1)
        steps.push_back("ALTER TABLE aggregate_state ADD COLUMN collection_epoch TEXT");
    steps.insert(steps.end(), {"INSERT OR IGNORE INTO aggregate_state (singleton) VALUES (1)",
                               createReportsTable, createPendingIndex, "PRAGMA user_version = 2"});
    return transaction([&]() -> StoreResult<> {
        for (const char* step : steps) {
            if (const auto result = execute(step); !result)
                return result;
        }
        return {};
    });
}

StoreResult<> MetricsDatabase::execute(const char* sql, const std::vector<SQLValue>& parameters) {
    auto statement = prepare(sql, parameters);
    if (!statement)
        return unavailable();
    StoreResult<bool> row = true;
    while (row && *row)
        row = statement->step();
    return succeedIf(row.has_value());
}

StoreResult<Statement> MetricsDatabase::prepare(const char* sql, const std::vector<SQLValue>& parameters) {
    sqlite3_stmt* handle = nullptr;
    const int prepared = sqlite3_prepare_v2(handle_.get(), sql, -1, &handle, nullptr);
    Statement statement;
    statement.statement_.reset(handle);
    if (prepared != SQLITE_OK)
        return unavailable();
    int position = 0;
    for (const SQLValue& value : parameters) {
        if (bind(handle, ++position, value) != SQLITE_OK)
            return unavailable();
    }
    return statement;
}

qint64 MetricsDatabase::changes() const {
    return sqlite3_changes(handle_.get());
}

}  // namespace kestrant::metrics
