// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// What else may lie in the folder of login items.

#include "Platform/Desktop/SharedFileList.h"

#include "Platform/Files/FileURL.h"
#include "SharedFileListFixture.h"

#include <sys/stat.h>
#include <utime.h>

namespace {

class SharedFileListHostileTest : public SharedFileListFixture
{
protected:
    /// What the entry of another program with this command line resolves to.
    QByteArray resolvedCommand(const QByteArray &exec)
    {
        putForeign(QStringLiteral("foreign.desktop"), exec);
        const QList<SharedFileList::Item> items = list().copySnapshot();
        EXPECT_EQ(items.size(), 1) << exec.constData();
        if (items.isEmpty())
            return {};
        const std::optional<QUrl> url = list().resolve(items.constFirst());
        return url ? pathOfFileURL(*url).value_or("no file") : QByteArray();
    }

    /// Appends, appends again and removes an application of its own.
    void useTheList()
    {
        const QString path = application(QStringLiteral("Own.app"));
        ASSERT_TRUE(insert(path));
        ASSERT_TRUE(insert(path));
        const QList<SharedFileList::Item> items = list().copySnapshot();
        ASSERT_FALSE(items.isEmpty());
        EXPECT_EQ(list().resolve(items.constLast()), urlOf(path));
        ASSERT_TRUE(list().remove(items.constLast()));
    }
};

} // namespace

TEST_F(SharedFileListHostileTest, TheProgramOfAnotherIsTheFirstPartOfItsCommand)
{
    const QByteArray path = program(QStringLiteral("tool")).toUtf8();
    EXPECT_EQ(resolvedCommand(path), path);
    EXPECT_EQ(resolvedCommand("  " + path + "   --option %U"), path);
    EXPECT_EQ(resolvedCommand("\"" + path + "\" \"other\""), path);
    EXPECT_EQ(resolvedCommand("'" + path + "' 'other'"), path);
    EXPECT_EQ(resolvedCommand(path.left(5) + "\"" + path.mid(5) + "\""), path);
    EXPECT_EQ(resolvedCommand(path + "\\t--option"), path);
}

TEST_F(SharedFileListHostileTest, TheProgramOfAnotherIsReadByTheRules)
{
    const QByteArray odd = program(QStringLiteral("a \"b\" $c `d` \\e 50% 'f'")).toUtf8();
    const QByteArray start = root().toUtf8();
    EXPECT_EQ(resolvedCommand("\"" + start + R"(/a \\"b\\" \\$c \\`d\\` \\\\e 50%% 'f'" --now)"), odd);
    const QByteArray line = program(QStringLiteral("new\nline\tand tab")).toUtf8();
    EXPECT_EQ(resolvedCommand("\"" + start + "/new\\nline\\tand\\stab\""), line);
}

TEST_F(SharedFileListHostileTest, TheProgramOfAnotherNeedNotBeText)
{
    const QByteArray path = root().toUtf8() + "/a\xff\xfe b";
    ASSERT_EQ(::symlink("/bin/true", path.constData()), 0);
    const NamedByBytes removed(path);
    EXPECT_EQ(resolvedCommand("\"" + path + "\""), path);
}

TEST_F(SharedFileListHostileTest, AProgramWithoutAPathIsLookedUp)
{
    const QByteArray before = qgetenv("PATH");
    const QByteArray path = program(QStringLiteral("folder/quenby-some-tool")).toUtf8();
    ASSERT_TRUE(QDir().mkpath(in(QStringLiteral("other/quenby-some-tool"))));
    put(in(QStringLiteral("quenby-some-tool")), "no program");
    qputenv("PATH", in(QStringLiteral("other")).toUtf8() + "::relative:" + root().toUtf8() + ":" +
                        in(QStringLiteral("folder")).toUtf8());
    EXPECT_EQ(resolvedCommand("quenby-some-tool --option"), path);
    EXPECT_EQ(resolvedCommand("quenby-no-tool"), "");
    EXPECT_EQ(resolvedCommand("folder/quenby-some-tool"), "");
    qputenv("PATH", before);
}

TEST_F(SharedFileListHostileTest, ACommandThatNamesNoProgramResolvesToNothing)
{
    const QByteArray path = program(QStringLiteral("tool")).toUtf8();
    for (const QByteArray &exec :
         {QByteArray(), QByteArray("  "), QByteArray("\"\""), "\"" + path, "'" + path, path + "\\\\",
          QByteArray("%f"), path + "%f", path + "%", path + "/missing", root().toUtf8() + "/missing",
          QByteArray("~/tool"), QByteArray("$HOME/tool"), path + QByteArray("\0x", 2),
          QByteArray(500000, '"'), QByteArray(500000, '\\')})
        EXPECT_EQ(resolvedCommand(exec), "") << exec.left(80).constData();
}

TEST_F(SharedFileListHostileTest, TheEntriesOfOthersAreNeverWritten)
{
    putForeign(QStringLiteral("foreign.desktop"), "/bin/sh");
    const QByteArray windows = "\xef\xbb\xbf# notes\r\n\r\n[Desktop Entry]\r\nType = Application\r\n"
                               "Name=caf\xe9\r\nExec = /bin/sh -c true\r\n[Other]\r\nType=Link";
    putEntry(QStringLiteral("windows.desktop"), windows.mid(3));
    putEntry(QStringLiteral("hidden.desktop"), "[Desktop Entry]\nHidden=true\n");
    putEntry(QStringLiteral("broken.desktop"), windows);
    const utimbuf old = {.actime = 1000000000, .modtime = 1000000000};
    QMap<QString, QByteArray> before;
    for (const QString &name : namesIn(folder())) {
        const QString path = folder() + u'/' + name;
        before[name] = contentOf(path);
        ASSERT_EQ(::utime(QFile::encodeName(path).constData(), &old), 0);
    }
    EXPECT_EQ(fileNames(),
              (QStringList{QStringLiteral("foreign.desktop"), QStringLiteral("windows.desktop")}));
    EXPECT_EQ(resolved(), (QStringList{QStringLiteral("/bin/sh"), QStringLiteral("/bin/sh")}));
    useTheList();
    ASSERT_EQ(namesIn(folder()), QStringList(before.keys()));
    for (auto entry = before.cbegin(); entry != before.cend(); ++entry) {
        const QString path = folder() + u'/' + entry.key();
        EXPECT_EQ(contentOf(path), entry.value()) << qPrintable(path);
        struct stat information = {};
        ASSERT_EQ(::stat(QFile::encodeName(path).constData(), &information), 0);
        EXPECT_EQ(information.st_mtime, old.modtime) << qPrintable(path);
    }
}

TEST_F(SharedFileListHostileTest, WhatIsNoEntryIsPassedOverAndLeftAlone)
{
    ASSERT_TRUE(QDir().mkpath(folder() + QStringLiteral("/folder.desktop/inside")));
    ASSERT_EQ(::mkfifo(QFile::encodeName(folder() + QStringLiteral("/fifo.desktop")).constData(), 0600), 0);
    ASSERT_TRUE(QFile::link(in(QStringLiteral("missing")), folder() + QStringLiteral("/dangling.desktop")));
    ASSERT_TRUE(QFile::link(QStringLiteral("/dev/zero"), folder() + QStringLiteral("/endless.desktop")));
    ASSERT_TRUE(
        QFile::link(folder() + QStringLiteral("/loop.desktop"), folder() + QStringLiteral("/loop.desktop")));
    putEntry(QStringLiteral("empty.desktop"), {});
    putEntry(QStringLiteral("binary.desktop"), QByteArray(5000, '\0'));
    putEntry(QStringLiteral("no-group.desktop"), "Type=Application\nExec=/bin/sh\n");
    putEntry(QStringLiteral("other-group.desktop"), "[Other]\nType=Application\nExec=/bin/sh\n");
    putEntry(QStringLiteral("no-key.desktop"), "[Desktop Entry]\nType=Application\nExec\n");
    putEntry(QStringLiteral("link.desktop"), "[Desktop Entry]\nType=Link\nURL=https://quenby.example\n");
    putEntry(QStringLiteral("no-type.desktop"), "[Desktop Entry]\nExec=/bin/sh\n");
    putForeign(QStringLiteral("huge.desktop"), "/bin/sh " + QByteArray(1 << 21, 'x'));
    putForeign(QStringLiteral("foreign.DESKTOP"), "/bin/sh");
    putForeign(QStringLiteral("foreign.desktop~"), "/bin/sh");
    const QByteArray noText = QFile::encodeName(folder()) + "/\xff.desktop";
    ASSERT_EQ(
        ::link(QFile::encodeName(folder() + QStringLiteral("/link.desktop")).constData(), noText.constData()),
        0);
    const NamedByBytes removed(noText);
    const QStringList before = namesIn(folder());
    EXPECT_EQ(fileNames(), QStringList());
    useTheList();
    EXPECT_EQ(namesIn(folder()), before);
}

TEST_F(SharedFileListHostileTest, OfALinkedEntryTheLinkIsRemoved)
{
    const QString kept = in(QStringLiteral("kept.desktop"));
    putForeign(QStringLiteral("foreign.desktop"), "/bin/sh");
    ASSERT_TRUE(QFile::rename(folder() + QStringLiteral("/foreign.desktop"), kept));
    const QByteArray content = contentOf(kept);
    ASSERT_TRUE(QFile::link(kept, folder() + QStringLiteral("/foreign.desktop")));
    EXPECT_EQ(resolved(), QStringList{QStringLiteral("/bin/sh")});
    ASSERT_TRUE(list().remove(list().copySnapshot().value(0)));
    EXPECT_EQ(namesIn(folder()), QStringList());
    EXPECT_EQ(contentOf(kept), content);
}

TEST_F(SharedFileListHostileTest, AnAddressThatIsNoFilesIsNotResolved)
{
    const QByteArray start = "[Desktop Entry]\nType=Application\nName=Odd\nExec=/bin/sh\nX-Quenby-URL=";
    for (const char *address : {"https://quenby.example/", "file://server/bin/sh", "file:relative",
                                "file:///bin/sh%00", "file:///no/such/file"}) {
        putEntry(QStringLiteral("odd.desktop"), start + address + "\n");
        EXPECT_EQ(resolved(), QStringList{QString()}) << address;
    }
    // Not an address: the entry is one of the usual kind.
    for (const char *address : {"", "%", "file:///%zz"}) {
        putEntry(QStringLiteral("odd.desktop"), start + address + "\n");
        EXPECT_EQ(resolved(), QStringList{QStringLiteral("/bin/sh")}) << address;
    }
}

TEST_F(SharedFileListHostileTest, APlaceThatIsNoneIsTheFirst)
{
    const QString path = application(QStringLiteral("Own.app"));
    for (const char *place : {"", "-5", "x", "99999999999999999999999", "1.5"}) {
        putEntry(QStringLiteral("odd.desktop"),
                 QByteArray("[Desktop Entry]\nType=Application\nName=Odd\nExec=/bin/sh\nX-Quenby-Place=") +
                     place + "\n");
        ASSERT_TRUE(insert(path));
        EXPECT_EQ(resolved(), (QStringList{QStringLiteral("/bin/sh"), path})) << place;
    }
}
