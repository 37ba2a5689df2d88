// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Desktop/SharedFileList.h"

#include "Platform/Files/DurableFileWriter.h"
#include "SharedFileListFixture.h"
#include "Tests/Platform/Files/KilledAtRename.h"
#include "Tests/Session/ChildProcess.h"

#include <QRegularExpression>

#include <algorithm>
#include <gmock/gmock.h>
#include <memory>
#include <sys/stat.h>
#include <vector>

using ::testing::ElementsAre;
using ::testing::HasSubstr;

namespace {

using SharedFileListTest = SharedFileListFixture;

} // namespace

TEST_F(SharedFileListTest, AListThatHasNoFolderYetIsEmpty)
{
    EXPECT_TRUE(list().copySnapshot().isEmpty());
    EXPECT_FALSE(QFile::exists(folder()));
}

TEST_F(SharedFileListTest, WhatIsNoFolderIsNoList)
{
    const QString file = in(QStringLiteral("file"));
    put(file, "mine");
    EXPECT_FALSE(SharedFileList::create(file));
    const QString nowhere = in(QStringLiteral("nowhere"));
    ASSERT_TRUE(QFile::link(in(QStringLiteral("missing")), nowhere));
    EXPECT_FALSE(SharedFileList::create(nowhere));
}

TEST_F(SharedFileListTest, TheSessionsListIsAFolderOfTheConfiguration)
{
    const QByteArray before = qgetenv("XDG_CONFIG_HOME");
    qputenv("XDG_CONFIG_HOME", in(QStringLiteral("config")).toUtf8());
    const std::optional<SharedFileList> session = SharedFileList::create();
    if (before.isNull())
        qunsetenv("XDG_CONFIG_HOME");
    else
        qputenv("XDG_CONFIG_HOME", before);
    ASSERT_TRUE(session);
    ASSERT_TRUE(session->insertItemURL(urlOf(application(QStringLiteral("Some.app")))));
    EXPECT_EQ(fileNames().size(), 1);
}

TEST_F(SharedFileListTest, AnEntryStartsTheExecutableOfTheApplication)
{
    const QString path = application(QStringLiteral("Some App.app"));
    ASSERT_TRUE(insert(path));
    const QByteArray executable = path.toUtf8() + "/Contents/MacOS/" + TestApplication::defaultExecutable;
    EXPECT_EQ(contentOf(entryPath()), "[Desktop Entry]\n"
                                      "Type=Application\n"
                                      "Version=1.0\n"
                                      "Name=Some App\n"
                                      "Exec=\"" +
                                          executable +
                                          "\"\n"
                                          "TryExec=" +
                                          executable +
                                          "\n"
                                          "X-Quenby-URL=" +
                                          urlOf(path).toEncoded() +
                                          "\n"
                                          "X-Quenby-Place=1\n");
    EXPECT_TRUE(QRegularExpression(QStringLiteral("^Some-App-[0-9a-f]{16}\\.desktop$"))
                    .match(fileNames().value(0))
                    .hasMatch())
        << qPrintable(fileNames().value(0));
    EXPECT_EQ(namesIn(folder()), fileNames());
}

TEST_F(SharedFileListTest, AnEntryPresentsTheApplicationAsThatPresentsItself)
{
    const QString path = application(QStringLiteral("SomeApp.app"));
    QFile information(path + QStringLiteral("/Contents/Info.plist"));
    ASSERT_TRUE(information.open(QIODevice::WriteOnly));
    information.write("<plist version=\"1.0\"><dict>"
                      "<key>CFBundleExecutable</key><string>RecordingApp</string>"
                      "<key>CFBundleDisplayName</key><string>Some Program</string>"
                      "<key>CFBundleGetInfoString</key><string>Does this\nand that</string>"
                      "<key>CFBundleIconFile</key><string>some-icon</string></dict></plist>");
    information.close();
    ASSERT_TRUE(insert(path));
    EXPECT_THAT(contentOf(entryPath()).toStdString(),
                HasSubstr("\nName=Some Program\nComment=Does this\uFFFDand that\nIcon=some-icon\nExec="));
}

TEST_F(SharedFileListTest, AnEntryResolvesToItsFileWhileThatExists)
{
    const QString path = application(QStringLiteral("Some.app"));
    ASSERT_TRUE(insert(path));
    EXPECT_EQ(resolved(), QStringList{path});
    const QString elsewhere = in(QStringLiteral("Other.app"));
    ASSERT_TRUE(QFile::rename(path, elsewhere));
    EXPECT_EQ(resolved(), QStringList{QString()});
    ASSERT_TRUE(QFile::rename(elsewhere, path));
    EXPECT_EQ(resolved(), QStringList{path});
}

TEST_F(SharedFileListTest, AProgramIsStartedItself)
{
    const QString path = program(QStringLiteral("some tool"));
    ASSERT_TRUE(insert(path));
    EXPECT_TRUE(contentOf(entryPath()).contains("\nExec=\"" + path.toUtf8() + "\"\n"));
    EXPECT_EQ(resolved(), QStringList{path});
}

TEST_F(SharedFileListTest, WhatAKilledWriterLeftGoesWithTheNextOne)
{
    const QString path = program(QStringLiteral("tool"));
    ASSERT_TRUE(insert(path));
    KilledAtRename layer;
    EXPECT_FALSE(DurableFileWriter(&layer).write(entryPath(), "half"));
    EXPECT_EQ(namesIn(folder()).size(), 2);
    ASSERT_TRUE(insert(path));
    EXPECT_EQ(namesIn(folder()).size(), 1);
}

TEST_F(SharedFileListTest, WhatCannotBeStartedIsNotAdded)
{
    const QString text = in(QStringLiteral("text"));
    put(text, "text");
    const QString unnamed = in(QStringLiteral("Unnamed.app"));
    ASSERT_TRUE(QDir().mkpath(unnamed + QStringLiteral("/Contents/MacOS")));
    const QString outside = in(QStringLiteral("Outside.app"));
    TestApplication::makeBundle(outside, QStringLiteral("../../../text"));
    for (const QString &path :
         {text, root(), in(QStringLiteral("missing")), in(QStringLiteral("Missing.app")), unnamed, outside})
        EXPECT_FALSE(insert(path)) << qPrintable(path);
    for (const char *address : {"", "https://quenby.example/", "file://server/bin/sh", "file:relative",
                                "file:///bin/sh%00.app", "/bin/sh"})
        EXPECT_FALSE(list().insertItemURL(QUrl(QString::fromLatin1(address)))) << address;
    EXPECT_FALSE(QFile::exists(folder()));
}

TEST_F(SharedFileListTest, AnApplicationThatCannotRunNowHasAnEntryAllTheSame)
{
    const TestApplication application(in(QStringLiteral("Some.app")));
    ASSERT_TRUE(QFile::setPermissions(application.executable(), QFile::ReadOwner));
    EXPECT_TRUE(insert(application.path()));
    const QString missing = in(QStringLiteral("Unfinished.app"));
    TestApplication::makeBundle(missing, QStringLiteral("Unfinished"));
    EXPECT_TRUE(insert(missing));
    EXPECT_EQ(resolved(), (QStringList{application.path(), missing}));
}

TEST_F(SharedFileListTest, EntriesAreInTheOrderInWhichTheyWereAdded)
{
    QStringList paths;
    for (const char *name : {"Zebra.app", "Ape.app", "Mole.app", "Bee.app", "Yak.app", "Cow.app", "Eel.app",
                             "Fox.app", "Gnu.app", "Hen.app", "Ibis.app"}) {
        paths << application(QString::fromLatin1(name));
        ASSERT_TRUE(insert(paths.constLast()));
    }
    EXPECT_EQ(resolved(), paths);
}

TEST_F(SharedFileListTest, TheEntriesOfOthersComeFirstInTheOrderOfTheirNames)
{
    const QString path = application(QStringLiteral("A.app"));
    ASSERT_TRUE(insert(path));
    putForeign(QStringLiteral("z.desktop"), "/bin/sh");
    putForeign(QStringLiteral("a.desktop"), "/bin/sh");
    EXPECT_EQ(fileNames().mid(0, 2), (QStringList{QStringLiteral("a.desktop"), QStringLiteral("z.desktop")}));
    EXPECT_EQ(resolved().constLast(), path);
}

TEST_F(SharedFileListTest, AppendingAgainMovesTheOneEntryToTheEnd)
{
    const QString one = application(QStringLiteral("One.app"));
    const QString two = application(QStringLiteral("Two.app"));
    ASSERT_TRUE(insert(one));
    ASSERT_TRUE(insert(two));
    const QStringList names = fileNames();
    ASSERT_TRUE(insert(one));
    EXPECT_EQ(resolved(), (QStringList{two, one}));
    EXPECT_EQ(fileNames(), (QStringList{names.value(1), names.value(0)}));
    ASSERT_TRUE(insert(one + u'/'));
    EXPECT_EQ(resolved(), (QStringList{two, one}));
}

TEST_F(SharedFileListTest, AnEntryThatIsSwitchedOffIsAsGoodAsRemoved)
{
    const QString path = application(QStringLiteral("Some.app"));
    ASSERT_TRUE(insert(path));
    const QString entry = entryPath();
    const QByteArray active = contentOf(entry);
    put(entry, active + "Hidden=true\n");
    EXPECT_EQ(fileNames(), QStringList());
    ASSERT_TRUE(insert(path));
    EXPECT_EQ(entryPath(), entry);
    EXPECT_EQ(contentOf(entry), active);
    // As the settings of some desktops write it.
    put(entry, active + "X-GNOME-Autostart-enabled=false\n");
    EXPECT_EQ(fileNames(), QStringList());
    put(entry, active + "X-GNOME-Autostart-enabled=true\nHidden=false\n");
    EXPECT_EQ(resolved(), QStringList{path});
}

TEST_F(SharedFileListTest, AnEntryThatWasRenamedIsStillTheOne)
{
    const QString path = application(QStringLiteral("Some.app"));
    ASSERT_TRUE(insert(path));
    const QString renamed = folder() + QStringLiteral("/mine.desktop");
    ASSERT_TRUE(QFile::rename(entryPath(), renamed));
    ASSERT_TRUE(insert(path));
    EXPECT_EQ(entryPath(), renamed);
}

TEST_F(SharedFileListTest, AnEntryIsCalledAfterTheIdentifierOfItsApplication)
{
    const QString one = application(QStringLiteral("one/Some.app"));
    const QString two = application(QStringLiteral("two/Other.app"));
    for (const QString &path : {one, two})
        identify(path, "org.example.Some");
    ASSERT_TRUE(insert(one));
    ASSERT_TRUE(insert(two));
    EXPECT_THAT(fileNames(), ElementsAre(QStringLiteral("org.example.Some.desktop"),
                                         QStringLiteral("org.example.Some-2.desktop")));
    EXPECT_EQ(resolved(), (QStringList{one, two}));
}

TEST_F(SharedFileListTest, WhatNoDesktopTakesForAnIdentifierNamesNoEntry)
{
    const QString path = application(QStringLiteral("Some.app"));
    for (const QByteArray &identifier :
         {QByteArray("Some"), QByteArray("org.1st.Some"), QByteArray("org..Some"), QByteArray("../a.b"),
          QByteArray("org.example.S\u00f6me"), "org." + QByteArray(300, 'a')}) {
        identify(path, identifier);
        ASSERT_TRUE(insert(path));
        EXPECT_TRUE(fileNames().value(0).startsWith(u"Some-")) << identifier.constData();
    }
    EXPECT_EQ(fileNames().size(), 1);
}

TEST_F(SharedFileListTest, ApplicationsOfOneNameHaveEntriesOfTheirOwn)
{
    const QString one = application(QStringLiteral("one/Some.app"));
    const QString two = application(QStringLiteral("two/Some.app"));
    const QString odd = application(QStringLiteral("two/S\u00F6me!?.app"));
    ASSERT_TRUE(insert(one));
    ASSERT_TRUE(insert(two));
    ASSERT_TRUE(insert(odd));
    EXPECT_EQ(resolved(), (QStringList{one, two, odd}));
    EXPECT_TRUE(fileNames().constLast().startsWith(u"S-me---")) << qPrintable(fileNames().constLast());
}

TEST_F(SharedFileListTest, WhatIsThereUnderTheNameIsNotTouched)
{
    const QString path = application(QStringLiteral("Some.app"));
    ASSERT_TRUE(insert(path));
    const QString name = fileNames().value(0);
    ASSERT_TRUE(QFile::remove(entryPath()));
    putForeign(name, "/bin/sh");
    const QByteArray foreign = contentOf(folder() + u'/' + name);
    const QString second = QString(name).replace(QStringLiteral(".desktop"), QStringLiteral("-2.desktop"));
    ASSERT_TRUE(QFile::link(in(QStringLiteral("nowhere")), folder() + u'/' + second));
    ASSERT_TRUE(insert(path));
    EXPECT_EQ(resolved(), (QStringList{QStringLiteral("/bin/sh"), path}));
    EXPECT_TRUE(fileNames().constLast().endsWith(u"-3.desktop"));
    EXPECT_EQ(contentOf(folder() + u'/' + name), foreign);
    EXPECT_FALSE(QFile::exists(in(QStringLiteral("nowhere"))));
}

TEST_F(SharedFileListTest, RemovingDeletesTheFileOnly)
{
    const QString one = application(QStringLiteral("One.app"));
    const QString two = application(QStringLiteral("Two.app"));
    ASSERT_TRUE(insert(one));
    ASSERT_TRUE(insert(two));
    putForeign(QStringLiteral("foreign.desktop"), "/bin/sh");
    const QList<SharedFileList::Item> items = list().copySnapshot();
    ASSERT_EQ(items.size(), 3);
    EXPECT_TRUE(list().remove(items.value(1)));
    EXPECT_EQ(resolved(), (QStringList{QStringLiteral("/bin/sh"), two}));
    EXPECT_TRUE(list().remove(items.value(0)));
    EXPECT_EQ(resolved(), QStringList{two});
    EXPECT_TRUE(list().remove(items.value(1))) << "somebody else removed it";
    EXPECT_EQ(namesIn(folder()), fileNames());
}

TEST_F(SharedFileListTest, AFailureIsReportedAndLeavesTheEntry)
{
    const QString path = application(QStringLiteral("Some.app"));
    ASSERT_TRUE(insert(path));
    const QList<SharedFileList::Item> items = list().copySnapshot();
    const QString entry = entryPath();
    ASSERT_TRUE(QFile::remove(entry));
    ASSERT_TRUE(QDir().mkpath(entry + QStringLiteral("/folder")));
    const Result<> result = list().remove(items.value(0));
    EXPECT_FALSE(result);
    EXPECT_TRUE(result.error.contains(entry)) << qPrintable(result.error);
    EXPECT_TRUE(QFile::exists(entry));
}

TEST_F(SharedFileListTest, TheFolderIsMadeAndAFileInItsPlaceIsNot)
{
    const QString path = application(QStringLiteral("Some.app"));
    put(in(QStringLiteral("config")), "mine");
    EXPECT_FALSE(insert(path));
    ASSERT_TRUE(QFile::remove(in(QStringLiteral("config"))));
    EXPECT_TRUE(insert(path));
    EXPECT_EQ(resolved(), QStringList{path});
}

TEST_F(SharedFileListTest, ThePlacesNeverRunOut)
{
    const QString one = application(QStringLiteral("One.app"));
    const QString two = application(QStringLiteral("Two.app"));
    ASSERT_TRUE(insert(one));
    const QString entry = entryPath();
    put(entry, contentOf(entry).replace("Place=1", "Place=9223372036854775807"));
    ASSERT_TRUE(insert(two));
    EXPECT_EQ(fileNames().size(), 2);
    EXPECT_TRUE(resolved().contains(two));
    ASSERT_TRUE(insert(two));
    EXPECT_EQ(fileNames().size(), 2);
}

TEST_F(SharedFileListTest, ProcessesThatChangeTheListAtOnceDoNotDisturbEachOther)
{
    constexpr int processes = 3;
    const QString shared = application(QStringLiteral("Shared.app"));
    putForeign(QStringLiteral("foreign.desktop"), "/bin/sh");
    QStringList expected = {QStringLiteral("/bin/sh"), shared};
    std::vector<std::unique_ptr<ChildProcess>> children;
    for (int number = 0; number < processes; ++number) {
        const QString own = application(QStringLiteral("Own %1%.app").arg(number));
        expected << own;
        children.push_back(
            std::make_unique<ChildProcess>(QStringLiteral(QUENBY_TEST_LOGIN_ITEMS),
                                           QStringList{folder(), own, shared, QString::number(50)}));
    }
    for (const std::unique_ptr<ChildProcess> &child : children) {
        EXPECT_TRUE(child->waitForEnd(std::chrono::minutes(2)));
        EXPECT_TRUE(child->hasReturned(0)) << child->errors().constData();
    }
    QStringList found = resolved();
    std::sort(found.begin(), found.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(found, expected);
    // An entry and a folder with a link for each of their own, and two more entries.
    EXPECT_EQ(namesIn(folder()).size(), 2 * processes + 2) << qPrintable(namesIn(folder()).join(u' '));
}
