#include "foundation/StandardFolders.h"

#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <vector>

namespace kestrant {
namespace {

constexpr std::array variables{"HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR"};

/// The variables as they were come back at the end.
class StandardFolders : public testing::Test {
  protected:
    StandardFolders() {
        for (const char* name : variables)
            before_.push_back(qEnvironmentVariableIsSet(name) ? std::optional(qgetenv(name)) : std::nullopt);
    }
    ~StandardFolders() override {
        for (std::size_t i = 0; i < variables.size(); ++i)
            set(variables[i], before_[i]);
    }
    static void set(const char* name, const std::optional<QByteArray>& value) {
        if (value)
            qputenv(name, *value);
        else
            qunsetenv(name);
    }

  private:
    std::vector<std::optional<QByteArray>> before_;
};

TEST_F(StandardFolders, AreTheOnesOfTheEnvironmentOrBelowHomeAndNeverAnywhereElse) {
    struct Case {
        std::vector<std::optional<QByteArray>> values;
        const char* data;
        const char* configuration;
        const char* runtime;
        bool isMissing = false;
    };
    const Case cases[] = {
        {{"/h", {}, {}, {}}, "/h/.local/share/", "/h/.config/", "/h/.local/share/com.Kestrant.notchapp"},
        {{"/h", "/d/", "/c", "/r"}, "/d/", "/c/", "/r"},
        {{{}, "/d", "/c", {}}, "/d/", "/c/", "/d/com.Kestrant.notchapp"},
        {{"/h", "d", "./c", "r"}, "/h/.local/share/", "/h/.config/", "/h/.local/share/com.Kestrant.notchapp"},
        {{{}, {}, {}, "/r"}, "/nonexistent/", "/nonexistent/", "/r", true},
        {{"home", "/d", {}, "/r"}, "/d/", "/nonexistent/", "/r", true},
        {{"", "/d", "", "/r"}, "/d/", "/nonexistent/", "/r", true},
    };
    for (const Case& each : cases) {
        for (std::size_t i = 0; i < variables.size(); ++i)
            set(variables[i], each.values[i]);
        EXPECT_TRUE(applicationSupportFolder().startsWith(QString::fromLatin1(each.data))) << each.data;
        EXPECT_TRUE(configurationFolder().startsWith(QString::fromLatin1(each.configuration))) << each.data;
        EXPECT_EQ(runtimeFolder(), QString::fromLatin1(each.runtime));
        EXPECT_EQ(reasonForNoFolders().has_value(), each.isMissing);
    }
}

}  // namespace
}  // namespace kestrant
