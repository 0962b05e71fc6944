#include "interop/CalDavServer.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <utility>
#include <vector>

namespace kestrant {
namespace {

quint16 freePort() {
    const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    EXPECT_EQ(::bind(socket, reinterpret_cast<sockaddr*>(&address), length), 0);
    EXPECT_EQ(::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length), 0);
    ::close(socket);
    return ntohs(address.sin_port);
}

void write(const QString& path, const QByteArray& text) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly)) << qPrintable(path);
    EXPECT_EQ(file.write(text), text.size());
}

}  // namespace

bool CalDavServer::isInstalled() {
    return !QStandardPaths::findExecutable(QStringLiteral("radicale")).isEmpty();
}

CalDavServer::CalDavServer() : port_(freePort()) {
    makeCollection(QStringLiteral("tasks"), "VTODO");
    makeCollection(QStringLiteral("events"), "VEVENT");
    allow("RrWw");
}

CalDavServer::~CalDavServer() {
    stop();
}

void CalDavServer::start() {
    std::array<int, 2> output{};
    ASSERT_EQ(::pipe(output.data()), 0);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, output[1], 1);
    ::posix_spawn_file_actions_adddup2(&actions, output[1], 2);
    ::posix_spawn_file_actions_addclose(&actions, output[0]);
    const QByteArray folder = QFile::encodeName(folder_.path());
    std::vector<QByteArray> arguments{"radicale",
                                      "--config=",
                                      "--server-hosts=127.0.0.1:" + QByteArray::number(port_),
                                      "--storage-filesystem-folder=" + folder,
                                      "--auth-type=none",
                                      "--rights-type=from_file",
                                      "--rights-file=" + folder + "/rights",
                                      "--logging-level=info"};
    std::vector<char*> pointers;
    for (QByteArray& argument : arguments)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    ASSERT_EQ(::posix_spawnp(&process_, "radicale", &actions, nullptr, pointers.data(), environ), 0);
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(output[1]);
    QByteArray said;
    char character = 0;
    while (!said.contains("Radicale server ready") && ::read(output[0], &character, 1) == 1)
        said.append(character);
    EXPECT_TRUE(said.contains("Radicale server ready")) << said.constData();
    // Later answers are dropped.
    ::close(output[0]);
}

void CalDavServer::allow(const QByteArray& permissions) {
    write(folder_.path() + "/rights",
          "[everybody]\nuser: .*\ncollection: .*\npermissions: " + permissions + "\n");
}

void CalDavServer::makeReadOnly() {
    allow("Rr");
}

void CalDavServer::makeCollection(const QString& name, const QByteArray& component) {
    const QString path = folder_.path() + "/collection-root/someone/" + name;
    EXPECT_TRUE(QDir().mkpath(path));
    write(path + "/.Radicale.props",
          R"({"tag": "VCALENDAR", "C:supported-calendar-component-set": ")" + component + R"("})");
}

void CalDavServer::pause() {
    ASSERT_EQ(::kill(process_, SIGSTOP), 0);
    siginfo_t stopped{};
    ASSERT_EQ(::waitid(P_PID, static_cast<id_t>(process_), &stopped, WSTOPPED), 0);
}

void CalDavServer::resume() {
    ASSERT_EQ(::kill(process_, SIGCONT), 0);
}

void CalDavServer::stop() {
    if (process_ <= 0)
        return;
    resume();
    ::kill(process_, SIGTERM);
    ::waitpid(process_, nullptr, 0);
    process_ = 0;
}

QString CalDavServer::pathOf(const QString& collection, const QString& name) const {
    return folder_.path() + "/collection-root/someone/" + collection + "/" + name + ".ics";
}

void CalDavServer::put(const QString& collection, const QString& name, const QByteArray& text) {
    write(pathOf(collection, name), text);
}

void CalDavServer::remove(const QString& collection, const QString& name) {
    EXPECT_TRUE(QFile::remove(pathOf(collection, name)));
}

QByteArray CalDavServer::text(const QString& collection, const QString& name) const {
    QFile file(pathOf(collection, name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

std::vector<QByteArray> CalDavServer::texts(const QString& collection) const {
    std::vector<QByteArray> result;
    const QDir folder(folder_.path() + "/collection-root/someone/" + collection);
    for (const QString& name : folder.entryList({QStringLiteral("*.ics")})) {
        QFile file(folder.filePath(name));
        // The server may have removed it by now.
        if (file.open(QIODevice::ReadOnly))
            result.push_back(file.readAll());
    }
    return result;
}

QByteArray CalDavServer::textWith(const QString& collection, const QByteArray& part) const {
    for (QByteArray& text : texts(collection)) {
        if (text.contains(part))
            return std::move(text);
    }
    return {};
}

QString CalDavServer::addAccount(const QString& collection, const QString& title, ECalClientSourceType type) {
    const bool isTasks = type == E_CAL_CLIENT_SOURCE_TYPE_TASKS;
    GError* error = nullptr;
    ESourceRegistry* const registry = e_source_registry_new_sync(nullptr, &error);
    EXPECT_TRUE(registry);
    ESource* const source = e_source_new(nullptr, nullptr, &error);
    const auto extension = [&](const char* name) { return e_source_get_extension(source, name); };
    e_source_set_parent(source, "caldav-stub");
    e_source_set_display_name(source, title.toUtf8().constData());
    e_source_backend_set_backend_name(
        E_SOURCE_BACKEND(extension(isTasks ? E_SOURCE_EXTENSION_TASK_LIST : E_SOURCE_EXTENSION_CALENDAR)),
        "caldav");
    auto* const authentication = E_SOURCE_AUTHENTICATION(extension(E_SOURCE_EXTENSION_AUTHENTICATION));
    e_source_authentication_set_host(authentication, "127.0.0.1");
    e_source_authentication_set_port(authentication, port_);
    e_source_authentication_set_method(authentication, "none");
    e_source_security_set_method(E_SOURCE_SECURITY(extension(E_SOURCE_EXTENSION_SECURITY)), "none");
    e_source_webdav_set_resource_path(E_SOURCE_WEBDAV(extension(E_SOURCE_EXTENSION_WEBDAV_BACKEND)),
                                      ("/someone/" + collection + "/").toUtf8().constData());
    e_source_offline_set_stay_synchronized(E_SOURCE_OFFLINE(extension(E_SOURCE_EXTENSION_OFFLINE)), TRUE);
    EXPECT_TRUE(e_source_registry_commit_source_sync(registry, source, nullptr, &error))
        << (error ? error->message : "");
    const QString result = QString::fromUtf8(e_source_get_uid(source));
    accounts_.emplace_back(result, type);
    g_clear_error(&error);
    g_object_unref(source);
    g_object_unref(registry);
    return result;
}

void CalDavServer::refresh() {
    GError* error = nullptr;
    ESourceRegistry* const registry = e_source_registry_new_sync(nullptr, &error);
    for (const auto& [uid, type] : accounts_) {
        ESource* const source = e_source_registry_ref_source(registry, uid.toUtf8().constData());
        EClient* client = e_cal_client_connect_sync(source, type, static_cast<guint32>(-1), nullptr, &error);
        EXPECT_TRUE(client && e_client_refresh_sync(client, nullptr, &error))
            << (error ? error->message : "");
        g_clear_object(&client);
        g_object_unref(source);
    }
    g_clear_error(&error);
    g_object_unref(registry);
}

}  // namespace kestrant
