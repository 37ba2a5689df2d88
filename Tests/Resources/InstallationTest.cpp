// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Session/ChildProcess.h"
#include "Tests/Session/TemporaryHome.h"

#include <QDir>
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
        QProcess install;
        install.setProcessChannelMode(QProcess::MergedChannels);
        install.start(QStringLiteral(QUENBY_CMAKE),
                      {QStringLiteral("--install"), QStringLiteral(QUENBY_BUILD_TREE),
                       QStringLiteral("--prefix"), installed(QString())});
        ASSERT_TRUE(install.waitForFinished()) << qPrintable(install.errorString());
        ASSERT_EQ(install.exitCode(), 0) << install.readAll().constData();
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
          QUENBY_INSTALL_DATADIR "/metainfo/org.quenby.Quenby.metainfo.xml",
          QUENBY_INSTALL_DATADIR "/mime/packages/org.quenby.Quenby.mime.xml",
          QUENBY_INSTALL_DATADIR "/icons/hicolor/scalable/apps/quenby.svg",
          QUENBY_INSTALL_MANDIR "/man1/quenby-preferences.1", QUENBY_INSTALL_BUNDLE "/Contents/Info.plist",
          QUENBY_INSTALL_BUNDLE "/Contents/MacOS/QNBPrefPane.so",
          QUENBY_INSTALL_BUNDLE "/Contents/MacOS/QNBContextMenu.plugin/Contents/Info.plist",
          QUENBY_INSTALL_BUNDLE "/Contents/MacOS/QNBContextMenu.plugin/Contents/MacOS/QNBContextMenu",
          QUENBY_INSTALL_BUNDLE "/Contents/MacOS/QNBHelper.app/Contents/Info.plist",
          QUENBY_INSTALL_BUNDLE "/Contents/MacOS/QNBHelper.app/Contents/MacOS/QNBHelper",
          QUENBY_INSTALL_BUNDLE "/Contents/MacOS/QNBHelper.app/Contents/PlugIns/QNBRunningHelper.so",
          QUENBY_INSTALL_BINDIR "/QNBHelper", QUENBY_INSTALL_MANDIR "/man1/QNBHelper.1",
          QUENBY_INSTALL_BUNDLE "/Contents/Resources/DefaultPresets.plist",
          QUENBY_INSTALL_BUNDLE "/Contents/Resources/DragHandle.svg",
          QUENBY_INSTALL_BUNDLE "/Contents/Resources/icons/quenby.svg"})
        EXPECT_TRUE(QFileInfo(installed(QString::fromLatin1(file))).isFile()) << file;
    EXPECT_TRUE(
        QFileInfo(installed(QStringLiteral(QUENBY_INSTALL_BUNDLE "/Contents/Resources/QNB Default AppSupport/"
                                                                 "Scripts/Fill In Templates.sh")))
            .isExecutable());
}

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
