#include "notch/NotchContainerShape.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace kestrant {
namespace {

constexpr NotchContainerShape panel{{100.0, 50.0}, 10.0, 20.0};

TEST(NotchContainerShapeTest, TheOutlineIsAnEarThenAStraightSideThenARoundedCorner) {
    // A 3-4-5 triangle gives the quarter circles' exact places: 6 of 10 from the ear's centre, 12 of 20 into
    // the corner.
    EXPECT_DOUBLE_EQ(insetAtDepth(panel, 0.0), 0.0);
    EXPECT_DOUBLE_EQ(insetAtDepth(panel, 4.0), 8.0);
    EXPECT_DOUBLE_EQ(insetAtDepth(panel, 10.0), 10.0);
    EXPECT_DOUBLE_EQ(insetAtDepth(panel, 30.0), 10.0);
    EXPECT_DOUBLE_EQ(insetAtDepth(panel, 42.0), 14.0);
    EXPECT_DOUBLE_EQ(insetAtDepth(panel, 50.0), 30.0);
}

TEST(NotchContainerShapeTest, RadiiThatDoNotFitAreLimitedToTheShape) {
    const NotchContainerShape flat{{20.0, 6.0}, 4.0, 50.0};
    EXPECT_DOUBLE_EQ(insetAtDepth(flat, 4.0), 4.0);
    EXPECT_DOUBLE_EQ(insetAtDepth(flat, 6.0), 6.0);
    for (const QRect& row : pixelRectangles({{4.0, 4.0}, 9.0, 9.0}, 10.0, 1.0))
        EXPECT_TRUE(QRect(3, 0, 4, 4).contains(row));
}

TEST(NotchContainerShapeTest, PixelsAreThoseWhoseCentresLieInTheShapeAtEveryScale) {
    for (const double scale : {1.0, 1.25, 2.0}) {
        const double windowWidth = 140.0;
        const auto rectangles = pixelRectangles(panel, windowWidth, scale);
        int row = 0;
        for (const QRect& rectangle : rectangles) {
            ASSERT_EQ(rectangle.top(), row) << "rows leave no gap and do not overlap";
            for (; row <= rectangle.bottom(); ++row) {
                const double inset = 20.0 + insetAtDepth(panel, (row + 0.5) / scale);
                EXPECT_GE((rectangle.left() + 0.5) / scale, inset);
                EXPECT_LT((rectangle.left() - 0.5) / scale, inset);
                EXPECT_LT((rectangle.right() + 0.5) / scale, windowWidth - inset + 1e-9);
                EXPECT_GE((rectangle.right() + 1.5) / scale, windowWidth - inset);
            }
        }
        EXPECT_EQ(row, static_cast<int>(std::floor(50.0 * scale + 0.5)));
    }
}

TEST(NotchContainerShapeTest, AShapeWithoutRadiiIsOneRectangle) {
    EXPECT_EQ(pixelRectangles({{205.0, 32.75}}, 940.0, 2.0), std::vector<QRect>{QRect(735, 0, 410, 66)});
    EXPECT_TRUE(pixelRectangles({}, 940.0, 1.0).empty());
}

}  // namespace
}  // namespace kestrant
