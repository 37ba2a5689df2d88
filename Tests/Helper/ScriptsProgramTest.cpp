// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Helper/HelperFixture.h"
#include "Tests/Session/ChildProcess.h"

#include <QDir>
#include <QFile>
#include <QJsonObject>

#include <csignal>
#include <gmock/gmock.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

class ScriptsProgramTest : public HelperFixture
{
protected:
    /// One preset with a file, and this script.
    void storePreset(const QString &script)
    {
        storePresets({preset(text("A preset"), {file(text("made"))}, script)});
    }
    Ended createPreset(const QStringList &more = {})
    {
        return create(text("A preset"), QStringList{text("--json")} + more);
    }
    static QJsonObject reportOf(const Ended &created)
    {
        return created.json().object().value(text("creations"))[0].toObject();
    }
    static QString statusOf(const Ended &created)
    {
        return reportOf(created).value(text("status")).toString();
    }
    static QJsonObject scriptOf(const Ended &created)
    {
        return reportOf(created).value(text("script")).toObject();
    }

    /// On a terminal of its own, at which somebody types \a answer when asked. What the terminal showed.
    QByteArray createOnTerminal(const QByteArray &answer, int *code);
};

QByteArray ScriptsProgramTest::createOnTerminal(const QByteArray &answer, int *code)
{
    const QStringList environment = home_.environment().toStringList();
    QByteArrayList assignments;
    for (const QString &assignment : environment)
        assignments.append(assignment.toUtf8());
    std::vector<char *> variables;
    for (QByteArray &assignment : assignments)
        variables.push_back(assignment.data());
    variables.push_back(nullptr);
    const QByteArray path = QFile::encodeName(program());
    const QByteArray folder = QFile::encodeName(target());

    int terminal = -1;
    const pid_t child = ::forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child == 0) {
        ::execle(path.constData(), "QNBHelper", "--create", "A preset", "--in", folder.constData(), nullptr,
                 variables.data());
        ::_exit(127);
    }
    EXPECT_GT(child, 0);
    QByteArray shown;
    bool hasAnswered = false;
    char buffer[4096];
    // Ends with an error when nobody has the terminal open any more.
    for (ssize_t size = 0; (size = ::read(terminal, buffer, sizeof buffer)) > 0;) {
        shown.append(buffer, size);
        if (!hasAnswered && shown.endsWith("[y/N] ")) {
            hasAnswered = true;
            EXPECT_EQ(::write(terminal, answer.constData(), std::size_t(answer.size())), answer.size());
        }
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    ::close(terminal);
    *code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return shown;
}

const QByteArray noteWriter = "#!/bin/sh\nprintf '%s\\n' \"$@\" > note\npwd -P >> note\necho said\n";

} // namespace

TEST_F(ScriptsProgramTest, OneThatNobodyAllowedDoesNotRun)
{
    putScript(text("mine.sh"), noteWriter);
    storePreset(text("mine.sh"));
    const Ended created = createPreset();
    EXPECT_EQ(created.code, 5);
    EXPECT_EQ(statusOf(created), text("scriptNotAllowed"));
    EXPECT_EQ(scriptOf(created).value(text("outcome")), text("notRun"));
    EXPECT_THAT(created.errors.toStdString(), HasSubstr("--allow-script"));
    EXPECT_THAT(created.errors.toStdString(), HasSubstr("mine.sh"));
    EXPECT_THAT(tree(), ElementsAre(text("made")));
}

TEST_F(ScriptsProgramTest, OneThatIsAllowedRunsFromThenOnUntilItChanges)
{
    putScript(text("mine.sh"), noteWriter);
    storePreset(text("mine.sh"));
    const Ended allowed = createPreset({text("--allow-script")});
    EXPECT_EQ(allowed.code, 0) << allowed.errors.constData();
    EXPECT_EQ(statusOf(allowed), text("created"));
    EXPECT_EQ(scriptOf(allowed).value(text("output")), text("said\n"));
    EXPECT_EQ(bytesOf(text("note")),
              target().toUtf8() + "\nA preset\n" + QDir(target()).canonicalPath().toUtf8() + '\n');

    EXPECT_EQ(createPreset().code, 0);
    putScript(text("other name.sh"), noteWriter);
    storePreset(text("other name.sh"));
    EXPECT_EQ(createPreset().code, 0) << "the same content";
    putScript(text("other name.sh"), noteWriter + "# and more\n");
    EXPECT_EQ(createPreset().code, 5);
}

TEST_F(ScriptsProgramTest, WithoutJsonTheOutputIsPassedOn)
{
    putScript(text("mine.sh"), noteWriter);
    storePreset(text("mine.sh"));
    const Ended created = create(text("A preset"), {text("--allow-script")});
    EXPECT_EQ(created.code, 0);
    EXPECT_EQ(created.output, "said\n");
}

TEST_F(ScriptsProgramTest, OneThatCameWithThePaneRunsAtOnce)
{
    QFile shipped(resources() + text("/QNB Default AppSupport/Scripts/Write Contents List.sh"));
    ASSERT_TRUE(shipped.open(QIODevice::ReadOnly));
    putScript(text("any name.sh"), shipped.readAll());
    storePreset(text("any name.sh"));
    const Ended created = createPreset();
    EXPECT_EQ(created.code, 0) << created.errors.constData();
    EXPECT_THAT(bytesOf(text("Contents.txt")).toStdString(), HasSubstr("Preset: A preset\n"));
}

TEST_F(ScriptsProgramTest, OneIsShownAndAskedAboutOnATerminal)
{
    putScript(text("mine.sh"), noteWriter + "# \x1b[8mhidden\n");
    storePreset(text("mine.sh"));
    int code = -1;
    const QByteArray refused = createOnTerminal("n\n", &code);
    EXPECT_EQ(code, 5) << refused.constData();
    EXPECT_THAT(refused.toStdString(), HasSubstr("mine.sh"));
    EXPECT_THAT(refused.toStdString(), HasSubstr("| printf '%s\\n' \"$@\" > note"));
    EXPECT_THAT(refused.toStdString(), HasSubstr("| # <U+001B>[8mhidden"));
    EXPECT_THAT(tree(), ElementsAre(text("made")));

    EXPECT_THAT(createOnTerminal("\n", &code).toStdString(), HasSubstr("[y/N]"));
    EXPECT_EQ(code, 5) << "no answer is no";
    EXPECT_THAT(createOnTerminal("y\n", &code).toStdString(), HasSubstr("[y/N]"));
    EXPECT_EQ(code, 0);
    EXPECT_TRUE(QFile::exists(target() + text("/note")));
    EXPECT_THAT(createOnTerminal("", &code).toStdString(), ::testing::Not(HasSubstr("[y/N]")));
    EXPECT_EQ(code, 0) << "asked once";
}

TEST_F(ScriptsProgramTest, NoneRunsIfAskedNotTo)
{
    putScript(text("mine.sh"), noteWriter);
    storePreset(text("mine.sh"));
    const Ended created = createPreset({text("--no-script")});
    EXPECT_EQ(created.code, 0);
    EXPECT_EQ(scriptOf(created).value(text("outcome")), text("notRun"));
    EXPECT_THAT(tree(), ElementsAre(text("made")));
}

TEST_F(ScriptsProgramTest, OneThatFailsIsToldAndTheStructureStays)
{
    putScript(text("mine.sh"), "#!/bin/sh\necho oh >&2\nexit 42\n");
    storePreset(text("mine.sh"));
    const Ended created = createPreset({text("--allow-script")});
    EXPECT_EQ(created.code, 5);
    EXPECT_EQ(statusOf(created), text("scriptFailed"));
    EXPECT_EQ(scriptOf(created).value(text("outcome")), text("exited"));
    EXPECT_EQ(scriptOf(created).value(text("code")), 42);
    EXPECT_EQ(scriptOf(created).value(text("output")), text("oh\n"));
    EXPECT_THAT(created.errors.toStdString(), HasSubstr("42"));
    EXPECT_THAT(tree(), ElementsAre(text("made")));
}

TEST_F(ScriptsProgramTest, OneThatTakesTooLongIsEnded)
{
    putScript(text("mine.sh"), "#!/bin/sh\nsleep 600 &\nwait\n");
    storePreset(text("mine.sh"));
    const Ended created = createPreset({text("--allow-script"), text("--script-time-limit"), text("1")});
    EXPECT_EQ(created.code, 5);
    EXPECT_EQ(statusOf(created), text("scriptTimedOut"));
    EXPECT_EQ(scriptOf(created).value(text("outcome")), text("timedOut"));
}

TEST_F(ScriptsProgramTest, NoPathLeadsOutOfTheFolder)
{
    QFile outside(home_.dataFolder() + text("/Quenby/outside.sh"));
    putScript(text("inside.sh"), noteWriter);
    ASSERT_TRUE(QFile::rename(home_.dataFolder() + text("/Quenby/Scripts/inside.sh"), outside.fileName()));
    for (const char *script : {"../outside.sh", "absent.sh", "/bin/sh"}) {
        storePreset(text(script));
        const Ended created = createPreset({text("--allow-script")});
        EXPECT_EQ(created.code, 5) << script;
        EXPECT_EQ(statusOf(created), text("scriptFailed")) << script;
        EXPECT_EQ(scriptOf(created).value(text("outcome")), text("couldNotStart")) << script;
        EXPECT_FALSE(QFile::exists(target() + text("/note"))) << script;
    }
}

TEST_F(ScriptsProgramTest, TheCommandLineIsNotCalledLikeTheRunningHelper)
{
    putScript(text("mine.sh"),
              "#!/bin/sh\ncat /proc/$PPID/comm \"/proc/$(cut -d' ' -f4 /proc/$PPID/stat)/comm\"\n");
    storePreset(text("mine.sh"));
    EXPECT_EQ(scriptOf(createPreset({text("--allow-script")})).value(text("output")),
              text("QNBScript\nQNBHelper-cli\n"));
}

TEST_F(ScriptsProgramTest, ASignalEndsTheScriptAndTheProgram)
{
    putScript(text("mine.sh"), "#!/bin/sh\necho $$ > note\nsleep 600\n");
    storePreset(text("mine.sh"));
    ChildProcess helper(program(),
                        {text("--create"), text("A preset"), text("--in"), target(), text("--allow-script"),
                         text("--json"), text("--in"), home_.path()},
                        home_.environment());
    const auto note = [this] {
        QFile file(target() + text("/note"));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    ASSERT_TRUE(waitUntil([&] { return note().endsWith('\n'); })) << helper.errors().constData();
    const auto script = pid_t(note().trimmed().toLongLong());
    helper.signal(SIGTERM);
    ASSERT_TRUE(helper.waitForEnd());
    EXPECT_TRUE(helper.hasReturned(7)) << helper.errors().constData();
    EXPECT_TRUE(waitUntil([script] { return ::kill(script, 0) == -1; }));
    EXPECT_THAT(helper.output().toStdString(), HasSubstr("\"interrupted\""));
    EXPECT_FALSE(QFile::exists(home_.filePath(text("made")))) << "the next folder";
}

TEST_F(ScriptsProgramTest, WhatTheScriptChangedCanBeUndone)
{
    putContent(text("letter.md"), "# [[PROJECT NAME]]\n");
    QFile shipped(resources() + text("/QNB Default AppSupport/Scripts/Fill In Templates.sh"));
    ASSERT_TRUE(shipped.open(QIODevice::ReadOnly));
    putScript(text("fill.sh"), shipped.readAll());
    storePresets({preset(
        text("A preset"),
        {folder(text("Folder"), {file(text("letter.md"), {{text("contentFilename"), text("letter.md")}})})},
        text("fill.sh"))});
    ASSERT_EQ(createPreset().code, 0);
    ASSERT_EQ(bytesOf(text("Folder/letter.md")), "# target\n");
    const Ended undone = run({text("--undo")});
    EXPECT_EQ(undone.code, 0) << undone.errors.constData();
    EXPECT_THAT(tree(), IsEmpty());
}

TEST_F(ScriptsProgramTest, WhatTheScriptChangedAndCannotBeRememberedIsTold)
{
    // Something else is where the creation is remembered.
    const QByteArray state = QFile::encodeName(home_.stateFolder()) + "/Quenby";
    putScript(text("mine.sh"),
              "#!/bin/sh\nrm -r '" + state + "'\necho >'" + state + "'\necho by the script > made\n");
    storePreset(text("mine.sh"));
    const Ended created = createPreset({text("--allow-script")});
    EXPECT_EQ(created.code, 0);
    EXPECT_THAT(created.errors.toStdString(),
                HasSubstr("What the script has changed cannot be undone later"));
}

TEST_F(ScriptsProgramTest, WhatWasChangedAfterTheScriptCannotBeUndone)
{
    putScript(text("mine.sh"), "#!/bin/sh\necho by the script > made\n");
    storePreset(text("mine.sh"));
    ASSERT_EQ(createPreset({text("--allow-script")}).code, 0);
    QFile changed(target() + text("/made"));
    ASSERT_TRUE(changed.open(QIODevice::Append));
    changed.write("by the user\n");
    changed.close();
    EXPECT_EQ(run({text("--undo")}).code, 6);
    EXPECT_EQ(bytesOf(text("made")), "by the script\nby the user\n");
}

TEST_F(ScriptsProgramTest, WhatFollowedACreationBeforeItsScriptEndedStaysTheLastOne)
{
    const QString inner = home_.filePath(text("inner"));
    ASSERT_TRUE(QDir().mkpath(inner));
    putScript(text("mine.sh"), QStringLiteral("#!/bin/sh\necho by the script > made\n"
                                              "'%1' --create 'A preset' --in '%2' --no-script\n")
                                   .arg(program(), inner)
                                   .toUtf8());
    storePreset(text("mine.sh"));
    ASSERT_EQ(createPreset({text("--allow-script")}).code, 0);
    ASSERT_THAT(tree(inner), ElementsAre(text("made")));
    EXPECT_EQ(run({text("--undo")}).code, 0);
    EXPECT_THAT(tree(inner), IsEmpty());
    EXPECT_EQ(tree().size(), 1);
    EXPECT_EQ(run({text("--undo")}).code, 6);
}
