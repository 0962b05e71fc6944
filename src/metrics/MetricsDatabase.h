#pragma once

#include <QString>

#include <tl/expected.hpp>

#include <memory>
#include <optional>
#include <variant>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace kestrant::metrics {

/// The store cannot be used, whatever the reason.
enum class StoreError { unavailable };

template <typename Value = void>
using StoreResult = tl::expected<Value, StoreError>;

/// A statement's parameter: text, integer, real or null.
using SQLValue = std::variant<QString, qint64, double, std::nullptr_t>;

/// A prepared statement with its parameters bound, read row by row.
class Statement {
  public:
    /// True when there is a row to read.
    [[nodiscard]] StoreResult<bool> step();

    /// Columns of the present row, from 0. Absent for NULL.
    [[nodiscard]] std::optional<QString> text(int column) const;
    [[nodiscard]] std::optional<double> real(int column) const;
    /// 0 for NULL.
    [[nodiscard]] qint64 integer(int column) const;

  private:
    friend class MetricsDatabase;
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const;
    };
    std::unique_ptr<sqlite3_stmt, Finalize> statement_;
};

/// The file that keeps counts until they are reported: its opening, migration and statements. Durable before
/// fast: every write is on the disk when it returns, and what is deleted is overwritten. A file that is
/// damaged or of a newer version is refused and left as it is. Every call may block for the disk, and up to
/// 250 ms for another process. Thread: one at a time.
class MetricsDatabase {
  public:
    /// Opens `folder`/aggregate-completions-v1.sqlite, making both when they are missing, for this user
    /// alone. After a success the schema is of the present version.
    [[nodiscard]] static StoreResult<MetricsDatabase> open(const QString& folder);
    [[nodiscard]] static QString pathIn(const QString& folder);

    /// Runs one statement to its end; rows are skipped.
    [[nodiscard]] StoreResult<> execute(const char* sql, const std::vector<SQLValue>& parameters = {});
    /// A statement to read rows from.
    [[nodiscard]] StoreResult<Statement> prepare(const char* sql,
                                                 const std::vector<SQLValue>& parameters = {});
    /// Rows changed by the last execute().
    [[nodiscard]] qint64 changes() const;

    /// Runs `body` in one transaction, which a failure takes back.
    template <typename Body>
    [[nodiscard]] StoreResult<> transaction(Body body) {
        StoreResult<> result = execute("BEGIN IMMEDIATE");
        if (!result)
            return result;
        result = body();
        if (result)
            result = execute("COMMIT");
        if (!result)
            static_cast<void>(execute("ROLLBACK"));
        return result;
    }

  private:
    struct Close {
        void operator()(sqlite3* handle) const;
    };
    explicit MetricsDatabase(sqlite3* handle) : handle_(handle) {}

    [[nodiscard]] StoreResult<> configure();
    /// The version of the schema found; fails when the file is not to be touched.
    [[nodiscard]] StoreResult<qint64> check();
    [[nodiscard]] StoreResult<> migrate(qint64 version);

    std::unique_ptr<sqlite3, Close> handle_;
};

}  // namespace kestrant::metrics
