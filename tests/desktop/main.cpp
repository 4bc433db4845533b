#include <QApplication>
#include <QFont>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    qputenv("QT_QPA_PLATFORM", "xcb");
    const QApplication application(argc, argv);
    QApplication::setFont(QFont("DejaVu Sans", 9));
    return RUN_ALL_TESTS();
}
