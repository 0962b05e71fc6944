#include "support/TestEnvironment.h"

#include <QLocale>
#include <QtGlobal>

#include <clocale>
#include <ctime>

// The sanitizers ask for these by name before main().
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options() {
    return "detect_leaks=0";
}
extern "C" const char* __ubsan_default_options();
extern "C" const char* __ubsan_default_options() {
    return "halt_on_error=1:print_stacktrace=1";
}
extern "C" const char* __tsan_default_suppressions();
extern "C" const char* __tsan_default_suppressions() {
    // Libraries are built without the sanitizer, which therefore does not see how they synchronise: calls out
    // of them, a lock taken inside one, what a signal handler is given before it is connected, and what Qt's
    // event queue hands from one thread to another (a connection is made in one and used in the other).
    return "called_from_lib:libQt6Core.so\n"
           "called_from_lib:libQt6Network.so\n"
           "called_from_lib:libglib-2.0.so\n"
           "called_from_lib:libcrypto.so\n"
           "called_from_lib:libecal-2.0.so\n"
           "called_from_lib:libedataserver-1.2.so\n"
           "called_from_lib:libgio-2.0.so\n"
           "called_from_lib:libgobject-2.0.so\n"
           "called_from_lib:libical-glib.so\n"
           "called_from_lib:libical.so\n"
           "called_from_lib:libcamel-1.2.so\n"
           "called_from_lib:libssl.so\n"
           "mutex:libcamel\n"
           "race:kestrant::evolution::EvolutionStorage::registryChanged\n"
           "race:QObject::event\n"
           "race:QMetaCallEvent\n"
           "race:kestrant::HttpConnection\n"
           "race:kestrant::HttpAnswerReader\n";
}

namespace kestrant::test {

void useTestEnvironment() {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    qputenv("TZ", "Europe/Paris");
    qputenv("LC_ALL", "C.UTF-8");
    tzset();
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
}

}  // namespace kestrant::test
