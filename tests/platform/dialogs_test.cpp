#include "platform/dialogs.h"

#include <gtest/gtest.h>

using namespace korvel;

TEST(UnexpectedErrorText, namesTheSupportAddressGivenOrTheMaintainersWithoutOne) {
    qunsetenv("KORVEL_SUPPORT_ADDRESS");
    setSupportAddress(QString());
    EXPECT_EQ(unexpectedErrorText(53, QStringLiteral("File not found")).toStdString(),
              "Sorry, but an error of type 53 has occurred: File not found\n"
              "Please report this to Korvel's maintainers as soon as possible.");
    qputenv("KORVEL_SUPPORT_ADDRESS", "env@korvel.test");
    EXPECT_TRUE(unexpectedErrorText(6, QStringLiteral("Overflow"))
                    .endsWith(QStringLiteral("Please report this to env@korvel.test as soon as possible.")));
    // The program hands over the address in force (its setting, or the environment's on top).
    setSupportAddress(QStringLiteral(" help@korvel.test\n"));
    EXPECT_EQ(supportAddress(), QStringLiteral("help@korvel.test"));
    EXPECT_TRUE(unexpectedErrorText(6, QStringLiteral("Overflow")).contains(QStringLiteral("to help@korvel.test as")));
    setSupportAddress(QString());
    qunsetenv("KORVEL_SUPPORT_ADDRESS");
}
