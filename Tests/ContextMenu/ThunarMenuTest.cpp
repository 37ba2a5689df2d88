// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "ContextMenu/ThunarMenu.h"

#include "ContextMenu/ThunarActions.h"
#include "Platform/LineText.h"
#include "Tests/ContextMenu/MenuHome.h"
#include "Tests/ContextMenu/ThunarFile.h"
#include "Tests/Session/ChildProcess.h"

#include <QFile>
#include <QFileInfo>

namespace {

const QByteArray others = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<actions>\n\n  <action>\n"
                          "    <name>Open Terminal Here</name>\n    <command>exo-open %f</command>\n"
                          "  </action>\n\n</actions>";

const QString more = QStringLiteral("More…");

class ThunarMenuTest : public MenuHome
{
protected:
    ThunarMenuTest() { makeFolder(config(QStringLiteral("Thunar"))); }

    QString file() const { return config(QStringLiteral("Thunar/uca.xml")); }

    Result<QStringList> write(const QStringList &labels)
    {
        Manifest list(manifest());
        return ThunarMenu().write(menuOf(labels), list);
    }
    Result<> remove()
    {
        Manifest list(manifest());
        const Result<QStringList> removed = ThunarMenu().remove(list);
        return removed ? list.remove() : Result<>::failure(removed.error);
    }

    QStringList texts(const QString &element) const { return ThunarFile::texts(contentOf(file()), element); }
};

} // namespace

TEST_F(ThunarMenuTest, ActionsAreInASubmenu)
{
    put(file(), others);
    ASSERT_TRUE(write({QStringLiteral("a_b"), QStringLiteral("c & <d>")}));
    EXPECT_EQ(texts(QStringLiteral("name")),
              QStringList({QStringLiteral("Open Terminal Here"), QStringLiteral("a__b"),
                           QStringLiteral("c & <d>"), more}));
    EXPECT_EQ(texts(QStringLiteral("submenu")), QStringList(3, QStringLiteral("Quenby")));
    EXPECT_EQ(texts(QStringLiteral("command")).last(),
              u'\'' + QString::fromUtf8(helper()).replace(u'\'', QStringLiteral("'\\''")) +
                  QStringLiteral("' '--launcher' '--notify' --in %f"));
    EXPECT_EQ(
        texts(QStringLiteral("unique-id")),
        QStringList({QStringLiteral("quenby-1"), QStringLiteral("quenby-2"), QStringLiteral("quenby-3")}));
    EXPECT_EQ(texts(QStringLiteral("directories")).size(), 3);
}

TEST_F(ThunarMenuTest, AnOldVersionIsGivenNoSubmenu)
{
    const QString program = QStringLiteral("thunar");
    programs_.add(program, "echo 'thunar 4.16.8 (Xfce 4.16)'");
    ASSERT_TRUE(write({QStringLiteral("a")}));
    EXPECT_EQ(texts(QStringLiteral("name")),
              QStringList({QStringLiteral("Quenby: a"), QStringLiteral("Quenby: More…")}));
    EXPECT_EQ(texts(QStringLiteral("submenu")), QStringList());
    EXPECT_EQ(programs_.starts(program), QList<QByteArrayList>({{"--version"}}));
    programs_.add(program, "echo 'thunar 4.17.0 (Xfce 4.17)'");
    ASSERT_TRUE(write({QStringLiteral("a")}));
    EXPECT_EQ(texts(QStringLiteral("submenu")), QStringList(2, QStringLiteral("Quenby")));
    programs_.add(program, "exit 1");
    ASSERT_TRUE(write({QStringLiteral("a")}));
    EXPECT_EQ(texts(QStringLiteral("submenu")), QStringList(2, QStringLiteral("Quenby")));
}

TEST_F(ThunarMenuTest, TheCommandsAreReallyRun)
{
    QStringList labels = hostileLabels();
    ASSERT_TRUE(write(labels));
    const QStringList commands = texts(QStringLiteral("command"));
    ASSERT_EQ(commands.size(), labels.size() + 1);
    const QString folder = makeFolder(in(QStringLiteral("$(id) 'x' %f")));
    for (qsizetype index = 0; index < labels.size(); ++index) {
        const QString command = ThunarFile::commandLine(commands.at(index), folder);
        ASSERT_FALSE(command.isNull()) << qPrintable(commands.at(index));
        expectCalled(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), command}, labels.at(index),
                     {folder.toUtf8()});
    }
    EXPECT_FALSE(QFile::exists(QStringLiteral("owned")));
}

TEST_F(ThunarMenuTest, WhatXMLCannotHoldIsLeftOutAndNamed)
{
    const QString suffix = QStringLiteral(" is not in the menu of Thunar, whose file has no form for it");
    const QString control = QStringLiteral("control \x01");
    const QString none = QStringLiteral("none \uffff");
    EXPECT_EQ(write({control, QStringLiteral("a"), none}).value,
              (QStringList{lineText(control) + suffix, lineText(none) + suffix}));
    EXPECT_EQ(texts(QStringLiteral("name")), QStringList({QStringLiteral("a"), more}));
}

TEST_F(ThunarMenuTest, AFileOfTheUsersIsMergedAndRestored)
{
    put(file(), others);
    ASSERT_TRUE(QFile::setPermissions(file(), QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup));
    const auto before = contentOfHome();
    ASSERT_TRUE(write(hostileLabels()));
    EXPECT_TRUE(contentOf(file()).startsWith(others.chopped(10)));
    EXPECT_EQ(QFileInfo(file()).permissions() & QFile::ReadGroup, QFile::ReadGroup);
    ASSERT_TRUE(write({QStringLiteral("another")}));
    EXPECT_EQ(texts(QStringLiteral("name")).size(), 3);
    ASSERT_TRUE(remove());
    EXPECT_EQ(contentOfHome(), before);
}

TEST_F(ThunarMenuTest, WithoutAFileTheSystemsIsTakenAndThenNotKept)
{
    makeFolder(in(QStringLiteral("etc/Thunar")));
    put(in(QStringLiteral("etc/Thunar/uca.xml")), others);
    const auto before = contentOfHome();
    ASSERT_TRUE(write({QStringLiteral("a")}));
    EXPECT_TRUE(contentOf(file()).startsWith(others.chopped(10)));
    ASSERT_TRUE(write({QStringLiteral("b")}));
    ASSERT_TRUE(remove());
    EXPECT_EQ(contentOfHome(), before);
}

TEST_F(ThunarMenuTest, WhatOthersHaveAddedMeanwhileIsKept)
{
    ASSERT_TRUE(write({QStringLiteral("a")}));
    const QByteArray theirs = "<action><name>theirs</name></action>\n";
    put(file(), contentOf(file()).replace("<actions>\n", "<actions>\n" + theirs));
    ASSERT_TRUE(write({QStringLiteral("b")}));
    EXPECT_EQ(texts(QStringLiteral("name")),
              QStringList({QStringLiteral("theirs"), QStringLiteral("b"), more}));
    ASSERT_TRUE(remove());
    EXPECT_EQ(contentOf(file()), ThunarActions::emptyFile().replace("<actions>\n", "<actions>\n" + theirs));
}

TEST_F(ThunarMenuTest, ASymbolicLinkStaysOne)
{
    const QString target = in(QStringLiteral("dotfiles.xml"));
    put(target, others);
    ASSERT_TRUE(QFile::link(target, file()));
    ASSERT_TRUE(write({QStringLiteral("a")}));
    EXPECT_TRUE(QFileInfo(file()).isSymLink());
    EXPECT_EQ(texts(QStringLiteral("name")).size(), 3);
    ASSERT_TRUE(remove());
    EXPECT_TRUE(QFileInfo(file()).isSymLink());
    EXPECT_EQ(contentOf(target), others);
}

TEST_F(ThunarMenuTest, ADamagedFileIsNeverWritten)
{
    const QByteArray damaged = others.chopped(3);
    put(file(), damaged);
    const Result<QStringList> written = write({QStringLiteral("a")});
    EXPECT_FALSE(written);
    EXPECT_TRUE(written.error.contains(file())) << qPrintable(written.error);
    EXPECT_EQ(contentOf(file()), damaged);

    put(file(), others);
    ASSERT_TRUE(write({QStringLiteral("a")}));
    const QByteArray broken = contentOf(file()).chopped(3);
    put(file(), broken);
    EXPECT_FALSE(write({QStringLiteral("b")}));
    EXPECT_FALSE(remove());
    EXPECT_EQ(contentOf(file()), broken);
}
