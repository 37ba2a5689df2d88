// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// The entries of those file managers that read desktop entries, or what looks like them: what is shown, and
// what is started, by the letter of the Desktop Entry Specification and by a program that starts entries.

#include "ContextMenu/DolphinMenu.h"
#include "ContextMenu/PCManFMQtMenu.h"
#include "Tests/ContextMenu/ExecLine.h"
#include "Tests/ContextMenu/MenuHome.h"
#include "Tests/Session/ChildProcess.h"

#include <QFile>
#include <QFileInfo>

namespace {

using File = FileManagerWithFiles::File;

const QByteArray mainGroup = "Desktop Entry";
const QByteArray folder = "/a folder/$(id) %f";

class DesktopEntriesTest : public MenuHome
{
protected:
    /// Expects that the group of \a entry starts the helper for the preset \a label, or with \a call.
    void expectStarts(const QByteArray &entry, const QByteArray &group, const QByteArrayList &call) const
    {
        const std::optional<QByteArray> exec = ExecLine::value(entry, group, "Exec");
        ASSERT_TRUE(exec) << entry.constData();
        EXPECT_EQ(ExecLine::arguments(*exec, folder), QByteArrayList{helper()} + call) << exec->constData();
    }
    void expectStarts(const QByteArray &entry, const QByteArray &group, const QString &label) const
    {
        expectStarts(entry, group, callFor(label, {folder}));
    }

    /// Has the command line of \a group really started, for every folder that there may be.
    void expectReallyStarts(const QByteArray &entry, const QByteArray &group, const QString &label,
                            const QByteArrayList &folders)
    {
        const QByteArray exec = ExecLine::value(entry, group, "Exec").value();
        const QString path = in(QStringLiteral("start.desktop"));
        put(path, "[Desktop Entry]\nType=Application\nName=Start\nExec=" + exec + '\n');
        for (const QByteArray &name : folders) {
            const QString target = makeFolder(in(QStringLiteral("targets/") + QString::fromUtf8(name)));
            expectCalled(QStringLiteral(QUENBY_GIO), {QStringLiteral("launch"), path, target}, label,
                         {target.toUtf8()});
        }
    }

    static QString shown(const QByteArray &entry, const QByteArray &group)
    {
        return QString::fromUtf8(ExecLine::string(ExecLine::value(entry, group, "Name").value_or("nothing")));
    }

    /// What the validator says.
    QByteArray validate(const QByteArray &entry) const
    {
        const QString path = in(QStringLiteral("validated.desktop"));
        put(path, entry);
        ChildProcess process(QStringLiteral(QUENBY_DESKTOP_FILE_VALIDATE), {path});
        EXPECT_TRUE(process.waitForEnd());
        return process.output() + process.errors();
    }
};

QByteArray dolphinAction(qsizetype index)
{
    return "Desktop Action preset" + QByteArray::number(index + 1);
}

} // namespace

TEST_F(DesktopEntriesTest, DolphinHasOneExecutableServiceMenu)
{
    const QList<File> files = DolphinMenu().files(menuOf({QStringLiteral("a"), QStringLiteral("b")}));
    ASSERT_EQ(files.size(), 1);
    EXPECT_EQ(files.first().path, data(QStringLiteral("kio/servicemenus/org.quenby.Quenby.desktop")));
    EXPECT_TRUE(files.first().isExecutable);
    const QByteArray entry = files.first().content;
    EXPECT_EQ(ExecLine::value(entry, mainGroup, "X-KDE-Submenu"), "Quenby");
    EXPECT_EQ(ExecLine::value(entry, mainGroup, "MimeType"), "inode/directory;");
    EXPECT_EQ(ExecLine::value(entry, mainGroup, "Actions"), "preset1;preset2;preset3;");
    EXPECT_EQ(shown(entry, dolphinAction(0)), QStringLiteral("a"));
    EXPECT_EQ(shown(entry, dolphinAction(1)), QStringLiteral("b"));
    EXPECT_EQ(shown(entry, dolphinAction(2)), QStringLiteral("More…"));
    expectStarts(entry, dolphinAction(2), {"--launcher", "--notify", "--in", folder});
}

TEST_F(DesktopEntriesTest, DolphinsServiceMenuIsValid)
{
    const QByteArray entry = DolphinMenu().files(menuOf(hostileLabels())).first().content;
    // The validator knows the type, but not what service menus have in it.
    for (const QByteArray &line : validate(entry).trimmed().split('\n'))
        EXPECT_TRUE(line.contains("but the type is \"Service\" while this key is only valid for type"))
            << line.constData();
    QByteArray application = entry;
    application.replace("Type=Service\n", "Type=Application\nExec=true\n");
    ASSERT_NE(application, entry);
    EXPECT_EQ(validate(application), "");
}

TEST_F(DesktopEntriesTest, DolphinsActionsStartTheHelper)
{
    const QStringList labels = hostileLabels();
    const QByteArray entry = DolphinMenu().files(menuOf(labels)).first().content;
    for (qsizetype index = 0; index < labels.size(); ++index)
        expectStarts(entry, dolphinAction(index), labels.at(index));
}

TEST_F(DesktopEntriesTest, DolphinsActionsAreReallyStarted)
{
    const QStringList labels = hostileLabels();
    const QByteArray entry = DolphinMenu().files(menuOf(labels)).first().content;
    for (qsizetype index = 0; index < labels.size(); ++index)
        expectReallyStarts(entry, dolphinAction(index), labels.at(index), {"$(id) 'x' %f"});
    expectReallyStarts(entry, dolphinAction(0), labels.first(), hostileFolders());
    EXPECT_FALSE(QFile::exists(QStringLiteral("owned")));
}

TEST_F(DesktopEntriesTest, PCManFMQtHasAMenuOfActions)
{
    const QList<File> files =
        PCManFMQtMenu().files(menuOf({QStringLiteral("100% R&D"), QStringLiteral("b")}));
    ASSERT_EQ(files.size(), 4);
    EXPECT_EQ(files.at(3).path, data(QStringLiteral("file-manager/actions/quenby.desktop")));
    const QByteArray menu = files.at(3).content;
    EXPECT_EQ(ExecLine::value(menu, mainGroup, "Type"), "Menu");
    EXPECT_EQ(ExecLine::value(menu, mainGroup, "Name"), "Quenby");
    EXPECT_EQ(ExecLine::value(menu, mainGroup, "ItemsList"), "quenby-0001;quenby-0002;quenby-0003;");
    const QByteArray action = files.at(0).content;
    EXPECT_EQ(files.at(0).path, data(QStringLiteral("file-manager/actions/quenby-0001.desktop")));
    EXPECT_EQ(ExecLine::value(action, mainGroup, "Type"), "Action");
    EXPECT_EQ(shown(action, mainGroup), QStringLiteral("100%% R&&D"));
    EXPECT_EQ(ExecLine::value(action, "X-Action-Profile folder", "MimeTypes"), "inode/directory;");
    EXPECT_EQ(shown(files.at(2).content, mainGroup), QStringLiteral("More…"));
    expectStarts(files.at(2).content, "X-Action-Profile folder", {"--launcher", "--notify", "--in", folder});
}

TEST_F(DesktopEntriesTest, PCManFMQtsActionsStartTheHelper)
{
    const QStringList labels = hostileLabels();
    const QList<File> files = PCManFMQtMenu().files(menuOf(labels));
    ASSERT_EQ(files.size(), labels.size() + 2);
    for (qsizetype index = 0; index < labels.size(); ++index) {
        expectStarts(files.at(index).content, "X-Action-Profile folder", labels.at(index));
        expectReallyStarts(files.at(index).content, "X-Action-Profile folder", labels.at(index), {"x y"});
    }
}
