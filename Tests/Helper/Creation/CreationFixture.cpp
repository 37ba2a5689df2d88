// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "CreationFixture.h"

#include <QFile>
#include <sys/stat.h>
#include <unistd.h>

QVariantMap Items::file(const QString &name, const Attributes &attributes)
{
    return {{QStringLiteral("filename"), name},
            {QStringLiteral("permissions"), attributes.permissions},
            {QStringLiteral("color"), attributes.color},
            {QStringLiteral("contentFilename"), attributes.content}};
}

QVariantMap Items::folder(const QString &name, const QVariantList &children, const Attributes &attributes)
{
    QVariantMap item = file(name, attributes);
    item.insert(QStringLiteral("isFolder"), true);
    item.insert(QStringLiteral("children"), children);
    return item;
}

QNBHierarchyItemPtr Items::root(const QVariantList &children)
{
    return QNBHierarchyItem::initWithDictionary(
        folder(QStringLiteral("Root"), children, {QStringLiteral("000"), QStringLiteral("red"), {}}));
}

CreationFixture::CreationFixture()
{
    for (const QString &path : {target(), contentFolder(), outside()})
        makeFolder(path);
}

CreationFixture::~CreationFixture()
{
    DiskTree::clear(folder_.path());
}

Creation::Options CreationFixture::options(Creation::OnConflict onConflict) const
{
    return {onConflict, contentFolder()};
}

Creation::Plan CreationFixture::plan(const QNBHierarchyItemPtr &root) const
{
    return Creation::plan(*root, target(), options());
}

Creation::Record CreationFixture::create(const QNBHierarchyItemPtr &root) const
{
    const Creation::Plan made = plan(root);
    EXPECT_THAT(problems(made), ::testing::IsEmpty());
    const Creation::Outcome outcome = Creation::execute(made);
    EXPECT_TRUE(outcome.succeeded) << qPrintable(outcome.error);
    return outcome.record;
}

CreationFixture::OpenedFolder::OpenedFolder(const QString &path)
    : path_(QFile::encodeName(path))
{
    struct stat information = {};
    EXPECT_EQ(::stat(path_.constData(), &information), 0) << path_.constData();
    mode_ = information.st_mode & 07777;
    EXPECT_EQ(::chmod(path_.constData(), mode_ | S_IRWXU), 0) << path_.constData();
}

CreationFixture::OpenedFolder::~OpenedFolder()
{
    EXPECT_EQ(::chmod(path_.constData(), mode_), 0) << path_.constData();
}

QStringList CreationFixture::problems(const Creation::Plan &plan)
{
    QStringList lines;
    for (const Creation::Problem &problem : plan.problems())
        lines.append(problem.path + QStringLiteral(": ") + problem.reason);
    return lines;
}

void CreationFixture::put(const QString &path, const QByteArray &bytes)
{
    const OpenedFolder folder(path.section(u'/', 0, -2));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << qPrintable(path);
    ASSERT_EQ(file.write(bytes), bytes.size());
}

void CreationFixture::makeFolder(const QString &path)
{
    ASSERT_EQ(::mkdir(QFile::encodeName(path).constData(), 0755), 0) << qPrintable(path);
}

void CreationFixture::makeLink(const QString &path, const QString &text)
{
    ASSERT_EQ(::symlink(QFile::encodeName(text).constData(), QFile::encodeName(path).constData()), 0)
        << qPrintable(path);
}
