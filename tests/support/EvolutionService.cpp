#include "support/EvolutionService.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <memory>

namespace kestrant {

namespace {

std::unique_ptr<EvolutionService>& theService() {
    static std::unique_ptr<EvolutionService> service;
    return service;
}

/// The service ends with the tests, not among the last things that a program does.
class Shutdown final : public ::testing::Environment {
  public:
    void TearDown() override { EvolutionService::end(); }
};
[[maybe_unused]] const ::testing::Environment* const shutdown =
    ::testing::AddGlobalTestEnvironment(new Shutdown);

GDBusConnection* sessionBus() {
    GDBusConnection* const bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    if (bus)
        g_dbus_connection_set_exit_on_close(bus, FALSE);
    return bus;
}

}  // namespace

EvolutionService& EvolutionService::emptied() {
    if (!theService())
        theService().reset(new EvolutionService);
    theService()->removeAll();
    return *theService();
}

void EvolutionService::end() {
    theService().reset();
}

EvolutionService::EvolutionService() {
    const QDir folder(folder_.path());
    ::setenv("HOME", QFile::encodeName(folder_.path()).constData(), 1);
    for (const char* name : {"DATA", "CONFIG", "CACHE", "RUNTIME"}) {
        const bool isRuntime = qstrcmp(name, "RUNTIME") == 0;
        const QString path = folder.filePath(QString::fromLatin1(name).toLower());
        EXPECT_TRUE(folder.mkpath(path));
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        const QByteArray variable = QByteArray("XDG_") + name + (isRuntime ? "_DIR" : "_HOME");
        ::setenv(variable.constData(), QFile::encodeName(path).constData(), 1);
    }
    ::setenv("GSETTINGS_BACKEND", "memory", 1);
    ::setenv("GIO_USE_VFS", "local", 1);
    ::unsetenv("DISPLAY");
    ::unsetenv("WAYLAND_DISPLAY");
    // The lists that every desktop has would be among those of the tests.
    EXPECT_TRUE(folder.mkpath(folder.filePath("config/evolution/sources")));
    for (const QString name : {"system-task-list", "system-calendar", "birthdays"}) {
        QFile file(folder.filePath("config/evolution/sources/" + name + ".source"));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("[Data Source]\nDisplayName=" + name.toUtf8() + "\nEnabled=false\nParent=local-stub\n[" +
                   (name == "system-task-list" ? "Task List" : "Calendar") + "]\nBackendName=local\n");
    }
    startBus();
    if (GDBusConnection* const bus = sessionBus())
        g_object_unref(bus);
}

EvolutionService::~EvolutionService() {
    if (bus_ > 0) {
        ::kill(bus_, SIGTERM);
        ::waitpid(bus_, nullptr, 0);
    }
}

void EvolutionService::startBus() {
    std::array<int, 2> output{};
    ASSERT_EQ(::pipe(output.data()), 0);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, output[1], 1);
    ::posix_spawn_file_actions_addclose(&actions, output[0]);
    // A bus whose tests have crashed ends too.
    std::array<const char*, 9> arguments{"setpriv",     "--pdeathsig",       "TERM",
                                         "dbus-daemon", "--session",         "--nofork",
                                         "--nopidfile", "--print-address=1", nullptr};
    ASSERT_EQ(::posix_spawnp(&bus_, "setpriv", &actions, nullptr, const_cast<char* const*>(arguments.data()),
                             environ),
              0);
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(output[1]);
    QByteArray address;
    char character = 0;
    while (::read(output[0], &character, 1) == 1 && character != '\n')
        address.append(character);
    ::close(output[0]);
    ASSERT_FALSE(address.isEmpty());
    ::setenv("DBUS_SESSION_BUS_ADDRESS", address.constData(), 1);
}

void EvolutionService::removeAll() {
    GError* error = nullptr;
    ESourceRegistry* const registry = e_source_registry_new_sync(nullptr, &error);
    ASSERT_TRUE(registry) << (error ? error->message : "");
    for (const char* extension : {E_SOURCE_EXTENSION_TASK_LIST, E_SOURCE_EXTENSION_CALENDAR}) {
        GList* const sources = e_source_registry_list_enabled(registry, extension);
        for (const GList* link = sources; link; link = link->next) {
            if (e_source_get_removable(E_SOURCE(link->data))) {
                EXPECT_TRUE(e_source_remove_sync(E_SOURCE(link->data), nullptr, nullptr));
            }
        }
        g_list_free_full(sources, g_object_unref);
    }
    g_object_unref(registry);
}

void EvolutionService::changeSettings(const QString& list, const std::function<void(ESource*)>& change) {
    // What the service tells of an earlier change may take the place of what is set here before it is
    // written, so that is looked at again.
    for (bool isChanged = false; !isChanged;) {
        GError* error = nullptr;
        ESourceRegistry* const registry = e_source_registry_new_sync(nullptr, &error);
        ESource* const source = e_source_registry_ref_source(registry, list.toUtf8().constData());
        ASSERT_TRUE(source);
        const auto settings = [source] {
            gchar* const text = e_source_to_string(source, nullptr);
            const QByteArray result(text);
            g_free(text);
            return result;
        };
        const QByteArray before = settings();
        change(source);
        isChanged = settings() == before;
        if (!isChanged) {
            EXPECT_TRUE(e_source_write_sync(source, nullptr, &error)) << (error ? error->message : "");
        }
        g_clear_error(&error);
        g_object_unref(source);
        g_object_unref(registry);
    }
}

void EvolutionService::makeReadOnly(const QString& list) {
    changeSettings(list, [&](ESource* source) {
        const bool isTasks = e_source_has_extension(source, E_SOURCE_EXTENSION_TASK_LIST);
        const QString path = folder_.path() + "/data/evolution/" + (isTasks ? "tasks/" : "calendar/") + list +
                             (isTasks ? "/tasks.ics" : "/calendar.ics");
        GFile* const file = g_file_new_for_path(QFile::encodeName(path).constData());
        auto* const local = E_SOURCE_LOCAL(e_source_get_extension(source, E_SOURCE_EXTENSION_LOCAL_BACKEND));
        e_source_local_set_custom_file(local, file);
        e_source_local_set_writable(local, FALSE);
        g_object_unref(file);
    });
}

pid_t EvolutionService::processOf(const char* busName) {
    GError* error = nullptr;
    GDBusConnection* const bus = sessionBus();
    EXPECT_TRUE(bus);
    const auto ask = [&](const char* method, GVariant* arguments, const char* type) {
        return g_dbus_connection_call_sync(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                           "org.freedesktop.DBus", method, arguments, G_VARIANT_TYPE(type),
                                           G_DBUS_CALL_FLAGS_NONE, -1, nullptr, &error);
    };
    pid_t process = 0;
    if (GVariant* const names = ask("ListNames", nullptr, "(as)")) {
        GVariantIter* iterator = nullptr;
        const gchar* name = nullptr;
        g_variant_get(names, "(as)", &iterator);
        while (g_variant_iter_next(iterator, "&s", &name)) {
            if (!g_str_has_prefix(name, busName))
                continue;
            if (GVariant* const answer =
                    ask("GetConnectionUnixProcessID", g_variant_new("(s)", name), "(u)")) {
                guint32 found = 0;
                g_variant_get(answer, "(u)", &found);
                process = static_cast<pid_t>(found);
                g_variant_unref(answer);
            }
        }
        g_variant_iter_free(iterator);
        g_variant_unref(names);
    }
    g_clear_error(&error);
    g_object_unref(bus);
    return process;
}

void EvolutionService::kill(const char* busName) {
    const pid_t process = processOf(busName);
    ASSERT_GT(process, 0) << busName;
    const int handle = static_cast<int>(::syscall(SYS_pidfd_open, process, 0));
    ASSERT_GE(handle, 0);
    ASSERT_EQ(::kill(process, SIGKILL), 0);
    pollfd waiting{handle, POLLIN, 0};
    EXPECT_EQ(::poll(&waiting, 1, 10'000), 1);
    ::close(handle);
}

ForeignList::ForeignList(const QString& list, ECalClientSourceType type) {
    GError* error = nullptr;
    registry_ = e_source_registry_new_sync(nullptr, &error);
    EXPECT_TRUE(registry_);
    source_ = e_source_registry_ref_source(registry_, list.toUtf8().constData());
    EXPECT_TRUE(source_);
    EClient* const client =
        e_cal_client_connect_sync(source_, type, static_cast<guint32>(-1), nullptr, &error);
    EXPECT_TRUE(client) << (error ? error->message : "");
    client_ = E_CAL_CLIENT(client);
    g_clear_error(&error);
}

ForeignList::~ForeignList() {
    g_clear_object(&client_);
    g_clear_object(&source_);
    g_clear_object(&registry_);
}

void ForeignList::addZone(const QByteArray& definition) {
    ICalComponent* const component = i_cal_component_new_from_string(definition.constData());
    ICalTimezone* const zone = i_cal_timezone_new();
    EXPECT_TRUE(i_cal_timezone_set_component(zone, component));
    EXPECT_TRUE(e_cal_client_add_timezone_sync(client_, zone, nullptr, nullptr));
    g_object_unref(zone);
    g_object_unref(component);
}

void ForeignList::add(const QByteArray& component) {
    GError* error = nullptr;
    ICalComponent* const item = i_cal_component_new_from_string(component.constData());
    EXPECT_TRUE(
        e_cal_client_create_object_sync(client_, item, E_CAL_OPERATION_FLAG_NONE, nullptr, nullptr, &error))
        << (error ? error->message : "");
    g_object_unref(item);
    g_clear_error(&error);
}

void ForeignList::replace(const QByteArray& component) {
    GError* error = nullptr;
    ICalComponent* const item = i_cal_component_new_from_string(component.constData());
    const auto extent = component.contains("RECURRENCE-ID") ? E_CAL_OBJ_MOD_THIS : E_CAL_OBJ_MOD_ALL;
    EXPECT_TRUE(
        e_cal_client_modify_object_sync(client_, item, extent, E_CAL_OPERATION_FLAG_NONE, nullptr, &error))
        << (error ? error->message : "");
    g_object_unref(item);
    g_clear_error(&error);
}

std::vector<std::multiset<QByteArray>> ForeignList::linesOf(const QByteArray& uid) {
    GSList* components = nullptr;
    EXPECT_TRUE(
        e_cal_client_get_objects_for_uid_sync(client_, uid.constData(), &components, nullptr, nullptr));
    std::vector<std::multiset<QByteArray>> result;
    for (const GSList* link = components; link; link = link->next) {
        gchar* const text =
            i_cal_component_as_ical_string(e_cal_component_get_icalcomponent(E_CAL_COMPONENT(link->data)));
        QByteArray unfolded(text);
        g_free(text);
        unfolded.replace("\r\n ", "").replace("\r\n", "\n");
        std::multiset<QByteArray> lines;
        for (const QByteArray& line : unfolded.split('\n')) {
            const auto isAbout = [&](const char* name) { return line.startsWith(name); };
            if (!isAbout("DTSTAMP") && !isAbout("LAST-MODIFIED") && !isAbout("SEQUENCE") && !line.isEmpty())
                lines.insert(line);
        }
        result.push_back(std::move(lines));
    }
    g_slist_free_full(components, g_object_unref);
    return result;
}

}  // namespace kestrant
