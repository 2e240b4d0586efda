#include "ui/widgets/gold_button.h"

#include <QEnterEvent>
#include <QImage>
#include <QTest>

#include <gtest/gtest.h>

using korvel::ui::GoldButton;

TEST(GoldButton, flatSettingChoosesTheLookSetAndOtherValuesKeepIt) {
    GoldButton button(QStringLiteral("Play"));
    button.setOnUp(7);
    button.setOnHover(8);
    button.setOnDown(9);
    EXPECT_FALSE(button.setFlatLook(QStringLiteral("Error")));
    EXPECT_EQ(button.onUp(), 7);
    EXPECT_TRUE(button.setFlatLook(QStringLiteral("1")));
    EXPECT_EQ(std::tuple(button.onUp(), button.onHover(), button.onDown()), std::tuple(0, 4, 2));
    EXPECT_TRUE(button.setFlatLook(QStringLiteral("0")));
    EXPECT_EQ(std::tuple(button.onUp(), button.onHover(), button.onDown()), std::tuple(4, 5, 10));
    EXPECT_FALSE(button.setFlatLook(QStringLiteral("2")));
    EXPECT_EQ(button.onDown(), 10);
}

TEST(GoldButton, drawsEachStateWithItsOwnLookAndClicks) {
    GoldButton button(QStringLiteral("Quit"));
    button.resize(90, 26);
    button.show();
    int clicks = 0;
    QObject::connect(&button, &GoldButton::clicked, [&clicks] { ++clicks; });

    const QImage up = button.grab().toImage();
    EXPECT_EQ(button.currentLook(), 4);

    QEnterEvent enter(QPointF(5, 5), QPointF(5, 5), QPointF(5, 5));
    QApplication::sendEvent(&button, &enter);
    EXPECT_EQ(button.state(), GoldButton::State::Hover);
    EXPECT_EQ(button.currentLook(), 5);
    const QImage hover = button.grab().toImage();

    QTest::mousePress(&button, Qt::LeftButton);
    EXPECT_EQ(button.currentLook(), 10);
    const QImage down = button.grab().toImage();
    QTest::mouseRelease(&button, Qt::LeftButton);
    EXPECT_EQ(clicks, 1);

    EXPECT_NE(up, hover);
    EXPECT_NE(hover, down);
    EXPECT_NE(up, down);

    button.setEnabled(false);
    QTest::mouseClick(&button, Qt::LeftButton);
    EXPECT_EQ(clicks, 1);
    EXPECT_EQ(button.state(), GoldButton::State::Up);
}
