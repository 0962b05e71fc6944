#include "foundation/FileLock.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <optional>

namespace kestrant {
namespace {

constexpr auto atOnce = FileLock::Waiting::none;

TEST(FileLock, ExcludesOthersForAsLongAsItLasts) {
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("lock"));
    const auto take = [&](bool ofFolder) {
        return ofFolder ? FileLock::ofFolder(folder.path(), atOnce) : FileLock::ofFile(file, atOnce);
    };
    for (const bool ofFolder : {false, true}) {
        std::optional<tl::expected<FileLock, FileError>> first = take(ofFolder);
        ASSERT_TRUE(first->has_value());
        EXPECT_TRUE((*first)->isHeld());
        EXPECT_EQ(take(ofFolder).error().errorNumber, EWOULDBLOCK);
        first.reset();
        EXPECT_TRUE(take(ofFolder).has_value());
    }
    EXPECT_EQ(FileLock::ofFolder(file, atOnce).error().errorNumber, ENOTDIR);
    EXPECT_EQ(FileLock::ofFolder(folder.filePath(QStringLiteral("none")), atOnce).error().errorNumber,
              ENOENT);
}

TEST(FileLock, BesideAFileIsHiddenAndItsOwnersAlone) {
    const QTemporaryDir folder;
    const mode_t mask = ::umask(0777);
    EXPECT_TRUE(FileLock::besideFile(folder.filePath(QStringLiteral("settings.json"))).has_value());
    ::umask(mask);
    struct stat status = {};
    ASSERT_EQ(::stat(qPrintable(folder.filePath(QStringLiteral(".settings.json.lock"))), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
}

}  // namespace
}  // namespace kestrant
