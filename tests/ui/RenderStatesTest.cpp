#include "pictures/Rendering.h"

#include <QDir>
#include <QTemporaryDir>

#include <gmock/gmock.h>

using namespace kestrant;

namespace {

QStringList messages;

TEST(RenderStates, DrawsEveryStateInBothLanguagesWithoutAWarning) {
    const QTemporaryDir folder;
    messages.clear();
    const QtMessageHandler previous = qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext&, const QString& message) { messages.append(message); });
    const bool complete = renderPictures(folder.path());
    qInstallMessageHandler(previous);

    EXPECT_TRUE(complete);
    EXPECT_EQ(messages.join(QLatin1Char('\n')).toStdString(), "");
    const QStringList pictures = QDir(folder.path()).entryList({QStringLiteral("*.png")});
    EXPECT_EQ(pictures.filter(QStringLiteral("en-")).size(), pictures.filter(QStringLiteral("fr-")).size());
    EXPECT_GE(pictures.size(), 40);
}

}  // namespace
