#include "ui/items/LineDrawing.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

using namespace kestrant;

namespace {

TEST(LineDrawings, AreReadFromTheCommandsThatIconsAreMadeOf) {
    struct Case {
        const char* shape;
        QRectF lines;
        QRectF areas;
    };
    const Case cases[] = {
        {R"(<path d="M2 3h10v-1L4,8 5 9Z"/>)", QRectF(2, 2, 10, 7), {}},
        {R"(<path d="m2 2 3 0 0 3z m6 6l1-.5.5 2"/>)", QRectF(2, 2, 7.5, 7.5), {}},
        {R"(<path d="M0 0C0 4 8 4 8 0c0-4-8-4-8 0"/>)", QRectF(0, -3, 8, 6), {}},
        {R"(<path d="M4 8A4 4 0 0 1 12 8"/>)", QRectF(4, 4, 8, 4), {}},
        {R"(<path d="M4 8a4 4 0 0 0 8 0"/>)", QRectF(4, 8, 8, 4), {}},
        {R"(<path d="M8 3A5 5 0 1 1 3 8"/>)", QRectF(3, 3, 10, 10), {}},
        {R"(<path d="M2 8A1 1 0 0 1 10 8"/>)", QRectF(2, 4, 8, 4), {}},
        {R"(<circle cx="5" cy="6" r="2"/>)", QRectF(3, 4, 4, 4), {}},
        {R"(<g fill="currentColor"><rect x="1" y="2" width="3" height="4" rx="1"/></g><circle cx="9" cy="9" r="1"/>)",
         QRectF(8, 8, 2, 2), QRectF(1, 2, 3, 4)},
    };
    const auto near = [](const QRectF& box, const QRectF& expected) {
        return (box.topLeft() - expected.topLeft()).manhattanLength() < 0.05 &&
               (box.bottomRight() - expected.bottomRight()).manhattanLength() < 0.05;
    };
    for (const Case& one : cases) {
        const auto drawing =
            lineDrawingFromSvg(QByteArray("<svg fill=\"none\">") + one.shape + "<title>It</title></svg>");
        ASSERT_TRUE(drawing) << one.shape;
        EXPECT_TRUE(near(drawing->lines.boundingRect(), one.lines)) << one.shape;
        EXPECT_TRUE(near(drawing->areas.boundingRect(), one.areas)) << one.shape;
    }
}

TEST(LineDrawings, WithAnythingElseInThemAreNone) {
    for (const char* text :
         {"", "<svg", "no drawing", "<svg><text>A</text></svg>", "<svg><path d='M1 1Q2 2 3 3'/></svg>",
          "<svg><path d='M1'/></svg>", "<svg><path d='M1 1H3Z4'/></svg>", "<svg><path d='1 1'/></svg>",
          "<svg><path d='M4 8A4 4 30 0 1 12 8'/></svg>", "<svg><path d='M4 8A0 4 0 0 1 12 8'/></svg>",
          "<svg><circle r='1' transform='scale(2)'/></svg>"})
        EXPECT_FALSE(lineDrawingFromSvg(text)) << text;
}

TEST(LineDrawings, OfAllIconsCanBeRead) {
    const QDir icons(QStringLiteral(":/qt/qml/Kestrant/icons"));
    EXPECT_GT(icons.entryList().size(), 20);
    for (const QString& name : icons.entryList()) {
        QFile file(icons.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const auto drawing = lineDrawingFromSvg(file.readAll());
        ASSERT_TRUE(drawing) << name.toStdString();
        const QRectF box = drawing->lines.boundingRect();
        const QRectF square(0, 0, 16, 16);
        EXPECT_TRUE(square.contains(box.topLeft()) && square.contains(box.bottomRight()))
            << name.toStdString();
    }
}

}  // namespace
