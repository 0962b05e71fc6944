#include "foundation/InformationDictionary.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace kestrant {

namespace {

using D = InformationDictionary;

class InformationDictionaryTest : public ::testing::Test {
  protected:
    QString write(const QByteArray& content) {
        QFile file(folder.filePath("information.json"));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        return file.fileName();
    }
    /// The feedback address that a start with these files sees.
    static QString addressFrom(const std::optional<QString>& named, const QString& usual,
                               D::OverridePolicy policy) {
        const auto loaded = D::load(named, usual, policy);
        return loaded ? loaded->string(D::feedbackBaseUrlKey).value_or("built in") : "error";
    }

    QTemporaryDir folder;
    QString absent = folder.filePath("absent.json");
};

}  // namespace

TEST_F(InformationDictionaryTest, OnlyANamedFileRedirectsARelease) {
    const QString file = write(R"({"KestrantFeedbackAPIBaseURL":"http://localhost:1"})");
    EXPECT_EQ(addressFrom({}, file, D::OverridePolicy::onlyNamedFile), "built in");
    EXPECT_EQ(addressFrom({}, file, D::OverridePolicy::usualFile), "http://localhost:1");
    EXPECT_EQ(addressFrom({}, absent, D::OverridePolicy::usualFile), "built in");
    for (const auto policy : {D::OverridePolicy::onlyNamedFile, D::OverridePolicy::usualFile}) {
        EXPECT_EQ(addressFrom(file, absent, policy), "http://localhost:1");
        EXPECT_EQ(addressFrom(absent, file, policy), "error");
    }
}

TEST_F(InformationDictionaryTest, AFileThatHoldsNoObjectIsAnErrorThatNamesIt) {
    for (const char* content : {"", "{", "[1]", "\"text\"", "{\"a\":1} {}"}) {
        const QString file = write(content);
        const auto loaded = D::load(file, absent);
        ASSERT_FALSE(loaded) << content;
        EXPECT_TRUE(loaded.error().english.contains(file));
        EXPECT_FALSE(D::load({}, file, D::OverridePolicy::usualFile)) << content;
    }
}

TEST_F(InformationDictionaryTest, AFileReplacesOnlyWhatItNamesAndTypesAreKept) {
    const auto loaded = D::load(write(R"({"KestrantAggregateMetricsPrivacyReady":true,
                                          "KestrantAggregateMetricsUploadEnabled":"true"})"),
                                absent);
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->boolean(D::aggregateMetricsPrivacyReadyKey), true);
    EXPECT_EQ(loaded->boolean(D::aggregateMetricsUploadEnabledKey), std::nullopt);
    EXPECT_EQ(loaded->string(D::shortVersionKey), D::builtIn().string(D::shortVersionKey));
    EXPECT_TRUE(D::builtIn().string(D::shortVersionKey).has_value());
}

}  // namespace kestrant
