#include "eventkit/model/EventStoreLocation.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace kestrant {
namespace {

TEST(EventStoreLocation, IsReadAndWrittenInOneForm) {
    for (const char* text : {"evolution", "vdir:/home/someone/lists"})
        EXPECT_EQ(EventStoreLocation::parse(text)->toString(), text);
    EXPECT_EQ(EventStoreLocation::parse("vdir:~/lists")->folder, QDir::homePath() + "/lists");
    EXPECT_FALSE(EventStoreLocation::parse("Evolution"));
    EXPECT_FALSE(EventStoreLocation::parse("evolution:x"));
}

TEST(EventStoreLocation, IsTheNamedOneThenThePreferredThenTheOneThatIsThere) {
    const QTemporaryDir folder;
    const EventStoreLocation empty{folder.path() + "/nothing"};
    const EventStoreLocation used{folder.path() + "/used"};
    ASSERT_TRUE(QDir().mkpath(used.folder + "/list"));
    const EventStoreLocation named{"/named"};
    const EventStoreLocation preferred{"/preferred"};
    const auto evolution = EventStoreLocation::evolution();
    struct Case {
        const char* what;
        std::optional<EventStoreLocation> named;
        std::optional<QString> preference;
        EventStoreLocation embedded;
        bool desktopHasOne;
        EventStoreLocation expected;
    };
    const Case cases[] = {
        {"named", named, "evolution", empty, true, named},
        {"preferred", {}, "vdir:/preferred", used, true, preferred},
        {"preferred on the desktop", {}, "evolution", used, false, evolution},
        {"a preference that is none", {}, "files", empty, true, empty},
        {"the first start on a desktop", {}, {}, empty, true, evolution},
        {"lists from before the desktop had a database", {}, {}, used, true, used},
        {"no desktop", {}, {}, empty, false, empty},
    };
    for (const Case& each : cases)
        EXPECT_EQ(
            eventStoreToUse(each.named, each.preference, each.embedded, [&] { return each.desktopHasOne; }),
            each.expected)
            << each.what;
}

}  // namespace
}  // namespace kestrant
