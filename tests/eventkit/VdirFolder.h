#pragma once

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

namespace kestrant {

/// A folder of iCalendar files that a test fills by hand, as other programs do.
class VdirFolder {
  public:
    [[nodiscard]] QString root() const { return folder_.path() + "/calendars"; }
    [[nodiscard]] QByteArray nativeRoot() const { return QFile::encodeName(root()); }
    [[nodiscard]] QString path(const QString& relative) const {
        return QDir::cleanPath(root() + "/" + relative);
    }

    /// Writes a file and the folders above it.
    void put(const QString& relative, const QByteArray& text) {
        const QString target = path(relative);
        EXPECT_TRUE(QDir().mkpath(QFileInfo(target).path()));
        QFile file(target);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(text), text.size());
    }
    /// Writes a file the way synchronisers do: under a temporary name, then renamed.
    void replace(const QString& relative, const QByteArray& text) {
        put(relative + "XXXXab12", text);
        EXPECT_EQ(::rename(QFile::encodeName(path(relative + "XXXXab12")).constData(),
                           QFile::encodeName(path(relative)).constData()),
                  0);
    }
    [[nodiscard]] QByteArray content(const QString& relative) const {
        QFile file(path(relative));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(relative);
        return file.readAll();
    }
    [[nodiscard]] bool has(const QString& relative) const { return QFileInfo::exists(path(relative)); }
    /// Every name in a folder, hidden ones too, sorted.
    [[nodiscard]] std::vector<QString> names(const QString& relative = {}) const {
        const QStringList list =
            QDir(path(relative))
                .entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System, QDir::Name);
        return {list.begin(), list.end()};
    }
    void remove(const QString& relative) { EXPECT_TRUE(QFile::remove(path(relative))); }
    void removeAll(const QString& relative = {}) { EXPECT_TRUE(QDir(path(relative)).removeRecursively()); }

    [[nodiscard]] static QByteArray reminder(const QByteArray& uid, const QByteArray& title,
                                             const QByteArray& more = {}) {
        return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nBEGIN:VTODO\r\nUID:" + uid +
               "\r\nDTSTAMP:20260101T000000Z\r\nSUMMARY:" + title + "\r\n" + more +
               "END:VTODO\r\nEND:VCALENDAR\r\n";
    }
    [[nodiscard]] static QByteArray event(const QByteArray& uid) {
        return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nBEGIN:VEVENT\r\nUID:" + uid +
               "\r\nDTSTAMP:20260101T000000Z\r\nDTSTART:20260327T090000Z\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n";
    }

  private:
    QTemporaryDir folder_;
};

/// Gives up the rights of root while it lasts, so that permissions mean something; the folder is handed over.
class WithoutPrivileges {
  public:
    explicit WithoutPrivileges(const VdirFolder& folder) {
        if (::geteuid() != 0)
            return;
        const QByteArray root = folder.nativeRoot();
        EXPECT_EQ(::chmod(root.first(root.lastIndexOf('/')).constData(), 0755), 0);
        EXPECT_EQ(::seteuid(65534), 0);
        changed_ = true;
    }
    WithoutPrivileges(const WithoutPrivileges&) = delete;
    WithoutPrivileges& operator=(const WithoutPrivileges&) = delete;
    ~WithoutPrivileges() {
        if (changed_) {
            EXPECT_EQ(::seteuid(0), 0);
        }
    }

  private:
    bool changed_ = false;
};

}  // namespace kestrant
