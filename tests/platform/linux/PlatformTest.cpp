#include "platform/linux/Platform.h"

#include <QByteArray>

#include <gtest/gtest.h>

#include <optional>

namespace kestrant {
namespace {

/// The environment of a test, put back afterwards.
class PlatformTest : public ::testing::Test {
  protected:
    void TearDown() override {
        qputenv("QT_QPA_PLATFORM", platform_);
        if (display_.isNull())
            qunsetenv("DISPLAY");
        else
            qputenv("DISPLAY", display_);
    }

  private:
    QByteArray platform_ = qgetenv("QT_QPA_PLATFORM");
    QByteArray display_ = qgetenv("DISPLAY");
};

TEST_F(PlatformTest, APlatformAskedForByNameNeedsNoDisplay) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qunsetenv("DISPLAY");
    EXPECT_TRUE(preparePlatform().has_value());
    EXPECT_EQ(qgetenv("QT_QPA_PLATFORM"), "offscreen");
}

TEST_F(PlatformTest, WithoutAnXDisplayItSaysWhatIsMissing) {
    for (const char* platform : {"", "xcb", "wayland", "wayland;xcb"}) {
        qputenv("QT_QPA_PLATFORM", platform);
        qunsetenv("DISPLAY");
        const auto unset = preparePlatform();
        ASSERT_FALSE(unset.has_value()) << platform;
        EXPECT_TRUE(unset.error().english.contains("DISPLAY is not set"));

        qputenv("DISPLAY", ":nowhere");
        const auto unreachable = preparePlatform();
        ASSERT_FALSE(unreachable.has_value()) << platform;
        EXPECT_EQ(unreachable.error().english, "The X display “:nowhere” cannot be opened.");
        EXPECT_EQ(qgetenv("QT_QPA_PLATFORM"), platform) << "nothing was chosen";
    }
}

TEST_F(PlatformTest, TheChoiceIsTakenBackWithItsObject) {
    for (const std::optional<QByteArray>& before :
         {std::optional<QByteArray>(), std::optional<QByteArray>("wayland")}) {
        if (before)
            qputenv("QT_QPA_PLATFORM", *before);
        else
            qunsetenv("QT_QPA_PLATFORM");
        {
            PlatformChoice choice("xcb");
            const PlatformChoice moved(std::move(choice));
            EXPECT_EQ(qgetenv("QT_QPA_PLATFORM"), "xcb");
        }
        EXPECT_EQ(qEnvironmentVariableIsSet("QT_QPA_PLATFORM"), before.has_value());
        EXPECT_EQ(qgetenv("QT_QPA_PLATFORM"), before.value_or(QByteArray()));
    }
}

}  // namespace
}  // namespace kestrant
