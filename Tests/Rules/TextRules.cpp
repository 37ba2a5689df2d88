// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Rules/TextRules.h"

#include <QMap>
#include <QRegularExpression>

namespace {

const QString holder = QStringLiteral("SPDX-FileCopyrightText: Quenby contributors");
const QString license = QStringLiteral("SPDX-License-Identifier: MIT");

bool isTest(const SourceFile &file)
{
    // These rules and the texts that try them would be found by themselves.
    return file.path.startsWith(u"Tests/") && !file.path.startsWith(u"Tests/Rules/");
}

QString describe(const SourceFile &file, qsizetype line, const QString &reason)
{
    return QStringLiteral("%1:%2: %3. %4")
        .arg(file.path, QString::number(line + 1), file.lines()[line].trimmed(), reason);
}

QStringList linesThatMatch(const SourceFile &file, const QRegularExpression &pattern, const QString &reason)
{
    QStringList violations;
    const QStringList lines = file.lines();
    for (qsizetype i = 0; i < lines.size(); ++i) {
        if (pattern.match(lines[i]).hasMatch())
            violations.append(describe(file, i, reason));
    }
    return violations;
}

} // namespace

QStringList TextRules::violationsOfHeader(const SourceFile &file)
{
    const QString comment = file.isCpp() || file.path.endsWith(u".m") ? QStringLiteral("// ")
                            : file.path.endsWith(u".in")              ? QString()
                                                                      : QStringLiteral("# ");
    QStringList lines = file.lines();
    if (lines.first().startsWith(u"#!"))
        lines.removeFirst();
    // A generated file's comment style follows what is generated: only that the lines are there is asked.
    const bool holds = comment.isEmpty() ? file.text.contains(holder) && file.text.contains(license)
                                         : lines.size() >= 2 && lines[0] == comment + holder &&
                                               lines[1] == comment + license;
    if (holds)
        return {};
    return {QStringLiteral("%1 does not begin with \"%2\" and \"%3\": every file says whose it is and under "
                           "which terms.")
                .arg(file.path, comment + holder, comment + license)};
}

QStringList TextRules::violationsOfGuard(const SourceFile &file)
{
    if (!file.isHeader() || file.lines().contains(QStringLiteral("#pragma once")))
        return {};
    return {QStringLiteral("%1 lacks \"#pragma once\".").arg(file.path)};
}

QStringList TextRules::violationsOfLength(const SourceFile &file)
{
    const auto length = file.text.count(u'\n');
    if (length <= longestFile)
        return {};
    return {
        QStringLiteral("%1 has %2 lines, more than %3: it holds more than one thing. Split it by concern, a "
                       "class or a category in each file.")
            .arg(file.path, QString::number(length), QString::number(longestFile))};
}

QStringList TextRules::violationsOfLeftovers(const SourceFile &file)
{
    if (file.path.startsWith(u"Tests/Rules/"))
        return {};
    static const QRegularExpression pattern(QStringLiteral("\\b(TODO|FIXME|XXX|HACK)\\b"));
    return linesThatMatch(file, pattern,
                          QStringLiteral("What is left to do stands in the issue tracker, not in the code"));
}

QStringList TextRules::violationsOfWaiting(const SourceFile &file)
{
    if (!isTest(file))
        return {};
    static const QRegularExpression wait(
        QStringLiteral("\\b[mun]?sleep\\s*\\(|\\bnanosleep\\s*\\(|\\bsleep_(for|until)\\b|"
                       "\\bqWait\\s*\\(|\\bqSleep\\s*\\(|^\\s*sleep\\s+[0-9.]"));
    // The pause between two looks at a condition is no bare wait: it stands right below the loop that looks.
    static const QRegularExpression look(QStringLiteral("^\\s*(while|until)\\b(?!\\s*(\\(?(true|1)\\b|:))"));
    QStringList violations;
    const QStringList lines = file.lines();
    for (qsizetype i = 0; i < lines.size(); ++i) {
        if (wait.match(lines[i]).hasMatch() && !(i > 0 && look.match(lines[i - 1]).hasMatch()))
            violations.append(
                describe(file, i,
                         QStringLiteral("A test waits for a condition (QTest::qWaitFor, "
                                        "QSignalSpy::wait, QProcess::waitFor…), never for a length "
                                        "of time: that is too short on a slow machine and too long "
                                        "on all others")));
    }
    return violations;
}

QStringList TextRules::violationsOfEnvironment(const SourceFile &file)
{
    const QStringList exceptions = {
        // Qt takes the token of an activation from nowhere else; it is removed at once.
        QStringLiteral("Toolkit/WindowActivation.cpp"),
    };
    if (!file.isCpp() || file.path.startsWith(u"Tests/") || file.path.startsWith(u"Benchmarks/") ||
        exceptions.contains(file.path))
        return {};
    static const QRegularExpression pattern(
        QStringLiteral("\\b(q?putenv|setenv|q?unsetenv|clearenv)\\s*\\("));
    return linesThatMatch(file, pattern,
                          QStringLiteral("Whatever the process starts inherits its environment: give a child "
                                         "process one of its own"));
}

QStringList TextRules::violationsOfSkipping(const SourceFile &file)
{
    if (!isTest(file))
        return {};
    static const QRegularExpression pattern(QStringLiteral(
        "\\bGTEST_SKIP\\b|\\bQSKIP\\b|\\bDISABLED_|\\bSkipWithError\\b|\\bskip(Test|If|Unless)?\\s*\\("));
    return linesThatMatch(
        file, pattern, QStringLiteral("A test runs or is not there: a skipped one is counted as if it held"));
}

QStringList TextRules::violationsOfListing(const QList<SourceFile> &files)
{
    QMap<QString, QString> buildRules;
    for (const SourceFile &file : files) {
        if (file.fileName() == u"CMakeLists.txt")
            buildRules[file.folder()] = file.text;
    }
    QStringList violations;
    for (const SourceFile &file : files) {
        if (!file.path.endsWith(u".cpp"))
            continue;
        const QRegularExpression entry(
            QStringLiteral("(^|[\\s/\"])%1($|[\\s\")])").arg(QRegularExpression::escape(file.fileName())));
        bool listed = false;
        for (QString folder = file.folder(); !listed; folder = folder.section(u'/', 0, -2)) {
            listed = buildRules.value(folder).contains(entry);
            if (folder.isEmpty())
                break;
        }
        // The mains of the test programs are named where those are put together.
        for (const SourceFile &rules : files)
            listed = listed || (rules.path.endsWith(u".cmake") && rules.text.contains(file.path));
        if (!listed)
            violations.append(
                QStringLiteral("%1 is listed in no CMakeLists.txt: it is never compiled.").arg(file.path));
    }
    return violations;
}
