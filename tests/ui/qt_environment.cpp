#include <QApplication>

#include <gtest/gtest.h>

#include <memory>

namespace {

// One QApplication on the offscreen platform for every test, deleted before the static objects
// (the mouse input devices unregister from a static list).
class QtEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
        static int argc = 1;
        static char name[] = "ui_tests";
        static char* argv[] = {name, nullptr};
        m_app = std::make_unique<QApplication>(argc, argv);
    }
    void TearDown() override { m_app.reset(); }

private:
    std::unique_ptr<QApplication> m_app;
};

[[maybe_unused]] ::testing::Environment* const kQtEnvironment = ::testing::AddGlobalTestEnvironment(new QtEnvironment);

} // namespace
