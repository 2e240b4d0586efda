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
    // Deleted before static objects: mouse input devices unregister from a static list.
    void TearDown() override {
        delete m_app;
        m_app = nullptr;
    }

private:
    QApplication* m_app = nullptr;
};

[[maybe_unused]] ::testing::Environment* const kQtEnvironment = ::testing::AddGlobalTestEnvironment(new QtEnvironment);

} // namespace
