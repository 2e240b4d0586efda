#include "platform/registry_tree.h"
#include "scripted_dialogs.h"
#include "startup/store_warnings.h"

#include <gtest/gtest.h>

namespace korvel::testing {
namespace {

// A store that has something to say whenever the test puts it there.
class TroubledRegistry : public RegistryTree {
public:
    QStringList takeWarnings() override {
        QStringList out;
        out.swap(pending);
        return out;
    }
    QStringList pending;
};

TEST(StoreWarningDialogs, explainTheStoreBeforeEveryKindOfDialogAndEachTextOnce) {
    const struct {
        const char* name;
        std::function<void(Dialogs&)> show;
        size_t messagesAfter; // the explanation and, for a message, the message itself
    } cases[] = {
        {"message", [](Dialogs& d) { d.message("Information", "Welcome!", MessageIcon::Information); }, 2},
        {"input", [](Dialogs& d) { d.input("Input Required", "Name?", QString()); }, 1},
        {"open files", [](Dialogs& d) { d.openFiles(OpenFileRequest{}); }, 1},
        {"browse folder", [](Dialogs& d) { d.browseFolder("Folder", "C:\\"); }, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        TroubledRegistry registry;
        ScriptedDialogs shown;
        StoreWarningDialogs dialogs(shown, registry);
        registry.pending = {"The settings file was damaged.", "Cannot save.", "Cannot save."};
        c.show(dialogs);
        ASSERT_EQ(shown.messages().size(), c.messagesAfter);
        EXPECT_EQ(shown.messages()[0].title, QStringLiteral("WARNING!"));
        EXPECT_EQ(shown.messages()[0].text, QStringLiteral("The settings file was damaged.\n\nCannot save."));
        EXPECT_EQ(shown.messages()[0].icon, MessageIcon::Exclamation);
        // The same failure again is not explained twice; a new one is.
        registry.pending = {"Cannot save."};
        dialogs.explainPending();
        EXPECT_EQ(shown.messages().size(), c.messagesAfter);
        registry.pending = {"Cannot save.", "The disk is full."};
        dialogs.explainPending();
        ASSERT_EQ(shown.messages().size(), c.messagesAfter + 1);
        EXPECT_EQ(shown.lastMessage().text, QStringLiteral("The disk is full."));
    }
}

TEST(StoreWarningDialogs, doNotRepeatTheFailureTheComingMessageReportsItself) {
    TroubledRegistry registry;
    ScriptedDialogs shown;
    StoreWarningDialogs dialogs(shown, registry);
    registry.pending = {"Could not save registry.json: permission denied."};
    dialogs.message("Options", "The settings were not saved:\n\nCould not save registry.json: permission denied.",
                    MessageIcon::Critical);
    ASSERT_EQ(shown.messages().size(), 1u);
    EXPECT_EQ(shown.messages()[0].title, QStringLiteral("Options"));
    registry.pending = {"Could not save registry.json: permission denied."};
    dialogs.explainPending();
    EXPECT_EQ(shown.messages().size(), 1u);
}

} // namespace
} // namespace korvel::testing
