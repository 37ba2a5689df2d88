// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Toolkit/OutlineView.h"

#include "FakeTree.h"

#include <QAbstractItemModelTester>
#include <QTest>
#include <gtest/gtest.h>

/// A small tree on screen, with a model checker that ends the program.
class OutlineViewFixture : public ::testing::Test
{
protected:
    OutlineViewFixture()
    {
        // docs(a, b(deep)), empty, src(x, y)
        docs = tree.root->add(QStringLiteral("docs"));
        docs->add(QStringLiteral("a"));
        docs->add(QStringLiteral("b"))->add(QStringLiteral("deep"));
        empty = tree.root->add(QStringLiteral("empty"));
        src = tree.root->add(QStringLiteral("src"));
        src->add(QStringLiteral("x"));
        src->add(QStringLiteral("y"));
        view.setDataSource(&tree);
        view.resize(300, 300);
        view.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&view));
        view.setFocus();
    }

    ~OutlineViewFixture() override { view.setDataSource(nullptr); }

    QString nameAtRow(int row) const
    {
        const OutlineItem item = view.itemAtRow(row);
        return item ? static_cast<FakeTree::Node *>(item.get())->name : QStringLiteral("(none)");
    }

    QString rows() const
    {
        QStringList names;
        for (int row = 0; row < view.numberOfRows(); ++row)
            names << nameAtRow(row);
        return names.join(u' ');
    }

    FakeTree tree;
    FakeTree::NodePtr docs;
    FakeTree::NodePtr empty;
    FakeTree::NodePtr src;
    OutlineView view;
    QAbstractItemModelTester tester{view.model(), QAbstractItemModelTester::FailureReportingMode::Fatal};
};
