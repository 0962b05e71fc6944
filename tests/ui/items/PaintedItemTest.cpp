#include "ui/items/Icon.h"

#include <QQuickWindow>

#include <gtest/gtest.h>

using namespace kestrant;

namespace {

TEST(PaintedItem, IsPaintedInTheSizeInWhichItIsShown) {
    QQuickWindow window;
    QQuickItem outer(window.contentItem());
    QQuickItem inner(&outer);
    Icon icon(&inner);
    icon.setSize({20, 16});
    EXPECT_EQ(icon.textureSize(), QSize()) << "its own";
    outer.setScale(0.5);
    inner.setScale(3);
    icon.setSize({20, 20});
    window.grabWindow();
    EXPECT_EQ(icon.textureSize(), QSize(30, 30));
}

}  // namespace
