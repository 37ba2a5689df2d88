// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Host/PaneFinder.h"

#include <QCoreApplication>
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

    const QTemporaryDir folder_;
};

/// Changes a variable for one test.
class Variable
{
public:
    Variable(const char *name, const QByteArray &value)
        : name_(name)
        , before_(qgetenv(name))
        , wasSet_(qEnvironmentVariableIsSet(name))
    {
        qputenv(name, value);
    }
    ~Variable()
    {
        if (wasSet_)
            qputenv(name_, before_);
        else
            qunsetenv(name_);
    }
    Variable(const Variable &) = delete;
    Variable &operator=(const Variable &) = delete;

private:
    const char *name_;
    const QByteArray before_;
    const bool wasSet_;
};

} // namespace

TEST_F(PaneFinderTest, LooksBesideTheProgramThenAtTheUsersThenAtTheSystemsPanes)
{
    const Variable home("XDG_DATA_HOME", "/user/data");
    const Variable system("XDG_DATA_DIRS", "/first/share:/second/share/");
    const QStringList folders = PaneFinder::searchFolders();
    ASSERT_EQ(folders.size(), 5);
    EXPECT_EQ(folders.at(0), QCoreApplication::applicationDirPath());
    EXPECT_TRUE(folders.at(1).endsWith(QStringLiteral("/share/PreferencePanes")))
        << qPrintable(folders.at(1));
    EXPECT_EQ(folders.mid(2), QStringList({QStringLiteral("/user/data/PreferencePanes"),
                                           QStringLiteral("/first/share/PreferencePanes"),
                                           QStringLiteral("/second/share/PreferencePanes")}));
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
    const QString pane = make(QStringLiteral("a/Some.prefPane"));
    const QStringList folders = {folder_.filePath(QStringLiteral("a"))};
    EXPECT_EQ(PaneFinder::pathOfPane(QStringLiteral("Some"), folders).value, pane);
    EXPECT_EQ(PaneFinder::pathOfPane(QStringLiteral("Some.prefPane"), folders).value, pane);
    EXPECT_EQ(PaneFinder::pathOfPane(pane + u'/', {}).value, pane);
    EXPECT_EQ(PaneFinder::pathOfPane(QStringLiteral("/not/there.prefPane"), folders).value,
              QStringLiteral("/not/there.prefPane"));
}

TEST_F(PaneFinderTest, OnlyWhatHasASlashIsMeantFromTheWorkingFolder)
{
    const QString inWorkingFolder = make(QStringLiteral("a/Some.prefPane"));
    const QString inSearchFolder = make(QStringLiteral("b/Some.prefPane"));
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
