// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/FileManagers.h"

#include "FileFixture.h"
#include "Tests/Session/ChildProcess.h"
#include "Tests/Session/StandInPrograms.h"

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

    const QStringList fileManagers = {QStringLiteral("nautilus"), QStringLiteral("thunar"),
                                      QStringLiteral("pcmanfm-qt")};
    StandInPrograms programs;

private:
    const QByteArray path_ = qgetenv("PATH");
};

} // namespace

TEST_F(FileManagersTest, ThePluginRegistersItself)
{
    makePlugin();
    EXPECT_TRUE(FileManagers::registerPlugin(bundle()));
    EXPECT_TRUE(waitUntil(hasNoChild));
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
        EXPECT_TRUE(FileManagers::registerPlugin(bundle()));
        EXPECT_TRUE(waitUntil([this] {
            const QList<int> registrations = programs.processes(plugin);
            return registrations.size() == 1 &&
                   !QFile::exists(QStringLiteral("/proc/%1").arg(registrations.constFirst()));
        }));
    }
    EXPECT_TRUE(waitUntil(hasNoChild));
    for (const QString &manager : fileManagers)
        EXPECT_EQ(programs.starts(manager), notStarted) << qPrintable(manager);
}

TEST_F(FileManagersTest, APluginThatTakesTooLongIsEnded)
{
    makePlugin("trap '' TERM\nwhile :; do sleep 0.01; done");
    EXPECT_TRUE(FileManagers::registerPlugin(bundle(), std::chrono::milliseconds(300)));
    EXPECT_TRUE(waitUntil(hasNoChild));
}

TEST_F(FileManagersTest, WithoutAPluginNothingIsRegistered)
{
    EXPECT_FALSE(FileManagers::registerPlugin(bundle()));
    makePlugin();
    const QString executable = bundle() + QStringLiteral("/Contents/MacOS/register it");
    ASSERT_TRUE(QFile::setPermissions(executable, QFile::ReadOwner));
    EXPECT_FALSE(FileManagers::registerPlugin(bundle()));
    ASSERT_TRUE(QFile::remove(executable));
    EXPECT_FALSE(FileManagers::registerPlugin(bundle()));
    EXPECT_TRUE(waitUntil(hasNoChild));
    EXPECT_EQ(programs.starts(plugin), notStarted);
}
