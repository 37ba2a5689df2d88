// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "CreationFixture.h"
#include "Helper/Creation/ContentBytes.h"
#include "Tests/Platform/Files/InterveningLayer.h"

#include <QFile>
#include <algorithm>
#include <fcntl.h>
#include <functional>
#include <pwd.h>
#include <unistd.h>

namespace {

const QString fileName = QStringLiteral("folder/file");

QByteArray native(const QString &path)
{
    return QFile::encodeName(path);
}

} // namespace

/// Most begin with a content file "folder/file" of the user's, and a file of that name outside, not to be
/// read.
class ContentFileTest : public CreationFixture
{
protected:
    void SetUp() override
    {
        makeFolder(inContents("folder"));
        put(inContents("folder/file"), "bytes");
        put(outside() + QStringLiteral("/file"), "secret");
    }

    QString inContents(const char *name) const { return contentFolder() + u'/' + QString::fromUtf8(name); }

    static QNBHierarchyItemPtr treeWith(const QString &content, int files = 1)
    {
        QVariantList children;
        for (int i = 0; i < files; ++i)
            children.append(Items::file(QString::number(i), {QStringLiteral("644"), {}, content}));
        return Items::root(children);
    }
    Creation::Plan planOf(const QString &content, FolderLayer &layer = FolderLayer::real()) const
    {
        return Creation::plan(*treeWith(content), target(), options(), layer);
    }
    /// What a file has that was made with the content \a name.
    QByteArray made(const QString &name) const
    {
        const Creation::Plan planned = planOf(name);
        EXPECT_THAT(problems(planned), ::testing::IsEmpty());
        const Creation::Outcome outcome = Creation::execute(planned);
        EXPECT_TRUE(outcome.succeeded) << qPrintable(outcome.error);
        const QByteArray bytes = outcome.succeeded ? DiskTree::at(disk(), "0").bytes : QByteArray();
        DiskTree::clear(target());
        return bytes;
    }

    /// Has \a change made before each call of a plan and an execution in turn; \a takeBack afterwards.
    void changeAtEachCall(const std::function<void()> &change, const std::function<void()> &takeBack) const
    {
        int refused = 0;
        int succeeded = 0;
        for (int call = 0, calls = 1; call < calls; ++call) {
            InterveningLayer layer;
            layer.before({}, call, change);
            const Creation::Plan planned = planOf(fileName, layer);
            const Creation::Outcome outcome = Creation::execute(planned, {}, layer);
            calls = int(layer.made().size());
            ++(outcome.succeeded ? succeeded : refused);
            if (outcome.succeeded)
                EXPECT_EQ(DiskTree::at(disk(), "0").bytes, "bytes") << call;
            else
                EXPECT_THAT(DiskTree::paths(disk()), ::testing::IsEmpty()) << call;
            DiskTree::clear(target());
            takeBack();
        }
        EXPECT_GT(refused, 0);
        EXPECT_GT(succeeded, 0);
    }
    static void exchange(const QString &one, const QString &other)
    {
        EXPECT_EQ(::renameat2(AT_FDCWD, native(one).constData(), AT_FDCWD, native(other).constData(),
                              RENAME_EXCHANGE),
                  0);
    }
};

TEST_F(ContentFileTest, ALinkOfTheUsersOwnIsFollowedWhereverItLeads)
{
    makeLink(inContents("within"), fileName);
    makeLink(inContents("up"), QStringLiteral("folder/../folder/./file"));
    makeLink(inContents("absolute"), outside() + QStringLiteral("/file"));
    makeLink(inContents("beside"), QStringLiteral("../outside/"));
    makeLink(inContents("twice"), QStringLiteral("beside"));
    EXPECT_EQ(made(QStringLiteral("within")), "bytes");
    EXPECT_EQ(made(QStringLiteral("up")), "bytes");
    EXPECT_EQ(made(QStringLiteral("absolute")), "secret");
    EXPECT_EQ(made(QStringLiteral("beside/file")), "secret");
    EXPECT_EQ(made(QStringLiteral("twice/file")), "secret");
}

TEST_F(ContentFileTest, TheContentFolderMayBeReachedThroughALink)
{
    makeLink(outside() + QStringLiteral("/contents"), contentFolder());
    const Creation::Plan planned =
        Creation::plan(*treeWith(fileName), target(),
                       {Creation::OnConflict::UniqueName, outside() + QStringLiteral("/contents")});
    ASSERT_TRUE(Creation::execute(planned).succeeded);
    EXPECT_EQ(DiskTree::at(disk(), "0").bytes, "bytes");
}

TEST_F(ContentFileTest, ALinkThatAnotherUserMayHaveMadeIsRefused)
{
    makeLink(inContents("link"), fileName);
    for (const mode_t mode : {0777, 0775, 0757, 01777}) {
        ASSERT_EQ(::chmod(native(contentFolder()).constData(), mode), 0);
        EXPECT_FALSE(planOf(QStringLiteral("link")).canBeExecuted()) << mode;
        EXPECT_TRUE(planOf(fileName).canBeExecuted()) << mode;
    }
    ASSERT_EQ(::chmod(native(contentFolder()).constData(), 0755), 0);
    EXPECT_TRUE(planOf(QStringLiteral("link")).canBeExecuted());
    if (::geteuid() == 0) {
        const passwd *nobody = ::getpwnam("nobody");
        ASSERT_NE(nobody, nullptr);
        ASSERT_EQ(::lchown(native(inContents("link")).constData(), nobody->pw_uid, nobody->pw_gid), 0);
        EXPECT_FALSE(planOf(QStringLiteral("link")).canBeExecuted());
        ASSERT_EQ(::lchown(native(inContents("link")).constData(), 0, 0), 0);
        ASSERT_EQ(::chown(native(contentFolder()).constData(), nobody->pw_uid, nobody->pw_gid), 0);
        EXPECT_FALSE(planOf(QStringLiteral("link")).canBeExecuted());
    }
}

TEST_F(ContentFileTest, AFolderExchangedForALinkAtAnyCallLetsNothingFromOutsideIn)
{
    ASSERT_EQ(::chmod(native(contentFolder()).constData(), 0777), 0);
    const QString link = inContents("link");
    makeLink(link, outside());
    const auto swap = [&] { exchange(inContents("folder"), link); };
    changeAtEachCall(swap, swap);
}

TEST_F(ContentFileTest, AFileExchangedForALinkAtAnyCallLetsNothingFromOutsideIn)
{
    ASSERT_EQ(::chmod(native(inContents("folder")).constData(), 0777), 0);
    const QString link = inContents("link");
    makeLink(link, outside() + QStringLiteral("/file"));
    const auto swap = [&] { exchange(inContents("folder/file"), link); };
    changeAtEachCall(swap, swap);
}

TEST_F(ContentFileTest, AFileExchangedForAPipeAtAnyCallHoldsNothingUp)
{
    const QString pipe = inContents("pipe");
    ASSERT_EQ(::mkfifo(native(pipe).constData(), 0600), 0);
    const auto swap = [&] { exchange(inContents("folder/file"), pipe); };
    changeAtEachCall(swap, swap);
}

TEST_F(ContentFileTest, AFileExchangedForAnotherOneAfterThePlanIsNotTaken)
{
    put(inContents("other"), "other");
    const Creation::Plan planned = planOf(fileName);
    exchange(inContents("folder/file"), inContents("other"));
    const Creation::Outcome outcome = Creation::execute(planned);
    EXPECT_FALSE(outcome.succeeded);
    EXPECT_TRUE(outcome.error.contains(u"something else has taken its place")) << qPrintable(outcome.error);
    EXPECT_THAT(DiskTree::paths(disk()), ::testing::IsEmpty());
}

TEST_F(ContentFileTest, AWriteThatTakesNothingFails)
{
    class Stuck : public FolderLayer
    {
    public:
        ssize_t write(int, const void *, size_t) override
        {
            errno = EIO;
            return ++writes > 100 ? -1 : 0;
        }
        int writes = 0;
    } layer;
    EXPECT_FALSE(Creation::execute(planOf(fileName), {}, layer).succeeded);
    EXPECT_EQ(layer.writes, 1);
    EXPECT_THAT(DiskTree::paths(disk()), ::testing::IsEmpty());
}

TEST_F(ContentFileTest, WhatIsKeptInMemoryIsBoundedForOneAndForAll)
{
    using Creation::ContentBytes;
    const auto copiesBySystem = [this](const QVariantList &children) {
        InterveningLayer layer;
        const Creation::Plan planned = plan(Items::root(children));
        EXPECT_TRUE(Creation::execute(planned, {}, layer).succeeded);
        DiskTree::clear(target());
        // Each file that is not kept in memory is copied so, by one call and another one that finds its end.
        return layer.made().count("copy_file_range") / 2;
    };
    const auto twice = [](const QString &name) {
        return QVariantList{Items::file(name, {QStringLiteral("644"), {}, name}),
                            Items::file(name + u'-', {QStringLiteral("644"), {}, name})};
    };
    put(inContents("most"), QByteArray(ContentBytes::mostOfOne, 'm'));
    put(inContents("more"), QByteArray(ContentBytes::mostOfOne + 1, 'm'));
    EXPECT_EQ(copiesBySystem(twice(QStringLiteral("most"))), 0);
    EXPECT_EQ(copiesBySystem(twice(QStringLiteral("more"))), 2);

    QVariantList children;
    for (int i = 0; i < ContentBytes::mostOfAll / ContentBytes::mostOfOne + 2; ++i) {
        const QString name = QStringLiteral("content%1").arg(i);
        put(contentFolder() + u'/' + name, QByteArray(ContentBytes::mostOfOne, 'c'));
        children.append(twice(name));
    }
    EXPECT_EQ(copiesBySystem(children), 4);
}

TEST_F(ContentFileTest, AFileThatGrowsWhileItIsReadIsNotKept)
{
    put(inContents("growing"), "begin");
    const QByteArray whole = "begin" + QByteArray(Creation::ContentBytes::mostOfOne, 'g');
    InterveningLayer layer;
    layer.before("read", 0, [&] { put(inContents("growing"), whole); });
    const Creation::Plan planned =
        Creation::plan(*treeWith(QStringLiteral("growing"), 3), target(), options());
    ASSERT_TRUE(Creation::execute(planned, {}, layer).succeeded);
    for (const char *name : {"0", "1", "2"})
        EXPECT_EQ(DiskTree::at(disk(), name).bytes, whole);
    // Were it kept, it would not be opened for the others.
    EXPECT_GE(layer.made().count("copy_file_range"), 2);
}
