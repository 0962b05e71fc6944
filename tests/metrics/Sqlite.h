#pragma once

#include <QString>

#include <string>
#include <vector>

struct sqlite3;

namespace kestrant {

/// For temporary folders: in memory where the system has such a place, as the disk is synchronised often.
[[nodiscard]] QString scratchTemplate();

/// A connection of the test's own, to look into a database and to make one by hand. Any failure throws.
class Sqlite {
  public:
    explicit Sqlite(const QString& path);
    ~Sqlite();
    Sqlite(const Sqlite&) = delete;
    Sqlite& operator=(const Sqlite&) = delete;

    /// The rows that the statements give, columns separated by "|"; NULL as such, reals in whole numbers.
    std::vector<std::string> operator()(const char* sql);

  private:
    sqlite3* handle_ = nullptr;
};

}  // namespace kestrant
