#include <QApplication>

#include <gtest/gtest.h>

#include "qt/offscreen.h"

int main(int argc, char** argv) {
    // Test discovery runs the program without ctest's environment.
    const auto display = vantrel::qt::useOffscreenDisplay();
    const QApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
