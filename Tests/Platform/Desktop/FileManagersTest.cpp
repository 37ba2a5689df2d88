// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Desktop/FileManagers.h"

#include "Tests/Platform/Files/FileFixture.h"
#include "Tests/Session/ChildProcess.h"
#include "Tests/Session/StandInPrograms.h"

#include <optional>
#include <utility>

namespace {

const QString plugin = QStringLiteral("plug-in");
const QList<QByteArrayList> notStarted;

/// A plug-in, and file managers of the test's own first on the path.
class FileManagersTest : public FileFixture
{
protected:
    FileManagersTest()
    {
        qputenv("PATH", programs.folder().toUtf8() + ':' + path_);
        for (const QString &program : fileManagers)
            programs.add(program);
    }
    ~FileManagersTest() override
    {
        EXPECT_TRUE(waitUntil(hasNoChild));
        qputenv("PATH", path_);
    }

    /// The plug-in does what \a then says once it has written down its arguments.
    void makePlugin(const QByteArray &then = {})
    {
        const QString code = bundle() + QStringLiteral("/Contents/MacOS");
        ASSERT_TRUE(QDir().mkpath(code));
        put(bundle() + QStringLiteral("/Contents/Info.plist"),
            "<plist version=\"1.0\"><dict><key>CFBundleExecutable</key><string>register it</string></dict>"
            "</plist>");
        programs.addAt(code + QStringLiteral("/register it"), plugin, then);
    }
    QString bundle() const { return in(QStringLiteral("with \"quotes\" & blanks.plugin")); }

    void ask(std::chrono::milliseconds timeout = FileManagers::answerTimeout)
    {
        FileManagers::ask(
            bundle(), "register", [this](const Result<QString> &answer) { answer_ = answer; }, timeout);
    }
    /// Waits for the plug-in's.
    Result<QString> takeAnswer()
    {
        EXPECT_TRUE(waitUntil([this] { return answer_.has_value(); }));
        return std::exchange(answer_, std::nullopt).value_or(Result<QString>::failure({}));
    }

    const QStringList fileManagers = {QStringLiteral("nautilus"), QStringLiteral("thunar"),
                                      QStringLiteral("pcmanfm-qt")};
    StandInPrograms programs;

private:
    std::optional<Result<QString>> answer_;
    const QByteArray path_ = qgetenv("PATH");
};

} // namespace

TEST_F(FileManagersTest, ThePluginRegistersItself)
{
    makePlugin();
    ask();
    EXPECT_TRUE(takeAnswer());
    EXPECT_EQ(programs.starts(plugin), (QList<QByteArrayList>{{"register"}}));
}

TEST_F(FileManagersTest, AFileManagerThatRunsIsLeftAlone)
{
    makePlugin();
    const QString program = in(QStringLiteral("thunar"));
    put(program, "#!/bin/sh\necho started\ncat\n");
    ASSERT_TRUE(QFile::setPermissions(program, QFile::ReadOwner | QFile::ExeOwner));
    {
        ChildProcess process(program);
        ASSERT_TRUE(waitUntil([&process] { return process.output() == "started\n"; }));
        ask();
        EXPECT_TRUE(takeAnswer());
    }
    EXPECT_TRUE(waitUntil(hasNoChild));
    for (const QString &manager : fileManagers)
        EXPECT_EQ(programs.starts(manager), notStarted) << qPrintable(manager);
}

TEST_F(FileManagersTest, WhatThePluginSaysIsPassedOn)
{
    makePlugin("echo one; echo two; echo all is well >&2");
    ask();
    EXPECT_EQ(takeAnswer().value, QStringLiteral("one\ntwo\n"));
    for (const auto &[commands, reason] :
         {std::pair(
              "echo a line; echo 'a line of the log' >&2; echo 'QNBContextMenu: no: really' >&2; exit 1",
              "no: really"),
          std::pair("exit 3", "it ended with the status 3"),
          std::pair("echo 'a line of the log' >&2; kill -9 $$", "it did not end in time, or was ended")}) {
        makePlugin(commands);
        ask();
        EXPECT_EQ(takeAnswer().error, QString::fromLatin1(reason));
    }
}

TEST_F(FileManagersTest, APluginThatTakesTooLongIsEnded)
{
    makePlugin("trap '' TERM\necho 'a line of the log' >&2\nwhile :; do sleep 0.01; done");
    ask(std::chrono::milliseconds(300));
    EXPECT_EQ(takeAnswer().error, QStringLiteral("it did not end in time, or was ended"));
    EXPECT_TRUE(waitUntil(hasNoChild));
}

TEST_F(FileManagersTest, WithoutAPluginNothingIsRegistered)
{
    ask();
    EXPECT_FALSE(takeAnswer());
    makePlugin();
    const QString executable = bundle() + QStringLiteral("/Contents/MacOS/register it");
    ASSERT_TRUE(QFile::setPermissions(executable, QFile::ReadOwner));
    ask();
    EXPECT_FALSE(takeAnswer());
    ASSERT_TRUE(QFile::remove(executable));
    ask();
    EXPECT_FALSE(takeAnswer());
    EXPECT_TRUE(waitUntil(hasNoChild));
    EXPECT_EQ(programs.starts(plugin), notStarted);
}
