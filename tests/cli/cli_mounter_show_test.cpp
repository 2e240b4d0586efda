#include "cli_run.h"

namespace {

using MounterShowCli = CliFolder;

// Rows are written in blocks, plain ASCII ones as they are: the counter still comes first and a
// name outside ASCII still reaches the terminal as UTF-8.
TEST_F(MounterShowCli, printsTheCounterFirstAndNamesOutsideAsciiAsUtf8) {
    write("game/PLAIN.POD", "POD");
    write(QStringLiteral("game/Caf\u00e9.pod"), "POD");
    write("game/POD.INI", "1\r\nPLAIN.POD\r\n");
    const CliRun run = cli({"mounter", "--game", path("game"), "show"});
    ASSERT_EQ(run.status, 0) << run.err.toStdString();
    EXPECT_EQ(run.out, QStringLiteral("1/99 PODs Mounted\nPLAIN.POD\tMounted\tPLAIN.POD\n"
                                      "CAF\u00c9.POD\tUnmounted\tCAF\u00c9.POD\n"));
}

} // namespace
