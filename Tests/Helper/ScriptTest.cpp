// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Script.h"

#include "Tests/Platform/FileFixture.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>

using Outcome = ScriptResult::Outcome;

namespace {

const QByteArray program = "#!/bin/sh\nprintf '%s\\n' \"$0\" \"$@\"\npwd -P\n";

class ScriptTest : public FileFixture
{
protected:
    ScriptTest()
    {
        QDir(root()).mkpath(QStringLiteral("Scripts/Sub"));
        QDir(root()).mkpath(QStringLiteral("target"));
    }

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

    std::optional<Script> find(const QString &name) { return Script::find(name, scripts(), &error_); }
    /// Why there is no such script; empty if there is one.
    QString reason(const QString &name)
    {
        error_.clear();
        return find(name) ? QString() : error_;
    }

    QString error_;
};

} // namespace

TEST_F(ScriptTest, RunsWithTheTargetAndTheLabelInTheTarget)
{
    putProgram(scripts() + QStringLiteral("/Sub/a script.sh"));
    const std::optional<Script> script = find(QStringLiteral("Sub/a script.sh"));
    ASSERT_TRUE(script) << qPrintable(error_);
    EXPECT_EQ(script->content(), program);
    const ScriptResult result = script->run(target(), QStringLiteral("Label $(touch x); \u00e4"));
    EXPECT_TRUE(result.hasSucceeded()) << qPrintable(result.failure());
    const QByteArray folder = target().toUtf8();
    EXPECT_EQ(result.output, QFileInfo(scripts()).canonicalFilePath().toUtf8() + "/Sub/a script.sh\n" +
                                 folder + "\nLabel $(touch x); \xc3\xa4\n" + folder + '\n');
}

TEST_F(ScriptTest, FindsItsNeighbours)
{
    putProgram(scripts() + QStringLiteral("/first"), "#!/bin/sh\nexec \"$(dirname \"$0\")/second\"\n");
    putProgram(scripts() + QStringLiteral("/second"), "#!/bin/sh\necho here\n");
    const std::optional<Script> script = find(QStringLiteral("first"));
    ASSERT_TRUE(script) << qPrintable(error_);
    EXPECT_EQ(script->run(target(), QStringLiteral("Label")).output, "here\n");
}

TEST_F(ScriptTest, LinksInsideTheFolderAreFollowed)
{
    putProgram(scripts() + QStringLiteral("/Sub/script"));
    ASSERT_TRUE(QFile::link(QStringLiteral("Sub/script"), scripts() + QStringLiteral("/link")));
    ASSERT_TRUE(QFile::link(scripts(), in(QStringLiteral("elsewhere"))));
    EXPECT_TRUE(find(QStringLiteral("link"))) << qPrintable(error_);
    EXPECT_TRUE(Script::find(QStringLiteral("link"), in(QStringLiteral("elsewhere")), &error_))
        << qPrintable(error_);
}

TEST_F(ScriptTest, NothingOutsideTheFolderIsAScript)
{
    putProgram(in(QStringLiteral("outside")));
    putProgram(in(QStringLiteral("Scripts-not")));
    ASSERT_TRUE(QFile::link(in(QStringLiteral("outside")), scripts() + QStringLiteral("/link")));
    ASSERT_TRUE(QFile::link(root(), scripts() + QStringLiteral("/up")));
    for (const char *name : {"../outside", "link", "up/outside", "../Scripts-not", "Sub/../../outside", "",
                             ".", "..", "/bin/sh", "../../../../../../../../../bin/sh"})
        EXPECT_FALSE(reason(QString::fromLatin1(name)).isEmpty()) << name;
    EXPECT_FALSE(reason(QStringLiteral("link") + QChar::Null).isEmpty());
}

TEST_F(ScriptTest, WhatCannotBeExecutedOrReadIsNoScript)
{
    put(scripts() + QStringLiteral("/text"), "text");
    ASSERT_EQ(::mkfifo(QFile::encodeName(scripts() + QStringLiteral("/pipe")).constData(), 0700), 0);
    for (const char *name : {"absent", "text", "pipe", "Sub"})
        EXPECT_FALSE(reason(QString::fromLatin1(name)).isEmpty()) << name;
    EXPECT_FALSE(Script::find(QStringLiteral("text"), in(QStringLiteral("absent")), &error_));
}

TEST_F(ScriptTest, AHugeProgramIsNoScript)
{
    const QString path = scripts() + QStringLiteral("/huge");
    putProgram(path);
    ASSERT_TRUE(QFile::resize(path, Script::largestContent + 1));
    EXPECT_FALSE(reason(QStringLiteral("huge")).isEmpty());
    ASSERT_TRUE(QFile::resize(path, Script::largestContent));
    EXPECT_TRUE(find(QStringLiteral("huge"))) << qPrintable(error_);
}

TEST_F(ScriptTest, OneThatWasWrittenToDoesNotRun)
{
    const QString path = scripts() + QStringLiteral("/script");
    putProgram(path, "#!/bin/sh\necho good\n");
    const std::optional<Script> script = find(QStringLiteral("script"));
    ASSERT_TRUE(script);
    put(path, "#!/bin/sh\necho evil\n");
    const ScriptResult result = script->run(target(), QString());
    EXPECT_EQ(result.outcome, Outcome::CouldNotStart);
    EXPECT_EQ(result.output, "");
}

TEST_F(ScriptTest, OneThatWasReplacedDoesNotRunThoughItLooksTheSame)
{
    const QString path = scripts() + QStringLiteral("/script");
    putProgram(path);
    const std::optional<Script> script = find(QStringLiteral("script"));
    ASSERT_TRUE(script);
    std::filesystem::rename(path.toStdString(), in(QStringLiteral("moved")).toStdString());
    putProgram(path);
    const auto time = std::filesystem::last_write_time(in(QStringLiteral("moved")).toStdString());
    std::filesystem::last_write_time(path.toStdString(), time);
    EXPECT_EQ(script->run(target(), QString()).outcome, Outcome::CouldNotStart);
}

TEST_F(ScriptTest, OneThatHasBecomeALinkDoesNotRun)
{
    const QString path = scripts() + QStringLiteral("/script");
    putProgram(path);
    const std::optional<Script> script = find(QStringLiteral("script"));
    ASSERT_TRUE(script);
    std::filesystem::rename(path.toStdString(), in(QStringLiteral("moved")).toStdString());
    ASSERT_TRUE(QFile::link(in(QStringLiteral("moved")), path));
    EXPECT_EQ(script->run(target(), QString()).outcome, Outcome::CouldNotStart);
}

TEST_F(ScriptTest, ABundleRunsItsExecutable)
{
    const QString bundle = putBundle("tool");
    putProgram(bundle + QStringLiteral("/Contents/MacOS/tool"));
    const std::optional<Script> script = find(QStringLiteral("Tool.app"));
    ASSERT_TRUE(script) << qPrintable(error_);
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
    const std::optional<Script> script = find(QStringLiteral("Tool.app"));
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
    const std::optional<Script> script = find(QStringLiteral("script"));
    ASSERT_TRUE(script);
    EXPECT_TRUE(script->isText());
    EXPECT_EQ(script->shownContent(),
              QStringLiteral("#!/bin/sh\n\techo \u00e4<U+000D><U+001B>[2J <U+202E><U+2028><U+0007>\n"));
}

TEST_F(ScriptTest, AProgramIsNoText)
{
    putProgram(scripts() + QStringLiteral("/zero"), QByteArray("#!/bin/sh\n\0exit\n", 16));
    putProgram(scripts() + QStringLiteral("/latin"), "#!/bin/sh\n# \xe4\n");
    EXPECT_FALSE(find(QStringLiteral("zero"))->isText());
    EXPECT_FALSE(find(QStringLiteral("latin"))->isText());
}
