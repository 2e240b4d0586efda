#include "wine.h"

#include "file_services.h"
#include "game_text.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

namespace korvel {

namespace {

QString escapedRegText(const QString& text) {
    QString out = text;
    out.replace(QLatin1Char('\\'), QStringLiteral("\\\\"));
    out.replace(QLatin1Char('"'), QStringLiteral("\\\""));
    return out;
}

QProcessEnvironment wineEnvironment(const QString& winePrefix) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    if (!winePrefix.isEmpty())
        environment.insert(QStringLiteral("WINEPREFIX"), winePrefix);
    return environment;
}

// The Z: form of a host path, which every prefix maps to "/".
QString wineSidePath(const QString& hostPath) {
    return QStringLiteral("Z:") + QDir::toNativeSeparators(QFileInfo(hostPath).absoluteFilePath())
                                      .replace(QLatin1Char('/'), QLatin1Char('\\'));
}

} // namespace

QString findWineProgram() {
    const QString chosen = qEnvironmentVariable("KORVEL_WINE");
    if (!chosen.isEmpty()) {
        if (QFileInfo(chosen).isAbsolute())
            return QFileInfo(chosen).isExecutable() ? chosen : QString();
        return QStandardPaths::findExecutable(chosen);
    }
    return QStandardPaths::findExecutable(QStringLiteral("wine"));
}

QByteArray regFileText(const std::vector<RegFileValue>& values) {
    QString text = QStringLiteral("Windows Registry Editor Version 5.00\r\n");
    std::string currentKey;
    for (const RegFileValue& value : values) {
        if (value.key != currentKey || currentKey.empty()) {
            currentKey = value.key;
            text += QStringLiteral("\r\n[") + fromGameText(value.key) + QStringLiteral("]\r\n");
        }
        text += QLatin1Char('"') + escapedRegText(fromGameText(value.name)) + QStringLiteral("\"=\"") +
                escapedRegText(fromGameText(value.data)) + QStringLiteral("\"\r\n");
    }
    text += QStringLiteral("\r\n");
    QByteArray bytes("\xFF\xFE", 2);
    for (QChar c : text) {
        bytes.append(static_cast<char>(c.unicode() & 0xFF));
        bytes.append(static_cast<char>(c.unicode() >> 8));
    }
    return bytes;
}

RegImportOutcome importIntoWinePrefix(const std::vector<RegFileValue>& values, const QString& regFile,
                                      const QString& winePrefix) {
    RegImportOutcome outcome;
    const QString shownFile = QDir::toNativeSeparators(regFile);
    if (Status written = writeFileAtomically(regFile, regFileText(values)); !written) {
        outcome.message = written.failure().message;
        return outcome;
    }
    const QString byHand = QStringLiteral("The entries are saved in %1; to add them yourself, run:\n\n"
                                          "WINEPREFIX=\"%2\" wine regedit %1")
                               .arg(shownFile, winePrefix);
    const QString wine = findWineProgram();
    if (wine.isEmpty()) {
        outcome.message = QStringLiteral("Wine was not found (install it, or name it in KORVEL_WINE), so the game's "
                                         "registry in the Wine prefix %1 was not changed.\n\n")
                              .arg(winePrefix) +
                          byHand;
        return outcome;
    }
    QProcess regedit;
    regedit.setProcessEnvironment(wineEnvironment(winePrefix));
    regedit.setProcessChannelMode(QProcess::MergedChannels);
    regedit.start(wine, {QStringLiteral("regedit"), QStringLiteral("/S"), wineSidePath(regFile)});
    const bool finished = regedit.waitForStarted(10000) && regedit.waitForFinished(120000);
    if (!finished || regedit.exitStatus() != QProcess::NormalExit || regedit.exitCode() != 0) {
        if (regedit.state() != QProcess::NotRunning) {
            regedit.kill();
            regedit.waitForFinished(5000);
        }
        const QString reason =
            !finished ? regedit.errorString() : QStringLiteral("it ended with status %1").arg(regedit.exitCode());
        outcome.message = QStringLiteral("Wine's regedit could not add the game's registry entries to the Wine prefix "
                                         "%1: %2.\n\n")
                              .arg(winePrefix, reason) +
                          byHand;
        return outcome;
    }
    outcome.imported = true;
    QStringList keys;
    for (const RegFileValue& value : values) {
        const QString key = fromGameText(value.key);
        if (!keys.contains(key))
            keys << key;
    }
    outcome.message = QStringLiteral("The game's registry entries were written to the Wine prefix %1 (system.reg), "
                                     "under:\n\n%2")
                          .arg(winePrefix, keys.join(QLatin1Char('\n')));
    return outcome;
}

Result<GameLaunchPlan> planGameLaunch(const QString& executable, const QString& workingFolder,
                                      const QString& launchCommand, const QString& winePrefix) {
    if (executable.isEmpty() || !QFileInfo(executable).isFile())
        return refused(
            QStringLiteral("The game's executable was not found:\n\n%1").arg(QDir::toNativeSeparators(executable)));
    GameLaunchPlan plan;
    plan.workingFolder = workingFolder;
    plan.environment = wineEnvironment(winePrefix);
    const QStringList words = QProcess::splitCommand(launchCommand);
    if (!words.isEmpty()) {
        const QString program = QStandardPaths::findExecutable(words.front());
        if (program.isEmpty() && !QFileInfo(words.front()).isExecutable())
            return refused(QStringLiteral("The launch command's program \"%1\" was not found. Check the launch "
                                          "command in Options > Paths.")
                               .arg(words.front()));
        plan.program = program.isEmpty() ? words.front() : program;
        plan.arguments = words.mid(1);
        plan.arguments << executable;
        return plan;
    }
#ifdef Q_OS_WIN
    plan.program = executable;
#else
    plan.program = findWineProgram();
    if (plan.program.isEmpty())
        return refused(QStringLiteral("Wine was not found, so the game cannot be started. Install Wine (or name "
                                      "the program to use in KORVEL_WINE), or set a launch command for the profile."));
    plan.arguments << executable;
#endif
    return plan;
}

} // namespace korvel
