// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Desktop/Bundle.h"
#include "Tests/Helper/HelperFixture.h"
#include "Tests/Session/ChildProcess.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QProcess>

#include <chrono>
#include <csignal>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

namespace {

class CommandLineProgramTest : public HelperFixture
{
protected:
    CommandLineProgramTest()
    {
        putContent(text("letter.txt"), "Dear all");
        storePresets({preset(text("One"),
                             {folder(text("Folder"),
                                     {file(text("letter.txt"), {{text("contentFilename"), text("letter.txt")},
                                                                {text("permissions"), text("640")}})},
                                     {{text("permissions"), text("750")}}),
                              file(text("empty"))}),
                      preset(text("Twice"), {}), preset(text("Two\nlines"), {file(text("x"))}),
                      preset(text("Twice"), {file(text("second"))}),
                      preset(text("Bad"), {file(text("good")), file(text("../evil"))})});
    }
    mode_t modeOf(const QString &name) const
    {
        struct stat status = {};
        EXPECT_EQ(::lstat(QFile::encodeName(target() + u'/' + name).constData(), &status), 0);
        return status.st_mode & 07777;
    }
};

} // namespace

TEST_F(CommandLineProgramTest, IsAnApplicationInThePane)
{
    const std::optional<Bundle> bundle =
        Bundle::bundleWithPath(text(QUENBY_BUNDLE "/Contents/MacOS/QNBHelper.app"));
    ASSERT_TRUE(bundle);
    const QVariantMap information = bundle->infoDictionary();
    EXPECT_EQ(information.value(text("CFBundleShortVersionString")).toString(), text(QUENBY_VERSION));
    EXPECT_EQ(information.value(text("CFBundleIdentifier")).toString(), text("org.quenby.QNBHelper"));
    EXPECT_EQ(information.value(text("CFBundlePackageType")).toString(), text("APPL"));
    // Shown among the programs that start with the session.
    EXPECT_EQ(information.value(text("CFBundleDisplayName")).toString(), text("Quenby Helper"));
    EXPECT_EQ(information.value(text("CFBundleIconFile")).toString(), text("quenby"));
    EXPECT_FALSE(information.value(text("CFBundleGetInfoString")).toString().isEmpty());
    EXPECT_EQ(QFileInfo(bundle->executablePath()), QFileInfo(text(QUENBY_HELPER)));
}

TEST_F(CommandLineProgramTest, StartsWithoutTheLibrariesOfWindows)
{
    QProcess loader;
    QProcessEnvironment environment = home_.environment();
    environment.insert(text("LD_TRACE_LOADED_OBJECTS"), text("1"));
    loader.setProcessEnvironment(environment);
    loader.start(program(), {text("--version")});
    ASSERT_TRUE(loader.waitForFinished()) << qPrintable(loader.errorString());
    const std::string libraries = loader.readAllStandardOutput().toStdString();
    EXPECT_THAT(libraries, HasSubstr("libQt6Core.so"));
    EXPECT_THAT(libraries, Not(HasSubstr("libQt6Gui.so")));
    EXPECT_THAT(libraries, Not(HasSubstr("libxcb.so")));
}

TEST_F(CommandLineProgramTest, WithoutItsCodeForTheBackgroundItSaysSoAndEnds)
{
    const QString alone = home_.filePath(text("alone"));
    ASSERT_TRUE(QFile::copy(program(), alone));
    QProcess process;
    process.setProcessEnvironment(home_.environment());
    process.start(alone, {});
    ASSERT_TRUE(process.waitForFinished()) << qPrintable(process.errorString());
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 127);
    EXPECT_THAT(process.readAllStandardError().toStdString(), HasSubstr("QNBRunningHelper.so"));
}

TEST_F(CommandLineProgramTest, ListsTheLabels)
{
    const Ended list = run({text("--list")});
    EXPECT_EQ(list.code, 0);
    EXPECT_EQ(list.output, text("One\nTwice\nTwo\u240alines\nTwice\nBad\n").toUtf8());
    EXPECT_EQ(list.errors, "");
}

TEST_F(CommandLineProgramTest, PresetsThatCannotBeReadAreNotTakenForDefaultOnes)
{
    const QString domain = home_.configFolder() + text("/org.quenby.Quenby.plist");
    ASSERT_TRUE(QFile::remove(domain));
    // Of a folder in its place nobody can say what it holds.
    ASSERT_TRUE(QDir().mkdir(domain));
    for (const Ended &ended : {run({text("--list")}), create(text("#1"))}) {
        EXPECT_EQ(ended.code, 2);
        EXPECT_EQ(ended.output, "");
        EXPECT_THAT(ended.errors.toStdString(), HasSubstr("The presets cannot be read: "));
    }
    EXPECT_EQ(tree(), QStringList());
}

TEST_F(CommandLineProgramTest, TheBackupOfDamagedPresetsIsReadAndNothingReplaced)
{
    // The backup has the presets of the fixture.
    storePresets({preset(text("Later"), {})});
    const QString domain = home_.configFolder() + text("/org.quenby.Quenby.plist");
    const auto list = [this] { return run({text("--list")}); };
    const auto write = [&domain](const QByteArray &bytes) {
        QFile damaged(domain);
        ASSERT_TRUE(damaged.open(QIODevice::WriteOnly));
        damaged.write(bytes);
    };
    const QStringList names = QDir(home_.configFolder()).entryList(QDir::Files);
    write("damaged");
    const Ended damaged = list();
    EXPECT_EQ(damaged.code, 0);
    EXPECT_THAT(damaged.output.toStdString(), HasSubstr("One\n"));
    EXPECT_EQ(damaged.errors.count('\n'), 1) << damaged.errors.constData();
    EXPECT_THAT(damaged.errors.toStdString(), HasSubstr("is damaged"));
    EXPECT_THAT(damaged.errors.toStdString(), HasSubstr("its backup of 2"));
    EXPECT_EQ(QDir(home_.configFolder()).entryList(QDir::Files), names);

    ASSERT_TRUE(QFile::remove(domain));
    EXPECT_THAT(list().output.toStdString(), HasSubstr("One\n"));
    EXPECT_FALSE(QFile::exists(domain));

    // Nothing is known without it.
    write("damaged");
    ASSERT_TRUE(QFile::remove(domain + text(".backup")));
    const Ended unknown = list();
    EXPECT_EQ(unknown.code, 2);
    EXPECT_EQ(unknown.output, "");
    EXPECT_THAT(unknown.errors.toStdString(), HasSubstr("The presets cannot be read: "));
}

TEST_F(CommandLineProgramTest, ATerminalIsShownEveryCharacter)
{
    storePresets({preset(text("\u202Egpj\u009B2J"), {file(text("../\u2066evil\u200B"))})});
    EXPECT_EQ(run({text("--list")}).output, text("<U+202E>gpj<U+009B>2J\n").toUtf8());
    const QString errors = QString::fromUtf8(create(text("#1")).errors);
    EXPECT_THAT(errors.toStdString(), HasSubstr("../<U+2066>evil<U+200B>"));
    EXPECT_EQ(QString::fromUtf8(create(text("\u202Enone")).errors),
              text("There is no preset \"<U+202E>none\"\n"));

    const Ended json = run({text("--list"), text("--json")});
    EXPECT_THAT(json.output.toStdString(), HasSubstr("\"\\u202egpj\\u009b2J\""));
    EXPECT_EQ(json.json().array()[0].toObject().value(text("label")), text("\u202Egpj\u009B2J"));
}

TEST_F(CommandLineProgramTest, ListsAsJson)
{
    const Ended list = run({text("--list"), text("--json")});
    EXPECT_EQ(list.code, 0);
    const QJsonArray presets = list.json().array();
    ASSERT_EQ(presets.size(), 5);
    EXPECT_EQ(presets[0].toObject(), (QJsonObject{{text("label"), text("One")},
                                                  {text("description"), text("About One")},
                                                  {text("items"), 3},
                                                  {text("script"), QString()}}));
    EXPECT_EQ(presets[2].toObject().value(text("label")), text("Two\nlines"));
}

TEST_F(CommandLineProgramTest, Creates)
{
    const Ended created = create(text("One"));
    EXPECT_EQ(created.code, 0) << created.errors.constData();
    EXPECT_EQ(created.output, "");
    EXPECT_THAT(tree(), ElementsAre(text("Folder/"), text("Folder/letter.txt"), text("empty")));
    EXPECT_EQ(bytesOf(text("Folder/letter.txt")), "Dear all");
    EXPECT_EQ(modeOf(text("Folder")), 0750U);
    EXPECT_EQ(modeOf(text("Folder/letter.txt")), 0640U);
    EXPECT_EQ(modeOf(text("empty")), 0764U);
}

TEST_F(CommandLineProgramTest, CreatesByNumberInARelativeFolder)
{
    const Ended created = run({text("--create"), text("#4"), text("--in"), text("target")});
    EXPECT_EQ(created.code, 0) << created.errors.constData();
    EXPECT_THAT(tree(), ElementsAre(text("second")));
}

TEST_F(CommandLineProgramTest, APositionIsAmongThePresetsOfOneLabel)
{
    EXPECT_EQ(create(text("Twice"), {text("--position"), text("2")}).code, 0);
    EXPECT_THAT(tree(), ElementsAre(text("second")));
    for (const char *name : {"#1", "Absent"}) {
        const Ended refused = create(text(name), {text("--position"), text("1")});
        EXPECT_EQ(refused.code, 2);
        EXPECT_THAT(refused.errors.toStdString(), HasSubstr(name));
    }
    EXPECT_EQ(create(text("Twice"), {text("--position"), text("3")}).code, 2);
    EXPECT_THAT(tree(), ElementsAre(text("second")));
}

TEST_F(CommandLineProgramTest, ADryRunPrintsWhatARealRunDoesAndDoesNothing)
{
    const Ended dry = create(text("One"), {text("--dry-run")});
    EXPECT_EQ(dry.code, 0) << dry.errors.constData();
    EXPECT_THAT(tree(), IsEmpty());
    const Ended dryJson = create(text("One"), {text("--dry-run"), text("--json")});
    EXPECT_TRUE(dryJson.json().object().value(text("dryRun")).toBool());
    EXPECT_THAT(tree(), IsEmpty());

    const Ended real = create(text("One"), {text("--json")});
    EXPECT_EQ(real.code, 0) << real.errors.constData();
    const QJsonObject report = real.json().object();
    EXPECT_EQ(report.value(text("preset")), text("One"));
    EXPECT_FALSE(report.value(text("dryRun")).toBool());
    const QJsonObject done = report.value(text("creations"))[0].toObject();
    EXPECT_EQ(done.value(text("status")), text("created"));
    EXPECT_EQ(done.value(text("folder")), target());
    EXPECT_TRUE(done.value(text("possible")).toBool());
    QStringList lines;
    for (const QJsonValue &line : done.value(text("operations")).toArray())
        lines.append(line.toString());
    EXPECT_GE(lines.size(), 3);
    EXPECT_EQ(QString::fromUtf8(dry.output), lines.join(u'\n') + u'\n');
    const QJsonObject planned = dryJson.json().object().value(text("creations"))[0].toObject();
    EXPECT_EQ(planned.value(text("operations")), done.value(text("operations")));
}

TEST_F(CommandLineProgramTest, WhatIsInTheWayGetsTheNewOneAnotherNameOrRefusesIt)
{
    QFile present(target() + text("/empty"));
    ASSERT_TRUE(present.open(QIODevice::WriteOnly));
    present.write("mine");
    present.close();

    const Ended refused = create(text("One"), {text("--on-conflict"), text("refuse"), text("--json")});
    EXPECT_EQ(refused.code, 3);
    EXPECT_THAT(tree(), ElementsAre(text("empty")));
    const QJsonObject report = refused.json().object().value(text("creations"))[0].toObject();
    EXPECT_EQ(report.value(text("status")), text("problems"));
    EXPECT_EQ(report.value(text("conflicts"))[0].toObject(),
              (QJsonObject{{text("path"), text("empty")}, {text("newName"), QString()}}));

    const Ended created = create(text("One"));
    EXPECT_EQ(created.code, 0);
    EXPECT_THAT(created.errors.toStdString(), HasSubstr("\"empty-1\""));
    EXPECT_EQ(bytesOf(text("empty")), "mine");
    EXPECT_EQ(bytesOf(text("empty-1")), "");
}

TEST_F(CommandLineProgramTest, SeveralFoldersAreEachACreation)
{
    const QString other = home_.filePath(text("other"));
    ASSERT_TRUE(QDir().mkpath(other));
    const Ended created = run({text("--create"), text("One"), text("--in"), home_.filePath(text("absent")),
                               text("--in"), target(), text("--in"), other, text("--json")});
    EXPECT_EQ(created.code, 3);
    EXPECT_EQ(tree().size(), 3);
    EXPECT_EQ(tree(other), tree());
    const QJsonArray reports = created.json().object().value(text("creations")).toArray();
    ASSERT_EQ(reports.size(), 3);
    EXPECT_EQ(reports[0].toObject().value(text("status")), text("problems"));
    EXPECT_EQ(reports[0].toObject().value(text("problems")).toArray().size(), 1);
    EXPECT_EQ(reports[1].toObject().value(text("status")), text("created"));
    EXPECT_EQ(reports[2].toObject().value(text("status")), text("created"));
}

TEST_F(CommandLineProgramTest, ProblemsAreToldAndNothingIsDone)
{
    for (const QStringList &more : {QStringList(), QStringList{text("--dry-run")}}) {
        const Ended bad = create(text("Bad"), more);
        EXPECT_EQ(bad.code, 3);
        EXPECT_THAT(bad.errors.toStdString(), HasSubstr("evil"));
        EXPECT_THAT(tree(), IsEmpty());
    }
    EXPECT_FALSE(QFile::exists(home_.filePath(text("evil"))));
}

TEST_F(CommandLineProgramTest, APresetThatIsNotThereOrNotTheOnlyOne)
{
    for (const char *name : {"one", "", "#6", "Twice"}) {
        const Ended none = create(text(name));
        EXPECT_EQ(none.code, 2) << name;
        EXPECT_FALSE(none.errors.isEmpty());
        EXPECT_EQ(none.output, "");
    }
    EXPECT_THAT(create(text("Twice")).errors.toStdString(), HasSubstr("#2, #4"));
    EXPECT_THAT(tree(), IsEmpty());
}

TEST_F(CommandLineProgramTest, ArgumentsThatMakeNoSense)
{
    const Ended ended = run({text("--create"), text("One")});
    EXPECT_EQ(ended.code, 1);
    EXPECT_EQ(ended.output, "");
    EXPECT_THAT(ended.errors.toStdString(), HasSubstr("--help"));
}

TEST_F(CommandLineProgramTest, TheHomeOfAnotherUserIsRefusedByEveryCommandAndInTheBackground)
{
    QProcessEnvironment environment = home_.environment();
    environment.insert(text("HOME"), home_.homeOfAnother());
    for (const QStringList &arguments :
         {QStringList{}, QStringList{text("--list")}, QStringList{text("--undo")},
          QStringList{text("--create"), text("One"), text("--in"), target()},
          QStringList{text("--create"), text("One"), text("--in"), target(), text("--dry-run")}}) {
        ChildProcess helper(program(), arguments, environment);
        ASSERT_TRUE(helper.waitForEnd());
        EXPECT_TRUE(helper.hasReturned(1)) << qPrintable(arguments.join(u' '));
        const QByteArray errors = helper.errors();
        EXPECT_THAT(errors.toStdString(), HasSubstr("belongs to another user"));
        EXPECT_EQ(errors.count('\n'), 1) << errors.constData();
        EXPECT_EQ(helper.output(), "");
    }
    EXPECT_THAT(tree(), IsEmpty());
    EXPECT_FALSE(QFile::exists(home_.stateFolder() + text("/Quenby")));
}

TEST_F(CommandLineProgramTest, HelpAndVersion)
{
    const Ended help = run({text("--help")});
    EXPECT_EQ(help.code, 0);
    EXPECT_THAT(help.output.toStdString(), HasSubstr("--create"));
    const Ended version = run({text("--version")});
    EXPECT_EQ(version.code, 0);
    EXPECT_EQ(version.output, "QNBHelper " QUENBY_VERSION "\n");
}

TEST_F(CommandLineProgramTest, UndoesTheLastCreation)
{
    const Ended nothing = run({text("--undo"), text("--json")});
    EXPECT_EQ(nothing.code, 6);
    EXPECT_EQ(nothing.json().object().value(text("status")), text("nothingToUndo"));

    ASSERT_EQ(create(text("One")).code, 0);
    ASSERT_EQ(tree().size(), 3);
    const Ended undone = run({text("--undo"), text("--json")});
    EXPECT_EQ(undone.code, 0) << undone.errors.constData();
    EXPECT_EQ(undone.json().object().value(text("status")), text("undone"));
    EXPECT_EQ(undone.json().object().value(text("preset")), text("One"));
    EXPECT_THAT(tree(), IsEmpty());
    EXPECT_EQ(run({text("--undo")}).code, 6);
}

TEST_F(CommandLineProgramTest, UndoesNothingOfWhatWasChanged)
{
    ASSERT_EQ(create(text("One")).code, 0);
    QFile changed(target() + text("/empty"));
    ASSERT_TRUE(changed.open(QIODevice::WriteOnly));
    changed.write("work of a day");
    changed.close();
    const Ended refused = run({text("--undo")});
    EXPECT_EQ(refused.code, 6);
    EXPECT_FALSE(refused.errors.isEmpty());
    EXPECT_EQ(tree().size(), 3);
    EXPECT_EQ(bytesOf(text("empty")), "work of a day");
}

TEST_F(CommandLineProgramTest, ADamagedRecordUndoesNothing)
{
    ASSERT_EQ(create(text("One")).code, 0);
    QFile record(home_.stateFolder() + text("/Quenby/LastCreation.plist"));
    ASSERT_TRUE(record.open(QIODevice::ReadWrite));
    ASSERT_TRUE(record.resize(record.size() / 2));
    record.close();
    const Ended refused = run({text("--undo")});
    EXPECT_EQ(refused.code, 6);
    EXPECT_EQ(tree().size(), 3);
}

TEST_F(CommandLineProgramTest, ASignalUndoesWhatIsBeingMade)
{
    QVariantList many;
    for (int i = 0; i < 20000; ++i)
        many.append(file(QString::number(i)));
    storePresets({preset(text("Many"), many)});
    bool isInterrupted = false;
    // Should it be done before the signal comes, it is tried again elsewhere.
    for (int attempt = 0; attempt < 10 && !isInterrupted; ++attempt) {
        const QString fresh = home_.filePath(text("fresh-%1").arg(attempt));
        ASSERT_TRUE(QDir().mkpath(fresh));
        ChildProcess helper(program(), {text("--create"), text("Many"), text("--in"), fresh, text("--json")},
                            home_.environment());
        ASSERT_TRUE(waitUntil([&] { return !QDir(fresh).isEmpty() || !helper.isRunning(); }));
        helper.signal(SIGTERM);
        ASSERT_TRUE(helper.waitForEnd(std::chrono::minutes(2)));
        isInterrupted = helper.hasReturned(7);
        if (isInterrupted) {
            EXPECT_TRUE(QDir(fresh).isEmpty());
            EXPECT_THAT(helper.output().toStdString(), HasSubstr("\"cancelled\""));
        }
    }
    EXPECT_TRUE(isInterrupted);
}

TEST_F(CommandLineProgramTest, TwoAtOnceInOneFolderEachCreateAllOrNothing)
{
    const QStringList arguments = {text("--create"), text("One"), text("--in"), target()};
    ChildProcess first(program(), arguments, home_.environment());
    ChildProcess second(program(), arguments, home_.environment());
    for (ChildProcess *helper : {&first, &second}) {
        ASSERT_TRUE(helper->waitForEnd(std::chrono::minutes(2)));
        EXPECT_TRUE(helper->hasReturned(0) || helper->hasReturned(4)) << helper->errors().constData();
    }
    const int created = int(first.hasReturned(0)) + int(second.hasReturned(0));
    EXPECT_GE(created, 1);
    // The folder of the first is used by the second.
    EXPECT_EQ(tree().size(), created == 2 ? 5 : 3);
}

TEST_F(CommandLineProgramTest, OutputThatCannotBeWrittenIsAFailure)
{
    QProcess process;
    process.setProcessEnvironment(home_.environment());
    process.setStandardOutputFile(text("/dev/full"));
    process.start(program(), {text("--list")});
    ASSERT_TRUE(process.waitForFinished()) << qPrintable(process.errorString());
    EXPECT_EQ(process.exitCode(), 8);
}

TEST_F(CommandLineProgramTest, ClosedStandardStreamsAreNoOtherFiles)
{
    QProcess shell;
    shell.setProcessEnvironment(home_.environment());
    shell.start(text("/bin/sh"), {text("-c"), text("exec \"$@\" <&- >&- 2>&-"), text("sh"), program(),
                                  text("--create"), text("One"), text("--in"), target(), text("--json")});
    ASSERT_TRUE(shell.waitForFinished()) << qPrintable(shell.errorString());
    EXPECT_EQ(shell.exitCode(), 8);
    EXPECT_EQ(tree().size(), 3);
    EXPECT_EQ(bytesOf(text("empty")), "");
    EXPECT_EQ(run({text("--undo")}).code, 0) << "the record of the creation was written to";
}

TEST_F(CommandLineProgramTest, AReaderThatHasEndedEndsNoCreation)
{
    const QString other = home_.filePath(text("other"));
    ASSERT_TRUE(QDir().mkpath(other));
    QProcess process;
    process.setProcessEnvironment(home_.environment());
    process.setChildProcessModifier([] {
        int ends[2];
        if (::pipe(ends) != 0 || ::close(ends[0]) != 0 || ::dup2(ends[1], STDERR_FILENO) == -1)
            ::_exit(126);
        std::signal(SIGPIPE, SIG_DFL);
    });
    process.start(program(), {text("--create"), text("One"), text("--in"), target(), text("--in"), other});
    ASSERT_TRUE(process.waitForFinished()) << qPrintable(process.errorString());
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 0);
    EXPECT_EQ(tree().size(), 3);
    EXPECT_EQ(tree(other).size(), 3);
}

TEST_F(CommandLineProgramTest, GoesUpFromWhereALinkLeads)
{
    ASSERT_TRUE(QDir().mkpath(target() + text("/deep")));
    ASSERT_TRUE(QDir().mkpath(home_.filePath(text("here"))));
    ASSERT_TRUE(QFile::link(target() + text("/deep"), home_.filePath(text("here/link"))));
    const Ended created =
        run({text("--create"), text("One"), text("--in"), text("here/link/.."), text("--json")});
    EXPECT_EQ(created.code, 0) << created.errors.constData();
    EXPECT_EQ(created.json().object().value(text("creations"))[0].toObject().value(text("folder")), target());
    EXPECT_EQ(tree().size(), 4);
    EXPECT_THAT(tree(home_.filePath(text("here"))), ElementsAre(text("link/")));
    EXPECT_EQ(run({text("--create"), text("One"), text("--in"), text("absent/..")}).code, 3);
}

TEST_F(CommandLineProgramTest, WithoutStoredPresetsThePanesOnesCount)
{
    ASSERT_TRUE(QFile::remove(home_.configFolder() + text("/" QUENBY_IDENTIFIER ".plist")));
    const Ended list = run({text("--list"), text("--json")});
    EXPECT_EQ(list.code, 0);
    EXPECT_FALSE(list.json().array().isEmpty());
    EXPECT_FALSE(QFile::exists(home_.configFolder() + text("/" QUENBY_IDENTIFIER ".plist")))
        << "reading the settings wrote them";
}

TEST_F(CommandLineProgramTest, WithoutThePaneOnlyStoredPresetsCount)
{
    const QString alone = home_.filePath(text("QNBHelper"));
    ASSERT_TRUE(QFile::copy(program(), alone));
    QProcess process;
    process.setProcessEnvironment(home_.environment());
    process.start(alone, {text("--create"), text("#4"), text("--in"), target()});
    ASSERT_TRUE(process.waitForFinished()) << qPrintable(process.errorString());
    EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().constData();
    EXPECT_THAT(tree(), ElementsAre(text("second")));
}
