#include "platform/linux/x11/Platform.h"

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QString>

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

namespace kestrant {
namespace {

constexpr std::array variables{"QT_QPA_PLATFORM", "DISPLAY", "XDG_RUNTIME_DIR"};

std::optional<QByteArray> valueOf(const char* variable) {
    return qEnvironmentVariableIsSet(variable) ? std::optional(qgetenv(variable)) : std::nullopt;
}

void setVariable(const char* variable, const std::optional<QByteArray>& value) {
    if (value)
        qputenv(variable, *value);
    else
        qunsetenv(variable);
}

/// The environment of a test, put back afterwards.
class PlatformTest : public ::testing::Test {
  protected:
    PlatformTest() {
        for (const char* variable : variables)
            before_.push_back(valueOf(variable));
    }

    void TearDown() override {
        for (std::size_t i = 0; i < variables.size(); ++i)
            setVariable(variables[i], before_[i]);
    }

  private:
    std::vector<std::optional<QByteArray>> before_;
};

TEST_F(PlatformTest, APlatformAskedForByNameNeedsNoDisplay) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qunsetenv("DISPLAY");
    EXPECT_TRUE(preparePlatform({}, [] { return false; }).has_value());
    EXPECT_EQ(qgetenv("QT_QPA_PLATFORM"), "offscreen");
}

TEST_F(PlatformTest, WithoutAnXDisplayItSaysWhatIsMissing) {
    for (const char* platform : {"", "xcb", "wayland", "wayland;xcb"}) {
        qputenv("QT_QPA_PLATFORM", platform);
        qunsetenv("DISPLAY");
        const auto unset = preparePlatform({}, [] { return false; });
        ASSERT_FALSE(unset.has_value()) << platform;
        EXPECT_TRUE(unset.error().english.contains("DISPLAY is not set"));

        qputenv("DISPLAY", ":nowhere");
        const auto unreachable = preparePlatform({}, [] { return false; });
        ASSERT_FALSE(unreachable.has_value()) << platform;
        EXPECT_EQ(unreachable.error().english, "The X display “:nowhere” cannot be opened.");
        EXPECT_EQ(qgetenv("QT_QPA_PLATFORM"), platform) << "nothing was chosen";
    }
}

TEST_F(PlatformTest, TheChoiceIsTakenBackWithItsObject) {
    struct Case {
        std::optional<QByteArray> platform;
        std::optional<QByteArray> runtimeFolder;
    };
    for (const auto& [platform, runtimeFolder] :
         {Case{std::nullopt, std::nullopt}, Case{"wayland", ""}, Case{"wayland", "/somewhere"}}) {
        setVariable("QT_QPA_PLATFORM", platform);
        setVariable("XDG_RUNTIME_DIR", runtimeFolder);
        QString during;
        {
            PlatformChoice choice("xcb");
            const PlatformChoice moved(std::move(choice));
            EXPECT_EQ(qgetenv("QT_QPA_PLATFORM"), "xcb");
            during = QFile::decodeName(qgetenv("XDG_RUNTIME_DIR"));
            EXPECT_TRUE(during == "/somewhere" || QFileInfo(during).isDir()) << "Qt finds what it is told of";
        }
        EXPECT_EQ(valueOf("QT_QPA_PLATFORM"), platform);
        EXPECT_EQ(valueOf("XDG_RUNTIME_DIR"), runtimeFolder);
        EXPECT_FALSE(QFileInfo::exists(during)) << "nothing is left";
    }
}

}  // namespace
}  // namespace kestrant
