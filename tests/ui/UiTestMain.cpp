#include "pictures/Rendering.h"
#include "support/TestEnvironment.h"

#include <QGuiApplication>
#include <QLocale>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    kestrant::test::useTestEnvironment();
    // Times of day are shown in 24 hours.
    QLocale::setDefault(QLocale::c());
    kestrant::prepareRendering();
    QGuiApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
