// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Script.h"

#include "Helper/ScriptFile.h"
#include "Tests/Platform/Files/FileFixture.h"
#include "Tests/Session/Series.h"

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using Outcome = ScriptResult::Outcome;

namespace {

const QByteArray program = "#!/bin/sh\nprintf '%s\\n' \"$0\" \"$@\"\npwd -P\n";
const QByteArray allowed = "#!/bin/sh\necho allowed\n";
const QByteArray evil = "#!/bin/sh\necho evil...\n";

/// Exchanges two files, all the time, until it goes.
class Exchange
{
public:
    Exchange(const QString &one, const QString &other)
        : pid_(::fork())
    {
        const QByteArray names[] = {QFile::encodeName(one), QFile::encodeName(other)};
        while (pid_ == 0)
            ::renameat2(AT_FDCWD, names[0].constData(), AT_FDCWD, names[1].constData(), RENAME_EXCHANGE);
    }
    ~Exchange()
    {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
    Exchange(const Exchange &) = delete;
    Exchange &operator=(const Exchange &) = delete;

private:
    const pid_t pid_;
};

class ScriptTest : public FileFixture
{
protected:
    ScriptTest()
    {
        QDir(root()).mkpath(QStringLiteral("Scripts/Sub"));
        QDir(root()).mkpath(QStringLiteral("target"));
        QDir(root()).mkpath(QStringLiteral("run"));
        QFile::setPermissions(runtime(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime()));
    }
    /// Nothing that was copied is left.
    ~ScriptTest() override
    {
        EXPECT_EQ(namesIn(runtime()), QStringList());
        qunsetenv("XDG_RUNTIME_DIR");
    }

    QString runtime() const { return in(QStringLiteral("run")); }

    QString scripts() const { return in(QStringLiteral("Scripts")); }
    QString target() const { return QFileInfo(in(QStringLiteral("target"))).canonicalFilePath(); }

    static void putProgram(const QString &path, const QByteArray &bytes = program)
    {
        put(path, bytes);
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    /// An application in the folder of scripts.
    QString putBundle(const QByteArray &executable)
    {
        const QString bundle = scripts() + QStringLiteral("/Tool.app");
        QDir().mkpath(bundle + QStringLiteral("/Contents/MacOS"));
        QDir().mkpath(bundle + QStringLiteral("/Contents/Resources"));
        put(bundle + QStringLiteral("/Contents/Info.plist"),
            "<plist version=\"1.0\"><dict><key>CFBundleExecutable</key><string>" + executable +
                "</string></dict></plist>");
        put(bundle + QStringLiteral("/Contents/Resources/words"), "of the tool");
        return bundle;
    }

    Result<Script> find(const QString &name) const { return Script::find(name, scripts()); }
    /// Why there is no such script; empty if there is one.
    QString reason(const QString &name) const { return find(name).error; }
};

} // namespace

TEST_F(ScriptTest, RunsWithTheTargetAndTheLabelInTheTarget)
{
    putProgram(scripts() + QStringLiteral("/Sub/a script.sh"));
    const Result<Script> script = find(QStringLiteral("Sub/a script.sh"));
    ASSERT_TRUE(script) << qPrintable(script.error);
    EXPECT_EQ(script->content(), program);
    const ScriptResult result = script->run(target(), QStringLiteral("Label $(touch x); \u00e4"));
    EXPECT_TRUE(result.hasSucceeded()) << qPrintable(result.failure());
    const QByteArray folder = target().toUtf8();
    EXPECT_TRUE(
        result.output.endsWith("/a script.sh\n" + folder + "\nLabel $(touch x); \xc3\xa4\n" + folder + '\n'))
        << result.output.constData();
}

TEST_F(ScriptTest, RunsAloneInAFolderThatIsClosedToOthers)
{
    putProgram(scripts() + QStringLiteral("/first"),
               "#!/bin/sh\nhere=$(dirname \"$0\")\nls -A \"$here\"; stat -c %a \"$here\" \"$0\"\n");
    putProgram(scripts() + QStringLiteral("/second"));
    const Result<Script> script = find(QStringLiteral("first"));
    ASSERT_TRUE(script) << qPrintable(script.error);
    EXPECT_EQ(script->run(target(), QStringLiteral("Label")).output, "first\n700\n500\n");
}

TEST_F(ScriptTest, RunsNothingThatWasNotAllowedWhileFilesAreExchanged)
{
    const QString path = scripts() + QStringLiteral("/script");
    putProgram(path, allowed);
    putProgram(in(QStringLiteral("evil")), evil);
    const int runs = seriesOf(50, 2000);
    int allowedRuns = 0;
    {
        const Exchange exchange(path, in(QStringLiteral("evil")));
        while (allowedRuns < runs) {
            const Result<Script> script = find(QStringLiteral("script"));
            if (!script || script->content() != allowed)
                continue;
            ASSERT_EQ(script->run(target(), QString()).output, "allowed\n") << "in run " << allowedRuns;
            ++allowedRuns;
        }
    }
}

TEST_F(ScriptTest, OfABundleNothingRunsThatWasNotAllowedWhileFilesAreExchanged)
{
    const QString bundle = putBundle("tool");
    putProgram(bundle + QStringLiteral("/Contents/MacOS/tool"),
               "#!/bin/sh\n. \"$(dirname \"$0\")/../Resources/words\"\n");
    const QString words = bundle + QStringLiteral("/Contents/Resources/words");
    put(words, allowed);
    put(in(QStringLiteral("evil")), evil);
    const Result<Script> script = find(QStringLiteral("Tool.app"));
    ASSERT_TRUE(script) << qPrintable(script.error);
    const int runs = seriesOf(50, 2000);
    int allowedRuns = 0;
    {
        const Exchange exchange(words, in(QStringLiteral("evil")));
        while (allowedRuns < runs) {
            const ScriptResult result = script->run(target(), QString());
            if (result.outcome == Outcome::CouldNotStart)
                continue;
            ASSERT_EQ(result.output, "allowed\n") << "in run " << allowedRuns;
            ++allowedRuns;
        }
    }
}

TEST_F(ScriptTest, LinksInsideTheFolderAreFollowed)
{
    putProgram(scripts() + QStringLiteral("/Sub/script"));
    ASSERT_TRUE(QFile::link(QStringLiteral("Sub/script"), scripts() + QStringLiteral("/link")));
    ASSERT_TRUE(QFile::link(scripts(), in(QStringLiteral("elsewhere"))));
    EXPECT_EQ(reason(QStringLiteral("link")), QString());
    EXPECT_TRUE(Script::find(QStringLiteral("link"), in(QStringLiteral("elsewhere"))));
}

TEST_F(ScriptTest, NothingOutsideTheFolderIsAScript)
{
    putProgram(in(QStringLiteral("outside")));
    putProgram(in(QStringLiteral("Scripts-not")));
    putProgram(scripts() + QStringLiteral("/script"));
    for (const char *name : {"../outside", "../Scripts-not", "Sub/../../outside", "Sub/../script", "", ".",
                             "..", "/bin/sh", "../../../../../../../../../bin/sh"})
        EXPECT_FALSE(reason(QString::fromLatin1(name)).isEmpty()) << name;
    EXPECT_FALSE(reason(QStringLiteral("script") + QChar::Null).isEmpty());
}

TEST_F(ScriptTest, ALinkOfTheUsersOwnLeadsToAScriptAnywhere)
{
    putProgram(in(QStringLiteral("outside")), "#!/bin/sh\necho outside\n");
    ASSERT_TRUE(QFile::link(QStringLiteral("../outside"), scripts() + QStringLiteral("/link")));
    ASSERT_TRUE(QFile::link(root(), scripts() + QStringLiteral("/Sub/up")));
    for (const char *name : {"link", "Sub/up/outside"}) {
        const Result<Script> script = find(QString::fromLatin1(name));
        ASSERT_TRUE(script) << qPrintable(script.error);
        EXPECT_EQ(script->path(), QFileInfo(in(QStringLiteral("outside"))).canonicalFilePath());
        EXPECT_EQ(script->run(target(), QString()).output, "outside\n");
    }
}

TEST_F(ScriptTest, ALinkToABundleRunsItsExecutable)
{
    const QString bundle = putBundle("tool");
    putProgram(bundle + QStringLiteral("/Contents/MacOS/tool"), "#!/bin/sh\necho tool\n");
    std::filesystem::rename(bundle.toStdString(), in(QStringLiteral("Tool.app")).toStdString());
    ASSERT_TRUE(QFile::link(in(QStringLiteral("Tool.app")), scripts() + QStringLiteral("/link")));
    const Result<Script> script = find(QStringLiteral("link"));
    ASSERT_TRUE(script) << qPrintable(script.error);
    EXPECT_TRUE(script->content().contains(" - Contents/Resources/words\n"));
    EXPECT_EQ(script->run(target(), QString()).output, "tool\n");
}

TEST_F(ScriptTest, ALinkThatAnotherUserMayHaveMadeIsRefused)
{
    putProgram(scripts() + QStringLiteral("/script"));
    ASSERT_TRUE(QFile::link(QStringLiteral("script"), scripts() + QStringLiteral("/link")));
    for (const mode_t mode : {0777, 0775, 0757, 01777}) {
        ASSERT_EQ(::chmod(QFile::encodeName(scripts()).constData(), mode), 0);
        EXPECT_FALSE(reason(QStringLiteral("link")).isEmpty()) << mode;
        EXPECT_EQ(reason(QStringLiteral("script")), QString());
    }
    ASSERT_EQ(::chmod(QFile::encodeName(scripts()).constData(), 0755), 0);
    EXPECT_EQ(reason(QStringLiteral("link")), QString());
}

TEST_F(ScriptTest, APortableApplicationRunsItsStarter)
{
    const QString folder = scripts() + QStringLiteral("/Portable.app/AppDir");
    QDir().mkpath(folder + QStringLiteral("/lib"));
    putProgram(folder + QStringLiteral("/AppRun"), "#!/bin/sh\ncat \"$(dirname \"$0\")/lib/words\"\n");
    put(folder + QStringLiteral("/lib/words"), "portable");
    const Result<Script> script = find(QStringLiteral("Portable.app"));
    ASSERT_TRUE(script) << qPrintable(script.error);
    EXPECT_TRUE(script->content().contains(" x AppDir/AppRun\n")) << script->content().constData();
    EXPECT_TRUE(script->content().contains(" - AppDir/lib/words\n")) << script->content().constData();
    EXPECT_EQ(script->run(target(), QString()).output, "portable");
}

TEST_F(ScriptTest, WhatCannotBeExecutedOrReadIsNoScript)
{
    put(scripts() + QStringLiteral("/text"), "text");
    ASSERT_EQ(::mkfifo(QFile::encodeName(scripts() + QStringLiteral("/pipe")).constData(), 0700), 0);
    for (const char *name : {"absent", "text", "pipe", "Sub"})
        EXPECT_FALSE(reason(QString::fromLatin1(name)).isEmpty()) << name;
    EXPECT_FALSE(Script::find(QStringLiteral("text"), in(QStringLiteral("absent"))));
}

TEST_F(ScriptTest, NoInterpreterIsLookedForInTheTarget)
{
    const QString name = QStringLiteral("script");
    for (const auto &[line, word] :
         {std::pair{"tool", "tool"}, std::pair{" \t./tool -x", "./tool"}, std::pair{"in/tool", "in/tool"},
          std::pair{"/usr/bin/env ./tool", "./tool"}, std::pair{"/usr/bin/env -S in/tool -x", "in/tool"}}) {
        putProgram(scripts() + u'/' + name, QByteArray("#!") + line + "\nexit\n");
        EXPECT_TRUE(reason(name).contains(QStringLiteral("\"%1\"").arg(QLatin1String(word))))
            << line << ": " << qPrintable(reason(name));
    }
    for (const char *line : {"/bin/sh", " /bin/sh -e", "/usr/bin/env sh", "/usr/bin/env -S A=b/c /bin/sh"}) {
        putProgram(scripts() + u'/' + name, QByteArray("#!") + line + "\nexit\n");
        EXPECT_EQ(reason(name), QString()) << line;
    }
    putProgram(putBundle("tool") + QStringLiteral("/Contents/MacOS/tool"), "#!tool\n");
    EXPECT_TRUE(reason(QStringLiteral("Tool.app")).contains(QStringLiteral("\"tool\"")));
}

TEST_F(ScriptTest, AHugeProgramIsNoScript)
{
    const QString path = scripts() + QStringLiteral("/huge");
    putProgram(path);
    ASSERT_TRUE(QFile::resize(path, ScriptFile::largest + 1));
    EXPECT_FALSE(reason(QStringLiteral("huge")).isEmpty());
    ASSERT_TRUE(QFile::resize(path, ScriptFile::largest));
    EXPECT_EQ(reason(QStringLiteral("huge")), QString());
}

TEST_F(ScriptTest, RunsAsItWasReadWhateverBecomesOfTheFile)
{
    const QString path = scripts() + QStringLiteral("/script");
    putProgram(path, allowed);
    const Result<Script> script = find(QStringLiteral("script"));
    ASSERT_TRUE(script);
    put(path, evil);
    EXPECT_EQ(script->run(target(), QString()).output, "allowed\n");
    std::filesystem::rename(path.toStdString(), in(QStringLiteral("moved")).toStdString());
    ASSERT_TRUE(QFile::link(in(QStringLiteral("moved")), path));
    EXPECT_EQ(script->run(target(), QString()).output, "allowed\n");
    ASSERT_TRUE(QFile::remove(path));
    EXPECT_EQ(script->run(target(), QString()).output, "allowed\n");
}

TEST_F(ScriptTest, DoesNotRunWhereItCannotBeCopied)
{
    putProgram(scripts() + QStringLiteral("/script"));
    const Result<Script> script = find(QStringLiteral("script"));
    ASSERT_TRUE(script);
    qputenv("XDG_RUNTIME_DIR", "/proc/nothing");
    qputenv("XDG_STATE_HOME", "/proc/nothing");
    qputenv("TMPDIR", "/proc/nothing");
    const ScriptResult result = script->run(target(), QString());
    for (const char *variable : {"XDG_STATE_HOME", "TMPDIR"})
        qunsetenv(variable);
    EXPECT_EQ(result.outcome, Outcome::CouldNotStart);
    EXPECT_FALSE(result.failure().isEmpty());
}

TEST_F(ScriptTest, ABundleRunsItsExecutable)
{
    const QString bundle = putBundle("tool");
    putProgram(bundle + QStringLiteral("/Contents/MacOS/tool"));
    const Result<Script> script = find(QStringLiteral("Tool.app"));
    ASSERT_TRUE(script) << qPrintable(script.error);
    EXPECT_TRUE(script->isText());
    EXPECT_TRUE(script->content().contains(" x Contents/MacOS/tool\n")) << script->content().constData();
    EXPECT_TRUE(script->content().contains(" - Contents/Resources/words\n"));
    const ScriptResult result = script->run(target(), QStringLiteral("Label"));
    EXPECT_TRUE(result.hasSucceeded()) << qPrintable(result.failure());
    EXPECT_TRUE(result.output.contains(target().toUtf8() + "\nLabel\n"));
}

TEST_F(ScriptTest, ABundleOfWhichAnythingWasChangedDoesNotRun)
{
    const QString bundle = putBundle("tool");
    putProgram(bundle + QStringLiteral("/Contents/MacOS/tool"));
    const Result<Script> script = find(QStringLiteral("Tool.app"));
    ASSERT_TRUE(script);
    put(bundle + QStringLiteral("/Contents/Resources/words"), "of another");
    EXPECT_EQ(script->run(target(), QString()).outcome, Outcome::CouldNotStart);
    EXPECT_NE(find(QStringLiteral("Tool.app"))->content(), script->content());
}

TEST_F(ScriptTest, NoNameInABundleLooksLikeTwo)
{
    const QString bundle = putBundle("tool");
    putProgram(bundle + QStringLiteral("/Contents/MacOS/tool"));
    const qsizetype lines = find(QStringLiteral("Tool.app"))->content().count('\n');
    put(bundle + QStringLiteral("/Contents/100%\nand more"), "x");
    const QByteArray content = find(QStringLiteral("Tool.app"))->content();
    EXPECT_EQ(content.count('\n'), lines + 1);
    EXPECT_TRUE(content.contains("Contents/100%25%0Aand more\n")) << content.constData();
}

TEST_F(ScriptTest, LinksInABundleLeadToWhatIsInIt)
{
    const QString bundle = putBundle("tool");
    const QString program = bundle + QStringLiteral("/Contents/MacOS/tool");
    putProgram(program, "#!/bin/sh\ncat \"$(dirname \"$0\")/words\"\n");
    const QString link = bundle + QStringLiteral("/Contents/MacOS/words");
    for (const QString &out : {in(QStringLiteral("target")), QStringLiteral("../../../Sub"), program,
                               QStringLiteral("nowhere"), QStringLiteral("words")}) {
        ASSERT_TRUE(QFile::link(out, link));
        EXPECT_FALSE(reason(QStringLiteral("Tool.app")).isEmpty()) << qPrintable(out);
        ASSERT_TRUE(QFile::remove(link));
    }
    ASSERT_TRUE(QFile::link(QStringLiteral("../Resources/words"), link));
    const Result<Script> script = find(QStringLiteral("Tool.app"));
    ASSERT_TRUE(script) << qPrintable(script.error);
    EXPECT_EQ(script->run(target(), QString()).output, "of the tool");
}

TEST_F(ScriptTest, ABundleRunsNothingFromOutside)
{
    const QString bundle = putBundle("tool");
    EXPECT_FALSE(reason(QStringLiteral("Tool.app")).isEmpty());
    ASSERT_TRUE(QFile::link(QStringLiteral("/bin/sh"), bundle + QStringLiteral("/Contents/MacOS/tool")));
    EXPECT_FALSE(reason(QStringLiteral("Tool.app")).isEmpty());
}

TEST_F(ScriptTest, IsShownWithEveryCharacterThatHides)
{
    const QString path = scripts() + QStringLiteral("/script");
    putProgram(path, "#!/bin/sh\n\techo \xc3\xa4\r\x1b[2J \xe2\x80\xae\xe2\x80\xa8\x07\n");
    const Result<Script> script = find(QStringLiteral("script"));
    ASSERT_TRUE(script);
    EXPECT_TRUE(script->isText());
    EXPECT_EQ(script->shownContent(),
              QStringLiteral("#!/bin/sh\n\techo \u00e4<U+000D><U+001B>[2J <U+202E><U+2028><U+0007>\n"));
}

TEST_F(ScriptTest, BytesThatAreNoTextAreShown)
{
    putProgram(scripts() + QStringLiteral("/latin"), "#!/bin/sh\n# f\xfcr\n");
    const Result<Script> script = find(QStringLiteral("latin"));
    ASSERT_TRUE(script);
    EXPECT_TRUE(script->isText());
    EXPECT_EQ(script->shownContent(), QStringLiteral("#!/bin/sh\n# f<0xFC>r\n"));
}

TEST_F(ScriptTest, AProgramIsNoText)
{
    putProgram(scripts() + QStringLiteral("/zero"), QByteArray("#!/bin/sh\n\0exit\n", 16));
    EXPECT_FALSE(find(QStringLiteral("zero"))->isText());
}
