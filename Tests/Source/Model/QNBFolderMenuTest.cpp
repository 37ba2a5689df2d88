// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Model/QNBFolderMenu.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;
using namespace std::chrono_literals;

namespace {

using QNBFolderMenu::Kind;

/// The last warning of the walk.
QString warning;

void noteWarning(QtMsgType, const QMessageLogContext &, const QString &message)
{
    warning = message;
}

class QNBFolderMenuTest : public ::testing::Test
{
protected:
    QNBFolderMenuTest()
        : handler_(qInstallMessageHandler(noteWarning))
    {
        warning.clear();
    }
    ~QNBFolderMenuTest() override { qInstallMessageHandler(handler_); }

    QByteArray path(const QByteArray &name) const { return QFile::encodeName(folder_.path()) + '/' + name; }

    void makeFile(const QByteArray &name) const
    {
        const QFileInfo information(QFile::decodeName(path(name)));
        ASSERT_TRUE(QDir().mkpath(information.path()));
        QFile file(information.filePath());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << name.constData();
    }

    void makeFolder(const QByteArray &name) const
    {
        ASSERT_TRUE(QDir().mkpath(QFile::decodeName(path(name))));
    }

    void makeLink(const QByteArray &target, const QByteArray &name) const
    {
        ASSERT_EQ(::symlink(target.constData(), path(name).constData()), 0);
    }

    std::vector<std::string> entries(Kind kind, const QNBFolderMenu::Limits &limits = {}) const
    {
        std::vector<std::string> result;
        for (const QString &entry : QNBFolderMenu::entries(folder_.path(), kind, limits))
            result.push_back(entry.toStdString());
        return result;
    }
    std::vector<std::string> contents() const { return entries(Kind::FileContent); }
    std::vector<std::string> scripts() const { return entries(Kind::Scripts); }

    QTemporaryDir folder_;

private:
    QtMessageHandler handler_;
};

} // namespace

TEST_F(QNBFolderMenuTest, NothingInAFolderThatIsMissing)
{
    folder_.remove();
    EXPECT_THAT(contents(), IsEmpty());
    EXPECT_THAT(scripts(), IsEmpty());
    EXPECT_EQ(warning, QString());
}

TEST_F(QNBFolderMenuTest, NothingInAnEmptyFolder)
{
    EXPECT_THAT(contents(), IsEmpty());
    EXPECT_THAT(scripts(), IsEmpty());
}

TEST_F(QNBFolderMenuTest, AFileInASubfolderIsListedByItsRelativePath)
{
    makeFile("Letters/Invoice.rtf");
    makeFile("Letters/Old/Offer.rtf");
    EXPECT_THAT(contents(), UnorderedElementsAre("Letters/Invoice.rtf", "Letters/Old/Offer.rtf"));
    EXPECT_THAT(scripts(), UnorderedElementsAre("Letters", "Letters/Invoice.rtf", "Letters/Old",
                                                "Letters/Old/Offer.rtf"));
}

TEST_F(QNBFolderMenuTest, FilesThatBeginWithADotOrAnUnderscoreAreLeftOut)
{
    makeFile(".DS_Store");
    makeFile("_notes.txt");
    makeFile("Sub/.hidden");
    makeFile("Sub/_draft");
    makeFile("Sub/a_b.c");
    EXPECT_THAT(contents(), UnorderedElementsAre("Sub/a_b.c"));
    EXPECT_THAT(scripts(), UnorderedElementsAre("Sub", "Sub/a_b.c"));
}

TEST_F(QNBFolderMenuTest, FoldersThatBeginWithADotOrAnUnderscoreAreWalkedInto)
{
    makeFile("_old/letter.txt");
    makeFile(".git/config");
    EXPECT_THAT(contents(), UnorderedElementsAre("_old/letter.txt", ".git/config"));
    EXPECT_THAT(scripts(), UnorderedElementsAre("_old", "_old/letter.txt", ".git", ".git/config"));
}

TEST_F(QNBFolderMenuTest, ABundleIsListedOnceAndNothingInsideIt)
{
    makeFile("Tool.app/Contents/Info.plist");
    makeFile("Tool.app/Contents/MacOS/Tool");
    makeFile("Portable.app/AppDir/run");
    makeFile("Sub/Part.plugin/Contents/code");
    makeFile("Named.app/just a file");
    makeFile("Unnamed/Contents/Info.plist");
    EXPECT_THAT(scripts(), UnorderedElementsAre("Tool.app", "Portable.app", "Sub", "Sub/Part.plugin",
                                                "Named.app", "Named.app/just a file", "Unnamed"));
}

TEST_F(QNBFolderMenuTest, ABundleAmongContentFilesIsWalkedInto)
{
    makeFile("Tool.app/Contents/Info.plist");
    EXPECT_THAT(contents(), UnorderedElementsAre("Tool.app/Contents/Info.plist"));
}

TEST_F(QNBFolderMenuTest, AFolderStandsBeforeItsContentsAndNothingBetween)
{
    for (const char *name : {"a/1", "a/2", "b/c/3", "b/c/4", "b/5", "d/6"})
        makeFile(name);
    const std::vector<std::string> list = scripts();
    ASSERT_EQ(list.size(), 10U);
    std::string previous;
    for (const std::string &entry : list) {
        const std::size_t slash = entry.rfind('/');
        const std::string parent = slash == std::string::npos ? "" : entry.substr(0, slash);
        // The entry before is the parent, or is inside it.
        EXPECT_TRUE(previous == parent || parent.empty() || previous.rfind(parent + '/', 0) == 0) << entry;
        previous = entry;
    }
}

TEST_F(QNBFolderMenuTest, TheFileSystemsOrderIsKept)
{
    for (int i = 0; i < 50; ++i)
        makeFile("file " + QByteArray::number((i * 37) % 50));
    std::vector<std::string> order;
    const QDir folder(folder_.path());
    for (const QString &name : folder.entryList(QDir::Files, QDir::Unsorted))
        order.push_back(name.toStdString());
    EXPECT_EQ(contents(), order);
}

TEST_F(QNBFolderMenuTest, LinksInACircleAreNotFollowed)
{
    makeFile("Sub/file");
    makeLink(".", "Sub/itself");
    makeLink("../..", "Sub/above");
    makeLink("ring", "ring");
    EXPECT_THAT(contents(), UnorderedElementsAre("Sub/file", "ring"));
    EXPECT_THAT(scripts(), UnorderedElementsAre("Sub", "Sub/file", "Sub/itself", "Sub/above", "ring"));
}

TEST_F(QNBFolderMenuTest, ALinkToAFolderIsAFolderThatIsNotWalkedInto)
{
    const QTemporaryDir elsewhere;
    QFile inside(elsewhere.filePath(QStringLiteral("inside")));
    ASSERT_TRUE(inside.open(QIODevice::WriteOnly));
    makeLink(QFile::encodeName(elsewhere.path()), "linked");
    EXPECT_THAT(contents(), IsEmpty());
    EXPECT_THAT(scripts(), UnorderedElementsAre("linked"));
}

TEST_F(QNBFolderMenuTest, TheFolderItselfMayBeALink)
{
    makeFile("real/file");
    makeLink("real", "link");
    EXPECT_EQ(QNBFolderMenu::entries(folder_.filePath(QStringLiteral("link")), Kind::FileContent),
              QStringList{QStringLiteral("file")});
}

TEST_F(QNBFolderMenuTest, ALinkToAFileIsAFileEvenIfThatIsAway)
{
    makeFile("file");
    makeLink("file", "link");
    makeLink("/volume/that/is/away", "away");
    EXPECT_THAT(contents(), UnorderedElementsAre("file", "link", "away"));
}

TEST_F(QNBFolderMenuTest, PipesAndSocketsAreLeftOut)
{
    makeFile("file");
    ASSERT_EQ(::mkfifo(path("pipe").constData(), 0600), 0);
    makeLink("pipe", "link to pipe");
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const QByteArray name = path("socket");
    ASSERT_LT(std::size_t(name.size()), sizeof address.sun_path);
    std::copy(name.begin(), name.end(), address.sun_path);
    ASSERT_EQ(::bind(descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    EXPECT_THAT(contents(), UnorderedElementsAre("file"));
    EXPECT_THAT(scripts(), UnorderedElementsAre("file"));
    ::close(descriptor);
}

TEST_F(QNBFolderMenuTest, OddNamesAreListedExactly)
{
    const std::string longName(255, 'x');
    const std::vector<std::string> names = {"line\nbreak", "tab\there",    "R&D && more", "Ünïcode \u202ertl",
                                            "trailing ",   "a\\b\"'$(id)", "*?[]",        "%1 %@",
                                            "emoji 🦊",  longName};
    for (const std::string &name : names)
        makeFile(QByteArray::fromStdString(name));
    EXPECT_THAT(contents(), ::testing::UnorderedElementsAreArray(names));
    EXPECT_EQ(warning, QString());
}

TEST_F(QNBFolderMenuTest, ANameThatIsNoTextIsLeftOutWithALogLine)
{
    for (const char *name : {"latin-\xe9.txt", "folder-\xff"}) {
        ASSERT_EQ(::mkdir(path(name).constData(), 0700), 0);
        EXPECT_THAT(scripts(), IsEmpty());
        EXPECT_TRUE(warning.contains(QStringLiteral("the name is no text"))) << qPrintable(warning);
        ASSERT_EQ(::rmdir(path(name).constData()), 0);
    }
    makeFile("fine");
    EXPECT_THAT(scripts(), UnorderedElementsAre("fine"));
}

TEST_F(QNBFolderMenuTest, AFolderThatCannotBeReadIsSkippedWithALogLine)
{
    // Deeper than a path can be written: refused to every user, the administrator too.
    constexpr int depth = 20;
    const QByteArray name(250, 'd');
    const int start = ::open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(::chdir(folder_.path().toUtf8().constData()), 0);
    for (int level = 0; level < depth; ++level) {
        ASSERT_EQ(::mkdir(name.constData(), 0700), 0);
        ASSERT_EQ(::chdir(name.constData()), 0);
    }
    ASSERT_EQ(::fchdir(start), 0);
    makeFile("beside");

    const std::vector<std::string> list = scripts();
    EXPECT_THAT(list, ::testing::Contains("beside"));
    EXPECT_GT(list.size(), 10U);
    EXPECT_LT(list.size(), std::size_t(depth) + 1);
    EXPECT_TRUE(warning.startsWith(QStringLiteral("not listed:"))) << qPrintable(warning.left(100));

    ASSERT_EQ(::chdir(folder_.path().toUtf8().constData()), 0);
    for (int level = 1; level < depth; ++level)
        ASSERT_EQ(::chdir(name.constData()), 0);
    for (int level = 0; level < depth; ++level) {
        ASSERT_EQ(::rmdir(name.constData()), 0);
        ASSERT_EQ(::chdir(".."), 0);
    }
    ASSERT_EQ(::fchdir(start), 0);
    ::close(start);
}

TEST_F(QNBFolderMenuTest, TenThousandFilesAreListed)
{
    constexpr int count = 10000;
    for (int i = 0; i < count; ++i)
        makeFile("Sub" + QByteArray::number(i % 10) + "/file " + QByteArray::number(i));
    EXPECT_EQ(contents().size(), std::size_t(count));
    EXPECT_EQ(warning, QString());
}

TEST_F(QNBFolderMenuTest, AWalkThatMeetsALimitEndsWithALogLine)
{
    for (int i = 0; i < 20; ++i) {
        makeFile("file " + QByteArray::number(i));
        makeFile("_skipped " + QByteArray::number(i));
    }
    EXPECT_EQ(entries(Kind::FileContent, {.entries = 20}).size(), 20U);
    EXPECT_EQ(warning, QString());
    EXPECT_EQ(entries(Kind::FileContent, {.entries = 19}).size(), 19U);
    EXPECT_TRUE(warning.contains(QStringLiteral("the limit of entries"))) << qPrintable(warning);
    entries(Kind::FileContent, {.visits = 39});
    EXPECT_TRUE(warning.contains(QStringLiteral("the limit of visits"))) << qPrintable(warning);
    EXPECT_THAT(entries(Kind::FileContent, {.duration = 0ms}), IsEmpty());
    EXPECT_TRUE(warning.contains(QStringLiteral("the limit of time"))) << qPrintable(warning);
}
