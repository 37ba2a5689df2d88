// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// Entries whose application is elsewhere now, or has another name.

#include "Platform/Desktop/SharedFileList.h"

#include "Platform/Desktop/DesktopFolders.h"
#include "Platform/Files/FileDescriptor.h"
#include "Platform/Files/FileLock.h"
#include "SharedFileListFixture.h"

#include <QRegularExpression>

#include <future>
#include <gmock/gmock.h>
#include <poll.h>
#include <sys/inotify.h>

using ::testing::ElementsAre;

namespace {

using SharedFileListFollowingTest = SharedFileListFixture;

} // namespace

TEST_F(SharedFileListFollowingTest, AnEntryFollowsAnApplicationThatWasMoved)
{
    const QString old = application(QStringLiteral("old/Some.app"));
    const QString other = application(QStringLiteral("Other.app"));
    ASSERT_TRUE(insert(old));
    ASSERT_TRUE(insert(other));
    const QString place = in(QStringLiteral("new/Some.app"));
    ASSERT_TRUE(QDir().mkpath(in(QStringLiteral("new"))));
    TestApplication::makeBundle(place, QStringLiteral("Some"));
    ASSERT_TRUE(list().replaceOutdated(urlOf(place)));
    EXPECT_EQ(resolved(), (QStringList{old, other})) << "it is still there";

    ASSERT_TRUE(QDir(old).removeRecursively());
    ASSERT_TRUE(QDir(other).removeRecursively());
    ASSERT_TRUE(list().replaceOutdated(urlOf(place)));
    EXPECT_EQ(resolved(), (QStringList{place, QString()})) << "in its place, and another's is left alone";
    ASSERT_TRUE(list().replaceOutdated(urlOf(place)));
    EXPECT_EQ(fileNames().size(), 2);
}

TEST_F(SharedFileListFollowingTest, ACopyThatIsStillThereKeepsItsEntry)
{
    const QString installed = application(QStringLiteral("installed/Some.app"));
    const QString built = application(QStringLiteral("built/Some.app"));
    for (const QString &path : {installed, built})
        identify(path, "org.example.Some");
    ASSERT_TRUE(insert(installed));
    ASSERT_TRUE(list().replaceOutdated(urlOf(built)));
    EXPECT_EQ(resolved(), QStringList{installed});
    const QString entry = entryPath();
    const QByteArray before = contentOf(entry);
    ASSERT_TRUE(insert(built));
    EXPECT_EQ(resolved(), (QStringList{installed, built}));
    EXPECT_EQ(contentOf(entry), before);

    ASSERT_TRUE(QDir(built).removeRecursively());
    ASSERT_TRUE(insert(installed));
    EXPECT_EQ(resolved(), QStringList{installed}) << "one that would start nothing goes";
}

TEST_F(SharedFileListFollowingTest, AnEntryThatFollowsKeepsItsNameAndLeavesNothingBehind)
{
    // It is started through a link.
    const QString old = application(QStringLiteral("100%/Some.app"));
    identify(old, "org.example.Some");
    const QString place = application(QStringLiteral("new/Some.app"));
    identify(place, "org.example.Some");
    ASSERT_TRUE(insert(old));
    ASSERT_TRUE(QDir(old).removeRecursively());
    ASSERT_TRUE(list().replaceOutdated(urlOf(place)));
    EXPECT_EQ(namesIn(folder()), QStringList{QStringLiteral("org.example.Some.desktop")});
    EXPECT_EQ(resolved(), QStringList{place});
}

TEST_F(SharedFileListFollowingTest, OfSeveralEntriesThatFollowOneIsLeft)
{
    const QString one = application(QStringLiteral("one/Some.app"));
    const QString two = application(QStringLiteral("two/Some.app"));
    const QString place = application(QStringLiteral("new/Some.app"));
    for (const QString &path : {one, two, place})
        identify(path, "org.example.Some");
    ASSERT_TRUE(insert(one));
    ASSERT_TRUE(insert(two));
    for (const QString &path : {one, two})
        ASSERT_TRUE(QDir(path).removeRecursively());
    ASSERT_TRUE(list().replaceOutdated(urlOf(place)));
    EXPECT_EQ(resolved(), QStringList{place});
    EXPECT_EQ(namesIn(folder()), QStringList{QStringLiteral("org.example.Some.desktop")});
}

TEST_F(SharedFileListFollowingTest, AnEntryKeepsWhatTheUserPutIntoIt)
{
    const QString old = application(QStringLiteral("old/Some.app"));
    const QString place = application(QStringLiteral("new/Some.app"));
    identify(place, "org.example.Some");
    ASSERT_TRUE(insert(old));
    const QByteArray written = contentOf(entryPath());
    const QByteArray users =
        "# by hand\nOnlyShowIn=GNOME;\nName[de]=Mein\n\n[Desktop Action x]\nExec=other\n";
    put(entryPath(), QByteArray(written).replace("Name=Some\n", "Name=Mine\n") + users);
    ASSERT_TRUE(QDir(old).removeRecursively());
    ASSERT_TRUE(list().replaceOutdated(urlOf(place)));
    const QByteArray follows = contentOf(entryPath());
    EXPECT_EQ(QFileInfo(entryPath()).fileName(), QStringLiteral("org.example.Some.desktop"));
    EXPECT_EQ(
        follows,
        QByteArray(written).replace("Name=Some\n", "Name=Mine\n").replace(old.toUtf8(), place.toUtf8()) +
            users);

    // Written anew it says what the application says, and the rest stays.
    ASSERT_TRUE(insert(place));
    EXPECT_EQ(contentOf(entryPath()), QByteArray(follows).replace("Name=Mine\n", "Name=Some\n"));
}

TEST_F(SharedFileListFollowingTest, AnEntryThatIsSwitchedOffStaysSoWhenAnotherCopyHasGone)
{
    const QString one = application(QStringLiteral("one/Some.app"));
    const QString two = application(QStringLiteral("two/Some.app"));
    ASSERT_TRUE(insert(two));
    const QString switchedOff = entryPath();
    put(switchedOff, contentOf(switchedOff) + "Hidden=true\n");
    ASSERT_TRUE(insert(one));
    const QString goesNowhere = entryPath();
    const QByteArray before = contentOf(switchedOff) + contentOf(goesNowhere);
    ASSERT_TRUE(QDir(one).removeRecursively());
    ASSERT_TRUE(list().replaceOutdated(urlOf(two)));
    EXPECT_EQ(contentOf(switchedOff) + contentOf(goesNowhere), before);
}

TEST_F(SharedFileListFollowingTest, AnEntryThatWasRemovedMeanwhileDoesNotFollow)
{
    const QString old = application(QStringLiteral("old/Some.app"));
    const QString place = application(QStringLiteral("new/Some.app"));
    ASSERT_TRUE(insert(old));
    ASSERT_TRUE(QDir(old).removeRecursively());
    const QString entry = entryPath();

    const FileDescriptor watch(FileLayer::real(), ::inotify_init1(IN_CLOEXEC));
    ASSERT_NE(::inotify_add_watch(watch.get(), QFile::encodeName(entry).constData(), IN_CLOSE_NOWRITE), -1);
    std::optional<Result<FileLock>> lock = FileLock::acquire(
        FileLayer::real(),
        DesktopFolders::runtimeDirectory() + u'/' +
            FileLock::fileNameFor(QLatin1StringView("autostart"), QFileInfo(folder()).canonicalFilePath()),
        0);
    ASSERT_TRUE(*lock) << qPrintable(lock->error);
    auto follows = std::async(std::launch::async, [&] { return list().replaceOutdated(urlOf(place)); });
    // It has read the entry, and waits for the lock.
    pollfd isRead = {.fd = watch.get(), .events = POLLIN, .revents = 0};
    EXPECT_EQ(::poll(&isRead, 1, 60'000), 1);
    EXPECT_TRUE(QFile::remove(entry));
    lock.reset();
    // On a machine that stood still the wait may have been over before.
    const Result<> result = follows.get();
    EXPECT_TRUE(result || result.error.contains(u"locked by another process")) << qPrintable(result.error);
    EXPECT_EQ(namesIn(folder()), QStringList());
}

TEST_F(SharedFileListFollowingTest, OnlyAnActiveEntryOfOursFollowsAnApplicationThatWasMoved)
{
    const QString old = application(QStringLiteral("old/Some.app"));
    ASSERT_TRUE(insert(old));
    put(entryPath(), contentOf(entryPath()) + "Hidden=true\n");
    const QByteArray theirs = "[Desktop Entry]\nType=Application\nName=x\nExec=" + old.toUtf8() + "\n";
    put(folder() + QStringLiteral("/theirs.desktop"), theirs);
    const QStringList before = fileNames();
    ASSERT_TRUE(QDir(old).removeRecursively());
    ASSERT_TRUE(list().replaceOutdated(urlOf(application(QStringLiteral("new/Some.app")))));
    EXPECT_EQ(fileNames(), before);
    EXPECT_EQ(contentOf(folder() + QStringLiteral("/theirs.desktop")), theirs);
}

TEST_F(SharedFileListFollowingTest, AnEntryThatAnEarlierVersionNamedIsReplaced)
{
    // It is started through a link.
    const QString path = application(QStringLiteral("100%/Some.app"));
    ASSERT_TRUE(insert(path));
    const QByteArray earlier = contentOf(entryPath());
    const QString earlierPath = entryPath();
    identify(path, "org.example.Some");
    ASSERT_TRUE(insert(path));
    const QString name = QStringLiteral("org.example.Some.desktop");
    EXPECT_THAT(fileNames(), ElementsAre(name));
    EXPECT_FALSE(QFile::exists(earlierPath));

    put(earlierPath, earlier);
    ASSERT_TRUE(list().replaceOutdated(urlOf(path)));
    EXPECT_THAT(fileNames(), ElementsAre(name)) << "both were there, as after a kill";
    const QRegularExpressionMatch program = QRegularExpression(QStringLiteral("\nTryExec=(.*)\n"))
                                                .match(QString::fromUtf8(contentOf(entryPath())));
    EXPECT_TRUE(QFile::exists(program.captured(1))) << qPrintable(program.captured(1));

    // What the user put into it stays.
    for (const char *line : {"OnlyShowIn=GNOME;\n", "X-GNOME-Autostart-enabled=false\n", "Hidden=true\n"}) {
        ASSERT_TRUE(QFile::remove(folder() + u'/' + name));
        put(earlierPath, earlier + line);
        ASSERT_TRUE(list().replaceOutdated(urlOf(path)));
        EXPECT_FALSE(QFile::exists(earlierPath)) << line;
        EXPECT_EQ(contentOf(folder() + u'/' + name), earlier + line);
    }
    EXPECT_TRUE(fileNames().isEmpty()) << "it is switched off";
}

TEST_F(SharedFileListFollowingTest, AnEntryThatFollowsKeepsItsCommandLineAndItsFile)
{
    const QString old = application(QStringLiteral("old/Some.app"));
    const QString place = application(QStringLiteral("new/Some.app"));
    for (const QString &path : {old, place})
        identify(path, "org.example.Some");
    ASSERT_TRUE(insert(old));
    const QByteArray written = contentOf(entryPath());
    const auto withCommandLine = [&](const QByteArray &before, const QByteArray &behind) {
        return QByteArray(written)
            .replace("Exec=\"", "Exec=" + before)
            .replace("\"\nTryExec", behind + "\nTryExec");
    };
    ASSERT_TRUE(QFile::remove(entryPath()));
    ASSERT_TRUE(QDir(old).removeRecursively());
    const QString users = in(QStringLiteral("users.desktop"));
    const QString link = folder() + QStringLiteral("/mine.desktop");
    ASSERT_TRUE(QFile::link(users, link));
    const auto expectFollows = [&](const QByteArray &entry, const QByteArray &expected) {
        put(users, entry);
        ASSERT_TRUE(list().replaceOutdated(urlOf(place)));
        EXPECT_EQ(namesIn(folder()), QStringList{QStringLiteral("mine.desktop")});
        EXPECT_TRUE(QFileInfo(link).isSymLink());
        EXPECT_EQ(contentOf(users), QByteArray(expected).replace(old.toUtf8(), place.toUtf8()));
    };
    const QByteArray quoted = withCommandLine("env \"LANG=a b\" \"", "\" --quiet");
    expectFollows(quoted, quoted);
    expectFollows(withCommandLine("env LANG=C ", " --quiet"), withCommandLine("env LANG=C \"", "\" --quiet"));
    expectFollows(withCommandLine("", "\t--quiet"), withCommandLine("\"", "\"\\t--quiet"));
    expectFollows(withCommandLine("nice ", ""), withCommandLine("nice \"", "\""));
    // Where it is no argument of its own the program is started alone.
    expectFollows(withCommandLine("sh -c \"exec ", " --quiet\""), written);
    expectFollows(withCommandLine("env ", "-other --quiet"), written);
}

TEST_F(SharedFileListFollowingTest, OfTwoNamesOfAnEntryTheActiveOneIsLeft)
{
    const QString path = application(QStringLiteral("Some.app"));
    ASSERT_TRUE(insert(path));
    const QString earlier = entryPath();
    const QByteArray active = contentOf(earlier);
    identify(path, "org.example.Some");
    ASSERT_TRUE(insert(path));
    const QString present = entryPath();
    const QByteArray hidden = active + "Hidden=true\n";
    put(earlier, active + "# by hand\n");
    put(present, hidden);
    const QString gone = application(QStringLiteral("gone/Some.app"));
    ASSERT_TRUE(insert(gone));
    ASSERT_TRUE(QDir(gone).removeRecursively());
    ASSERT_TRUE(list().replaceOutdated(urlOf(path)));
    EXPECT_EQ(resolved(), QStringList{path});
    EXPECT_EQ(entryPath(), present);
    EXPECT_EQ(contentOf(present), active + "# by hand\n");
    EXPECT_EQ(namesIn(folder()).size(), 1);

    put(present, hidden);
    put(earlier, hidden);
    ASSERT_TRUE(list().replaceOutdated(urlOf(path)));
    EXPECT_EQ(namesIn(folder()), QStringList{QFileInfo(present).fileName()}) << "both are switched off";
    EXPECT_EQ(contentOf(present), hidden);
}
