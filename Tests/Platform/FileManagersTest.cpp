// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/FileManagers.h"

#include "FileFixture.h"
#include "Tests/Session/ChildProcess.h"
#include "Tests/Session/StandInPrograms.h"

#include <QSet>

namespace {

const QString nautilus = QStringLiteral("nautilus");
const QString thunar = QStringLiteral("thunar");
const QString pcmanfm = QStringLiteral("pcmanfm-qt");
const QString plugin = QStringLiteral("plug-in");
const QList<QByteArrayList> toldToQuit = {{"-q"}};
const QList<QByteArrayList> notStarted;

/// A plug-in, and file managers of the test's own first on the path.
class FileManagersTest : public FileFixture
{
protected:
    FileManagersTest()
    {
        qputenv("PATH", programs.folder().toUtf8() + ':' + path_);
        for (const QString &program : {nautilus, thunar, pcmanfm})
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

    static FileManagers::IsRunning running(const QSet<QString> &names)
    {
        return [names](const QString &name) { return names.contains(name); };
    }
    bool waitForStart(const QString &program) const
    {
        return waitUntil([&] { return !programs.starts(program).isEmpty(); });
    }

    StandInPrograms programs;

private:
    const QByteArray path_ = qgetenv("PATH");
};

} // namespace

TEST_F(FileManagersTest, ThePluginRegistersItself)
{
    makePlugin();
    EXPECT_TRUE(FileManagers::restart(bundle(), running({})));
    EXPECT_TRUE(waitUntil(hasNoChild));
    EXPECT_EQ(programs.starts(plugin), (QList<QByteArrayList>{{"register"}}));
    for (const QString &program : {nautilus, thunar, pcmanfm})
        EXPECT_EQ(programs.starts(program), notStarted) << "does not run: " << qPrintable(program);
}

TEST_F(FileManagersTest, ThoseThatRunAreToldOnceThePluginHasRegistered)
{
    const QString go = in(QStringLiteral("go"));
    makePlugin("while ! [ -e '" + go.toUtf8() + "' ]; do sleep 0.01; done");
    EXPECT_TRUE(FileManagers::restart(bundle(), running({nautilus, thunar, pcmanfm})));
    ASSERT_TRUE(waitForStart(plugin));
    EXPECT_EQ(programs.starts(nautilus), notStarted) << "the plug-in is not done yet";
    put(go, "");
    EXPECT_TRUE(waitForStart(nautilus));
    EXPECT_TRUE(waitForStart(thunar));
    EXPECT_TRUE(waitUntil(hasNoChild));
    EXPECT_EQ(programs.starts(nautilus), toldToQuit);
    EXPECT_EQ(programs.starts(thunar), toldToQuit);
    EXPECT_EQ(programs.starts(pcmanfm), notStarted) << "it may draw the desktop";
}

TEST_F(FileManagersTest, ThunarRunsUnderEitherOfItsNames)
{
    makePlugin();
    EXPECT_TRUE(FileManagers::restart(bundle(), running({QStringLiteral("Thunar")})));
    EXPECT_TRUE(waitForStart(thunar));
    EXPECT_TRUE(waitUntil(hasNoChild));
    EXPECT_EQ(programs.starts(thunar), toldToQuit);
    EXPECT_EQ(programs.starts(nautilus), notStarted);
}

TEST_F(FileManagersTest, APluginThatFailsIsNoReasonToKeepQuiet)
{
    makePlugin("exit 1");
    EXPECT_TRUE(FileManagers::restart(bundle(), running({nautilus})));
    EXPECT_TRUE(waitForStart(nautilus));
}

TEST_F(FileManagersTest, APluginThatTakesTooLongIsEnded)
{
    makePlugin("trap '' TERM\nwhile :; do sleep 0.01; done");
    EXPECT_TRUE(FileManagers::restart(bundle(), running({nautilus}), std::chrono::milliseconds(300)));
    EXPECT_TRUE(waitForStart(nautilus));
    EXPECT_TRUE(waitUntil(hasNoChild));
}

TEST_F(FileManagersTest, WithoutAPluginNothingIsTold)
{
    EXPECT_FALSE(FileManagers::restart(bundle(), running({nautilus})));
    makePlugin();
    const QString executable = bundle() + QStringLiteral("/Contents/MacOS/register it");
    ASSERT_TRUE(QFile::setPermissions(executable, QFile::ReadOwner));
    EXPECT_FALSE(FileManagers::restart(bundle(), running({nautilus})));
    ASSERT_TRUE(QFile::remove(executable));
    EXPECT_FALSE(FileManagers::restart(bundle(), running({nautilus})));
    EXPECT_TRUE(waitUntil(hasNoChild));
    EXPECT_EQ(programs.starts(plugin), notStarted);
    EXPECT_EQ(programs.starts(nautilus), notStarted);
}

TEST_F(FileManagersTest, OneThatRunsButIsNotInstalledIsLeftAlone)
{
    makePlugin();
    ASSERT_TRUE(QFile::remove(programs.folder() + u'/' + thunar));
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", programs.folder().toUtf8() + ":/no/programs");
    EXPECT_TRUE(FileManagers::restart(bundle(), running({nautilus, thunar})));
    EXPECT_TRUE(waitForStart(plugin));
    EXPECT_TRUE(waitUntil(hasNoChild));
    qputenv("PATH", path);
    EXPECT_EQ(programs.starts(thunar), notStarted);
}

TEST_F(FileManagersTest, TheProcessesOfThisSystemTellWhichRun)
{
    makePlugin();
    const QString folder = in(QStringLiteral("running"));
    ASSERT_TRUE(QDir().mkpath(folder));
    const QString program = folder + u'/' + nautilus;
    put(program, "#!/bin/sh\necho started\ncat\n");
    ASSERT_TRUE(QFile::setPermissions(program, QFile::ReadOwner | QFile::ExeOwner));
    ChildProcess process(program);
    ASSERT_TRUE(waitUntil([&process] { return process.output() == "started\n"; }));
    EXPECT_TRUE(FileManagers::restart(bundle()));
    EXPECT_TRUE(waitForStart(nautilus));
}
