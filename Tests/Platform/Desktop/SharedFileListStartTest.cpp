// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// Login items as those see them who start them.

#include "Platform/Desktop/SharedFileList.h"

#include "Platform/Desktop/DesktopEntry.h"
#include "Platform/Files/FileURL.h"
#include "Platform/Files/SystemCalls.h"
#include "SharedFileListFixture.h"
#include "Tests/Session/ChildProcess.h"

#include <cstdio>
#include <fcntl.h>
#include <memory>
#include <vector>

namespace {

/// Names of folders that a path may lead through.
const char *const names[] = {"plain",
                             "with blanks",
                             " at both ends ",
                             "'single'",
                             "\"double\"",
                             "\"",
                             "new\nline",
                             "\n",
                             "ta\tb",
                             "carriage\rreturn",
                             "back\\slash",
                             "\\n\\s\\\\",
                             "50%",
                             "%f",
                             "%%",
                             "$HOME",
                             "${HOME}",
                             "`id`",
                             "$(id)",
                             "-dash",
                             "--help",
                             "a;b&c|d<e>f",
                             "*?[a]~#!",
                             "~",
                             "a=b",
                             "\x01\x1f\x7f",
                             "Ünïcode 漢字 \xf0\x9f\x98\x80",
                             "\xe2\x80\xa8\xc2\x85\xef\xbb\xbf"};

/// A folder that has a name of any bytes for as long as this lives.
class FolderOfNoText
{
public:
    FolderOfNoText(const QString &text, const QByteArray &path)
        : text_(QFile::encodeName(text))
        , path_(path)
    {
        EXPECT_EQ(::rename(text_.constData(), path_.constData()), 0);
    }
    ~FolderOfNoText() { EXPECT_EQ(::rename(path_.constData(), text_.constData()), 0); }
    FolderOfNoText(const FolderOfNoText &) = delete;
    FolderOfNoText &operator=(const FolderOfNoText &) = delete;

    QByteArray path() const { return path_; }

private:
    const QByteArray text_;
    const QByteArray path_;
};

class SharedFileListStartTest : public SharedFileListFixture
{
protected:
    QProcessEnvironment environment() const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("HOME"), root());
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), QFileInfo(folder()).path());
        environment.insert(QStringLiteral("XDG_CONFIG_DIRS"), in(QStringLiteral("none")));
        return environment;
    }

    /// What the program printed; it has to succeed.
    QByteArray run(const QString &name, const QStringList &arguments) const
    {
        ChildProcess process(name, arguments, environment());
        EXPECT_TRUE(process.waitForEnd());
        QByteArray output = process.output() + process.errors();
        EXPECT_TRUE(process.hasReturned(0)) << output.constData();
        return output;
    }

    /// An application in a folder of each name, all of them login items.
    std::vector<std::unique_ptr<TestApplication>> addApplications() const
    {
        std::vector<std::unique_ptr<TestApplication>> applications;
        for (const char *name : names) {
            const QString path = in(QString::fromUtf8(name)) + QStringLiteral("/Recording.app");
            applications.push_back(std::make_unique<TestApplication>(path));
            EXPECT_TRUE(insert(path)) << name;
        }
        return applications;
    }

    static void expectStarted(const TestApplication &application)
    {
        const std::optional<TestApplication::Start> start = application.start();
        ASSERT_TRUE(start) << qPrintable(application.path());
        EXPECT_EQ(start->processName, TestApplication::defaultExecutable);
        EXPECT_EQ(start->arguments, QList<QByteArray>());
        EXPECT_EQ(QFileInfo(QFile::decodeName(start->program)).canonicalFilePath(), application.executable());
    }
};

} // namespace

TEST_F(SharedFileListStartTest, EveryEntryIsValid)
{
    addApplications();
    const QString bare = program(QStringLiteral("odd \x01%\"name\n"));
    ASSERT_TRUE(insert(bare));
    const QStringList entries = fileNames();
    ASSERT_EQ(entries.size(), qsizetype(std::size(names)) + 1);
    for (const QString &entry : entries)
        EXPECT_EQ(run(QStringLiteral(QUENBY_DESKTOP_FILE_VALIDATE), {folder() + u'/' + entry}), "");
}

TEST_F(SharedFileListStartTest, EveryPathIsReadBackUnharmed)
{
    QStringList paths;
    for (const std::unique_ptr<TestApplication> &application : addApplications())
        paths << application->path();
    EXPECT_EQ(resolved(), paths);
    const QList<SharedFileList::Item> items = list().copySnapshot();
    for (const SharedFileList::Item &item : items)
        EXPECT_TRUE(list().remove(item));
    EXPECT_EQ(namesIn(folder()), QStringList());
    for (const QString &path : paths)
        EXPECT_TRUE(QFile::exists(path)) << qPrintable(path);
}

TEST_F(SharedFileListStartTest, DexStartsEveryApplicationAtLogin)
{
    const auto applications = addApplications();
    EXPECT_EQ(run(QStringLiteral(QUENBY_DEX), {QStringLiteral("-a")}), "");
    for (const std::unique_ptr<TestApplication> &application : applications)
        expectStarted(*application);
}

TEST_F(SharedFileListStartTest, DexStartsNothingThatWasRemovedOrSwitchedOff)
{
    const TestApplication kept(in(QStringLiteral("Kept.app")));
    const TestApplication removed(in(QStringLiteral("Removed.app")));
    const TestApplication hidden(in(QStringLiteral("Hidden.app")));
    for (const TestApplication *application : {&hidden, &removed, &kept})
        ASSERT_TRUE(insert(application->path()));
    const QList<SharedFileList::Item> items = list().copySnapshot();
    const QString hiddenEntry = folder() + u'/' + items.value(0).fileName();
    put(hiddenEntry, contentOf(hiddenEntry) + "Hidden=true\n");
    ASSERT_TRUE(list().remove(items.value(1)));
    EXPECT_EQ(run(QStringLiteral(QUENBY_DEX), {QStringLiteral("-a")}), "");
    expectStarted(kept);
    EXPECT_FALSE(removed.wasStarted());
    EXPECT_FALSE(hidden.wasStarted());
}

TEST_F(SharedFileListStartTest, DexPassesOverAnApplicationThatIsGone)
{
    const QString gone = application(QStringLiteral("Gone.app"));
    const QString oddGone = application(QStringLiteral("100%/Gone.app"));
    const TestApplication kept(in(QStringLiteral("Kept.app")));
    for (const QString &path : {gone, oddGone, kept.path()})
        ASSERT_TRUE(insert(path));
    ASSERT_TRUE(QDir(gone).removeRecursively());
    ASSERT_TRUE(QDir(oddGone).removeRecursively());
    EXPECT_EQ(run(QStringLiteral(QUENBY_DEX), {QStringLiteral("-a")}), "");
    expectStarted(kept);
}

TEST_F(SharedFileListStartTest, GioStartsEveryApplication)
{
    const auto applications = addApplications();
    const QStringList entries = fileNames();
    ASSERT_EQ(entries.size(), qsizetype(applications.size()));
    for (const QString &entry : entries)
        EXPECT_EQ(run(QStringLiteral(QUENBY_GIO), {QStringLiteral("launch"), folder() + u'/' + entry}), "");
    for (const std::unique_ptr<TestApplication> &application : applications)
        expectStarted(*application);
}

TEST_F(SharedFileListStartTest, AnExecutableWithAnyNameIsStarted)
{
    std::vector<std::unique_ptr<TestApplication>> applications;
    for (const char *name : {"50%", "a\"b", "-x", "$(id)", "ends ", "two words", "back\\slash"}) {
        applications.push_back(std::make_unique<TestApplication>(
            in(QStringLiteral("App %1.app").arg(applications.size())), QString::fromUtf8(name)));
        ASSERT_TRUE(insert(applications.back()->path()));
    }
    EXPECT_EQ(run(QStringLiteral(QUENBY_DEX), {QStringLiteral("-a")}), "");
    for (const std::unique_ptr<TestApplication> &application : applications) {
        const std::optional<TestApplication::Start> start = application->start();
        ASSERT_TRUE(start) << qPrintable(application->executable());
        EXPECT_EQ(start->arguments, QList<QByteArray>());
    }
}

TEST_F(SharedFileListStartTest, APathThatIsNoTextIsStartedAndNotTheOneThatItLooksLike)
{
    const TestApplication application(in(QStringLiteral("text/Recording.app")));
    const FolderOfNoText folder(in(QStringLiteral("text")), root().toUtf8() + "/a\xff");
    const TestApplication alike(in(QStringLiteral("a\uFFFD/Recording.app")));
    const QByteArray path = folder.path() + "/Recording.app";
    const QUrl url = fileURLOfPath(path);
    ASSERT_TRUE(list().insertItemURL(url));
    ASSERT_TRUE(list().insertItemURL(url));
    const SharedFileList::Item item = list().copySnapshot().value(0);
    EXPECT_EQ(run(QStringLiteral(QUENBY_DESKTOP_FILE_VALIDATE), {entryPath()}), "");
    EXPECT_EQ(list().resolve(item), url);

    EXPECT_EQ(run(QStringLiteral(QUENBY_DEX), {QStringLiteral("-a")}), "");
    const std::optional<TestApplication::Start> start = application.start();
    ASSERT_TRUE(start);
    EXPECT_EQ(start->processName, TestApplication::defaultExecutable);
    EXPECT_EQ(start->arguments, QList<QByteArray>());
    EXPECT_EQ(linkText(AT_FDCWD, start->program.constData()),
              path + "/Contents/MacOS/" + TestApplication::defaultExecutable);
    EXPECT_FALSE(alike.wasStarted());

    ASSERT_TRUE(insert(alike.path()));
    ASSERT_TRUE(list().remove(item));
    EXPECT_EQ(resolved(), QStringList{alike.path()});
}

TEST_F(SharedFileListStartTest, AProgramWhoseNameIsNoTextIsStarted)
{
    const QByteArray path = root().toUtf8() + "/\xff%tool";
    ASSERT_EQ(::rename(QFile::encodeName(program(QStringLiteral("tool"))).constData(), path.constData()), 0);
    const NamedByBytes removed(path);
    ASSERT_TRUE(list().insertItemURL(fileURLOfPath(path)));
    const QString entry = entryPath();
    EXPECT_EQ(run(QStringLiteral(QUENBY_DESKTOP_FILE_VALIDATE), {entry}), "");
    EXPECT_EQ(run(QStringLiteral(QUENBY_GIO), {QStringLiteral("launch"), entry}), "");
    QString error;
    const std::optional<DesktopEntry> written = DesktopEntry::parse(contentOf(entry), &error);
    ASSERT_TRUE(written) << qPrintable(error);
    EXPECT_EQ(linkText(AT_FDCWD, written->program().constData()), path);
}

TEST_F(SharedFileListStartTest, AListThatNoStarterFindsIsNotLedTo)
{
    const SharedFileList odd = SharedFileList::create(in(QStringLiteral("100%"))).value();
    EXPECT_TRUE(odd.insertItemURL(urlOf(application(QStringLiteral("Plain.app")))));
    EXPECT_FALSE(odd.insertItemURL(urlOf(application(QStringLiteral("50%.app")))));
    EXPECT_EQ(odd.copySnapshot().size(), 1);
}

TEST_F(SharedFileListStartTest, ALinkFollowsTheApplicationsExecutable)
{
    const QString path = in(QStringLiteral("50%.app"));
    const TestApplication old(path, QStringLiteral("OldName"));
    ASSERT_TRUE(insert(path));
    ASSERT_TRUE(QDir(path).removeRecursively());
    const TestApplication current(path);
    ASSERT_TRUE(insert(path));
    EXPECT_EQ(run(QStringLiteral(QUENBY_DEX), {QStringLiteral("-a")}), "");
    expectStarted(current);
    ASSERT_TRUE(list().remove(list().copySnapshot().value(0)));
    EXPECT_EQ(namesIn(folder()), QStringList());
}

TEST_F(SharedFileListStartTest, OnlyLinksAreRemovedWithAnEntry)
{
    const QString path = application(QStringLiteral("50%.app"));
    ASSERT_TRUE(insert(path));
    const QStringList hidden = QDir(folder()).entryList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot);
    ASSERT_EQ(hidden.size(), 1);
    const QString links = folder() + u'/' + hidden.constFirst();
    const QString mine = links + QStringLiteral("/mine");
    put(mine, "mine");
    ASSERT_TRUE(list().remove(list().copySnapshot().value(0)));
    EXPECT_EQ(namesIn(links), QStringList{QStringLiteral("mine")});
    ASSERT_TRUE(QFile::remove(mine));
    ASSERT_TRUE(QDir().rmdir(links));

    // A folder of somebody else's in its place is not entered.
    const QString elsewhere = in(QStringLiteral("elsewhere"));
    ASSERT_TRUE(QDir().mkpath(elsewhere));
    ASSERT_TRUE(QFile::link(QStringLiteral("/bin/sh"), elsewhere + QStringLiteral("/theirs")));
    ASSERT_TRUE(insert(path));
    ASSERT_TRUE(QDir(links).removeRecursively());
    ASSERT_TRUE(QFile::link(elsewhere, links));
    ASSERT_TRUE(list().remove(list().copySnapshot().value(0)));
    EXPECT_EQ(namesIn(elsewhere), QStringList{QStringLiteral("theirs")});
}
