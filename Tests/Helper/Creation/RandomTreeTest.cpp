// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// Trees of every kind, created into what was created before: the plan says what will be on the disk.

#include "CreationFixture.h"
#include "ForkedProcess.h"

#include "Shared/Source/QNBShared.h"

#include <QFile>
#include <map>
#include <random>

namespace {

/// Few names, so that there are conflicts, and some that are only nearly equal.
const QStringList names = {QStringLiteral("a"),     QStringLiteral("A"),       QStringLiteral("a.txt"),
                           QStringLiteral("a-1"),   QStringLiteral("\u00E9"),  QStringLiteral("e\u0301"),
                           QStringLiteral("b.txt"), QStringLiteral("a-1.txt"), QStringLiteral("line\nfeed"),
                           QStringLiteral(".b"),    QStringLiteral("c d"),     QStringLiteral("e.")};
const QStringList colors = {QString(),
                            QString(),
                            QStringLiteral("red"),
                            QStringLiteral("gray"),
                            QStringLiteral("orange"),
                            QStringLiteral("none of them")};
const QStringList contents = {QString(), QStringLiteral("small"), QStringLiteral("folder/large")};

class RandomTree
{
public:
    explicit RandomTree(unsigned seed)
        : random_(seed)
    {
    }

    QVariantList children(int depth)
    {
        QVariantList items;
        for (int count = number(8); count > 0; --count) {
            const Items::Attributes attributes{
                QStringLiteral("%1%2%3").arg(number(8)).arg(number(8)).arg(number(8)), oneOf(colors),
                oneOf(contents)};
            items.append(number(2) == 0
                             ? Items::file(oneOf(names), attributes)
                             : Items::folder(oneOf(names), depth > 0 ? children(depth - 1) : QVariantList(),
                                             attributes));
        }
        return items;
    }

private:
    int number(int below) { return int(random_() % unsigned(below)); }
    const QString &oneOf(const QStringList &list) { return list.at(number(int(list.size()))); }

    std::mt19937 random_;
};

QString line(const QString &what, const QString &path, mode_t mode, int label, const QString &content)
{
    QString text = QStringLiteral("create %1 %2 (%3").arg(what, path).arg(mode, 3, 8, QLatin1Char('0'));
    if (label != 0)
        text += QStringLiteral(", ") + QNBColorForFinderLabel(quint64(label));
    text += u')';
    return content.isEmpty() ? text : text + QStringLiteral(" with the content of ") + content;
}

} // namespace

class RandomTreeTest : public CreationFixture
{
protected:
    void createAndCompare(const QNBHierarchyItemPtr &root)
    {
        const auto before = disk();
        const Creation::Plan planned = plan(root);
        if (!planned.canBeExecuted()) {
            // Something would have to be made in a folder that was created without the right to.
            EXPECT_FALSE(planned.problems().isEmpty());
            return;
        }
        const Creation::Outcome outcome = Creation::execute(planned);
        ASSERT_TRUE(outcome.succeeded) << qPrintable(outcome.error);

        // What is new on the disk, in the order in which it was made, told in the words of the plan.
        std::map<QByteArray, DiskEntry> added;
        const auto after = disk();
        for (const DiskEntry &entry : after)
            added.emplace(entry.path, entry);
        for (const DiskEntry &entry : before) {
            const auto now = added.find(entry.path);
            ASSERT_NE(now, added.end()) << entry;
            EXPECT_EQ(now->second.mode, entry.mode) << entry;
            EXPECT_EQ(now->second.label, entry.label) << entry;
            EXPECT_EQ(now->second.bytes, entry.bytes) << entry;
            added.erase(now);
        }
        QStringList found;
        for (qsizetype i = 0; i < qsizetype(planned.operations().size()); ++i) {
            const Creation::Operation &step = planned.operations()[std::size_t(i)];
            const bool isFile = step.kind == Creation::Operation::Kind::MakeFile;
            if (!isFile && step.kind != Creation::Operation::Kind::MakeFolder) {
                found.append(planned.lines().at(i));
                continue;
            }
            QByteArray path = step.name;
            for (qint32 f = step.folder; f != Creation::Operation::noOperation;
                 f = planned.operations()[std::size_t(f)].folder)
                path.prepend(planned.operations()[std::size_t(f)].name + '/');
            const auto entry = added.find(path);
            ASSERT_NE(entry, added.end()) << path.constData();
            EXPECT_EQ(entry->second.isFolder(), !isFile);
            QString content;
            for (const QString &name : contents) {
                if (!name.isEmpty() && entry->second.bytes == bytesOf(name))
                    content = name;
            }
            EXPECT_TRUE(!content.isEmpty() || entry->second.bytes.isEmpty());
            found.append(line(isFile ? QStringLiteral("file") : QStringLiteral("folder"), planned.path(i),
                              entry->second.permissions(), entry->second.label, content));
            added.erase(entry);
        }
        EXPECT_EQ(found, planned.lines());
        EXPECT_TRUE(added.empty());

        // And all the way back.
        const Creation::UndoOutcome undone = Creation::undo(outcome.record);
        ASSERT_TRUE(undone.succeeded) << qPrintable(undone.error);
        EXPECT_EQ(DiskTree::paths(disk()), DiskTree::paths(before));
        ASSERT_TRUE(Creation::execute(plan(root)).succeeded);
    }

    static QByteArray bytesOf(const QString &content)
    {
        return QByteArray(content == u"small" ? 700 : 200'000, content.at(0).toLatin1());
    }

    void SetUp() override
    {
        makeFolder(contentFolder() + QStringLiteral("/folder"));
        for (const QString &content : {contents.at(1), contents.at(2)})
            put(contentFolder() + u'/' + content, bytesOf(content));
        ASSERT_EQ(::chmod(QFile::encodeName(QFileInfo(target()).path()).constData(), 0755), 0);
    }

    /// Three trees into each other, in many combinations.
    void createMany(unsigned seeds)
    {
        for (unsigned seed = 0; seed < seeds; ++seed) {
            const mode_t before = ::umask(seed % 3 == 0 ? 0 : seed % 3 == 1 ? 0022 : 0777);
            RandomTree tree(seed);
            for (int i = 0; i < 3; ++i)
                createAndCompare(Items::root(tree.children(3)));
            ::umask(before);
            DiskTree::clear(target());
            if (HasFailure()) {
                ADD_FAILURE() << "seed " << seed;
                return;
            }
        }
    }
};

TEST_F(RandomTreeTest, ThePlanSaysWhatIsOnTheDiskAfterwards)
{
    createMany(20);
}

TEST_F(RandomTreeTest, ThePlanSaysWhatIsOnTheDiskAfterwardsForAnOrdinaryUser)
{
    ForkedProcess::runAsOrdinaryUser({QFile::encodeName(target())}, [this] { createMany(20); });
}
