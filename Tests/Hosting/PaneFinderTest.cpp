// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Hosting/PaneFinder.h"

#include "Platform/Desktop/PaneFolders.h"
#include "Tests/Hosting/TestBundle.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

class PaneFinderTest : public ::testing::Test
{
protected:
    QString make(const QString &relativePath) const
    {
        const QString path = folder_.filePath(relativePath);
        QDir().mkpath(path);
        return path;
    }

    QString makePane(const QString &relativePath) const
    {
        const QString path = folder_.filePath(relativePath);
        TestBundle::make(path, {});
        return path;
    }

    const QTemporaryDir folder_;
};

} // namespace

TEST_F(PaneFinderTest, LooksBesideTheHostThenAtThoseInstalledWithItThenAtAllThatAreInstalled)
{
    const QStringList folders =
        PaneFinder::searchFolders(QStringLiteral("/prefix/bin"), QStringLiteral("../lib/PreferencePanes"));
    EXPECT_EQ(folders.mid(0, 2),
              QStringList({QStringLiteral("/prefix/bin"), QStringLiteral("/prefix/lib/PreferencePanes")}));
    EXPECT_EQ(folders.mid(2), PaneFolders::installed());
}

TEST_F(PaneFinderTest, FindsBundlesOnly)
{
    const QString pane = make(QStringLiteral("a/Some.prefPane"));
    make(QStringLiteral("a/Other.bundle"));
    QFile file(folder_.filePath(QStringLiteral("a/File.prefPane")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_EQ(PaneFinder::panesIn({folder_.filePath(QStringLiteral("a")), QStringLiteral("/nowhere")}),
              QStringList(pane));
}

TEST_F(PaneFinderTest, TheFirstOfSeveralWithOneNameCounts)
{
    const QString user = make(QStringLiteral("user/Same.prefPane"));
    make(QStringLiteral("system/Same.prefPane"));
    const QString other = make(QStringLiteral("system/Other.prefPane"));
    EXPECT_EQ(PaneFinder::panesIn(
                  {folder_.filePath(QStringLiteral("user")), folder_.filePath(QStringLiteral("system"))}),
              QStringList({user, other}));
}

TEST_F(PaneFinderTest, APaneIsMeantByItsNameOrPath)
{
    const QString pane = makePane(QStringLiteral("a/Some.prefPane"));
    const QStringList folders = {folder_.filePath(QStringLiteral("a"))};
    EXPECT_EQ(PaneFinder::pathOfPane(QStringLiteral("Some"), folders).value, pane);
    EXPECT_EQ(PaneFinder::pathOfPane(QStringLiteral("Some.prefPane"), folders).value, pane);
    EXPECT_EQ(PaneFinder::pathOfPane(pane + u'/', {}).value, pane);
    EXPECT_EQ(PaneFinder::pathOfPane(QStringLiteral("/not/there.prefPane"), folders).error,
              QStringLiteral("There is no settings pane at /not/there.prefPane."));
    EXPECT_EQ(PaneFinder::pathOfPane(QStringLiteral("a\nb"), folders).error,
              QStringLiteral("There is no settings pane called \"a␊b\" in\n%1").arg(folders.constFirst()));
}

TEST_F(PaneFinderTest, AFolderThatIsNoPaneIsToldAsSuch)
{
    const QString folder = make(QStringLiteral("a/folder"));
    const QString empty = make(QStringLiteral("a/Empty.prefPane"));
    const QString text = QStringLiteral("%1 is no settings pane: it has no readable Contents/Info.plist.");
    EXPECT_EQ(PaneFinder::pathOfPane(folder, {}).error, text.arg(folder));
    EXPECT_EQ(PaneFinder::pathOfPane(QStringLiteral("Empty"), {folder_.filePath(QStringLiteral("a"))}).error,
              text.arg(empty));
}

TEST_F(PaneFinderTest, APaneIsANameOrAFolderOrWhatIsNamedLikeOne)
{
    const QString folder = make(QStringLiteral("a/folder"));
    QFile file(folder_.filePath(QStringLiteral("File.prefPane")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    for (const QString &pane :
         {QStringLiteral("Some"), QStringLiteral("Some.prefPane"), folder, folder + u'/',
          QStringLiteral("/gone/Some.prefPane"), QStringLiteral("gone/Some.prefPane/")})
        EXPECT_TRUE(PaneFinder::isPane(pane)) << qPrintable(pane);
    for (const QString &other : {file.fileName(), QStringLiteral("/gone/preset.qnbp"),
                                 QStringLiteral("gone.qnbp"), QStringLiteral("gone.prefPane.qnbp"),
                                 QStringLiteral("./gone"), folder + QStringLiteral("/\uFFFD.qnbp")})
        EXPECT_FALSE(PaneFinder::isPane(other)) << qPrintable(other);
}

TEST_F(PaneFinderTest, OnlyWhatHasASlashIsMeantFromTheWorkingFolder)
{
    const QString inWorkingFolder = makePane(QStringLiteral("a/Some.prefPane"));
    const QString inSearchFolder = makePane(QStringLiteral("b/Some.prefPane"));
    const QStringList folders = {folder_.filePath(QStringLiteral("b"))};
    const QString name = QStringLiteral("Some.prefPane");
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(folder_.filePath(QStringLiteral("a"))));
    EXPECT_EQ(PaneFinder::pathOfPane(name, folders).value, inSearchFolder);
    EXPECT_EQ(PaneFinder::pathOfPane(QStringLiteral("./") + name, folders).value, inWorkingFolder);
    EXPECT_EQ(PaneFinder::pathOfPane(QStringLiteral("../a/") + name, {}).value, inWorkingFolder);
    const Result<QString> nowhere = PaneFinder::pathOfPane(name, {QStringLiteral("/nowhere")});
    EXPECT_FALSE(nowhere);
    EXPECT_TRUE(nowhere.error.contains(name) && nowhere.error.contains(u"/nowhere"))
        << qPrintable(nowhere.error);
    QDir::setCurrent(before);
}
