// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// What fails leaves the target as it was.

#include "CreationFixture.h"
#include "FailingFolderLayer.h"
#include "ForkedProcess.h"

#include <QFile>

using ::testing::HasSubstr;
using ::testing::IsEmpty;

class FaultTest : public CreationFixture
{
protected:
    void SetUp() override
    {
        put(contentFolder() + QStringLiteral("/small"), QByteArray(1024, 's'));
        put(contentFolder() + QStringLiteral("/large"), QByteArray(300 * 1024, 'l'));
        fillTarget();
    }

    void fillTarget() const
    {
        makeFolder(inTarget(QStringLiteral("there")));
        put(inTarget(QStringLiteral("there/mine")), "mine");
        put(inTarget(QStringLiteral("taken")), "mine");
    }

    void startAgain()
    {
        DiskTree::clear(target());
        fillTarget();
    }

    static QNBHierarchyItemPtr tree()
    {
        const QString small = QStringLiteral("small");
        return Items::root({
            Items::folder(
                QStringLiteral("new"),
                {Items::file(QStringLiteral("a"), {QStringLiteral("640"), {}, small}),
                 Items::folder(
                     QStringLiteral("locked"),
                     {Items::file(QStringLiteral("b"), {QStringLiteral("000"), QStringLiteral("red"), small}),
                      Items::folder(QStringLiteral("empty"), {}, {QStringLiteral("000"), {}, {}})},
                     {QStringLiteral("000"), QStringLiteral("blue"), {}})},
                {QStringLiteral("500"), {}, {}}),
            Items::folder(QStringLiteral("there"),
                          {Items::file(QStringLiteral("c")), Items::folder(QStringLiteral("d"))}),
            Items::file(QStringLiteral("large"), {QStringLiteral("644"), {}, QStringLiteral("large")}),
            Items::file(QStringLiteral("taken"), {QStringLiteral("644"), QStringLiteral("gray"), {}}),
        });
    }

    /// What matters of the disk after a whole creation.
    static std::vector<std::pair<QByteArray, mode_t>> modes(const std::vector<DiskEntry> &entries)
    {
        std::vector<std::pair<QByteArray, mode_t>> modes;
        for (const DiskEntry &entry : entries)
            modes.emplace_back(entry.path, entry.mode);
        return modes;
    }
};

TEST_F(FaultTest, AnyCallThatFailsInTheExecutionLeavesTheTargetAsItWas)
{
    const Creation::Plan planned = plan(tree());
    const auto before = disk();
    FailingFolderLayer working;
    const Creation::Outcome made = Creation::execute(planned, {}, working);
    ASSERT_TRUE(made.succeeded);
    const auto complete = modes(disk());
    ASSERT_TRUE(Creation::undo(made.record).succeeded);

    int failed = 0;
    for (const int error : {ENOSPC, EIO}) {
        for (int call = 0; call < working.calls; ++call) {
            const auto beforeCall = disk();
            FailingFolderLayer layer;
            layer.failingCall = call;
            layer.errorNumber = error;
            const Creation::Outcome outcome = Creation::execute(planned, {}, layer);
            if (outcome.succeeded) {
                // A descriptor that is not closed, a faster way to copy: nobody needs that.
                EXPECT_EQ(modes(disk()), complete) << call;
                ASSERT_TRUE(Creation::undo(outcome.record).succeeded);
            } else {
                ++failed;
                EXPECT_FALSE(outcome.error.isEmpty());
                EXPECT_EQ(disk(), beforeCall) << call << ' ' << qPrintable(outcome.error);
            }
        }
    }
    EXPECT_GT(failed, working.calls);
    EXPECT_EQ(modes(disk()), modes(before));
}

TEST_F(FaultTest, ADiskThatDiesLeavesWhatItHadAndSaysSo)
{
    FailingFolderLayer working;
    const Creation::Outcome made = Creation::execute(plan(tree()), {}, working);
    ASSERT_TRUE(made.succeeded);
    ASSERT_TRUE(Creation::undo(made.record).succeeded);
    const QByteArray mine = DiskTree::at(disk(), "there/mine").bytes;
    for (int call = 0; call < working.calls; ++call) {
        FailingFolderLayer layer;
        layer.failingCall = call;
        layer.failures = FailingFolderLayer::never;
        const Creation::Plan planned = plan(tree());
        const auto before = DiskTree::paths(disk());
        const Creation::Outcome outcome = Creation::execute(planned, {}, layer);
        const auto after = disk();
        EXPECT_EQ(DiskTree::at(after, "there/mine").bytes, mine);
        // Whether it has said that something was left, it was; or the disk died after all was done.
        EXPECT_EQ(outcome.succeeded || outcome.error.contains(u"left"), DiskTree::paths(after) != before)
            << call << ' ' << qPrintable(outcome.error);
        startAgain();
    }
}

TEST_F(FaultTest, ADiskWithoutLabelsIsNoFault)
{
    class Unlabelled : public FolderLayer
    {
    public:
        int fsetxattr(int, const char *, const void *, size_t) override
        {
            errno = ENOTSUP;
            return -1;
        }
    } layer;
    EXPECT_TRUE(Creation::execute(plan(tree()), {}, layer).succeeded);
    EXPECT_EQ(DiskTree::at(disk(), "taken-1").label, 0);
}

TEST_F(FaultTest, ADiskWithoutModesIsNoFaultAndWhatIsMadeOnItCanBeUndone)
{
    class Modeless : public FolderLayer
    {
    public:
        int openat(int folder, const char *name, int flags, mode_t) override
        {
            return FolderLayer::openat(folder, name, flags, 0755);
        }
        int mkdirat(int folder, const char *name, mode_t) override
        {
            return FolderLayer::mkdirat(folder, name, 0755);
        }
        int fchmod(int, mode_t) override { return 0; }
        int chmodOpen(int, mode_t) override { return 0; }
    } layer;
    const auto before = DiskTree::paths(disk());
    const Creation::Outcome outcome = Creation::execute(plan(tree()), {}, layer);
    ASSERT_TRUE(outcome.succeeded) << qPrintable(outcome.error);
    const Creation::UndoOutcome undone = Creation::undo(outcome.record, layer);
    EXPECT_TRUE(undone.succeeded) << qPrintable(undone.error);
    EXPECT_EQ(DiskTree::paths(disk()), before);
}

TEST_F(FaultTest, BytesAreCopiedWhereTheSystemCannotCopyThemItself)
{
    class Plain : public FolderLayer
    {
    public:
        ssize_t copy_file_range(int, int, size_t) override
        {
            errno = EXDEV;
            return -1;
        }
        /// Never all at once.
        ssize_t write(int descriptor, const void *buffer, size_t size) override
        {
            return FolderLayer::write(descriptor, buffer, std::min<size_t>(size, 1000));
        }
    } layer;
    EXPECT_TRUE(Creation::execute(plan(tree()), {}, layer).succeeded);
    EXPECT_EQ(DiskTree::at(disk(), "large").bytes, QByteArray(300 * 1024, 'l'));
    EXPECT_EQ(DiskTree::at(disk(), "new/a").bytes, QByteArray(1024, 's'));
}

TEST_F(FaultTest, AnyCallThatFailsInThePlanIsAProblemOfThePlan)
{
    const auto before = disk();
    FailingFolderLayer working;
    const QStringList lines = Creation::plan(*tree(), target(), options(), working).lines();
    for (int call = 0; call < working.calls; ++call) {
        FailingFolderLayer layer;
        layer.failingCall = call;
        const Creation::Plan planned = Creation::plan(*tree(), target(), options(), layer);
        EXPECT_EQ(planned.canBeExecuted(), planned.lines() == lines && planned.problems().isEmpty()) << call;
        EXPECT_EQ(disk(), before);
    }
}

TEST_F(FaultTest, AnyCallThatFailsInAnUndoIsTold)
{
    FailingFolderLayer working;
    const auto before = DiskTree::paths(disk());
    ASSERT_TRUE(Creation::undo(create(tree()), working).succeeded);
    int refused = 0;
    int goneOn = 0;
    for (int call = 0; call < working.calls; ++call) {
        const Creation::Record record = create(tree());
        const auto complete = modes(disk());
        FailingFolderLayer layer;
        layer.failingCall = call;
        const Creation::UndoOutcome outcome = Creation::undo(record, layer);
        EXPECT_EQ(outcome.succeeded, outcome.error.isEmpty()) << call;
        if (outcome.succeeded)
            EXPECT_EQ(DiskTree::paths(disk()), before) << call;
        else if (modes(disk()) == complete)
            ++refused;
        else
            EXPECT_THAT(outcome.error.toStdString(), HasSubstr("left")) << call;
        EXPECT_EQ(outcome.rest.has_value(), !outcome.succeeded && modes(disk()).size() < complete.size())
            << call;
        if (outcome.rest) {
            ++goneOn;
            const auto rest = Creation::undo(*outcome.rest, Creation::EarlierUndo::Unfinished);
            EXPECT_TRUE(rest.succeeded) << qPrintable(rest.error) << call;
            EXPECT_EQ(DiskTree::paths(disk()), before) << call;
        }
        startAgain();
    }
    EXPECT_GT(refused, 10);
    EXPECT_GT(goneOn, 5);
}

TEST_F(FaultTest, AContentFileThatVanishesFails)
{
    const Creation::Plan planned = plan(tree());
    ASSERT_TRUE(QFile::remove(contentFolder() + QStringLiteral("/large")));
    const auto before = disk();
    const Creation::Outcome outcome = Creation::execute(planned);
    EXPECT_FALSE(outcome.succeeded);
    EXPECT_THAT(outcome.error.toStdString(), HasSubstr("“large”"));
    EXPECT_EQ(disk(), before);
}

TEST_F(FaultTest, AContentFileThatBecomesALinkFails)
{
    const Creation::Plan planned = plan(tree());
    put(outside() + QStringLiteral("/secret"), "secret");
    ASSERT_TRUE(QFile::remove(contentFolder() + QStringLiteral("/small")));
    makeLink(contentFolder() + QStringLiteral("/small"), outside() + QStringLiteral("/secret"));
    const auto before = disk();
    EXPECT_FALSE(Creation::execute(planned).succeeded);
    EXPECT_EQ(disk(), before);
}

TEST_F(FaultTest, ATargetThatVanishesMeanwhileIsNotCreatedElsewhere)
{
    const Creation::Plan planned = plan(tree());
    const QString moved = outside() + QStringLiteral("/moved");
    const auto before = disk();
    const Creation::Outcome outcome = Creation::execute(planned, [&](qsizetype done, qsizetype) {
        if (done == 3) {
            EXPECT_TRUE(QFile::rename(target(), moved));
            makeFolder(target());
        }
        return done < 8;
    });
    EXPECT_TRUE(outcome.cancelled);
    EXPECT_THAT(DiskTree::paths(disk()), IsEmpty());
    EXPECT_EQ(DiskTree::read(moved), before);
}

TEST_F(FaultTest, WhatAnotherHasPutIntoANewFolderStaysWithIt)
{
    const Creation::Outcome outcome = Creation::execute(plan(tree()), [&](qsizetype done, qsizetype total) {
        if (done == total)
            put(inTarget(QStringLiteral("there/d/foreign")), "mine");
        return done < total;
    });
    EXPECT_FALSE(outcome.succeeded);
    EXPECT_THAT(outcome.error.toStdString(), HasSubstr("“there/d” was left"));
    EXPECT_THAT(DiskTree::paths(disk()),
                ::testing::ElementsAre("taken", "there", "there/d", "there/d/foreign", "there/mine"));
}

TEST_F(FaultTest, WhatIsNoLongerOursIsNotRemoved)
{
    const Creation::Outcome outcome = Creation::execute(plan(tree()), [&](qsizetype done, qsizetype total) {
        if (done == total) {
            EXPECT_TRUE(QFile::rename(inTarget(QStringLiteral("large")), outside() + QStringLiteral("/x")));
            put(inTarget(QStringLiteral("large")), "mine");
        }
        return done < total;
    });
    EXPECT_FALSE(outcome.succeeded);
    EXPECT_EQ(DiskTree::at(disk(), "large").bytes, "mine");
    EXPECT_THAT(outcome.error.toStdString(), HasSubstr("“large” was left"));
}

TEST_F(FaultTest, NoPermissionIsAProblemOfThePlanAndLaterAFailure)
{
    put(contentFolder() + QStringLiteral("/secret"), "secret");
    const QByteArray secret = QFile::encodeName(contentFolder() + QStringLiteral("/secret"));
    ASSERT_EQ(::chmod(secret.constData(), 0), 0);
    const QByteArray root = QFile::encodeName(QFileInfo(target()).path());
    ASSERT_EQ(::chmod(root.constData(), 0755), 0);
    const QByteArray there = QFile::encodeName(inTarget(QStringLiteral("there")));
    const QByteArray folder = QFile::encodeName(target());
    ForkedProcess::runAsOrdinaryUser({folder, there, secret}, [&] {
        const QNBHierarchyItemPtr withSecret = Items::root(
            {Items::file(QStringLiteral("a"), {QStringLiteral("644"), {}, QStringLiteral("secret")})});
        EXPECT_FALSE(plan(withSecret).canBeExecuted());

        const Creation::Plan before = plan(tree());
        EXPECT_TRUE(before.canBeExecuted());
        ASSERT_EQ(::chmod(there.constData(), 0555), 0);
        auto entries = disk();
        Creation::Outcome outcome = Creation::execute(before);
        EXPECT_FALSE(outcome.succeeded);
        EXPECT_THAT(outcome.error.toStdString(), HasSubstr("“there/c”"));
        EXPECT_EQ(disk(), entries);
        const Creation::Plan denied = plan(tree());
        ASSERT_EQ(denied.problems().size(), 1);
        EXPECT_EQ(denied.problems().constFirst().path, QStringLiteral("there"));

        ASSERT_EQ(::chmod(there.constData(), 0755), 0);
        ASSERT_EQ(::chmod(folder.constData(), 0555), 0);
        entries = disk();
        outcome = Creation::execute(before);
        EXPECT_FALSE(outcome.succeeded);
        EXPECT_EQ(disk(), entries);
        ASSERT_EQ(plan(tree()).problems().size(), 1);
        EXPECT_EQ(plan(tree()).problems().constFirst().path, QString());

        ASSERT_EQ(::chmod(folder.constData(), 0755), 0);
        const Creation::Record record = create(tree());
        ASSERT_EQ(::chmod(there.constData(), 0555), 0);
        EXPECT_FALSE(Creation::undo(record).succeeded);
        ASSERT_EQ(::chmod(there.constData(), 0755), 0);
        EXPECT_TRUE(Creation::undo(record).succeeded);
    });
}
