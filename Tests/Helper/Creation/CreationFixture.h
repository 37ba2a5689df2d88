// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "DiskTree.h"
#include "Helper/Creation/CreationPlan.h"
#include "Helper/Creation/Execution.h"
#include "Source/Model/QNBHierarchyItem.h"

#include <QTemporaryDir>
#include <gmock/gmock.h>
#include <initializer_list>

/// Items of a tree in a line each.
namespace Items {

struct Attributes
{
    QString permissions = QStringLiteral("764");
    QString color = {};
    QString content = {};
};

QVariantMap file(const QString &name, const Attributes &attributes = {});
QVariantMap folder(const QString &name, const QVariantList &children = {},
                   const Attributes &attributes = {QStringLiteral("755"), {}, {}});
QNBHierarchyItemPtr root(const QVariantList &children);

} // namespace Items

/// A target folder, a folder of content files, and a look at the disk before and after.
class CreationFixture : public ::testing::Test
{
protected:
    CreationFixture();
    ~CreationFixture() override;

    QString target() const { return folder_.path() + QStringLiteral("/target"); }
    QString inTarget(const QString &path) const { return target() + u'/' + path; }
    QString contentFolder() const { return folder_.path() + QStringLiteral("/File Content"); }
    /// Where nothing may ever be created.
    QString outside() const { return folder_.path() + QStringLiteral("/outside"); }

    Creation::Options options(Creation::OnConflict onConflict = Creation::OnConflict::UniqueName) const;
    Creation::Plan plan(const QNBHierarchyItemPtr &root) const;
    /// Plans and executes; the test fails if that does.
    Creation::Record create(const QNBHierarchyItemPtr &root) const;
    /// For each problem its path and its reason.
    static QStringList problems(const Creation::Plan &plan);

    std::vector<DiskEntry> disk() const { return DiskTree::read(target()); }

    /// While it lives, the owner of a folder may do in it what its mode forbids, as root always may.
    class OpenedFolder
    {
    public:
        explicit OpenedFolder(const QString &path);
        ~OpenedFolder();
        Q_DISABLE_COPY_MOVE(OpenedFolder)

    private:
        QByteArray path_;
        mode_t mode_ = 0;
    };

    static void put(const QString &path, const QByteArray &bytes);
    static void makeFolder(const QString &path);
    static void makeLink(const QString &path, const QString &text);

private:
    QTemporaryDir folder_;
};
