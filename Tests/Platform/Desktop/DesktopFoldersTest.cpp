// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Desktop/DesktopFolders.h"
#include "Tests/Platform/Files/FileFixture.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QProcessEnvironment environment(std::initializer_list<std::pair<const char *, QString>> variables)
{
    QProcessEnvironment result;
    for (const auto &[name, value] : variables)
        result.insert(QString::fromLatin1(name), value);
    return result;
}

QString passwordDatabaseHome()
{
    return QDir::cleanPath(QFile::decodeName(::getpwuid(::geteuid())->pw_dir));
}

class DesktopFoldersTest : public FileFixture
{
};

} // namespace

TEST_F(DesktopFoldersTest, VariablesNameTheFolders)
{
    const auto set = environment({{"HOME", QStringLiteral("/h")},
                                  {"XDG_CONFIG_HOME", QStringLiteral("/c//d/")},
                                  {"XDG_DATA_HOME", QStringLiteral("/d")},
                                  {"XDG_STATE_HOME", QStringLiteral("/s")}});
    EXPECT_EQ(DesktopFolders::home(set), QStringLiteral("/h"));
    EXPECT_EQ(DesktopFolders::configHome(set), QStringLiteral("/c/d"));
    EXPECT_EQ(DesktopFolders::dataHome(set), QStringLiteral("/d"));
    EXPECT_EQ(DesktopFolders::stateHome(set), QStringLiteral("/s"));
    EXPECT_EQ(DesktopFolders::stateFolder(set), QStringLiteral("/s/Quenby"));
}

TEST_F(DesktopFoldersTest, DefaultsStandBelowHome)
{
    const auto set = environment({{"HOME", QStringLiteral("/h")}});
    EXPECT_EQ(DesktopFolders::configHome(set), QStringLiteral("/h/.config"));
    EXPECT_EQ(DesktopFolders::dataHome(set), QStringLiteral("/h/.local/share"));
    EXPECT_EQ(DesktopFolders::stateHome(set), QStringLiteral("/h/.local/state"));
    EXPECT_EQ(DesktopFolders::stateFolder(set), QStringLiteral("/h/.local/state/Quenby"));
}

TEST_F(DesktopFoldersTest, RelativeAndEmptyValuesCountForNothing)
{
    for (const QString &value : {QString(), QStringLiteral("relative/folder"), QStringLiteral("~/x"),
                                 QStringLiteral(":/x"), QStringLiteral("./x")}) {
        const auto set = environment(
            {{"HOME", QStringLiteral("/h")}, {"XDG_CONFIG_HOME", value}, {"XDG_DATA_HOME", value}});
        EXPECT_EQ(DesktopFolders::configHome(set), QStringLiteral("/h/.config")) << qPrintable(value);
        EXPECT_EQ(DesktopFolders::dataHome(set), QStringLiteral("/h/.local/share")) << qPrintable(value);
    }
}

TEST_F(DesktopFoldersTest, HomeMissingOrRelativeComesFromThePasswordDatabase)
{
    EXPECT_EQ(DesktopFolders::home(environment({})), passwordDatabaseHome());
    EXPECT_EQ(DesktopFolders::home(environment({{"HOME", QString()}})), passwordDatabaseHome());
    EXPECT_EQ(DesktopFolders::home(environment({{"HOME", QStringLiteral("home")}})), passwordDatabaseHome());
    EXPECT_EQ(DesktopFolders::configHome(environment({})),
              QDir(passwordDatabaseHome()).filePath(QStringLiteral(".config")));
}

TEST_F(DesktopFoldersTest, RuntimeDirectoryOfTheSessionIsTaken)
{
    EXPECT_EQ(DesktopFolders::runtimeDirectory(environment({{"XDG_RUNTIME_DIR", root()}})), root());
}

TEST_F(DesktopFoldersTest, RuntimeDirectoryOpenToOthersALinkOrMissingIsNotTaken)
{
    const QString open = in(QStringLiteral("open"));
    ASSERT_EQ(::mkdir(QFile::encodeName(open).constData(), 0700), 0);
    ASSERT_EQ(::chmod(QFile::encodeName(open).constData(), 0755), 0);
    const QString closed = in(QStringLiteral("closed"));
    ASSERT_EQ(::mkdir(QFile::encodeName(closed).constData(), 0700), 0);
    ASSERT_TRUE(QFile::link(closed, in(QStringLiteral("link"))));
    for (const QString &folder :
         {open, in(QStringLiteral("link")), in(QStringLiteral("missing")), QStringLiteral("relative")}) {
        const QString found = DesktopFolders::runtimeDirectory(
            environment({{"XDG_RUNTIME_DIR", folder}, {"XDG_STATE_HOME", closed}}));
        EXPECT_NE(found, folder);
        struct stat information = {};
        ASSERT_EQ(::lstat(QFile::encodeName(found).constData(), &information), 0) << qPrintable(found);
        EXPECT_TRUE(S_ISDIR(information.st_mode));
        EXPECT_EQ(information.st_mode & 07777, 0700U);
        EXPECT_EQ(information.st_uid, ::geteuid());
    }
}

TEST_F(DesktopFoldersTest, AnotherUsersFolderAmongTheTemporaryFilesStopsNobody)
{
    const QString planted = in(QStringLiteral("quenby-runtime-%1").arg(::geteuid()));
    ASSERT_EQ(::mkdir(QFile::encodeName(planted).constData(), 0777), 0);
    ASSERT_EQ(::chmod(QFile::encodeName(planted).constData(), 0777), 0);
    const QString state = in(QStringLiteral("home/state"));
    const auto set = environment({{"TMPDIR", root()}, {"XDG_STATE_HOME", state}});
    const QString found = DesktopFolders::ownRuntimeFolder(set);
    EXPECT_EQ(found, state + QStringLiteral("/Quenby/Runtime"));
    struct stat information = {};
    ASSERT_EQ(::lstat(QFile::encodeName(found).constData(), &information), 0);
    EXPECT_EQ(information.st_mode & 07777, 0700U);
    EXPECT_EQ(information.st_uid, ::geteuid());
    EXPECT_EQ(DesktopFolders::ownRuntimeFolder(set), found) << "the one that is there";
    EXPECT_TRUE(DesktopFolders::runtimeDirectory(set) == found ||
                DesktopFolders::runtimeDirectory(set).startsWith(QStringLiteral("/run/user/")));
}

TEST_F(DesktopFoldersTest, AnOwnRuntimeFolderIsClosedToOthersAndNeverALinkOrAFile)
{
    const QString state = in(QStringLiteral("Quenby"));
    const QString folder = state + QStringLiteral("/Runtime");
    const QString elsewhere = in(QStringLiteral("elsewhere"));
    const auto set = environment({{"XDG_STATE_HOME", root()}});
    for (const QString &path : {state, elsewhere})
        ASSERT_EQ(::mkdir(QFile::encodeName(path).constData(), 0700), 0);
    ASSERT_TRUE(QFile::link(elsewhere, folder));
    EXPECT_EQ(DesktopFolders::ownRuntimeFolder(set), QString());
    ASSERT_TRUE(QFile::remove(folder));
    ASSERT_EQ(::mkdir(QFile::encodeName(folder).constData(), 0700), 0);
    ASSERT_EQ(::chmod(QFile::encodeName(folder).constData(), 0770), 0);
    EXPECT_EQ(DesktopFolders::ownRuntimeFolder(set), folder);
    struct stat information = {};
    ASSERT_EQ(::lstat(QFile::encodeName(folder).constData(), &information), 0);
    EXPECT_EQ(information.st_mode & 07777, 0700U);
    ASSERT_TRUE(QDir().rmdir(folder));
    put(folder, {});
    EXPECT_EQ(DesktopFolders::ownRuntimeFolder(set), QString());
}

TEST_F(DesktopFoldersTest, NothingIsMadeInAnotherUsersHome)
{
    EXPECT_FALSE(DesktopFolders::isOthers(root()));
    EXPECT_FALSE(DesktopFolders::isOthers(in(QStringLiteral("a/b"))));
    EXPECT_FALSE(DesktopFolders::isOthers(QStringLiteral("/none/such")));
    // Only the administrator can give a folder away.
    if (::geteuid() != 0)
        return;
    ASSERT_EQ(::chown(QFile::encodeName(root()).constData(), 12345, 12345), 0);
    EXPECT_TRUE(DesktopFolders::isOthers(in(QStringLiteral("a/b"))));
    EXPECT_EQ(DesktopFolders::ownRuntimeFolder(environment({{"XDG_STATE_HOME", root()}})), QString());
    EXPECT_EQ(namesIn(root()), QStringList());
}
