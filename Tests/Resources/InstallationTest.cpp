// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Session/ChildProcess.h"
#include "Tests/Session/TemporaryHome.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <csignal>
#include <gtest/gtest.h>

namespace {

/// What `cmake --install` puts into a prefix of its own.
class InstallationTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        run(QStringLiteral(QUENBY_CMAKE), {QStringLiteral("--install"), QStringLiteral(QUENBY_BUILD_TREE),
                                           QStringLiteral("--prefix"), installed(QString())});
    }

    /// What \a program, which is to succeed, says.
    static QByteArray run(const QString &program, const QStringList &arguments)
    {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(program, arguments);
        EXPECT_TRUE(process.waitForFinished()) << qPrintable(process.errorString());
        const QByteArray said = process.readAll();
        EXPECT_EQ(process.exitCode(), 0) << said.constData();
        return said;
    }

    QString installed(const QString &path) const
    {
        return QDir::cleanPath(home_.filePath(QStringLiteral("prefix/") + path));
    }
    QString program() const { return installed(QStringLiteral(QUENBY_INSTALL_BINDIR "/quenby-preferences")); }

    TemporaryHome home_;
};

} // namespace

TEST_F(InstallationTest, EverythingIsWhereTheDesktopLooks)
{
    for (const char *file :
         {QUENBY_INSTALL_BINDIR "/quenby-preferences",
          QUENBY_INSTALL_DATADIR "/applications/org.quenby.Quenby.desktop",
          QUENBY_INSTALL_DATADIR "/metainfo/org.quenby.quenby.metainfo.xml",
          QUENBY_INSTALL_DATADIR "/mime/packages/org.quenby.Quenby.mime.xml",
          QUENBY_INSTALL_DATADIR "/icons/hicolor/scalable/apps/quenby.svg",
          QUENBY_INSTALL_DATADIR "/icons/hicolor/symbolic/apps/quenby-symbolic.svg",
          QUENBY_INSTALL_DATADIR "/icons/hicolor/48x48/apps/quenby.png",
          QUENBY_INSTALL_DATADIR "/icons/hicolor/scalable/mimetypes/application-x-quenby-preset.svg",
          QUENBY_INSTALL_DATADIR "/dbus-1/services/org.quenby.QNBHelper.service",
          QUENBY_INSTALL_MANDIR "/man1/quenby-preferences.1",
          QUENBY_INSTALL_BUNDLE "/Contents/Info.plist",
          QUENBY_INSTALL_BUNDLE "/Contents/MacOS/QNBPrefPane.so",
          QUENBY_INSTALL_BUNDLE "/Contents/MacOS/QNBContextMenu.plugin/Contents/Info.plist",
          QUENBY_INSTALL_BUNDLE "/Contents/MacOS/QNBContextMenu.plugin/Contents/MacOS/QNBContextMenu",
          QUENBY_INSTALL_BUNDLE "/Contents/MacOS/QNBHelper.app/Contents/Info.plist",
          QUENBY_INSTALL_BUNDLE "/Contents/MacOS/QNBHelper.app/Contents/MacOS/QNBHelper",
          QUENBY_INSTALL_BUNDLE "/Contents/MacOS/QNBHelper.app/Contents/PlugIns/QNBRunningHelper.so",
          QUENBY_INSTALL_BINDIR "/QNBHelper",
          QUENBY_INSTALL_MANDIR "/man1/QNBHelper.1",
          QUENBY_INSTALL_BUNDLE "/Contents/Resources/DefaultPresets.plist",
          QUENBY_INSTALL_BUNDLE "/Contents/Resources/DragHandle.svg",
          QUENBY_INSTALL_BUNDLE "/Contents/Resources/icons/quenby.svg"})
        EXPECT_TRUE(QFileInfo(installed(QString::fromLatin1(file))).isFile()) << file;
    EXPECT_TRUE(
        QFileInfo(installed(QStringLiteral(QUENBY_INSTALL_BUNDLE "/Contents/Resources/QNB Default AppSupport/"
                                                                 "Scripts/Fill In Templates.sh")))
            .isExecutable());
}

#ifdef QUENBY_INSTALL_MODULE
TEST_F(InstallationTest, TheModuleIsWhereSystemSettingsLooks)
{
    for (const char *file :
         {QUENBY_INSTALL_MODULE, QUENBY_INSTALL_DATADIR "/applications/kcm_quenby.desktop"})
        EXPECT_TRUE(QFileInfo(installed(QString::fromLatin1(file))).isFile()) << file;
}
#endif

TEST_F(InstallationTest, TheInstalledProgramFindsThePaneAndSaves)
{
    // The user does not want the helper, which would outlive this test.
    QFile domain(home_.configFolder() + QStringLiteral("/" QUENBY_IDENTIFIER ".plist"));
    ASSERT_TRUE(domain.open(QIODevice::WriteOnly));
    domain.write("<plist version=\"1.0\"><dict><key>QNBLaunchHelperOnStart</key><false/></dict></plist>");
    domain.close();
    ChildProcess host(program(), {}, home_.environment());
    const QDir support(home_.dataFolder() + QStringLiteral("/Quenby"));
    EXPECT_TRUE(waitUntil([&] { return support.exists(QStringLiteral("Scripts/Fill In Templates.sh")); }))
        << host.errors().constData();
    host.signal(SIGTERM);
    ASSERT_TRUE(host.waitForEnd()) << host.errors().constData();
    EXPECT_TRUE(host.hasReturned(0)) << host.errors().constData();
    ASSERT_TRUE(domain.open(QIODevice::ReadOnly));
    EXPECT_TRUE(domain.readAll().contains("QNBPresetsStored")) << host.errors().constData();
}

TEST_F(InstallationTest, TheHelperIsFoundAmongTheProgramsAndFindsItsPane)
{
    ChildProcess helper(installed(QStringLiteral(QUENBY_INSTALL_BINDIR "/QNBHelper")),
                        {QStringLiteral("--list")}, home_.environment());
    ASSERT_TRUE(helper.waitForEnd()) << helper.errors().constData();
    EXPECT_TRUE(helper.hasReturned(0)) << helper.errors().constData();
    EXPECT_FALSE(helper.output().trimmed().isEmpty()) << helper.errors().constData();
}

TEST_F(InstallationTest, TheBusStartsTheInstalledHelper)
{
    QFile service(
        installed(QStringLiteral(QUENBY_INSTALL_DATADIR "/dbus-1/services/org.quenby.QNBHelper.service")));
    ASSERT_TRUE(service.open(QIODevice::ReadOnly));
    const QByteArray program = installed(QStringLiteral(QUENBY_INSTALL_BINDIR "/QNBHelper")).toUtf8();
    EXPECT_TRUE(service.readAll().contains("\nExec=" + program + '\n'));
}

TEST_F(InstallationTest, WhatWasInstalledIsRemovedAndNothingElse)
{
    const QString pane = installed(QStringLiteral(QUENBY_INSTALL_BUNDLE));
    const QString others = installed(QStringLiteral(QUENBY_INSTALL_BINDIR "/of-another-program"));
    const QString inPane = pane + QStringLiteral("/Contents/Resources/of-the-user");
    for (const QString &path : {others, inPane}) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    const QStringList uninstall = {QStringLiteral("-DMANIFEST=" QUENBY_BUILD_TREE "/install_manifest.txt"),
                                   QStringLiteral("-P"), QStringLiteral(QUENBY_UNINSTALL)};
    run(QStringLiteral(QUENBY_CMAKE), uninstall);
    QStringList left;
    QDirIterator walk(installed(QString()), QDir::Files | QDir::System | QDir::Hidden,
                      QDirIterator::Subdirectories);
    while (walk.hasNext())
        left.append(walk.next());
    left.sort();
    QStringList expected = {others, inPane};
    expected.sort();
    EXPECT_EQ(left, expected);
    EXPECT_FALSE(QFileInfo::exists(pane + QStringLiteral("/Contents/MacOS")));

    ASSERT_TRUE(QFile::remove(inPane));
    run(QStringLiteral(QUENBY_CMAKE), uninstall);
    EXPECT_FALSE(QFileInfo::exists(pane)) << "a folder that is empty by now";
}
