// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/System/HJSLoginItemController.h"

#include "Platform/Desktop/SharedFileList.h"
#include "Platform/Files/FileURL.h"
#include "Tests/Session/TestApplication.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

class HJSLoginItemControllerTest : public ::testing::Test
{
protected:
    HJSLoginItemControllerTest() { qputenv("XDG_CONFIG_HOME", configuration.path().toUtf8()); }
    ~HJSLoginItemControllerTest() override
    {
        if (oldConfiguration.isNull())
            qunsetenv("XDG_CONFIG_HOME");
        else
            qputenv("XDG_CONFIG_HOME", oldConfiguration);
    }

    /// The path of a new application.
    QString application(const QString &name) const
    {
        const QString path = folder.filePath(name);
        const TestApplication made(path);
        return path;
    }
    /// The path of a new program.
    QString program(const QString &path) const
    {
        EXPECT_TRUE(QDir().mkpath(QFileInfo(path).path()));
        EXPECT_TRUE(QFile::copy(QStringLiteral("/bin/true"), path));
        return path;
    }

    static void add(const QString &path) { HJSLoginItemController::addLoginItemOpenAtLogin(path, true); }
    static void remove(const QString &path) { HJSLoginItemController::addLoginItemOpenAtLogin(path, false); }

    /// The paths of the entries in their order; of one that does not resolve, its file's name.
    static QStringList listed()
    {
        const SharedFileList list = SharedFileList::create().value();
        QStringList paths;
        const QList<SharedFileList::Item> snapshot = list.copySnapshot();
        for (const SharedFileList::Item &item : snapshot) {
            const std::optional<QUrl> url = list.resolve(item);
            paths << (url ? url->toLocalFile() : item.fileName());
        }
        return paths;
    }

    QString listFolder() const { return configuration.filePath(QStringLiteral("autostart")); }
    void writeEntry(const QString &name, const QByteArray &command) const
    {
        ASSERT_TRUE(QDir().mkpath(listFolder()));
        QFile file(listFolder() + u'/' + name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("[Desktop Entry]\nType=Application\nName=Foreign\nExec=" + command + "\n");
    }

    const QTemporaryDir folder;
    const QTemporaryDir configuration;
    const QByteArray oldConfiguration = qgetenv("XDG_CONFIG_HOME");
};

} // namespace

TEST_F(HJSLoginItemControllerTest, PutsAnApplicationIntoTheListAndTakesItOut)
{
    const QString path = application(QStringLiteral("QNBHelper.app"));
    add(path);
    EXPECT_EQ(listed(), QStringList{path});
    remove(path);
    EXPECT_EQ(listed(), QStringList());
    EXPECT_EQ(QDir(listFolder()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
              QStringList());
}

TEST_F(HJSLoginItemControllerTest, AppendsAtTheEnd)
{
    const QStringList paths = {application(QStringLiteral("Zebra.app")),
                               application(QStringLiteral("Ape.app")),
                               application(QStringLiteral("Mole.app"))};
    for (const QString &path : paths)
        add(path);
    EXPECT_EQ(listed(), paths);
}

TEST_F(HJSLoginItemControllerTest, EnablingTwiceInARowLeavesOneEntry)
{
    const QString path = application(QStringLiteral("QNBHelper.app"));
    add(path);
    add(path);
    EXPECT_EQ(listed(), QStringList{path});
    remove(path);
    EXPECT_EQ(listed(), QStringList());
}

TEST_F(HJSLoginItemControllerTest, DisablingWhenNoEntryMatchesChangesNothing)
{
    const QString other = application(QStringLiteral("Other.app"));
    add(other);
    writeEntry(QStringLiteral("foreign.desktop"), "/bin/sh");
    const QStringList before = listed();
    remove(folder.filePath(QStringLiteral("QNBHelper.app")));
    EXPECT_EQ(listed(), before);
    EXPECT_EQ(before.size(), 2);
}

TEST_F(HJSLoginItemControllerTest, DisablingWithoutAListChangesNothing)
{
    remove(folder.filePath(QStringLiteral("QNBHelper.app")));
    EXPECT_FALSE(QFile::exists(listFolder()));
}

TEST_F(HJSLoginItemControllerTest, AnEntryForAMissingApplicationIsNeverRemoved)
{
    const QString path = application(QStringLiteral("QNBHelper.app"));
    add(path);
    ASSERT_TRUE(QDir(path).removeRecursively());
    const QStringList unresolved = listed();
    ASSERT_EQ(unresolved.size(), 1);
    EXPECT_TRUE(unresolved.constFirst().endsWith(u".desktop"));
    remove(path);
    EXPECT_EQ(listed(), unresolved);

    application(QStringLiteral("QNBHelper.app"));
    remove(path);
    EXPECT_EQ(listed(), QStringList());
}

TEST_F(HJSLoginItemControllerTest, DisablingRemovesEveryEntryThatBeginsWithThePath)
{
    const QString path = application(QStringLiteral("QNBHelper.app"));
    const QString sibling = program(folder.filePath(QStringLiteral("QNBHelper.app2/agent")));
    const QString inside = program(path + QStringLiteral("/Contents/MacOS/Tools/agent"));
    const QString foreign = program(path + QStringLiteral("/Contents/Resources/foreign tool"));
    const QString shorter = application(QStringLiteral("QNBHelper.ap.app"));
    for (const QString &each : {path, sibling, inside, shorter})
        add(each);
    writeEntry(QStringLiteral("foreign.desktop"), "\"" + foreign.toUtf8() + "\" --quiet");
    ASSERT_EQ(listed().size(), 5);
    remove(path);
    EXPECT_EQ(listed(), QStringList{shorter});
}

TEST_F(HJSLoginItemControllerTest, ThePrefixIsComparedWithRegardToCase)
{
    const QString lower = application(QStringLiteral("qnbhelper.app"));
    add(lower);
    application(QStringLiteral("QNBHelper.app"));
    remove(folder.filePath(QStringLiteral("QNBHelper.app")));
    EXPECT_EQ(listed(), QStringList{lower});
}

TEST_F(HJSLoginItemControllerTest, ThePathIsAPrefixAndNoPattern)
{
    const QString other = application(QStringLiteral("abc.app"));
    add(other);
    for (const char *pattern : {"a*", "a?c.app", "[a]bc.app", "(abc)", ".bc.app"})
        remove(folder.filePath(QString::fromLatin1(pattern)));
    EXPECT_EQ(listed(), QStringList{other});
}

TEST_F(HJSLoginItemControllerTest, WithoutAPathNothingIsAddedOrRemoved)
{
    const QString path = application(QStringLiteral("QNBHelper.app"));
    add(path);
    remove({});
    add({});
    EXPECT_EQ(listed(), QStringList{path});
}

TEST_F(HJSLoginItemControllerTest, ASlashAtTheEndIsNotPartOfThePath)
{
    const QString path = application(QStringLiteral("QNBHelper.app"));
    add(path + u'/');
    EXPECT_EQ(listed(), QStringList{path});
    remove(path + u'/');
    EXPECT_EQ(listed(), QStringList());
}

TEST_F(HJSLoginItemControllerTest, TheListIsTheOneOfTheMoment)
{
    const QString path = application(QStringLiteral("QNBHelper.app"));
    add(path);
    const QTemporaryDir other;
    qputenv("XDG_CONFIG_HOME", other.path().toUtf8());
    EXPECT_EQ(listed(), QStringList());
    remove(path);
    add(path);
    EXPECT_EQ(listed(), QStringList{path});
    remove(path);
    qputenv("XDG_CONFIG_HOME", configuration.path().toUtf8());
    EXPECT_EQ(listed(), QStringList{path});
}

TEST_F(HJSLoginItemControllerTest, WithoutAListNothingIsChanged)
{
    const QString path = application(QStringLiteral("QNBHelper.app"));
    QFile inTheWay(listFolder());
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    inTheWay.write("mine");
    inTheWay.close();
    add(path);
    remove(path);
    ASSERT_TRUE(inTheWay.open(QIODevice::ReadOnly));
    EXPECT_EQ(inTheWay.readAll(), "mine");
}

TEST_F(HJSLoginItemControllerTest, WhatIsNoFileIsNeitherAddedNorRemoved)
{
    const QString path = application(QStringLiteral("QNBHelper.app"));
    add(path);
    const SharedFileList list = SharedFileList::create().value();
    const QUrl url = QUrl::fromLocalFile(path);
    // Nothing that can be started: not added.
    HJSLoginItemController::enableLoginItemWithLoginItemsReferenceForPath(
        list, QUrl::fromLocalFile(folder.filePath(QStringLiteral("missing"))));
    HJSLoginItemController::enableLoginItemWithLoginItemsReferenceForPath(
        list, QUrl(QStringLiteral("https://quenby.example/")));
    HJSLoginItemController::disableLoginItemWithLoginItemsReferenceForPath(
        list, QUrl(QStringLiteral("https://quenby.example/")));
    EXPECT_EQ(listed(), QStringList{path});
    HJSLoginItemController::disableLoginItemWithLoginItemsReferenceForPath(list, url);
    EXPECT_EQ(listed(), QStringList());
}

TEST_F(HJSLoginItemControllerTest, APathThatIsNoTextIsNotTakenForAnother)
{
    const QString alike = application(QStringLiteral("\uFFFD.app"));
    const QString made = application(QStringLiteral("QNBHelper.app"));
    const QByteArray path = QFile::encodeName(folder.path()) + "/\xff.app";
    ASSERT_EQ(std::rename(QFile::encodeName(made).constData(), path.constData()), 0);
    const SharedFileList list = SharedFileList::create().value();
    const QUrl url = fileURLOfPath(path);
    add(alike);
    HJSLoginItemController::enableLoginItemWithLoginItemsReferenceForPath(list, url);
    ASSERT_EQ(listed().size(), 2);
    EXPECT_EQ(list.resolve(list.copySnapshot().constLast()), url);

    HJSLoginItemController::disableLoginItemWithLoginItemsReferenceForPath(list, url);
    EXPECT_EQ(listed(), QStringList{alike});
    HJSLoginItemController::enableLoginItemWithLoginItemsReferenceForPath(list, url);
    remove(alike);
    ASSERT_EQ(listed().size(), 1);
    EXPECT_EQ(list.resolve(list.copySnapshot().constLast()), url);
    HJSLoginItemController::disableLoginItemWithLoginItemsReferenceForPath(list, url);

    // Read as text, and nothing is there under that.
    ASSERT_TRUE(QDir(alike).removeRecursively());
    add(QFile::decodeName(path));
    EXPECT_EQ(listed(), QStringList());
    ASSERT_EQ(std::rename(path.constData(), QFile::encodeName(made).constData()), 0);
}
