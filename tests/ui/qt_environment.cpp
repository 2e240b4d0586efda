// Every GUI test runs inside one QApplication on Qt's offscreen platform, created before the first
// test and kept until the program ends.

#include <QApplication>

#include <gtest/gtest.h>

namespace {

class QtEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        if (QApplication::instance())
            return;
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
        static int argc = 1;
        static char name[] = "ui_tests";
        static char* argv[] = {name, nullptr};
        m_app = new QApplication(argc, argv);
    }
    // Gone before the program's static objects are: the input devices that mouse events create
    // unregister themselves from a static list when the application deletes them.
    void TearDown() override {
        delete m_app;
        m_app = nullptr;
    }

private:
    QApplication* m_app = nullptr;
};

[[maybe_unused]] ::testing::Environment* const kQtEnvironment = ::testing::AddGlobalTestEnvironment(new QtEnvironment);

} // namespace
