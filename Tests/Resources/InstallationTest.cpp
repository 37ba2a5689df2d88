// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Session/ChildProcess.h"
#include "Tests/Session/PrivateBus.h"
#include "Tests/Session/TemporaryHome.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QLibraryInfo>
#include <QProcess>
#include <csignal>
#include <gtest/gtest.h>

namespace {

/// What only an installation without components writes.
const QString ownManifest = QStringLiteral(QUENBY_BUILD_TREE "/install_manifest.txt");
const QString helperName = QStringLiteral("org.quenby.QNBHelper");

/// What `cmake --install` puts into a prefix of its own.
class InstallationTest : public ::testing::Test
{
protected:
    void SetUp() override { (void)install(); }

    /// As a component, to which everything belongs: what the tree says of its own installation stays.
    QByteArray install() const
    {
        return run(QStringLiteral(QUENBY_CMAKE),
                   {QStringLiteral("--install"), QStringLiteral(QUENBY_BUILD_TREE),
                    QStringLiteral("--prefix"), installed(QString()), QStringLiteral("--component"),
                    QStringLiteral("Unspecified")});
    }
    static QByteArray uninstall(int code)
    {
        return run(QStringLiteral(QUENBY_UNINSTALL),
                   {QStringLiteral(QUENBY_BUILD_TREE "/install_manifest_Unspecified.txt")}, code);
    }

    /// What \a program, which is to end with \a code, says.
    static QByteArray run(const QString &program, const QStringList &arguments, int code = 0)
    {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(program, arguments);
        EXPECT_TRUE(process.waitForFinished()) << qPrintable(process.errorString());
        const QByteArray said = process.readAll();
        EXPECT_EQ(process.exitCode(), code) << said.constData();
        return said;
    }

    QString installed(const QString &path) const
    {
        return QDir::cleanPath(home_.filePath(QStringLiteral("a user's [prefix/") + path));
    }
    /// Writes \a bytes to a new file.
    void put(const QString &path, const QByteArray &bytes) const
    {
        QFile file(path);
        ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
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

#ifdef QUENBY_HAS_MODULE
TEST_F(InstallationTest, TheModuleIsWhereSystemSettingsLooks)
{
    // In this Qt's folder of plug-ins, as it would be in the prefix.
    const QString plugins = QDir(QLibraryInfo::path(QLibraryInfo::PrefixPath))
                                .relativeFilePath(QLibraryInfo::path(QLibraryInfo::PluginsPath));
    for (const QString &file :
         {plugins + QStringLiteral("/plasma/kcms/systemsettings_qwidgets/kcm_quenby.so"),
          QStringLiteral(QUENBY_INSTALL_DATADIR "/applications/kcm_quenby.desktop")})
        EXPECT_TRUE(QFileInfo(installed(file)).isFile()) << qPrintable(file);
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
    const PrivateBus bus;
    const QString file = helperName + QStringLiteral(".service");
    ASSERT_TRUE(QFile::copy(installed(QStringLiteral(QUENBY_INSTALL_DATADIR "/dbus-1/services/") + file),
                            bus.servicesFolder() + u'/' + file));
    QStringList variables;
    const QProcessEnvironment environment = home_.environment(bus.address());
    for (const QString &name : environment.keys())
        variables << name + u'=' + environment.value(name);
    const QStringList asked{QStringLiteral("DBUS_SESSION_BUS_ADDRESS=") + bus.address()};
    run(QStringLiteral("env"),
        asked + QStringList{QStringLiteral("dbus-update-activation-environment")} + variables);
    run(QStringLiteral("env"),
        asked + QStringList{QStringLiteral("dbus-send"), QStringLiteral("--session"),
                            QStringLiteral("--print-reply"), QStringLiteral("--dest=org.freedesktop.DBus"),
                            QStringLiteral("/org/freedesktop/DBus"),
                            QStringLiteral("org.freedesktop.DBus.StartServiceByName"),
                            QStringLiteral("string:") + helperName, QStringLiteral("uint32:0")});
    const qint64 helper = bus.processOf(helperName);
    ASSERT_NE(helper, 0);
    EXPECT_EQ(QFile::symLinkTarget(QStringLiteral("/proc/%1/exe").arg(helper)),
              installed(QStringLiteral(QUENBY_INSTALL_BUNDLE
                                       "/Contents/MacOS/QNBHelper.app/Contents/MacOS/QNBHelper")));
    ASSERT_EQ(::kill(pid_t(helper), SIGTERM), 0);
    EXPECT_TRUE(waitUntil([&] { return ::kill(pid_t(helper), 0) != 0; }));
}

TEST_F(InstallationTest, WhatWasInstalledIsRemovedAndNothingElse)
{
    QFile manifest(ownManifest);
    EXPECT_FALSE(manifest.open(QIODevice::ReadOnly) && manifest.readAll().contains(home_.path().toUtf8()))
        << "what the user has installed from the tree is not known any more";
    const QString pane = installed(QStringLiteral(QUENBY_INSTALL_BUNDLE));
    const QString others = installed(QStringLiteral(QUENBY_INSTALL_BINDIR "/of-another-program"));
    const QString inPane = pane + QStringLiteral("/Contents/Resources/of-the-user");
    put(others, "");
    put(inPane, "");
    uninstall(0);
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

    EXPECT_TRUE(uninstall(1).contains("Nothing is removed"));
    ASSERT_TRUE(QFile::remove(inPane));
    uninstall(0);
    EXPECT_FALSE(QFileInfo::exists(pane)) << "a folder that is empty by now";
}

TEST_F(InstallationTest, APaneInAnEarlierPlaceIsLeftAndToldOf)
{
    const QString earlier =
        installed(QStringLiteral(QUENBY_INSTALL_DATADIR "/PreferencePanes/Quenby.prefPane"));
    const QString information = earlier + QStringLiteral("/Contents/Info.plist");
    const QString metainfo =
        installed(QStringLiteral(QUENBY_INSTALL_DATADIR "/metainfo/" QUENBY_IDENTIFIER ".metainfo.xml"));
    EXPECT_FALSE(install().contains("another pane"));
    put(information, "");
    put(metainfo, "");
    EXPECT_TRUE(install().contains(QFile::encodeName(earlier)));
    EXPECT_TRUE(QFileInfo::exists(information));
    EXPECT_FALSE(QFileInfo::exists(metainfo));
}
